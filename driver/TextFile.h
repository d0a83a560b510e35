#pragma once

#include <optional>
#include <string>

namespace velmora::driver {

/// The whole text of a regular file; none if it can't be read, with name and reason in `error`.
std::optional<std::string> readText(const std::string& fileName, std::string& error);

} // namespace velmora::driver
