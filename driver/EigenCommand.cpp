#include "driver/EigenCommand.h"

#include "driver/CommandSupport.h"
#include "driver/ConsistentStart.h"
#include "driver/Diagnostics.h"
#include "driver/EigenSolver.h"
#include "driver/EigenTable.h"
#include "driver/LoadedModel.h"
#include "driver/Simulation.h"
#include "driver/StaticSolver.h"
#include "driver/Terminal.h"

#include <fmt/format.h>

#include <stdexcept>

namespace velmora::driver {

namespace {

/// A model with the state about which it is linearised.
class Study {
  public:
    Study(LoadedModel& loadedModel, const Options& userOptions)
        : loaded(loadedModel),
          options(userOptions),
          settings(makeSettings(userOptions, *loadedModel.file)),
          names(loadedModel.model.get(), loadedModel.file->dataModel.get()),
          system(loadedModel.model.get()),
          redundancy(&system, &names),
          state(loadedModel.model.get()) {}

    int run() {
        const int exitCode = goToState();
        return exitCode == Done ? findAndPrint() : exitCode;
    }

  private:
    int goToState();
    int goToStart();
    int goToRest();
    int goToTime(double time);
    int findAndPrint();
    int complain(int exitCode, const std::string& text) const {
        printToStandardError(exitCode == ModelHasErrors
                                 ? fmt::format("{}: error: {}\n", options.modelFile, text)
                                 : fmt::format("velmora: {}\n", text),
                             MessageKind::Error);
        return exitCode;
    }
    std::string describeFailure(StepResult result) const;

    LoadedModel& loaded;
    const Options& options;
    SimulationSettings settings;
    EquationNames names;
    HHTSystem system;
    Redundancy redundancy;
    HHTState state;
    std::string place; // in words
};

std::string Study::describeFailure(StepResult result) const {
    const Diagnostics diagnostics(&system, loaded.file->dataModel.get());
    return result == StepResult::NotFinite ? diagnostics.describeNotFinite()
                                           : diagnostics.describeSingularity();
}

int Study::goToState() {
    if (options.eigen.place == "static")
        return goToRest();
    double time = 0.0;
    if (options.eigen.place != "start")
        time = std::stod(options.eigen.place);
    return time > 0.0 ? goToTime(time) : goToStart();
}

int Study::goToStart() {
    place = "the start";
    for (const ScheduledChange& change : settings.changes)
        if (change.time <= 0.0)
            loaded.model->modifyModelElement(change.block.get());
    if (loaded.model->isErrorOccured())
        return ModelHasErrors;
    ConsistentStart start(&system, &names, &redundancy, settings);
    const StepResult result = start.run(state);
    if (result == StepResult::NotConverged)
        return complain(ModelHasErrors, start.getProblem());
    if (result != StepResult::Converged)
        return complain(SolverFailed, "At the start: " + describeFailure(result));
    return Done;
}

int Study::goToRest() {
    place = "the position at rest";
    StaticSolver solver(&system, &names, &redundancy, settings);
    const StepResult result = solver.run(state, 0.0);
    if (result != StepResult::Converged)
        return complain(solver.isModelAtFault() ? ModelHasErrors : SolverFailed, solver.getProblem());
    return Done;
}

int Study::goToTime(double time) {
    place = fmt::format("time {:.9g} s of the run", time);
    settings.endTime = time;
    Simulation simulation(loaded.model.get(), loaded.file->dataModel.get(), nullptr, settings);
    const RunOutcome outcome = simulation.run();
    if (!outcome.succeeded)
        return complain(outcome.isModelAtFault ? ModelHasErrors : SolverFailed, outcome.diagnostic);
    state = simulation.getState();
    StepResult result = system.evaluate(state) ? StepResult::Converged : StepResult::NotFinite;
    if (result == StepResult::Converged) {
        system.refreshJacobian(state);
        redundancy.leaveOutDependentEquations();
        result = system.solveForAccelerations(state);
    }
    if (result != StepResult::Converged)
        return complain(SolverFailed, fmt::format("Time {:.9g}: {}", time, describeFailure(result)));
    return Done;
}

int Study::findAndPrint() {
    warnOfRedundancy(redundancy.describe(), options.modelFile);
    const auto frame = options.eigen.frame == "body" ? PerturbationFrame::Body : PerturbationFrame::Global;
    try {
        const LinearEquations equations = Linearisation(&system, frame).compute(state);
        const EigenModes found = findModes(equations, {options.eigen.numOfModes, options.eigen.target});
        printModes(equations, found, place, *loaded.file->dataModel);
    } catch (const std::domain_error& error) {
        return complain(SolverFailed, fmt::format("There are no eigenvalues: {}.", error.what()));
    }
    return Done;
}

} // namespace

int findEigenvalues(const Options& options) {
    LoadedModel loaded = loadModel(options, false);
    if (!loaded.model)
        return loaded.exitCode;
    if (loaded.model->getNumOfBodies() == 0) {
        printToStandardError(
            fmt::format("{}: error: the model has no body: there is nothing that moves\n", options.modelFile),
            MessageKind::Error);
        return ModelHasErrors;
    }
    return Study(loaded, options).run();
}

} // namespace velmora::driver
