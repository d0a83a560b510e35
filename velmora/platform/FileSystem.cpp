#include "velmora/platform/FileSystem.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

namespace velmora {

namespace {

std::FILE* openOnce(const std::string& name, const char* mode) {
    std::error_code ignored;
    const auto status = std::filesystem::status(name, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        return nullptr; // a pipe would block, a folder gives read errors only
#if defined(_WIN32)
    std::FILE* file = nullptr;
    return fopen_s(&file, name.c_str(), mode) == 0 ? file : nullptr;
#else
    return std::fopen(name.c_str(), mode);
#endif
}

std::string withSlashes(std::string name) {
    std::ranges::replace(name, '\\', '/');
    return name;
}

FileStatus queryOnce(const std::string& name) {
    std::error_code error;
    if (name.empty())
        return FileStatus::NotFound;
    const auto status = std::filesystem::status(name, error);
    if (status.type() == std::filesystem::file_type::not_found)
        return FileStatus::NotFound;
    if (!error)
        return FileStatus::Exists;
    return error.value() == EINVAL ? FileStatus::InvalidName : FileStatus::OtherError;
}

} // namespace

std::FILE* openFile(const std::string& name, const char* mode) {
    std::FILE* file = nullptr;
    const std::string slashed = withSlashes(name);
    // A file that is written goes where the name points on this system, so slashes come first.
    if (mode[0] != 'r' && slashed != name)
        return openOnce(slashed, mode);
    file = openOnce(name, mode);
    return file || slashed == name ? file : openOnce(slashed, mode);
}

std::int64_t positionIn(std::FILE* file) {
#if defined(_WIN32)
    return _ftelli64(file);
#else
    return ftello(file);
#endif
}

bool canOpenForReading(const std::string& name) {
    std::FILE* file = openFile(name, "r");
    return file && std::fclose(file) == 0;
}

FileStatus queryFile(const std::string& name) {
    const FileStatus status = queryOnce(name);
    const std::string slashed = withSlashes(name);
    return status == FileStatus::Exists || slashed == name ? status : queryOnce(slashed);
}

std::string existingName(const std::string& name) {
    std::string slashed = withSlashes(name);
    const bool isMeant = queryOnce(name) != FileStatus::Exists && queryOnce(slashed) == FileStatus::Exists;
    return isMeant ? slashed : name;
}

std::string joinPath(const std::string& directory, const std::string& name) {
    if (directory.empty())
        return name;
    return directory + static_cast<char>(std::filesystem::path::preferred_separator) + name;
}

std::string directoryOf(const std::string& name) {
    const auto last = name.find_last_of("/\\");
    return last == std::string::npos ? std::string() : name.substr(0, last);
}

} // namespace velmora
