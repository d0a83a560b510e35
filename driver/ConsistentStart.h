#pragma once

#include "driver/EquationNames.h"
#include "driver/HHTSystem.h"
#include "driver/Redundancy.h"
#include "driver/SimulationSettings.h"

#include <string>
#include <vector>

namespace velmora::driver {

/// Makes the initial state of a model consistent, in three steps: positions that fulfil the constraints, then
/// velocities, both as near to the model's as can be in the metric of the masses, then accelerations and
/// multipliers. Redundant equations are left out of the system before.
class ConsistentStart {
  public:
    /// Nothing is owned; all must outlive the object.
    ConsistentStart(HHTSystem* system, const EquationNames* names, Redundancy* redundancy,
                    const SimulationSettings& settings);

    /// Makes the state from the model's initial data, at time 0. Whatever the result is, `getReport` tells
    /// how far it came. NotConverged: `getProblem` says why, and the model is at fault.
    StepResult run(HHTState& state);

    const StartReport& getReport() const { return report; }
    const std::string& getProblem() const { return problem; }

  private:
    StepResult refuse(std::string text);
    StepResult leaveOutRedundantEquations(const HHTState& state);
    StepResult fulfilPositions(HHTState& state);
    StepResult iteratePositions(HHTState& state);
    double findMovement(const HHTState& state);
    StepResult fulfilVelocities(HHTState& state);
    StepResult refuseContradiction(const char* what, const Redundancy::Violation& violation);
    void reportMovement(const HHTState& state);
    void reportVelocities(const HHTState& state);
    void reportAccelerations(const HHTState& state);
    double getMassNorm(const MBS_ModelPhysicalDofVector& x);
    double getLargestRate(const HHTState& state) const;

    HHTSystem* system;          // not owned
    const EquationNames* names; // not owned
    Redundancy* redundancy;     // not owned
    SimulationSettings settings;
    MBS_ModelPhysicalDofVector q0, qd0; // as the model gives them
    MBS_ModelPhysicalDofVector movement, pull;
    MBS_ModelConstraintDofVector velocityResidual;
    double typicalLength = 1.0;
    Redundancy::Violation worstAtStart;
    unsigned iteration = 0;
    StartReport report;
    std::string problem;
};

} // namespace velmora::driver
