#pragma once

#include "velmora/platform/Export.h"

#include <cstdint>
#include <cstdio>
#include <string>

namespace velmora {

/// What a status query on a file name came to.
enum class FileStatus { Exists, NotFound, InvalidName, OtherError };

/// Opens a regular file in text mode ("r", "w" or "a"); null if that fails. A name with backslashes that
/// can't be opened is tried with slashes, so that models written on another system run. Folders and devices
/// are no regular files.
VELMORA_EXPORT std::FILE* openFile(const std::string& name, const char* mode);

/// Position in an open file, in bytes from its beginning.
VELMORA_EXPORT std::int64_t positionIn(std::FILE* file);

/// True if the file can be opened for reading.
VELMORA_EXPORT bool canOpenForReading(const std::string& name);

/// Status of a file name, also tried with slashes in place of backslashes.
VELMORA_EXPORT FileStatus queryFile(const std::string& name);

/// The name with slashes for backslashes if only that one exists, otherwise the name as it stands.
VELMORA_EXPORT std::string existingName(const std::string& name);

/// directory + the platform's separator + name; the name alone for an empty directory.
VELMORA_EXPORT std::string joinPath(const std::string& directory, const std::string& name);

/// The part of a file name before its last separator of either kind; empty if there is none.
VELMORA_EXPORT std::string directoryOf(const std::string& name);

} // namespace velmora
