#include "driver/StaticSolver.h"

#include "driver/ConsistentStart.h"
#include "driver/Stability.h"
#include "driver/StateMeasures.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

// From the start to the end of a search; how its steps are made stands in StaticSolver_Descent.cpp.

namespace velmora::driver {

namespace {

constexpr double largestTimeMovement = 0.5; // of a step in time, in typical lengths and radians
constexpr unsigned maxEscapes = 20;
constexpr double escape = 0.02;        // in typical lengths and radians
constexpr double contradiction = 1e-6; // of an equation left out, in radii of gyration and radians
constexpr unsigned numOfTimeSteps = 50;
constexpr double smallestTimeStep = 1e-6; // share of the time
constexpr unsigned numOfNamedResiduals = 3;
constexpr double negligibleShare = 1e-9; // of the largest residual: rounding

double* data(MBS_ModelPhysicalDofVector& vector) {
    return vector.dofVector->data;
}

void stopMotion(HHTState& state) {
    std::fill_n(data(state.qd), state.qd.getNumOfDof(), 0.0);
    std::fill_n(data(state.qdd), state.qdd.getNumOfDof(), 0.0);
}

double getMean(const std::vector<double>& values) {
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

} // namespace

StaticSolver::StaticSolver(HHTSystem* equations, const EquationNames* equationNames,
                           Redundancy* dependentEquations, const SimulationSettings& simulationSettings)
    : system(equations),
      names(equationNames),
      redundancy(dependentEquations),
      settings(simulationSettings),
      q0(equations->getModel()),
      direction(equations->getModel()),
      work(equations->getModel()),
      before(equations->getModel()),
      noForces(equations->getModel()),
      noViolation(equations->getModel()),
      trial(equations->getModel()),
      best(equations->getModel()) {
    settings.positionsOnly = true;
    std::fill_n(data(noForces), noForces.getNumOfDof(), 0.0);
    std::fill_n(noViolation.dofVector->data, noViolation.getNumOfConstraints(), 0.0);
}

StepResult StaticSolver::run(HHTState& state, double time) {
    report = {};
    problem.clear();
    StepResult result = applyChanges(time);
    if (result == StepResult::Converged)
        result = start(state);
    if (result == StepResult::Converged) {
        result = moveToTime(state, time);
        if (result == StepResult::Converged)
            result = balance(state);
        if (result == StepResult::Converged)
            result = search(state);
        if (result == StepResult::Converged)
            result = leaveUnstable(state);
        reportMovement(state);
    }
    if (result == StepResult::Converged)
        return checkLeftOut();
    if (problem.empty())
        problem = result == StepResult::NotFinite
                      ? "A force or a joint gives values that aren't finite on the way to the equilibrium."
                      : "The equations have no unique solution at a position on the way to the equilibrium.";
    return result;
}

StepResult StaticSolver::refuse(std::string text) {
    problem = std::move(text);
    return StepResult::NotConverged;
}

/// What the model file changes until the time.
StepResult StaticSolver::applyChanges(double time) {
    MBS_Model* model = system->getModel();
    for (const ScheduledChange& change : settings.changes) {
        if (change.time > time)
            break;
        model->modifyModelElement(change.block.get());
        modelIsAtFault = model->isErrorOccured();
        if (modelIsAtFault)
            return refuse(fmt::format("The change of <{}> at time {:.9g} can't be made:{}",
                                      change.block->uuid, change.time, model->getErrorString()));
    }
    return StepResult::Converged;
}

StepResult StaticSolver::start(HHTState& state) {
    ConsistentStart consistentStart(system, names, redundancy, settings);
    const StepResult result = consistentStart.run(state);
    report.start = consistentStart.getReport();
    if (result == StepResult::NotConverged) {
        modelIsAtFault = true;
        return refuse(consistentStart.getProblem());
    }
    stopMotion(state);
    q0 = state.q;
    typicalLength = system->measureTypicalLength(q0);
    typicalMass = getMean(system->bodyMasses);
    return result;
}

// Driven joints may go far until the time; they are followed in steps that are small for them.
StepResult StaticSolver::moveToTime(HHTState& state, double time) {
    double step = time / numOfTimeSteps;
    while (state.time < time) {
        trial = state;
        trial.time = state.time + step < time ? state.time + step : time;
        const StepResult result = fulfilConstraints(trial, 0.0);
        for (unsigned i = 0; i < q0.getNumOfDof(); ++i)
            data(direction)[i] = data(trial.q)[i] - data(state.q)[i];
        if (result == StepResult::Converged &&
            measureMovement(*system, data(direction), typicalLength) <= largestTimeMovement) {
            state = trial;
            continue;
        }
        step *= 0.5;
        if (step < smallestTimeStep * time)
            return refuse(
                fmt::format("The driven joints can't be moved beyond the time {:.6g} s.", state.time));
    }
    return StepResult::Converged;
}

/// Steps as long as the model first. Where they find nothing they may have leapt over a contact or the like;
/// steps as long as the bodies then.
StepResult StaticSolver::search(HHTState& state) {
    const HHTState begin = state;
    stepUnit = typicalLength;
    const StepResult result = descend(state, 0.0);
    if (result != StepResult::NotConverged)
        return result;
    const HHTState end = state;
    const std::string firstProblem = problem;
    const StaticReport firstReport = report;
    state = begin;
    report.iterations = 0;
    report.translation = {};
    for (const double gyration : system->bodyGyrations)
        stepUnit = gyration > 0.0 ? std::min(stepUnit, gyration) : stepUnit;
    const bool isFound =
        balance(state) == StepResult::Converged && descend(state, 0.0) == StepResult::Converged;
    problem = isFound ? std::string() : firstProblem;
    if (isFound)
        return StepResult::Converged;
    report = firstReport;
    state = end;
    return StepResult::NotConverged;
}

/// Walks off from an equilibrium that isn't stable, and down again. A start in balance is kept.
StepResult StaticSolver::leaveUnstable(HHTState& state) {
    const bool isStart = report.iterations == 0;
    for (unsigned i = 0; i < maxEscapes && growthToLookAt > 0.0; ++i) {
        const Instability instability = findInstability(*system, state, growthToLookAt, direction);
        report.growth = instability.growth;
        if (!instability.isFound || isStart)
            return balance(state);
        const double size = measureMovement(*system, data(direction), typicalLength);
        HHTState other = state;
        for (unsigned k = 0; k < q0.getNumOfDof(); ++k)
            data(other.q)[k] += escape / size * data(direction)[k];
        const bool isOther = fulfilConstraints(other, 0.5 / instability.growth) == StepResult::Converged &&
                             balance(other) == StepResult::Converged &&
                             descend(other, 2.0 * instability.growth) == StepResult::Converged;
        problem.clear();
        if (!isOther)
            return balance(state);
        for (unsigned k = 0; k < q0.getNumOfDof(); ++k)
            data(direction)[k] = data(other.q)[k] - data(state.q)[k];
        if (measureMovement(*system, data(direction), typicalLength) < escape) {
            report.growth = 0.0; // it comes back: the derivatives of some forces aren't complete
            return balance(state);
        }
        state = other;
    }
    return balance(state);
}

StepResult StaticSolver::checkLeftOut() {
    const auto violation = redundancy->findViolationOfLeftOut();
    if (violation.size <= contradiction)
        return StepResult::Converged;
    return refuse(fmt::format("{} was left out at the start, since it repeated other equations there, but "
                              "isn't fulfilled at the equilibrium of the others: it is off by {:.3g} radii "
                              "of gyration or rad.",
                              names->getShortName(violation.equation), violation.size));
}

StepResult StaticSolver::refuseWithResiduals(const std::string& text) {
    const double* R = data(system->residual);
    std::vector<unsigned> rows(q0.getNumOfDof());
    std::iota(rows.begin(), rows.end(), 0U);
    const auto numOfRows = std::min<std::ptrdiff_t>(numOfNamedResiduals, std::ssize(rows));
    std::partial_sort(rows.begin(), rows.begin() + numOfRows, rows.end(),
                      [&](unsigned a, unsigned b) { return std::fabs(R[a]) > std::fabs(R[b]); });
    std::vector<std::string> largest;
    for (std::ptrdiff_t i = 0; i < numOfRows; ++i)
        if (const unsigned row = rows[static_cast<std::size_t>(i)];
            std::fabs(R[row]) > negligibleShare * std::fabs(R[rows.front()]))
            largest.push_back(fmt::format("{} ({:.3g})", names->getName(row), R[row]));
    return refuse(fmt::format("{} Largest forces without balance: {}.", text,
                              joinShortly(largest, numOfNamedResiduals)));
}

void StaticSolver::reportMovement(const HHTState& state) {
    report.translation = report.rotation = {};
    const auto take = [&](StartReport::Largest& largest, double size, unsigned body) {
        if (size > largest.size)
            largest = {size, names->getBodyName(body)};
    };
    std::vector<double> change;
    for (unsigned body = 0; body < q0.bodyOffset.size(); ++body) {
        const double *from = q0.bodyData(body), *to = state.q.bodyData(body);
        change.resize(q0.bodyDof[body]->size);
        std::transform(to, to + change.size(), from, change.begin(), std::minus<>());
        take(report.translation, getPointMovement(*system, body, change.data()), body);
        take(report.rotation, getAngleBetween(from + 3, to + 3), body);
    }
}

} // namespace velmora::driver
