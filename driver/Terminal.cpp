#include "driver/Terminal.h"

#include <cstdio>
#include <cstdlib>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace velmora::driver {

bool isErrorOutputTerminal() {
#if defined(_WIN32)
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(STDERR_FILENO) != 0;
#endif
}

void printToStandardError(const std::string& text, MessageKind kind) {
    const bool isColoured = kind != MessageKind::Plain && isErrorOutputTerminal() && !std::getenv("NO_COLOR");
    const char* colour = kind == MessageKind::Error ? "\033[91m" : "\033[94m";
    std::fprintf(stderr, "%s%s%s", isColoured ? colour : "", text.c_str(), isColoured ? "\033[0m" : "");
}

void StandardErrorPrinter::print(const std::string& message) {
    const auto holds = [&](const char* word) { return message.find(word) != std::string::npos; };
    const MessageKind kind = holds("ERROR")     ? MessageKind::Error
                             : holds("WARNING") ? MessageKind::Warning
                                                : MessageKind::Plain;
    printToStandardError(message, kind);
}

} // namespace velmora::driver
