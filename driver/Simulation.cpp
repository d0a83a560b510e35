#include "driver/Simulation.h"

#include "driver/ConsistentStart.h"
#include "driver/EnergyBalance.h"
#include "driver/HHTIntegrator.h"
#include "driver/RunFailures.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace velmora::driver {

namespace {

// Control of the step: the local error is of third order in it.
constexpr double safety = 0.9;
constexpr double largestGrowth = 2.0;
constexpr double smallestShrinking = 0.2;
constexpr double worthwhileGrowth = 1.3; // below it the step, and with it the matrix, stays
constexpr double stepRatioAfterFailure = 0.25;
constexpr double smallestStepShare = 1.0e-11; // of the end time; shorter ones lead nowhere
constexpr double largestStepShare = 0.1;
constexpr double largestViolation = 1.0e-4; // of redundant equations, in radii of gyration and radians
constexpr double sameTime = 1.0e-9;         // of a step: times nearer than this are one

std::string findErrorInSettings(const SimulationSettings& settings) {
    if (!(settings.endTime > 0.0) || !std::isfinite(settings.endTime))
        return fmt::format("The end time must be positive, and is {}.", settings.endTime);
    if (!(settings.step > 0.0) || !std::isfinite(settings.step))
        return fmt::format("The step must be positive, and is {}.", settings.step);
    if (!(settings.tolerance > 0.0) || !std::isfinite(settings.tolerance))
        return fmt::format("The tolerance must be positive, and is {}.", settings.tolerance);
    if (!(settings.alpha >= -1.0 / 3.0 && settings.alpha <= 0.0))
        return fmt::format("alpha must lie in [-1/3, 0], and is {}.", settings.alpha);
    if (!settings.fixedStep && settings.alpha > weakestDamping)
        return fmt::format("With steps of controlled length alpha must not exceed {}, and is {}: nearer to 0 "
                           "nothing damps the oscillations of the constraint forces. Fixed steps take it.",
                           weakestDamping, settings.alpha);
    return {};
}

} // namespace

class Simulation::Impl {
  public:
    Impl(MBS_Model* multibodyModel, IO_DataModel* input, MBS_ResultFileManager* resultFiles,
         const SimulationSettings& simulationSettings, SimulationHooks calls)
        : model(multibodyModel),
          dataModel(input),
          results(resultFiles),
          settings(simulationSettings),
          hooks(std::move(calls)) {}

    /// From a history, or from the initial state if there is none.
    RunOutcome run(MBS_History* history);
    void exchangeHistory(MBS_History& history);
    const HHTState& getState() const { return integrator->getState(); }

  private:
    struct Plan {
        double endTime, length;
        bool isCut; // shorter than accuracy asks for
    };

    std::string findErrorBeforeStart() const;
    bool start();
    bool takeUp(MBS_History& history);
    bool advance();
    Plan planStep() const;
    Plan planFixedStep() const;
    bool isAccurate(const Plan& plan);
    bool retreat(StepResult result, const Plan& plan);
    void adaptStep(const Plan& plan);
    void finishStep(const Plan& plan);
    bool applyChanges();
    bool beginAnew(double length);
    void writeResults();
    void stopOrSave(double timeBefore);
    bool fail(StepResult result, const HHTState& state, double length);
    bool fail(std::string text);
    bool chooseOtherEquations(double length);
    void collectStatistics();

    double getLongestStep() const {
        return std::min(settings.longestStep, largestStepShare * settings.endTime);
    }

    MBS_Model* model;               // not owned
    IO_DataModel* dataModel;        // not owned
    MBS_ResultFileManager* results; // not owned
    SimulationSettings settings;
    SimulationHooks hooks;
    std::unique_ptr<HHTSystem> system;
    std::unique_ptr<EquationNames> names;
    std::unique_ptr<Redundancy> redundancy;
    std::unique_ptr<RunFailures> failures;
    std::unique_ptr<HHTIntegrator> integrator;
    std::unique_ptr<EnergyBalance> balance;
    RunOutcome outcome;
    double wantedStep = 0.0;
    bool hasJustFailed = false;
    std::size_t numOfChangesDone = 0;
    bool hasChosenOthers = false; // equations to leave out, since the last accepted step
};

RunOutcome Simulation::Impl::run(MBS_History* history) {
    const auto begin = std::chrono::steady_clock::now();
    outcome = RunOutcome();
    outcome.diagnostic = findErrorBeforeStart();
    if (outcome.diagnostic.empty()) {
        system = std::make_unique<HHTSystem>(model);
        names = std::make_unique<EquationNames>(model, dataModel);
        redundancy = std::make_unique<Redundancy>(system.get(), names.get());
        failures = std::make_unique<RunFailures>(system.get(), names.get(), redundancy.get(), dataModel);
        integrator = std::make_unique<HHTIntegrator>(system.get(), settings);
        balance = std::make_unique<EnergyBalance>(system.get(), dataModel);
        outcome.succeeded = (history ? takeUp(*history) : start()) && advance();
        collectStatistics();
    }
    outcome.wallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return outcome;
}

std::string Simulation::Impl::findErrorBeforeStart() const {
    if (model->isErrorOccured())
        return "The model has errors.";
    if (model->getNumOfBodies() == 0)
        return "The model has no bodies: there is nothing to simulate.";
    if (results && results->isErrorOccured())
        return results->getErrorString();
    return findErrorInSettings(settings);
}

bool Simulation::Impl::start() {
    if (!applyChanges())
        return false;
    ConsistentStart consistentStart(system.get(), names.get(), redundancy.get(), settings);
    StepResult result = consistentStart.run(integrator->getState());
    outcome.start = consistentStart.getReport();
    if (result == StepResult::NotConverged) {
        outcome.diagnostic = consistentStart.getProblem();
        outcome.isModelAtFault = true;
        return false;
    }
    if (result == StepResult::Converged)
        result = integrator->start(settings.step);
    if (result != StepResult::Converged)
        return fail(result, integrator->getState(), settings.step);
    wantedStep = std::min(settings.step, getLongestStep());
    balance->start(integrator->getState());
    writeResults();
    return true;
}

bool Simulation::Impl::takeUp(MBS_History& history) {
    exchangeHistory(history);
    if (outcome.diagnostic.empty() && !(history.isWhole() && outcome.timeReached > 0.0 && wantedStep > 0.0))
        outcome.diagnostic = "The restart point isn't one of this model.";
    if (!outcome.diagnostic.empty()) {
        outcome.isModelAtFault = true;
        return false;
    }
    outcome.timeOfResumption = outcome.timeReached;
    outcome.start.redundantEquations = redundancy->describe();
    const HHTState& state = integrator->getState();
    model->setTimeOfLastSuccessfulStep(state.time);
    return system->evaluate(state) || fail(StepResult::NotFinite, state, wantedStep);
}

/// What has its own order: changes make the model whose history follows, and equations are left out of the
/// matrix that follows.
void Simulation::Impl::exchangeHistory(MBS_History& history) {
    double endTime = settings.endTime;
    for (double* number :
         {&outcome.timeReached, &outcome.largestStep, &outcome.smallestStep, &wantedStep, &endTime})
        history.exchange(*number);
    history.exchange(outcome.steps);
    history.exchange(outcome.rejectedSteps);
    history.exchange(outcome.start.degreesOfFreedom);
    history.exchange(hasJustFailed);
    if (history.isTakingBack() && !applyChanges())
        return;
    redundancy->exchangeHistory(history);
    integrator->exchangeHistory(history);
    system->exchangeHistory(history);
    balance->exchangeHistory(history);
    model->exchangeHistory(&history);
    if (results)
        results->exchangeHistory(&history);
    if (results && endTime != settings.endTime)
        results->skipOutputUntil(outcome.timeReached);
}

/// Whether the run is stopped here, and restart points.
void Simulation::Impl::stopOrSave(double timeBefore) {
    const auto countPoints = [this](double t) {
        return std::floor((t + sameTime * settings.step) / settings.restartInterval);
    };
    const double t = outcome.timeReached;
    const bool isDue = std::isfinite(settings.restartInterval) &&
                       (t >= settings.endTime || countPoints(t) > countPoints(timeBefore));
    outcome.isStopped = t < settings.endTime && hooks.isStopWanted && hooks.isStopWanted();
    if (hooks.save && (isDue || outcome.isStopped))
        hooks.save(t);
}

bool Simulation::Impl::advance() {
    while (outcome.timeReached < settings.endTime && !outcome.isStopped) {
        const double timeBefore = outcome.timeReached;
        const Plan plan = settings.fixedStep ? planFixedStep() : planStep();
        StepResult result = integrator->tryStep(plan.endTime, plan.length);
        if (result != StepResult::Converged) {
            if (!retreat(result, plan))
                return false;
            continue;
        }
        if (!settings.fixedStep && !isAccurate(plan)) {
            if (wantedStep < smallestStepShare * settings.endTime)
                return fail(
                    failures->describeInaccuracy(integrator->getLocalError(), plan.endTime, plan.length));
            continue;
        }
        result = integrator->accept();
        if (result != StepResult::Converged)
            return fail(result, integrator->getState(), plan.length);
        if (const auto violation = redundancy->findViolationOfLeftOut();
            violation.size > std::max(largestViolation, settings.tolerance))
            return fail(failures->describe(violation, integrator->getState().time));
        finishStep(plan);
        const std::size_t before = numOfChangesDone;
        if (!applyChanges() || (numOfChangesDone > before && !beginAnew(wantedStep)))
            return false;
        stopOrSave(timeBefore);
    }
    return true;
}

/// What is due by now; false if the model can't take it.
bool Simulation::Impl::applyChanges() {
    const double now = outcome.timeReached + sameTime * settings.step;
    for (; numOfChangesDone < settings.changes.size(); ++numOfChangesDone) {
        const ScheduledChange& change = settings.changes[numOfChangesDone];
        if (change.time > now)
            return true;
        model->modifyModelElement(change.block.get());
        if (!model->isErrorOccured())
            continue;
        outcome.diagnostic = fmt::format("Time {:.9g}: The change of <{}> can't be made:{}",
                                         outcome.timeReached, change.block->uuid, model->getErrorString());
        return false;
    }
    return true;
}

/// Accelerations and multipliers jump where the model changes.
bool Simulation::Impl::beginAnew(double length) {
    HHTState& state = integrator->getState();
    StepResult result = system->solveForAccelerations(state);
    if (result == StepResult::Converged)
        result = integrator->start(length);
    if (result != StepResult::Converged)
        return fail(result, state, length);
    balance->takeUp(state);
    return true;
}

Simulation::Impl::Plan Simulation::Impl::planFixedStep() const {
    // Times are multiples of the step, so that rounding doesn't add up.
    const double h = settings.step;
    const double t = outcome.timeReached;
    const double count = std::round(t / h);
    // A run that is prolonged may go on after a step that its first end had shortened.
    const bool isBetween = std::fabs(t - count * h) > sameTime * h;
    const double next = isBetween ? std::ceil(t / h) * h : (count + 1.0) * h;
    if (next < settings.endTime - sameTime * h)
        return {next, isBetween ? next - t : h, isBetween};
    const double rest = settings.endTime - t;
    const bool isWhole = std::fabs(rest - h) <= sameTime * h;
    return {settings.endTime, isWhole ? h : rest, !isWhole};
}

Simulation::Impl::Plan Simulation::Impl::planStep() const {
    const double t = outcome.timeReached;
    const double shortest = smallestStepShare * settings.endTime;
    double target = settings.endTime;
    const double nextOutput = results ? results->getNextOutputTime() : -1.0;
    // Rounding may put the last output just before the end; a step between them would be all rounding.
    if (nextOutput > t + shortest && nextOutput < target - shortest)
        target = nextOutput;
    if (numOfChangesDone < settings.changes.size())
        target = std::min(target, std::max(settings.changes[numOfChangesDone].time, t + shortest));
    const double rest = target - t;
    if (wantedStep >= rest * (1.0 - sameTime))
        return {target, rest, rest < wantedStep};
    if (2.0 * wantedStep > rest) // two equal steps, so that no tiny one is left
        return {t + 0.5 * rest, 0.5 * rest, true};
    return {t + wantedStep, wantedStep, false};
}

bool Simulation::Impl::retreat(StepResult result, const Plan& plan) {
    ++outcome.rejectedSteps;
    hasJustFailed = true;
    wantedStep = stepRatioAfterFailure * plan.length;
    if (!settings.fixedStep && wantedStep >= smallestStepShare * settings.endTime)
        return true;
    if (result == StepResult::NotFinite || !chooseOtherEquations(plan.length))
        return fail(result, integrator->getTrialState(), plan.length);
    wantedStep = std::min(settings.step, getLongestStep());
    return true;
}

/// Where the equations that were left out are needed, others may say what those at hand don't say any more.
bool Simulation::Impl::chooseOtherEquations(double length) {
    if (hasChosenOthers || system->getLeftOut().empty())
        return false;
    hasChosenOthers = true;
    HHTState& state = integrator->getState();
    const unsigned rank = redundancy->getRank();
    if (!system->evaluate(state))
        return false;
    system->refreshJacobian(state);
    Redundancy others(system.get(), names.get());
    if (!others.leaveOutDependentEquations(nearlySameEquation) || others.getRank() != rank)
        return false;
    *redundancy = others;
    return system->solveForAccelerations(state) == StepResult::Converged &&
           integrator->start(length) == StepResult::Converged;
}

bool Simulation::Impl::isAccurate(const Plan& plan) {
    const double error = integrator->getLocalError();
    if (error <= 1.0)
        return true;
    ++outcome.rejectedSteps;
    hasJustFailed = true;
    wantedStep = plan.length * std::max(smallestShrinking, safety / std::cbrt(error));
    return false;
}

void Simulation::Impl::adaptStep(const Plan& plan) {
    const double ratio = safety / std::cbrt(std::max(integrator->getLocalError(), 1.0e-12));
    const double proposal = std::min(ratio, largestGrowth) * plan.length;
    if (ratio * plan.length < wantedStep)
        wantedStep = ratio * plan.length;
    else if (proposal > worthwhileGrowth * wantedStep && !hasJustFailed)
        wantedStep = proposal;
    wantedStep = std::min(wantedStep, getLongestStep());
    hasJustFailed = false;
}

void Simulation::Impl::finishStep(const Plan& plan) {
    const HHTState& state = integrator->getState();
    ++outcome.steps;
    hasChosenOthers = false;
    outcome.timeReached = state.time;
    outcome.largestStep = std::max(outcome.largestStep, plan.length);
    if (!plan.isCut)
        outcome.smallestStep =
            outcome.smallestStep > 0.0 ? std::min(outcome.smallestStep, plan.length) : plan.length;
    model->setTimeOfLastSuccessfulStep(state.time);
    balance->addStep(state);
    writeResults();
    if (!settings.fixedStep)
        adaptStep(plan);
    if (hooks.progress)
        hooks.progress(state.time, plan.length);
}

void Simulation::Impl::writeResults() {
    HHTState& state = integrator->getState();
    const bool isDue =
        results && results->writeResultsToFile(state.time, &state.q, &state.qd, &state.qdd, &state.lambda);
    if (isDue && hooks.record)
        hooks.record(state.time);
}

bool Simulation::Impl::fail(StepResult result, const HHTState& state, double length) {
    const HHTState* last = outcome.steps > 0 ? &integrator->getState() : nullptr;
    return fail(failures->describe(result, state, last, length));
}

bool Simulation::Impl::fail(std::string text) {
    outcome.diagnostic = std::move(text);
    return false;
}

void Simulation::Impl::collectStatistics() {
    outcome.newtonIterations = integrator->getNumOfNewtonIterations();
    outcome.factorisations = system->getSolver().getNumOfFactorisations();
    outcome.refactorisations = system->getSolver().getNumOfRefactorisations();
    outcome.kernelSeconds = system->getKernelSeconds();
    balance->report(outcome);
}

Simulation::Simulation(MBS_Model* model, IO_DataModel* dataModel, MBS_ResultFileManager* results,
                       const SimulationSettings& settings, SimulationHooks hooks)
    : impl(std::make_unique<Impl>(model, dataModel, results, settings, std::move(hooks))) {}

Simulation::~Simulation() = default;

const HHTState& Simulation::getState() const {
    return impl->getState();
}

RunOutcome Simulation::run() {
    return impl->run(nullptr);
}

RunOutcome Simulation::resume(MBS_History& history) {
    return impl->run(&history);
}

void Simulation::exchangeHistory(MBS_History& history) {
    impl->exchangeHistory(history);
}

} // namespace velmora::driver
