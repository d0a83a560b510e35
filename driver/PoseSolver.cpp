#include "driver/PoseSolver.h"

#include "driver/StateMeasures.h"

#include <velmora/velmora.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace velmora::driver {

namespace {

constexpr unsigned maxTargetSteps = 1000000;
constexpr unsigned maxIterations = 1000; // per step of the targets
constexpr unsigned maxProjections = 12;
// Movements, in typical lengths and radians.
constexpr double negligible = 1e-10;
constexpr double negligibleRest = 1e-8; // of the way to the end
constexpr double smallMovement = 1e-6;
constexpr double workNoise = 1e-12; // of the pull, as a share of its size times a typical length
constexpr double projected = 1e-12;
constexpr double projectionNoise = 1e-9;
constexpr double largestMovement = 0.2;
constexpr double smallestStepLength = 1e-9, largestStepLength = 1e4;
constexpr double leastWork = 0.25;      // of the pull at the begin of a step, as a share of what was expected
constexpr double largestPullBack = 0.1; // at the end of a step, as a share of the pull at its begin

double multiply(const MBS_ModelPhysicalDofVector& a, const MBS_ModelPhysicalDofVector& b) {
    return std::inner_product(a.dofVector->data, a.dofVector->data + a.getNumOfDof(), b.dofVector->data, 0.0);
}

} // namespace

PoseSolver::PoseSolver(HHTSystem* equations)
    : system(equations),
      model(equations->getModel()),
      pull(model),
      pullAtBegin(model),
      step(model),
      movement(model),
      trial(model),
      residual(model),
      solution(equations->getNumOfPhysicalDof() + equations->getNumOfConstraints()) {
    const std::vector<unsigned> codes{KinematicSolverMatrix, ConstraintJacobianT, ConstraintJacobian},
        rows{0, 0, 1}, columns{0, 1, 0};
    const std::vector<double> weights(codes.size(), 1.0);
    matrix.reset(model->createModelRelatedMatrix(2, 2, &codes, &rows, &columns, &weights, false));
    solver = std::make_unique<SparseSolver>(matrix->getPointerToSparseJacobian());
    std::vector<unsigned> leftOut = system->getLeftOut();
    for (unsigned& row : leftOut)
        row += system->getNumOfPhysicalDof();
    solver->leaveOut(leftOut);
}

StepResult PoseSolver::run(MBS_ModelPhysicalDofVector& q, const std::function<void()>& record) {
    typicalLength = system->measureTypicalLength(q);
    for (targetSteps = 1; targetSteps <= maxTargetSteps; ++targetSteps) {
        if (const StepResult result = settle(q); result != StepResult::Converged)
            return result;
        record();
        if (model->isFinalStateReached())
            return StepResult::Converged;
    }
    return refuse("The targets move in more steps than can be taken.");
}

StepResult PoseSolver::refuse(const char* text) {
    problem = text;
    return StepResult::NotConverged;
}

/// To the best position for the present targets.
StepResult PoseSolver::settle(MBS_ModelPhysicalDofVector& q) {
    stepLength = 1.0;
    for (unsigned i = 0; i < maxIterations; ++i, ++iterations) {
        if (const StepResult result = findStep(q); result != StepResult::Converged)
            return result;
        const double size = measureMovement(*system, step.dofVector->data, typicalLength);
        if (!std::isfinite(size))
            return StepResult::NotFinite;
        if (isAtEnd(size))
            return StepResult::Converged;
        stepLength = std::min(stepLength, largestMovement / size);
        bool isTaken = take(q, stepLength);
        while (!isTaken && stepLength >= smallestStepLength) {
            stepLength *= 0.25;
            isTaken = take(q, stepLength);
        }
        if (!isTaken)
            return StepResult::Converged; // no nearer
    }
    return StepResult::Converged; // a flat end, which the distances tell of
}

/// A step is a part of the way left if it may be taken several times; and where the pull works less than
/// rounding in the constraints lets it, further steps bring nothing.
bool PoseSolver::isAtEnd(double size) const {
    const double noise = workNoise * std::sqrt(multiply(pull, pull)) * typicalLength;
    return size <= negligible || size * std::max(1.0, stepLength) <= negligibleRest ||
           (size <= smallMovement && multiply(pull, step) <= noise);
}

StepResult PoseSolver::findStep(const MBS_ModelPhysicalDofVector& q) {
    evaluate(q);
    matrix->update();
    if (!solver->factorise()) {
        problem = "The joints and the hold of the actors don't determine the position: is a scale zero?";
        return StepResult::Singular;
    }
    solve(true);
    std::copy_n(solution.data(), step.getNumOfDof(), step.dofVector->data);
    return StepResult::Converged;
}

/// A step is good if the pull at both ends works along the movement d that it comes to, after the way back to
/// the constraints: then the distances fall. Longer ones follow where the pull hardly changes, shorter ones
/// where it turns round.
bool PoseSolver::take(MBS_ModelPhysicalDofVector& q, double length) {
    evaluate(q);
    pullAtBegin = pull;
    const double predicted = length * multiply(pull, step);
    trial = q;
    for (unsigned i = 0; i < q.getNumOfDof(); ++i)
        trial.dofVector->data[i] += length * step.dofVector->data[i];
    if (!fulfilConstraints(trial))
        return false;
    for (unsigned i = 0; i < q.getNumOfDof(); ++i)
        movement.dofVector->data[i] = trial.dofVector->data[i] - q.dofVector->data[i];
    const double slope = multiply(pullAtBegin, movement), slopeAtEnd = multiply(pull, movement);
    if (!(slope >= leastWork * predicted && slopeAtEnd >= -largestPullBack * slope))
        return false;
    q = trial;
    if (slopeAtEnd > 0.5 * slope)
        stepLength = std::min(2.0 * stepLength, largestStepLength);
    else if (slopeAtEnd < 0.0)
        stepLength *= 0.5;
    return true;
}

/// Nearest positions in the metric of H; leaves the kernel at them.
bool PoseSolver::fulfilConstraints(MBS_ModelPhysicalDofVector& q) {
    double last = largestMovement;
    for (unsigned i = 0; i < maxProjections; ++i) {
        evaluate(q);
        matrix->update();
        if (!solver->factorise())
            return false;
        solve(false);
        const double size = measureMovement(*system, solution.data(), typicalLength);
        if (size <= projected || (size <= projectionNoise && size > 0.3 * last))
            return true;
        if (!(size <= last))
            return false;
        for (unsigned k = 0; k < q.getNumOfDof(); ++k)
            q.dofVector->data[k] += solution[k];
        last = size;
    }
    return false;
}

void PoseSolver::evaluate(const MBS_ModelPhysicalDofVector& q) {
    model->updateForKinematicSolverAndComputeBbar(&q, &pull, &residual);
}

/// Of the pull along the constraints, or back to them.
void PoseSolver::solve(bool isPulling) {
    const unsigned n = pull.getNumOfDof();
    std::fill(solution.begin(), solution.end(), 0.0);
    if (isPulling)
        std::copy_n(pull.dofVector->data, n, solution.data());
    else
        std::transform(residual.dofVector->data, residual.dofVector->data + residual.getNumOfConstraints(),
                       solution.begin() + n, std::negate<>());
    solver->solve(solution.data(), solution.data());
}

} // namespace velmora::driver
