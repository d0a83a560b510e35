#include "driver/StaticSolver.h"

#include "driver/ConsistentStart.h"
#include "driver/Stability.h"
#include "driver/StateMeasures.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

// Notation: R = Cq' lambda - F(q, t), K = dR/dq, M the mass matrix, s the shift.
//
// (1)  multipliers nearest to balance, in the metric of M: M a + Cq' lambda = F, Cq a = 0
// (2)  step d of the descent: | K + s M  Cq' | | d   |     | R |
//                             | Cq       0   | | dmu | = - | C |
//      an implicit step of length 1/s along M dq/dtau = -R, the pseudo-transient continuation of Kelley and
//      Keyes, SIAM J. Numer. Anal. 35 (1998): small steps go downhill whatever K is, and Newton's method
//      results as s goes to 0. The shift keeps free turns, which have no stiffness, in place.
// (3)  after a step: positions nearest in the metric of K + s M with C = 0, so that stiff deformations don't
//      take up what the step has left of C; then (1)
//
// The descent has no potential to look at, as forces are any expressions. It asks instead that the forces at
// the end of a step don't pull back along the step by more than half of what they pulled forward at its
// begin: then their work along the step is positive.

namespace velmora::driver {

namespace {

constexpr unsigned maxSteps = 2000;
constexpr unsigned maxProjections = 20;
constexpr double negligible = 1e-12; // movements, in typical lengths and radians
constexpr double noise = 1e-6;       // movements below it may be rounding
constexpr double projectionNoise = 1e-9;
constexpr double noiseContraction = 0.3;
constexpr double balanced = 1e-9;        // forces that nothing balances, as a share of the largest
constexpr double largestMovement = 0.5;  // of a step
constexpr double hopelessMovement = 1e4; // typical lengths: nothing stops the body
constexpr double leastWork = 0.5;        // of a step, twice over the residual times the step at its begin
constexpr double goodPrediction = 0.25, badPrediction = 0.75;
constexpr double smallestShiftShare = 1e-5, largestShiftGrowth = 1e12;
constexpr double firstShiftShare = 1e-8, roundingOfShift = 1e-13; // of the largest stiffness over inertia
constexpr double roundingOfPlaces = 1e-15;                        // in typical lengths
constexpr unsigned maxEscapes = 20;
constexpr double escape = 0.02; // in typical lengths and radians
constexpr unsigned maxIdleSteps = 8;
constexpr double contradiction = 1e-6; // of an equation left out, in radii of gyration and radians
constexpr unsigned numOfTimeSteps = 50;
constexpr double smallestTimeStep = 1e-6; // share of the time
constexpr unsigned numOfNamedResiduals = 3;

double* data(MBS_ModelPhysicalDofVector& vector) {
    return vector.dofVector->data;
}

double multiply(const MBS_ModelPhysicalDofVector& a, const MBS_ModelPhysicalDofVector& b) {
    return std::inner_product(a.dofVector->data, a.dofVector->data + a.getNumOfDof(), b.dofVector->data, 0.0);
}

void stopMotion(HHTState& state) {
    std::fill_n(data(state.qd), state.qd.getNumOfDof(), 0.0);
    std::fill_n(data(state.qdd), state.qdd.getNumOfDof(), 0.0);
}

void stopForces(HHTState& state) {
    std::fill_n(state.lambda.dofVector->data, state.lambda.getNumOfConstraints(), 0.0);
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
    std::fill_n(data(noForces), noForces.getNumOfDof(), 0.0);
    std::fill_n(noViolation.dofVector->data, noViolation.getNumOfConstraints(), 0.0);
}

StepResult StaticSolver::run(HHTState& state, double time) {
    report = {};
    problem.clear();
    StepResult result = start(state);
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
            measureMovement(*system, data(direction), typicalLength) <= largestMovement) {
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

/// In the metric of M + c2 K.
StepResult StaticSolver::fulfilConstraints(HHTState& state, double c2) { // (3)
    double last = largestMovement;
    for (unsigned i = 0; i < maxProjections; ++i) {
        if (!system->evaluate(state))
            return StepResult::NotFinite;
        if (!system->refreshMatrix(state, 0.0, c2))
            return StepResult::Singular;
        system->solve(data(noForces), system->constraintResidual.dofVector->data);
        const double size = measureMovement(*system, system->getCorrection().data(), typicalLength);
        if (size <= negligible || (size <= projectionNoise && size > noiseContraction * last))
            return StepResult::Converged;
        if (!(size <= 2.0 * largestMovement))
            return StepResult::NotConverged;
        for (unsigned k = 0; k < q0.getNumOfDof(); ++k)
            data(state.q)[k] += system->getCorrection()[k];
        last = size;
    }
    return StepResult::NotConverged;
}

StepResult StaticSolver::balance(HHTState& state) { // (1)
    stopForces(state);
    if (!system->evaluate(state))
        return StepResult::NotFinite;
    if (!system->refreshMatrix(state, 0.0, 0.0))
        return StepResult::Singular;
    system->solve(system->residual.dofVector->data, noViolation.dofVector->data);
    std::copy_n(system->getCorrection().data() + q0.getNumOfDof(), state.lambda.getNumOfConstraints(),
                state.lambda.dofVector->data);
    if (!system->evaluate(state))
        return StepResult::NotFinite;
    const ForceMeasure forces = measureForces(*system, typicalLength);
    report.unbalanced = forces.unbalanced;
    report.largestForce = forces.largest;
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

StepResult StaticSolver::descend(HHTState& state, double leastShift) {
    const double scale = (typicalMass > 0.0 ? typicalMass : 1.0) * typicalLength;
    const double stiffness = system->measureStiffness(state);
    forceOfRounding = roundingOfPlaces * stiffness * scale;
    growthToLookAt = std::max(report.largestForce / scale, firstShiftShare * stiffness);
    if (report.unbalanced <= std::max(negligible * report.largestForce, forceOfRounding))
        return StepResult::Converged;
    firstShift = shift = std::max({report.unbalanced / scale, firstShiftShare * stiffness, leastShift});
    bestUnbalanced = report.unbalanced;
    numOfIdleSteps = 0;
    for (; report.iterations < maxSteps; ++report.iterations) {
        smallestShift =
            std::max(smallestShiftShare * report.largestForce / scale, roundingOfShift * stiffness);
        Step step;
        if (const StepResult result = takeStep(state, step); result != StepResult::Converged)
            return result;
        if (isRoundingReached(state, step)) {
            state = best;
            return balance(state);
        }
        reportMovement(state);
        if (report.translation.size > hopelessMovement * typicalLength)
            return refuseWithResiduals(
                fmt::format("No equilibrium was found: {} moves away without end.", report.translation.body));
    }
    return refuseWithResiduals(fmt::format("No equilibrium was found in {} steps.", maxSteps));
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

/// A step that is accepted, with the kernel's caches at its end.
StepResult StaticSolver::takeStep(HHTState& state, Step& step) {
    while (shift <= largestShiftGrowth * firstShift) {
        step = {};
        if (const StepResult result = findStep(state, step); result == StepResult::NotFinite)
            return result;
        trial = state;
        before = system->residual;
        for (unsigned i = 0; i < q0.getNumOfDof(); ++i)
            data(trial.q)[i] += data(direction)[i];
        const bool isNoise = step.size <= projectionNoise;
        const bool isDownhill = step.slope < 0.0 || (isNoise && std::isfinite(step.slope));
        if (isDownhill &&
            fulfilConstraints(trial, 1.0 / std::max(shift, firstShift)) == StepResult::Converged &&
            staysNear(state, step) && balance(trial) == StepResult::Converged) {
            const double slopeAtBegin = multiply(before, direction);
            const double slopeAtEnd = multiply(system->residual, direction);
            const double error = std::fabs((slopeAtEnd - step.predicted) / step.slope);
            if (isNoise || slopeAtBegin + slopeAtEnd <= leastWork * step.slope) {
                state = trial;
                if (error < goodPrediction && step.length == 1.0)
                    shift = std::max(0.1 * shift, smallestShift);
                else if (error > badPrediction)
                    shift *= 2.0;
                return StepResult::Converged;
            }
        }
        ++report.rejectedSteps;
        shift *= 8.0;
        if (const StepResult result = balance(state); result != StepResult::Converged)
            return result;
    }
    return refuseWithResiduals("No equilibrium was found: the search doesn't get away from a position where "
                               "forces aren't in balance.");
}

/// Leaves what was moved in all in `direction`; true if the constraints have left most of the step.
bool StaticSolver::staysNear(const HHTState& state, const Step& step) {
    for (unsigned i = 0; i < q0.getNumOfDof(); ++i) {
        const double moved = data(trial.q)[i] - state.q.dofVector->data[i];
        data(work)[i] = moved - data(direction)[i];
        data(direction)[i] = moved;
    }
    return measureMovement(*system, data(work), lengthUnit) <= largestMovement * step.size + projectionNoise;
}

/// Needs the kernel's caches at the state, with its multipliers.
StepResult StaticSolver::findStep(const HHTState& state, Step& step) { // (2)
    if (!system->refreshMatrix(state, 0.0, 1.0 / shift)) {
        step.slope = 1.0; // as if it went uphill: a larger shift makes the matrix regular
        return StepResult::Singular;
    }
    system->solveForNewtonCorrection(1.0 / shift);
    for (unsigned i = 0; i < q0.getNumOfDof(); ++i)
        data(direction)[i] = system->getCorrection()[i] / shift;
    // Where a body has gone far it may go on in larger steps.
    lengthUnit = std::max(stepUnit, 0.2 * report.translation.size);
    const double size = measureMovement(*system, data(direction), lengthUnit);
    if (!std::isfinite(size))
        return StepResult::NotFinite;
    step.length = size > largestMovement ? largestMovement / size : 1.0;
    step.size = step.length * size;
    system->multiplyByMass(direction, work);
    const double slope = multiply(system->residual, direction);
    const double shifted = shift * multiply(work, direction);
    step.slope = step.length * slope;
    step.predicted = step.length * (slope - step.length * (slope + shifted));
    step.shiftShare = shifted / std::fabs(slope);
    for (unsigned i = 0; i < q0.getNumOfDof(); ++i)
        data(direction)[i] *= step.length;
    return StepResult::Converged;
}

/// True where further steps bring nothing: `best` then is the state nearest to balance.
bool StaticSolver::isRoundingReached(const HHTState& state, const Step& step) {
    const bool isBetter = report.unbalanced < 0.9 * bestUnbalanced;
    numOfIdleSteps = isBetter || step.size > noise ? 0 : numOfIdleSteps + 1;
    if (isBetter || step.size > noise) {
        best = state;
        bestUnbalanced = report.unbalanced;
    }
    if (step.size <= negligible && (step.shiftShare < 0.1 || shift <= 10.0 * smallestShift))
        return true;
    if (step.size <= projectionNoise &&
        report.unbalanced <= std::max(negligible * report.largestForce, forceOfRounding))
        return true;
    return numOfIdleSteps >=
           (report.unbalanced <= balanced * report.largestForce ? maxIdleSteps : 4 * maxIdleSteps);
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
        if (const unsigned row = rows[static_cast<std::size_t>(i)]; R[row] != 0.0)
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
