#include "driver/RunCommand.h"

#include "driver/CommandSupport.h"
#include "driver/LoadedModel.h"
#include "driver/MeasureTable.h"
#include "driver/Report.h"
#include "driver/Simulation.h"
#include "driver/Terminal.h"

#include <fmt/format.h>

#include <cstdio>
#include <optional>

namespace velmora::driver {

namespace {

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
