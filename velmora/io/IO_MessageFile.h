#pragma once

#include "velmora/io/IO_FileIO.h"

#include <memory>

namespace velmora {

/// Prints messages on the console: red if the word "ERROR" stands anywhere in them, else blue for "WARNING".
class VELMORA_EXPORT IO_ConsolePrinter {
  public:
    virtual ~IO_ConsolePrinter() = default;
    virtual void print(const std::string& message);
};

/// The message channel of a run: console, file, or both. The file is open only for the moment of a write.
class VELMORA_EXPORT IO_MessageFile : public IO_FileIO {
  public:
    explicit IO_MessageFile(std::string name);
    ~IO_MessageFile() override;
    std::string getClassName() const override { return "IO_MessageFile"; }

    /// Sends text and a line feed to the console and the file, as the two flags say.
    void writeMessage(const std::string& text);

    std::unique_ptr<IO_ConsolePrinter> consolePrinter; ///< may be replaced by the driver's own
    bool echoToConsole = true;
    bool writeToFile = false;
};

} // namespace velmora
