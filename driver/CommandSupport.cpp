#include "driver/CommandSupport.h"

#include "driver/ModelContents.h"
#include "driver/Redundancy.h"
#include "driver/Terminal.h"

#include <fmt/format.h>

#include <filesystem>

namespace velmora::driver {

SimulationSettings makeSettings(const Options& options, const ModelFile& file) {
    const SimulationSection& section = file.simulation;
    SimulationSettings settings;
    settings.endTime = options.endTime.value_or(section.endTime.value_or(0.0));
    settings.step = section.step;
    settings.fixedStep = section.fixedStep;
    settings.tolerance = section.tolerance;
    settings.alpha = section.alpha;
    if (section.maxStep)
        settings.longestStep = *section.maxStep;
    settings.startCorrectionLimit = section.startCorrectionLimit;
    settings.refuseRedundant = section.refuseRedundant;
    for (const ModelChange& change : file.changes)
        settings.changes.push_back({change.time, change.block});
    settings.starts = file.starts;
    if (options.restartInterval)
        settings.restartInterval = *options.restartInterval;
    return settings;
}

bool makeResultDirectory(const std::string& directory) {
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (!error && std::filesystem::is_directory(directory))
        return true;
    printToStandardError(fmt::format("velmora: the results folder <{}> can't be made{}{}\n", directory,
                                     error ? ": " : "", error ? error.message() : std::string()),
                         MessageKind::Error);
    return false;
}

void warnOfRedundancy(const std::vector<std::string>& equations, const std::string& modelFile) {
    if (equations.empty())
        return;
    printToStandardError(
        fmt::format("{}: warning: {} redundant constraint equation{} left out and carr{} no force: {}\n",
                    modelFile, equations.size(), equations.size() == 1 ? " is" : "s are",
                    equations.size() == 1 ? "ies" : "y", joinShortly(equations, numOfNamedEquations)),
        MessageKind::Warning);
}

std::string toCsvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string field = "\"";
    for (const char c : text)
        field.append(c == '"' ? 2 : 1, c);
    return field + "\"";
}

} // namespace velmora::driver
