#include "driver/ConsistentStart.h"

#include "driver/StateMeasures.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

// Notation: q0, v0 as the model gives them; M, Cq, C, C_t at the positions in work.
//
// (1)  positions: min (q - q0)' M (q - q0) / 2 with C(q) = 0, by Gauss-Newton steps:
//      | M  Cq' | | dq |     | M (q - q0) |
//      | Cq 0   | | mu | = - | C          |
// (2)  velocities: min (v - v0)' M (v - v0) / 2 with Cq v + C_t = 0: the same matrix, dv, and
//      - (0, Cq v0 + C_t) on the right
// (3)  accelerations and multipliers: M qdd + Cq' lambda = Q, Cq qdd = - dCq/dt v - C_tt
//
// The term M (q - q0) in (1) makes the nearest positions of all that fulfil C = 0; it costs linear
// convergence and is left out in later steps.

namespace velmora::driver {

namespace {

constexpr unsigned numOfPullingIterations = 8;
constexpr unsigned maxIterations = 20;
constexpr double negligibleMovement = 1e-13;
constexpr double largestNoise = 1e-9; // movements below it that stay as they are: rounding
constexpr double noiseContraction = 0.3;
constexpr double hopelessMovement = 100.0;
constexpr unsigned maxRankChanges = 3;
// What a repeated equation may ask for beyond those that it repeats, in radii of gyration and radians.
constexpr double contradiction = 1e-6;
constexpr double roundingOfShare = 1e-9; // a limit of 1 lets everything pass

double* data(MBS_ModelPhysicalDofVector& vector) {
    return vector.dofVector->data;
}

double getLength3(const double* x) {
    return std::hypot(x[0], x[1], x[2]);
}

/// Length of the vector part of conj(a) b, for quaternions: the sine of half the angle from a to b.
double getVectorPart(const double* a, const double* b) {
    const double v[3] = {a[0] * b[1] - b[0] * a[1] - (a[2] * b[3] - a[3] * b[2]),
                         a[0] * b[2] - b[0] * a[2] - (a[3] * b[1] - a[1] * b[3]),
                         a[0] * b[3] - b[0] * a[3] - (a[1] * b[2] - a[2] * b[1])};
    return getLength3(v);
}

double getAngle(const double* a, const double* b) {
    const double scalar = a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
    return 2.0 * std::atan2(getVectorPart(a, b), std::fabs(scalar));
}

void takeLarger(StartReport::Largest& largest, double size, unsigned body, const EquationNames& names) {
    if (size > largest.size)
        largest = {size, names.getBodyName(body)};
}

std::string describe(const StartReport::Largest& largest, const char* unit) {
    return fmt::format("{:.3g} {}{}", largest.size, unit,
                       largest.body.empty() ? "" : " (" + largest.body + ")");
}

} // namespace

ConsistentStart::ConsistentStart(HHTSystem* equations, const EquationNames* equationNames,
                                 Redundancy* dependentEquations, const SimulationSettings& simulationSettings)
    : system(equations),
      names(equationNames),
      redundancy(dependentEquations),
      settings(simulationSettings),
      q0(equations->getModel()),
      qd0(equations->getModel()),
      movement(equations->getModel()),
      pull(equations->getModel()),
      velocityResidual(equations->getModel()) {}

StepResult ConsistentStart::run(HHTState& state) {
    copyInitialState(*system->getModel(), settings.starts, q0, qd0);
    state.time = 0.0;
    state.q = q0;
    state.qd = qd0;
    std::fill_n(data(state.qdd), state.qdd.getNumOfDof(), 0.0);
    std::fill_n(state.lambda.dofVector->data, state.lambda.getNumOfConstraints(), 0.0);
    typicalLength = system->measureTypicalLength(q0);
    StepResult result = leaveOutRedundantEquations(state);
    if (result == StepResult::Converged)
        result = fulfilPositions(state);
    if (settings.positionsOnly)
        return result;
    if (result == StepResult::Converged)
        result = fulfilVelocities(state);
    if (result == StepResult::Converged)
        result = system->solveForAccelerations(state);
    if (result == StepResult::Converged)
        reportAccelerations(state);
    return result;
}

StepResult ConsistentStart::refuse(std::string text) {
    problem = std::move(text);
    return StepResult::NotConverged;
}

StepResult ConsistentStart::leaveOutRedundantEquations(const HHTState& state) {
    if (!system->evaluate(state))
        return StepResult::NotFinite;
    system->refreshJacobian(state);
    redundancy->leaveOutDependentEquations();
    return StepResult::Converged;
}

StepResult ConsistentStart::fulfilPositions(HHTState& state) {
    worstAtStart = redundancy->findLargestViolation();
    for (unsigned i = 0; i <= maxRankChanges; ++i) {
        if (const StepResult result = iteratePositions(state); result != StepResult::Converged)
            return result;
        if (!redundancy->leaveOutDependentEquations())
            break;
    }
    report.redundantEquations = redundancy->describe();
    report.degreesOfFreedom = system->getNumOfPhysicalDof() - redundancy->getRank();
    if (const auto violation = redundancy->findViolationOfLeftOut(); violation.size > contradiction)
        return refuseContradiction("positions", violation);
    if (settings.refuseRedundant && !report.redundantEquations.empty())
        return refuse(fmt::format("{} constraint equations are redundant: {}.",
                                  report.redundantEquations.size(),
                                  joinShortly(report.redundantEquations, numOfNamedEquations)));
    reportMovement(state);
    const double limit = settings.startCorrectionLimit;
    if (report.translation.size <= limit * typicalLength && report.rotation.size <= limit)
        return StepResult::Converged;
    return refuse(
        fmt::format("The initial positions don't fulfil the constraints: bodies must be moved by up "
                    "to {} and turned by up to {}, more than the limit of {:.3g} typical lengths "
                    "(of {:.3g} m) or rad. Farthest off is {}.",
                    describe(report.translation, "m"), describe(report.rotation, "rad"), limit, typicalLength,
                    names->getShortName(worstAtStart.equation)));
}

StepResult ConsistentStart::iteratePositions(HHTState& state) {
    double last = std::numeric_limits<double>::infinity();
    for (iteration = 0; iteration < maxIterations; ++iteration) {
        if (!system->evaluate(state))
            return StepResult::NotFinite;
        if (!system->refreshMatrix(state, 0.0, 0.0)) {
            if (iteration == 0)
                return StepResult::Singular;
            break; // as near as the equations let it come
        }
        const double size = findMovement(state);
        if (size <= negligibleMovement || (size <= largestNoise && size > noiseContraction * last))
            return StepResult::Converged;
        if (!(size < hopelessMovement))
            break;
        for (unsigned i = 0; i < state.q.getNumOfDof(); ++i)
            data(state.q)[i] += system->getCorrection()[i];
        last = size;
    }
    return refuse(
        fmt::format("The constraints contradict each other: no positions near the initial ones "
                    "fulfil them all. Farthest off at the start is {}, by {:.3g} radii of gyration or rad.",
                    names->getShortName(worstAtStart.equation), worstAtStart.size));
}

double ConsistentStart::findMovement(const HHTState& state) { // (1)
    std::fill_n(data(pull), pull.getNumOfDof(), 0.0);
    if (iteration > 0 && iteration < numOfPullingIterations) {
        for (unsigned i = 0; i < movement.getNumOfDof(); ++i)
            data(movement)[i] = state.q.dofVector->data[i] - data(q0)[i];
        system->multiplyByMass(movement, pull);
    }
    system->solve(data(pull), system->constraintResidual.dofVector->data);
    double largest = 0.0;
    for (unsigned body = 0; body < state.q.bodyOffset.size(); ++body) {
        const double* dq = system->getCorrection().data() + state.q.bodyOffset[body];
        const double size = std::max(getPointMovement(*system, body, dq) / typicalLength,
                                     2.0 * std::hypot(dq[3], getLength3(dq + 4)));
        if (!(size <= largest))
            largest = size;
    }
    return largest;
}

StepResult ConsistentStart::refuseContradiction(const char* what, const Redundancy::Violation& violation) {
    return refuse(fmt::format("The constraints contradict each other: {} that fulfil all other equations "
                              "don't fulfil {}, which is off by {:.3g} radii of gyration or rad{}.",
                              what, names->getShortName(violation.equation), violation.size,
                              what[0] == 'v' ? " per second" : ""));
}

StepResult ConsistentStart::fulfilVelocities(HHTState& state) { // (2)
    system->computeVelocityResidual(state, velocityResidual);
    std::fill_n(data(pull), pull.getNumOfDof(), 0.0);
    system->solve(data(pull), velocityResidual.dofVector->data);
    const unsigned n = state.qd.getNumOfDof();
    std::copy_n(system->getCorrection().data(), n, data(movement));
    const double change = getMassNorm(movement), before = getMassNorm(state.qd);
    if (change > negligibleMovement * before)
        for (unsigned i = 0; i < n; ++i)
            data(state.qd)[i] += data(movement)[i];
    const double speed = std::max(before, getMassNorm(state.qd));
    reportVelocities(state);
    system->computeVelocityResidual(state, velocityResidual);
    const auto violation = redundancy->findViolationOfLeftOut(velocityResidual.dofVector->data);
    if (violation.size > contradiction * std::max(1.0, getLargestRate(state)))
        return refuseContradiction("velocities", violation);
    if (change <= settings.startCorrectionLimit * (1.0 + roundingOfShare) * speed)
        return StepResult::Converged;
    return refuse(fmt::format("The initial velocities don't fulfil the constraints: they must be changed by "
                              "up to {} and {}, a share of {:.3g} in the metric of the masses, more than the "
                              "limit of {:.3g}.",
                              describe(report.velocity, "m/s"), describe(report.angularVelocity, "rad/s"),
                              change / speed, settings.startCorrectionLimit));
}

double ConsistentStart::getMassNorm(const MBS_ModelPhysicalDofVector& x) {
    system->multiplyByMass(x, pull);
    double sum = 0.0;
    for (unsigned i = 0; i < x.getNumOfDof(); ++i)
        sum += x.dofVector->data[i] * data(pull)[i];
    return std::sqrt(std::max(sum, 0.0));
}

double ConsistentStart::getLargestRate(const HHTState& state) const {
    double largest = 0.0;
    for (unsigned body = 0; body < state.qd.bodyOffset.size(); ++body) {
        const double* v = state.qd.bodyData(body);
        const double gyration = system->bodyGyrations[body];
        largest = std::max({largest, gyration > 0.0 ? getPointMovement(*system, body, v) / gyration : 0.0,
                            2.0 * getVectorPart(state.q.bodyData(body) + 3, v + 3)});
    }
    return largest;
}

void ConsistentStart::reportMovement(const HHTState& state) {
    for (unsigned body = 0; body < state.q.bodyOffset.size(); ++body) {
        const double *from = q0.bodyData(body), *to = state.q.bodyData(body);
        double* change = movement.bodyData(body);
        for (unsigned i = 0; i < q0.bodyDof[body]->size; ++i)
            change[i] = to[i] - from[i];
        takeLarger(report.translation, getPointMovement(*system, body, change), body, *names);
        takeLarger(report.rotation, getAngle(from + 3, to + 3), body, *names);
    }
}

void ConsistentStart::reportVelocities(const HHTState& state) {
    for (unsigned body = 0; body < state.qd.bodyOffset.size(); ++body) {
        double* change = movement.bodyData(body);
        for (unsigned i = 0; i < qd0.bodyDof[body]->size; ++i)
            change[i] = state.qd.bodyData(body)[i] - qd0.bodyData(body)[i];
        takeLarger(report.velocity, getPointMovement(*system, body, change), body, *names);
        takeLarger(report.angularVelocity, 2.0 * getVectorPart(state.q.bodyData(body) + 3, change + 3), body,
                   *names);
    }
}

void ConsistentStart::reportAccelerations(const HHTState& state) {
    for (unsigned body = 0; body < state.qdd.bodyOffset.size(); ++body)
        takeLarger(report.acceleration, getLength3(state.qdd.bodyData(body)), body, *names);
}

} // namespace velmora::driver
