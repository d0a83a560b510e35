#include "driver/StaticSolver.h"

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
// The descent has no potential to look at, as forces are any expressions. It asks instead that forces do work
// along a step, by their mean at its ends; that of the joints at both ends cancels but for terms of third
// order.

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
constexpr unsigned maxIdleSteps = 8;

double* data(MBS_ModelPhysicalDofVector& vector) {
    return vector.dofVector->data;
}

double multiply(const MBS_ModelPhysicalDofVector& a, const MBS_ModelPhysicalDofVector& b) {
    return std::inner_product(a.dofVector->data, a.dofVector->data + a.getNumOfDof(), b.dofVector->data, 0.0);
}

void stopForces(HHTState& state) {
    std::fill_n(state.lambda.dofVector->data, state.lambda.getNumOfConstraints(), 0.0);
}

} // namespace

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

} // namespace velmora::driver
