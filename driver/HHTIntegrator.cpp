#include "driver/HHTIntegrator.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

// Notation: h step, n present state, n+1 trial state, a auxiliary acceleration, which stands for the time
// t + alpha h. (1) and (2) hold at n+1 for the true qdd and lambda:
//
// (1)  M qdd + Cq' lambda - Q = 0,  C = 0
// (2)  a_n+1 = (1 + alpha) qdd_n+1 - alpha qdd_n
// (3)  q_n+1 = q_n + h v_n + h^2 ((1/2 - beta) a_n + beta a_n+1),    beta = (1 - alpha)^2 / 4
// (4)  v_n+1 = v_n + h ((1 - gamma) a_n + gamma a_n+1),              gamma = 1/2 - alpha
// (5)  dq = c2 dqdd, dv = c1 dqdd,  c1 = (1 + alpha) gamma h,  c2 = (1 + alpha) beta h^2
// (6)  a_n <- qdd_n + (h / h_old) (a_n - qdd_n): the lag alpha h, fitted to a new step
// (7)  local error of q: e = (beta + alpha/2 - 1/6) h^2 (a_n+1 - a_n), since a_n+1 - a_n = h dqdd/dt + O(h^2)
// (8)  filtered by the matrix of Newton's iteration: J (e', mu) = (M e, S Cq e), so that Cq e' = S Cq e with
//      S = 1 for an equation that time drives, and 0 for others
// (9)  first guess: x_n+1 = x_n-1 + (t_n+1 - t_n-1) / (t_n - t_n-2) (x_n - x_n-2), for x = qdd and lambda
//
// Without (8), what accelerations oscillate by across the constraints would count as error. It is rounding
// over h^2, hardly damped for alpha near 0, and doesn't fall with the step: the step would collapse. What
// time drives moves across its constraint, though, and nothing else may tell how fast.
// (9) hits what is linear in time and, at equal steps, what alternates from step to step, as these
// oscillations do; the line through the last two values would triple them.

namespace velmora::driver {

namespace {

constexpr unsigned maxIterations = 15;
constexpr unsigned maxIterationsOfFixedStep = 40; // there is no shorter step to fall back on
constexpr double slowContraction = 0.25;          // a new matrix is worth its cost
constexpr double contractionOfNewMatrix = 0.1;    // assumed until it is measured
constexpr double leastContraction = 1e-3;
constexpr double leastContractionFromEarlier = 0.1; // steps: the matrix is older now
// Share of the local error that Newton's iteration may add; over the step it weighs more in the velocities.
// A fixed step is asked for by those who measure what it gives: next to nothing is let in.
constexpr double newtonShare = 1e-3;
constexpr double newtonShareOfFixedStep = 1e-6;
constexpr double noiseContraction = 0.3; // or slower, of corrections below the following
constexpr double largestNoise = 1000.0;  // in roundings of the positions
// Near singular positions rounding comes out of the solver magnified; with a matrix of the same step,
// corrections up to this share of the tolerance that stop shrinking are no more than that.
constexpr double largestMagnifiedNoise = 1e-2;
constexpr double largestShareOfMultiplier = 0.5;  // of the last correction with an older matrix
constexpr double negligibleShareOfInertia = 1e-3; // of multipliers that are next to rounding
constexpr double largestChangeOfStep = 2.0;       // with the same matrix
constexpr double trustedShare = 0.8;
constexpr unsigned stepsBetweenFilters = 10;
constexpr double nearlyTooLarge = 0.95;
constexpr double unitRoundoff = 0.5 * std::numeric_limits<double>::epsilon();
constexpr double weightedSize = 2.6; // what the weights of a rigid body's seven coordinates are divided by
constexpr double stepShareForLag = 1e-2; // of the first step, over which the initial jerk is differenced

double* data(MBS_ModelPhysicalDofVector& vector) {
    return vector.dofVector->data;
}
double* data(MBS_ModelConstraintDofVector& vector) {
    return vector.dofVector->data;
}

} // namespace

HHTIntegrator::HHTIntegrator(HHTSystem* equations, const SimulationSettings& simulationSettings)
    : system(equations),
      settings(simulationSettings),
      alpha(settings.alpha),
      beta(0.25 * (1.0 - alpha) * (1.0 - alpha)),
      gamma(0.5 - alpha),
      states{HHTState(equations->getModel()), HHTState(equations->getModel()),
             HHTState(equations->getModel()), HHTState(equations->getModel())},
      startOfA(equations->getModel()),
      errors(equations->getModel()),
      weightedErrors(equations->getModel()),
      constraintWork(equations->getModel()),
      weights(equations->getNumOfPhysicalDof()) {}

void HHTIntegrator::setWeights() {
    const MBS_ModelPhysicalDofVector& q = present->q;
    const auto numOfBodies = static_cast<unsigned>(q.bodyOffset.size());
    meanMass = std::accumulate(system->bodyMasses.begin(), system->bodyMasses.end(), 0.0) / numOfBodies;
    for (unsigned body = 0; body < numOfBodies; ++body) {
        // A mode of modal mass m_j that moves the body of mass m by x on the whole has a coordinate of
        // x sqrt(m / m_j): its kinetic energy is 1/2 m (dx/dt)^2.
        const double mass = system->bodyMasses[body];
        const double* modalMass = system->modalMasses.data() + q.bodyOffset[body];
        double* weight = weights.data() + q.bodyOffset[body];
        const unsigned size = q.bodyDof[body]->size;
        const double all = settings.tolerance * std::sqrt(static_cast<double>(size));
        for (unsigned i = 0; i < size; ++i) {
            const double mode = i < 7 || !(mass > 0.0) ? 1.0 : std::sqrt(modalMass[i] / mass);
            weight[i] = (i >= 3 && i < 7 ? 1.0 : mode / typicalLength) / all;
        }
    }
}

double HHTIntegrator::getWeightedNorm(const double* positions) const {
    // The largest over the bodies, so that one body's error doesn't drown in a large model.
    double largest = 0.0;
    const std::vector<unsigned>& offsets = present->q.bodyOffset;
    for (std::size_t body = 0; body < offsets.size(); ++body) {
        const std::size_t end = body + 1 < offsets.size() ? offsets[body + 1] : weights.size();
        double sum = 0.0;
        for (std::size_t i = offsets[body]; i < end; ++i)
            sum += positions[i] * weights[i] * positions[i] * weights[i];
        if (!(sum <= largest))
            largest = sum;
    }
    return std::sqrt(largest);
}

StepResult HHTIntegrator::start(double h) {
    typicalLength = system->measureTypicalLength(present->q);
    setWeights();
    const double small = stepShareForLag * h;
    for (unsigned i = 0; i < system->getNumOfPhysicalDof(); ++i) {
        const double v = data(present->qd)[i], acceleration = data(present->qdd)[i];
        data(trial->q)[i] = data(present->q)[i] + small * v + 0.5 * small * small * acceleration;
        data(trial->qd)[i] = v + small * acceleration;
    }
    trial->time = present->time + small;
    if (const StepResult result = system->solveForAccelerations(*trial); result != StepResult::Converged)
        return result;
    for (unsigned i = 0; i < system->getNumOfPhysicalDof(); ++i) {
        const double acceleration = data(present->qdd)[i];
        const double jerk = (data(trial->qdd)[i] - acceleration) / small;
        data(present->a)[i] = acceleration + alpha * h * jerk;
    }
    stepOfPresent = h;
    numOfPast = 0;
    isMatrixWanted = true;
    shareLeftByFilter = 0.0;
    return system->evaluate(*present) ? StepResult::Converged : StepResult::NotFinite;
}

StepResult HHTIntegrator::tryStep(double endTime, double h) {
    predict(endTime, h);
    const StepResult result = iterate();
    if (result != StepResult::Converged) {
        numOfPast = 0;
        isMatrixWanted = true;
    } else if (!settings.fixedStep) {
        filterLocalError();
    }
    return result;
}

void HHTIntegrator::predict(double endTime, double h) {
    step = h;
    c1 = (1.0 + alpha) * gamma * h;
    c2 = (1.0 + alpha) * beta * h * h;
    trial->time = endTime;
    const double lagRatio = h / stepOfPresent;
    const bool hasPair = numOfPast == 2;
    const double slopeOfOne = numOfPast == 1 ? lagRatio : 0.0;
    const double slopeOfPair =
        hasPair ? (endTime - previous->time) / (present->time - beforePrevious->time) : 0.0;
    const auto extrapolate = [=](double now, double before, double beforeThat) { // (9)
        return hasPair ? before + slopeOfPair * (now - beforeThat) : now + slopeOfOne * (now - before);
    };
    double largest = 0.0;
    for (unsigned i = 0; i < system->getNumOfPhysicalDof(); ++i) {
        const double qdd = data(present->qdd)[i], v = data(present->qd)[i];
        const double lagged = qdd + lagRatio * (data(present->a)[i] - qdd); // (6)
        const double guess = extrapolate(qdd, data(previous->qdd)[i], data(beforePrevious->qdd)[i]);
        const double a = (1.0 + alpha) * guess - alpha * qdd; // (2)
        data(startOfA)[i] = lagged;
        data(trial->qdd)[i] = guess;
        data(trial->a)[i] = a;
        data(trial->q)[i] = data(present->q)[i] + (h * v + h * h * ((0.5 - beta) * lagged + beta * a)); // (3)
        data(trial->qd)[i] = v + h * ((1.0 - gamma) * lagged + gamma * a);                              // (4)
        largest = std::max(largest, std::fabs(data(trial->q)[i]) * weights[i]);
    }
    rounding = unitRoundoff * std::max(largest * weightedSize, 1.0 / settings.tolerance);
    for (unsigned i = 0; i < system->getNumOfConstraints(); ++i) {
        const double lambda = data(present->lambda)[i];
        data(trial->lambda)[i] =
            extrapolate(lambda, data(previous->lambda)[i], data(beforePrevious->lambda)[i]);
    }
}

StepResult HHTIntegrator::iterate() {
    const double change = stepOfMatrix > 0.0 ? step / stepOfMatrix : 0.0;
    if (change > largestChangeOfStep || change * largestChangeOfStep < 1.0)
        isMatrixWanted = true;
    contraction = std::max(contraction, leastContractionFromEarlier);
    isMatrixOfThisStep = false;
    const unsigned most = settings.fixedStep ? maxIterationsOfFixedStep : maxIterations;
    for (iteration = 0; iteration < most;) {
        if (const StepResult result = iterateOnce(); result != StepResult::Converged)
            return result;
        if (isConverged())
            return StepResult::Converged;
    }
    return StepResult::NotConverged;
}

StepResult HHTIntegrator::iterateOnce() {
    if (!system->evaluate(*trial)) {
        const bool isContracting = lastCorrectionNorm > 0.0 && contraction < 1.0;
        const bool isDiverging = iteration > 0 && !isContracting;
        return isDiverging ? StepResult::NotConverged : StepResult::NotFinite;
    }
    lastCorrectionNorm = iteration > 0 ? correctionNorm : 0.0;
    if (isMatrixWanted) {
        if (!system->refreshMatrix(*trial, c1, c2))
            return StepResult::Singular;
        isMatrixWanted = false;
        isMatrixOfThisStep = true;
        stepOfMatrix = step;
        contraction = contractionOfNewMatrix;
        lastCorrectionNorm = 0.0;
    }
    system->solveForNewtonCorrection(c2);
    applyCorrection();
    correctionNorm = c2 * getWeightedNorm(system->getCorrection().data());
    ++iteration;
    ++newtonIterations;
    return StepResult::Converged;
}

void HHTIntegrator::applyCorrection() {
    const double* correction = system->getCorrection().data();
    const unsigned n = system->getNumOfPhysicalDof();
    double *qdd = data(trial->qdd), *a = data(trial->a), *qd = data(trial->qd), *q = data(trial->q);
    for (unsigned i = 0; i < n; ++i) { // (2), (5)
        qdd[i] += correction[i];
        a[i] += (1.0 + alpha) * correction[i];
        qd[i] += c1 * correction[i];
        q[i] += c2 * correction[i];
    }
    for (unsigned i = 0; i < system->getNumOfConstraints(); ++i)
        data(trial->lambda)[i] += correction[n + i];
}

bool HHTIntegrator::isConverged() {
    if (!arePositionsConverged())
        return false;
    if (isMatrixOfThisStep || areMultipliersConverged())
        return true;
    isMatrixWanted = true;
    return false;
}

/// Positions don't tell of multipliers that cancel each other: after a singular position these may be huge,
/// and a matrix from near it brings them down slowly.
bool HHTIntegrator::areMultipliersConverged() {
    const auto largest = [](const double* x, unsigned size) {
        return std::accumulate(x, x + size, 0.0,
                               [](double l, double y) { return std::max(l, std::fabs(y)); });
    };
    const unsigned n = system->getNumOfPhysicalDof(), m = system->getNumOfConstraints();
    const double multiplier = m > 0 ? largest(data(trial->lambda), m) : 0.0;
    return largest(system->getCorrection().data() + n, m) <= largestShareOfMultiplier * multiplier ||
           multiplier <= negligibleShareOfInertia * meanMass * largest(data(trial->qdd), n);
}

bool HHTIntegrator::arePositionsConverged() {
    if (iteration == 1)
        estimateLocalError();
    if (correctionNorm <= rounding)
        return true;
    if (lastCorrectionNorm > 0.0) {
        const double measured = correctionNorm / lastCorrectionNorm;
        const double magnified = isMatrixOfThisStep ? largestMagnifiedNoise : 0.0;
        if (measured > noiseContraction && correctionNorm <= std::max(largestNoise * rounding, magnified))
            return true; // nothing but rounding is left
        contraction = std::max(measured, leastContraction);
        isMatrixWanted = !(contraction <= slowContraction);
    }
    const double share =
        (settings.fixedStep ? newtonShareOfFixedStep : newtonShare) * std::min(localError, 1.0);
    return contraction < 1.0 &&
           contraction / (1.0 - contraction) * correctionNorm <= std::max(rounding, share);
}

void HHTIntegrator::estimateLocalError() {
    const double factor = (beta + 0.5 * alpha - 1.0 / 6.0) * step * step; // (7)
    for (unsigned i = 0; i < system->getNumOfPhysicalDof(); ++i)
        data(errors)[i] = factor * (data(trial->a)[i] - data(startOfA)[i]);
    localError = getWeightedNorm(data(errors));
}

void HHTIntegrator::filterLocalError() { // (8)
    estimateLocalError();
    // Where the filter takes little away, its share is known for a while, and a solve is saved.
    const bool isShareKnown = shareLeftByFilter > trustedShare && stepsSinceFilter < stepsBetweenFilters;
    if (isShareKnown && shareLeftByFilter * localError < nearlyTooLarge) {
        ++stepsSinceFilter;
        localError *= shareLeftByFilter;
        return;
    }
    const double unfiltered = localError;
    system->multiplyByMass(errors, weightedErrors);
    system->computeDrivenPart(*trial, errors, constraintWork);
    system->solve(data(weightedErrors), data(constraintWork)); // the sign doesn't matter
    localError = getWeightedNorm(system->getCorrection().data());
    shareLeftByFilter = localError / unfiltered;
    stepsSinceFilter = 0;
}

void HHTIntegrator::exchangeHistory(MBS_History& history) {
    for (HHTState* state : {beforePrevious, previous, present})
        state->exchange(history);
    for (double* number : {&typicalLength, &stepOfPresent, &stepOfMatrix, &contraction, &shareLeftByFilter})
        history.exchange(*number);
    history.exchange(numOfPast);
    history.exchange(isMatrixWanted);
    history.exchange(stepsSinceFilter);
    history.exchange(newtonIterations);
    if (history.isTakingBack())
        setWeights();
}

StepResult HHTIntegrator::accept() {
    HHTState* oldest = beforePrevious;
    beforePrevious = previous;
    previous = present;
    present = trial;
    trial = oldest;
    stepOfPresent = step;
    numOfPast = std::min(numOfPast + 1, 2U);
    return system->evaluate(*present) ? StepResult::Converged : StepResult::NotFinite;
}

} // namespace velmora::driver
