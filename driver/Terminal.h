#pragma once

#include <velmora/velmora.h>

#include <string>

namespace velmora::driver {

/// True if standard error is a terminal, where a line may be overwritten.
bool isErrorOutputTerminal();

/// What a message is; decides on its colour.
enum class MessageKind { Plain, Warning, Error };

/// Writes a text to standard error: red or blue on a terminal if it is an error or a warning, unless the
/// environment variable NO_COLOR is set.
void printToStandardError(const std::string& text, MessageKind kind = MessageKind::Plain);

/// Sends the kernel's messages to standard error, so that standard output holds the summary alone.
class StandardErrorPrinter : public IO_ConsolePrinter {
  public:
    /// The word "ERROR" or "WARNING" anywhere in the message decides on its kind.
    void print(const std::string& message) override;
};

} // namespace velmora::driver
