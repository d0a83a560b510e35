#include "driver/TextFile.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace velmora::driver {

std::optional<std::string> readText(const std::string& fileName, std::string& error) {
    std::error_code code;
    const std::filesystem::file_status status = std::filesystem::status(fileName, code);
    if (status.type() == std::filesystem::file_type::not_found)
        error = fileName + ": no such file";
    else if (code)
        error = fileName + ": " + code.message();
    else if (status.type() == std::filesystem::file_type::directory)
        error = fileName + ": is a folder";
    else if (status.type() != std::filesystem::file_type::regular)
        error = fileName + ": isn't a regular file";
    if (!error.empty())
        return std::nullopt;
    std::ifstream stream(fileName, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(stream), {}};
    if (stream.is_open() && !stream.bad())
        return text;
    error = fileName + ": can't be read: " + std::generic_category().message(errno);
    return std::nullopt;
}

} // namespace velmora::driver
