#include "velmora/io/IO_MessageFile.h"

#include "velmora/platform/Console.h"

namespace velmora {

void IO_ConsolePrinter::print(const std::string& message) {
    const auto holds = [&](const char* word) { return message.find(word) != std::string::npos; };
    const ConsoleAttribute attribute = holds("ERROR")     ? ConsoleAttribute::BrightRed
                                       : holds("WARNING") ? ConsoleAttribute::BrightBlue
                                                          : ConsoleAttribute::Plain;
    printToConsole(message, attribute);
}

IO_MessageFile::IO_MessageFile(std::string name)
    : IO_FileIO(std::move(name)),
      consolePrinter(std::make_unique<IO_ConsolePrinter>()) {}

IO_MessageFile::~IO_MessageFile() = default;

// A message file that can't be opened isn't reported: there is no further channel to report it on.
void IO_MessageFile::writeMessage(const std::string& text) {
    const std::string message = text + "\n";
    if (echoToConsole && consolePrinter)
        consolePrinter->print(message);
    if (writeToFile && (isOpen || openForAppending())) {
        writeText(message);
        close();
    }
}

} // namespace velmora
