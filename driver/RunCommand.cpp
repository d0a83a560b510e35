#include "driver/RunCommand.h"

#include "driver/LoadedModel.h"
#include "driver/MeasureTable.h"
#include "driver/Redundancy.h"
#include "driver/Report.h"
#include "driver/Simulation.h"
#include "driver/Terminal.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>

namespace velmora::driver {

namespace {

SimulationSettings makeSettings(const Options& options, const ModelFile& file) {
    const SimulationSection& section = file.simulation;
    SimulationSettings settings;
    settings.endTime = options.endTime.value_or(section.endTime.value_or(0.0));
    settings.step = section.step;
    settings.fixedStep = section.fixedStep;
    settings.tolerance = section.tolerance;
    settings.alpha = section.alpha;
    settings.startCorrectionLimit = section.startCorrectionLimit;
    settings.refuseRedundant = section.refuseRedundant;
    for (const ModelChange& change : file.changes)
        settings.changes.push_back({change.time, change.block});
    settings.starts = file.starts;
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

/// The section [results] as the result manager reads it; a schedule lasts until the end time unless the
/// section says otherwise.
std::unique_ptr<IO_DataModelBlock> makeResultBlock(const ModelFile& file, double endTime) {
    auto block = std::make_unique<IO_DataModelBlock>("Results", "", "results", "");
    block->lineNumber = file.resultsLine;
    for (const auto& [key, value] : file.resultKeys)
        block->addKeyValue(key, value);
    const bool isScheduled =
        block->isKeyInBlock("OutputTimeStepSize") || block->isKeyInBlock("OutputTimeBegin");
    if (isScheduled && !block->isKeyInBlock("SimulationTimeEnd"))
        block->addKeyValue("SimulationTimeEnd", fmt::format("{}", endTime));
    return block;
}

std::vector<std::string> getResultFiles(const IO_OutputManager& output) {
    std::vector<std::string> files;
    for (const std::string& kind : output.resultKinds)
        files.push_back(output.getResultFileBase() + "." + kind);
    return files;
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

} // namespace

int runModel(const Options& options) {
    LoadedModel loaded = loadModel(options, true);
    if (!loaded.model)
        return loaded.exitCode;
    if (!makeResultDirectory(loaded.output->directory))
        return WrongUsage;
    const SimulationSettings settings = makeSettings(options, *loaded.file);
    const auto resultBlock = makeResultBlock(*loaded.file, settings.endTime);
    std::unique_ptr<MBS_ResultFileManager> results(loaded.model->createResultFileManager(resultBlock.get()));
    if (loaded.model->isErrorOccured())
        return ModelHasErrors;
    if (results && results->isErrorOccured()) {
        printToStandardError(fmt::format("velmora: {}\n", results->getErrorString()), MessageKind::Error);
        return WrongUsage;
    }
    std::optional<MeasureTable> table;
    if (loaded.file->isTableOfMeasuresWanted && loaded.model->getNumOfMeasures() > 0)
        table.emplace(loaded.model.get(), loaded.output->getResultFileBase() + ".csv");
    ProgressLine progress(settings.endTime, !options.isQuiet && isErrorOutputTerminal());
    const RunOutcome outcome = Simulation(
                                   loaded.model.get(), loaded.file->dataModel.get(), results.get(), settings,
                                   [&](double t, double step) { progress.update(t, step); },
                                   [&](double t) {
                                       if (table)
                                           table->write(t);
                                   })
                                   .run();
    progress.clear();
    results.reset();
    if (table && !table->close()) {
        printToStandardError(fmt::format("velmora: <{}> can't be written\n", table->getFileName()),
                             MessageKind::Error);
        return WrongUsage;
    }
    if (outcome.isModelAtFault) {
        printToStandardError(fmt::format("{}: error: {}\n", options.modelFile, outcome.diagnostic),
                             MessageKind::Error);
        return ModelHasErrors;
    }
    warnOfRedundancy(outcome.start.redundantEquations, options.modelFile);
    if (!outcome.succeeded)
        printToStandardError(fmt::format("velmora: {}\n", outcome.diagnostic), MessageKind::Error);
    std::vector<std::string> files = getResultFiles(*loaded.output);
    if (table)
        files.push_back(table->getFileName());
    if (!options.isQuiet)
        std::fputs(summarize(outcome, files).c_str(), stdout);
    return outcome.succeeded ? Done : SolverFailed;
}

} // namespace velmora::driver
