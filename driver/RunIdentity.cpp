#include "driver/RunIdentity.h"

#include "driver/ModelContents.h"
#include "driver/SimulationSettings.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace velmora::driver {

namespace {

constexpr const char* fingerprintMark = "#";
constexpr unsigned long long prime = 0x100000001b3;

/// Type, names, keys and values. A file has its name without the folder of the model file, which depends on
/// the working directory.
std::string describe(const IO_DataModelBlock& block) {
    Fingerprint fingerprint;
    const std::string folder = block.baseDirectory + "/";
    for (const std::string* text : {&block.type, &block.uuid, &block.label})
        fingerprint.add(*text);
    for (std::size_t i = 0; i < block.keys.size(); ++i) {
        fingerprint.add(block.keys[i]);
        fingerprint.add(block.values[i].starts_with(folder) ? block.values[i].substr(folder.size())
                                                            : block.values[i]);
    }
    return fmt::format("{}{}", fingerprintMark, fingerprint.getText());
}

std::string describe(const BodyStart& start) {
    Fingerprint fingerprint;
    for (const auto* numbers : {&start.position, &start.eulerParameters, &start.modalCoordinates,
                                &start.velocity, &start.omega, &start.modalRates})
        fingerprint.add(fmt::format("{}", *numbers));
    return fmt::format("{}{}", fingerprintMark, fingerprint.getText());
}

std::string toFlag(bool flag) {
    return flag ? "true" : "false";
}

} // namespace

void Fingerprint::add(const std::string& text) {
    const auto addByte = [this](unsigned char byte) { number = (number ^ byte) * prime; };
    std::ranges::for_each(text, addByte);
    addByte(0);
}

std::string Fingerprint::getText() const {
    return fmt::format("{:016x}", number);
}

RunIdentity makeRunIdentity(const ModelFile& file, const SimulationSettings& settings) {
    RunIdentity identity = {{"step", fmt::format("{}", settings.step)},
                            {"fixed_step", toFlag(settings.fixedStep)},
                            {"tolerance", fmt::format("{}", settings.tolerance)},
                            {"alpha", fmt::format("{}", settings.alpha)},
                            {"max_step", fmt::format("{}", settings.longestStep)},
                            {"redundant", settings.refuseRedundant ? "error" : "drop"},
                            {"csv", toFlag(file.isTableOfMeasuresWanted)}};
    identity.insert(identity.end(), file.resultKeys.begin(), file.resultKeys.end());
    for (const auto& block : file.dataModel->blocks)
        identity.emplace_back(block->kind + " " + (block->label.empty() ? block->uuid : block->label),
                              describe(*block));
    for (const ScheduledChange& change : settings.changes)
        identity.emplace_back(fmt::format("Change of {} at {} s", change.block->uuid, change.time),
                              describe(*change.block));
    for (const BodyStart& start : settings.starts)
        identity.emplace_back("Start of " + start.uuid, describe(start));
    return identity;
}

std::string describeDifference(const RunIdentity& before, const RunIdentity& now) {
    const auto [was, is] = std::ranges::mismatch(before, now);
    if (was == before.end() && is == now.end())
        return {};
    if (was == before.end())
        return fmt::format("<{}> is new", is->first);
    if (is == now.end())
        return fmt::format("<{}> is missing now", was->first);
    if (was->first != is->first)
        return fmt::format("<{}> stands where <{}> was", is->first, was->first);
    if (is->second.starts_with(fingerprintMark))
        return fmt::format("<{}> has changed", is->first);
    return fmt::format("<{}> was {} and is {} now", is->first, was->second, is->second);
}

} // namespace velmora::driver
