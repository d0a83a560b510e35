#pragma once

#include "driver/HHTSystem.h"
#include "driver/Redundancy.h"
#include "driver/SparseSolver.h"

#include <functional>
#include <memory>
#include <string>

namespace velmora::driver {

/// Finds positions in which the points that actors hold are as near to their targets as the joints allow:
/// the least weighted squares of the distances under C(q) = 0, target step by target step until the model
/// says that all moves are done. Motions stand where they do at time 0.
///
///     | H   Cq' | | dq |   | B |
///     | Cq  0   | | mu | = | 0 |
///
/// H is the matrix of the pulls and of the hold, B the pull of the actors. The hold makes H regular and keeps
/// steps short, as in the method of Levenberg and Marquardt (J. Nocedal, S. J. Wright, "Numerical
/// Optimization", section 10.3); it counts from where the bodies are, so that it vanishes at the end.
class PoseSolver {
  public:
    /// Neither is owned. The system must have left out what is redundant; all bodies must be rigid, with
    /// inertia.
    explicit PoseSolver(HHTSystem* system);

    /// Moves q, which must fulfil the constraints, and calls `record` with the position at the end of each
    /// step of the targets. If it isn't Converged, `getProblem` says why.
    StepResult run(MBS_ModelPhysicalDofVector& q, const std::function<void()>& record);

    unsigned getNumOfTargetSteps() const { return targetSteps; }
    unsigned getNumOfIterations() const { return iterations; }
    const std::string& getProblem() const { return problem; }

  private:
    StepResult settle(MBS_ModelPhysicalDofVector& q);
    bool isAtEnd(double size) const;
    StepResult findStep(const MBS_ModelPhysicalDofVector& q);
    bool take(MBS_ModelPhysicalDofVector& q, double length);
    bool fulfilConstraints(MBS_ModelPhysicalDofVector& q);
    void evaluate(const MBS_ModelPhysicalDofVector& q);
    void solve(bool isPulling);
    StepResult refuse(const char* text);

    HHTSystem* system; // not owned
    MBS_Model* model;  // not owned
    std::unique_ptr<MBS_GlobalModelMatrix> matrix;
    std::unique_ptr<SparseSolver> solver;
    MBS_ModelPhysicalDofVector pull, pullAtBegin, step, movement, trial; ///< B, B, dq, d, q
    MBS_ModelConstraintDofVector residual;                               ///< C
    std::vector<double> solution;
    double typicalLength = 1.0; // m
    double stepLength = 1.0;    // share of dq that is taken
    unsigned targetSteps = 0, iterations = 0;
    std::string problem;
};

} // namespace velmora::driver
