#include "velmora/platform/Console.h"

#include <cstdio>
#include <cstdlib>

#if defined(_WIN32)
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace velmora {

namespace {

void print(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

bool isColourOffered() {
    if (std::getenv("NO_COLOR"))
        return false;
#if defined(_WIN32)
    return _isatty(_fileno(stdout)) != 0;
#else
    return isatty(STDOUT_FILENO) != 0;
#endif
}

#if defined(_WIN32)
void printColoured(const std::string& text, ConsoleAttribute attribute) {
    const HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
    CONSOLE_SCREEN_BUFFER_INFO present;
    const bool isConsole = GetConsoleScreenBufferInfo(console, &present) != 0;
    if (isConsole)
        SetConsoleTextAttribute(console, static_cast<WORD>(attribute));
    print(text);
    if (isConsole)
        SetConsoleTextAttribute(console, present.wAttributes);
}
#else
void printColoured(const std::string& text, ConsoleAttribute attribute) {
    const char* colour = attribute == ConsoleAttribute::BrightRed ? "\033[91m" : "\033[94m";
    print(colour + text + "\033[0m");
}
#endif

} // namespace

void printToConsole(const std::string& text, ConsoleAttribute attribute) {
    if (attribute == ConsoleAttribute::Plain || !isColourOffered())
        print(text);
    else
        printColoured(text, attribute);
}

} // namespace velmora
