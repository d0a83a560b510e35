#include "driver/RunCommand.h"

#include "driver/CommandSupport.h"
#include "driver/LoadedModel.h"
#include "driver/MeasureTable.h"
#include "driver/Report.h"
#include "driver/RestartFile.h"
#include "driver/Simulation.h"
#include "driver/StopRequest.h"
#include "driver/Terminal.h"

#include <fmt/format.h>

#include <cstdio>
#include <filesystem>
#include <optional>
#include <span>

namespace velmora::driver {

namespace {

namespace fs = std::filesystem;

constexpr const char* tableEnding = ".csv";

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

/// A run with its files, from the loaded model to the summary.
class Run {
  public:
    Run(const Options& given, LoadedModel&& loadedModel)
        : options(given),
          loaded(std::move(loadedModel)),
          settings(makeSettings(options, *loaded.file)),
          identity(makeRunIdentity(*loaded.file, settings)),
          fileBase(loaded.output->getResultFileBase()),
          progress(settings.endTime, !options.isQuiet && isErrorOutputTerminal()) {}

    /// The program's exit code.
    int execute();

  private:
    bool takeUpFiles();
    bool openResults();
    RunOutcome simulate();
    void save(Simulation& simulation, double t);
    int finish(const RunOutcome& outcome);
    std::vector<std::string> getResultFiles() const;
    bool fail(const std::string& text, int code = WrongUsage);

    const Options& options;
    LoadedModel loaded;
    SimulationSettings settings;
    RunIdentity identity;
    std::string fileBase; // of result files
    ProgressLine progress;
    std::optional<RestartFile> restartPoint; // from which the run goes on
    std::unique_ptr<MBS_ResultFileManager> results;
    std::optional<MeasureTable> table;
    std::string restartFileName; // of the last restart point written
    int exitCode = Done;
};

int Run::execute() {
    if (!options.restartFile.empty()) {
        std::string error;
        restartPoint = readRestartFile(options.restartFile, error);
        if (!restartPoint) {
            fail(error);
            return exitCode;
        }
    }
    if (!(restartPoint ? takeUpFiles() : makeResultDirectory(loaded.output->directory)))
        return WrongUsage;
    if (!openResults())
        return exitCode;
    const RunOutcome outcome = simulate();
    progress.clear();
    return finish(outcome);
}

/// Tells what is wrong; false.
bool Run::fail(const std::string& text, int code) {
    printToStandardError(fmt::format("velmora: {}\n", text), MessageKind::Error);
    exitCode = code;
    return false;
}

/// Takes the result files back to where they were at the restart point, and has them appended to.
bool Run::takeUpFiles() {
    if (const std::string difference = describeDifference(restartPoint->identity, identity);
        !difference.empty())
        return fail(fmt::format("{} is of another run: {}", options.restartFile, difference));
    if (restartPoint->time > settings.endTime)
        return fail(fmt::format("{} is of the time {} s, and the end time is {} s", options.restartFile,
                                restartPoint->time, settings.endTime));
    const fs::path folder = fs::path(fileBase).parent_path();
    std::error_code error;
    for (const auto& [name, size] : restartPoint->results) {
        const auto present = fs::file_size(folder / name, error);
        const bool isOwn = name.starts_with(loaded.output->baseName) && fs::path(name).filename() == name;
        if (error || present < size || !isOwn)
            return fail(fmt::format("<{}> isn't the file that the run up to {} s has written: {}",
                                    (folder / name).string(), restartPoint->time,
                                    error   ? error.message()
                                    : isOwn ? std::string("it is too short")
                                            : std::string("it has another name")));
    }
    for (const auto& [name, size] : restartPoint->results) {
        fs::resize_file(folder / name, size, error);
        if (error)
            return fail(fmt::format("<{}> can't be written: {}", (folder / name).string(), error.message()));
        if (!name.ends_with(tableEnding))
            loaded.output->addResultKind(name.substr(name.rfind('.') + 1));
    }
    return true;
}

bool Run::openResults() {
    const auto block = makeResultBlock(*loaded.file, settings.endTime);
    results.reset(loaded.model->createResultFileManager(block.get()));
    if (loaded.model->isErrorOccured()) {
        exitCode = ModelHasErrors;
        return false;
    }
    if (results && results->isErrorOccured())
        return fail(results->getErrorString());
    if (loaded.file->isTableOfMeasuresWanted && loaded.model->getNumOfMeasures() > 0)
        table.emplace(loaded.model.get(), fileBase + tableEnding, restartPoint.has_value());
    return true;
}

RunOutcome Run::simulate() {
    const StopRequest stop;
    Simulation simulation(loaded.model.get(), loaded.file->dataModel.get(), results.get(), settings,
                          {.progress = [this](double t, double step) { progress.update(t, step); },
                           .record =
                               [this](double t) {
                                   if (table)
                                       table->write(t);
                               },
                           .save = [&](double t) { save(simulation, t); },
                           .isStopWanted = [&] { return stop.isMade(); }});
    if (!restartPoint)
        return simulation.run();
    MBS_History history(std::span<const double>(restartPoint->history));
    return simulation.resume(history);
}

void Run::save(Simulation& simulation, double t) {
    RestartFile file{t, identity, {}, {}};
    bool isWritten = (!results || results->flushAllResultFiles()) && (!table || table->flush());
    for (const std::string& name : getResultFiles()) {
        std::error_code error;
        file.results.push_back({fs::path(name).filename().string(), fs::file_size(name, error)});
        isWritten = isWritten && !error;
    }
    MBS_History history(&file.history);
    simulation.exchangeHistory(history);
    restartFileName = fileBase + ".restart";
    isWritten = isWritten && file.write(restartFileName);
    if (!isWritten && exitCode == Done)
        fail(fmt::format("<{}> can't be written", restartFileName));
}

std::vector<std::string> Run::getResultFiles() const {
    std::vector<std::string> files;
    for (const std::string& kind : loaded.output->resultKinds)
        files.push_back(fileBase + "." + kind);
    if (table)
        files.push_back(table->getFileName());
    return files;
}

int Run::finish(const RunOutcome& outcome) {
    results.reset();
    if (table && !table->close())
        fail(fmt::format("<{}> can't be written", table->getFileName()));
    if (outcome.isModelAtFault) {
        printToStandardError(fmt::format("{}: error: {}\n", options.modelFile, outcome.diagnostic),
                             MessageKind::Error);
        return ModelHasErrors;
    }
    warnOfRedundancy(outcome.start.redundantEquations, options.modelFile);
    if (!outcome.succeeded)
        fail(outcome.diagnostic, SolverFailed);
    if (outcome.isStopped)
        fail(fmt::format("stopped; --continue {} goes on", restartFileName),
             exitCode == Done ? Stopped : exitCode);
    std::vector<std::string> files = getResultFiles();
    if (!restartFileName.empty())
        files.push_back(restartFileName);
    if (!options.isQuiet)
        std::fputs(summarize(outcome, files).c_str(), stdout);
    return exitCode;
}

} // namespace

int runModel(const Options& options) {
    LoadedModel loaded = loadModel(options, true);
    if (!loaded.model)
        return loaded.exitCode;
    return Run(options, std::move(loaded)).execute();
}

} // namespace velmora::driver
