#include "driver/StopRequest.h"

#include <csignal>

namespace velmora::driver {

namespace {

constexpr int stoppingSignals[] = {SIGINT, SIGTERM};

volatile std::sig_atomic_t hasCome = 0; // a handler can reach nothing else

extern "C" void noteSignal(int number) {
    hasCome = 1;
    std::signal(number, SIG_DFL);
}

void exchangeHandlers(void (*from)(int), void (*to)(int)) {
    for (const int number : stoppingSignals)
        if (const auto present = std::signal(number, to); present != from)
            std::signal(number, present);
}

} // namespace

StopRequest::StopRequest() {
    hasCome = 0;
    exchangeHandlers(SIG_DFL, noteSignal);
}

StopRequest::~StopRequest() {
    exchangeHandlers(noteSignal, SIG_DFL);
}

// Not static: only while an object lives is there anybody who notes.
bool StopRequest::isMade() const {
    return hasCome != 0;
}

} // namespace velmora::driver
