#include "driver/ModelContents.h"

#include <fmt/format.h>

#include <algorithm>

namespace velmora::driver {

std::string format(const Finding& finding, const std::string& fileName) {
    const char* severity = finding.severity == Finding::Severity::Error ? "error" : "warning";
    const std::string place = finding.line == 0 ? fileName : fmt::format("{}:{}", fileName, finding.line);
    return fmt::format("{}: {}: {}", place, severity, finding.text);
}

const KeyPlace* BlockPlace::find(std::string_view key) const {
    const auto found = std::ranges::find(keys, key, &KeyPlace::key);
    return found == keys.end() ? nullptr : &*found;
}

} // namespace velmora::driver
