#pragma once

#include "velmora/io/IO_MessageFile.h"

#include <memory>
#include <string>
#include <vector>

namespace velmora {

/// Tells result files where to go and carries messages to console and message file. The driver owns it; it
/// outlives the model.
class VELMORA_EXPORT IO_OutputManager {
  public:
    /// Messages go to the console until the channel's fields say otherwise.
    IO_OutputManager(std::string resultDirectory, std::string resultBaseName);
    IO_OutputManager(const IO_OutputManager&) = delete;
    IO_OutputManager& operator=(const IO_OutputManager&) = delete;
    ~IO_OutputManager();

    /// Sends text and a line feed to the message channel.
    void writeMessage(const std::string& text);
    /// True if a result file of this kind has been created on this manager; it is appended to then.
    bool isResultKindInUse(const std::string& kind) const;
    void addResultKind(const std::string& kind);
    /// Directory and base name joined; result files add their extension.
    std::string getResultFileBase() const;

    std::string directory;
    std::string baseName;
    std::vector<std::string> resultKinds;
    std::unique_ptr<IO_MessageFile> messageChannel;
};

} // namespace velmora
