#include "velmora/io/IO_OutputManager.h"

#include "velmora/platform/FileSystem.h"

#include <algorithm>

namespace velmora {

IO_OutputManager::IO_OutputManager(std::string resultDirectory, std::string resultBaseName)
    : directory(std::move(resultDirectory)),
      baseName(std::move(resultBaseName)),
      messageChannel(std::make_unique<IO_MessageFile>(joinPath(directory, baseName + ".msg"))) {}

IO_OutputManager::~IO_OutputManager() = default;

void IO_OutputManager::writeMessage(const std::string& text) {
    if (messageChannel)
        messageChannel->writeMessage(text);
}

bool IO_OutputManager::isResultKindInUse(const std::string& kind) const {
    return std::ranges::find(resultKinds, kind) != resultKinds.end();
}

void IO_OutputManager::addResultKind(const std::string& kind) {
    resultKinds.push_back(kind);
}

std::string IO_OutputManager::getResultFileBase() const {
    return joinPath(directory, baseName);
}

} // namespace velmora
