#pragma once

#include "driver/EquationNames.h"
#include "driver/HHTSystem.h"
#include "driver/Redundancy.h"
#include "driver/SimulationSettings.h"

#include <string>

namespace velmora::driver {

/// How a static equilibrium was found, or how far the search came.
struct StaticReport {
    StartReport start; ///< how the initial positions were made to fulfil the constraints
    unsigned iterations = 0;
    unsigned rejectedSteps = 0;
    double unbalanced = 0.0;          ///< N; largest force that nothing balances, see `largestForce`
    double largestForce = 0.0;        ///< N; largest force on a body; torques over a radius of gyration
    double growth = 0.0;              ///< 1/s^2; of a movement away, x'' = growth * x; 0 in stable balance
    StartReport::Largest translation; ///< from the initial position, in m
    StartReport::Largest rotation;    ///< from the initial position, in rad
};

/// Finds a position at rest: Cq' lambda - F(q, t) = 0 and C(q, t) = 0 with all velocities and accelerations
/// zero and time standing still. Starts as a run does, and goes down from there to an equilibrium that is
/// stable, where there is one on the way; a start in unstable balance is kept.
class StaticSolver {
  public:
    /// Nothing is owned; all must outlive the object. Of the settings what concerns the start
    /// and changes of the model counts.
    StaticSolver(HHTSystem* system, const EquationNames* names, Redundancy* redundancy,
                 const SimulationSettings& settings);

    /// Leaves positions and multipliers in the state, whose velocities and accelerations are zero, and the
    /// kernel's caches at this state. `time`, in seconds and not negative, is what motions and forces depend
    /// on. If it isn't Converged, `getProblem` says why.
    StepResult run(HHTState& state, double time);

    const StaticReport& getReport() const { return report; }
    const std::string& getProblem() const { return problem; }
    /// True if the start is refused, as a run would refuse it.
    bool isModelAtFault() const { return modelIsAtFault; }

  private:
    /// A step of the descent and what the linear equations say of it.
    struct Step {
        double length = 1.0;     ///< share of the whole step that is taken
        double size = 0.0;       ///< largest movement, in typical lengths and radians
        double slope = 0.0;      ///< residual times step at its begin; negative downhill
        double predicted = 0.0;  ///< the same at its end
        double shiftShare = 0.0; ///< share of the shift in the equations of the step
    };

    StepResult refuse(std::string text);
    StepResult applyChanges(double time);
    StepResult start(HHTState& state);
    StepResult moveToTime(HHTState& state, double time);
    StepResult fulfilConstraints(HHTState& state, double c2);
    StepResult balance(HHTState& state);
    StepResult search(HHTState& state);
    StepResult descend(HHTState& state, double leastShift);
    StepResult leaveUnstable(HHTState& state);
    StepResult takeStep(HHTState& state, Step& step);
    StepResult findStep(const HHTState& state, Step& step);
    bool staysNear(const HHTState& state, const Step& step);
    bool isRoundingReached(const HHTState& state, const Step& step);
    StepResult checkLeftOut();
    StepResult refuseWithResiduals(const std::string& text);
    void reportMovement(const HHTState& state);

    HHTSystem* system;          // not owned
    const EquationNames* names; // not owned
    Redundancy* redundancy;     // not owned
    SimulationSettings settings;
    MBS_ModelPhysicalDofVector q0, direction, work, before, noForces;
    MBS_ModelConstraintDofVector noViolation;
    HHTState trial, best;
    double typicalLength = 1.0, typicalMass = 1.0;             // m, kg
    double shift = 0.0, smallestShift = 0.0, firstShift = 0.0; // 1/s^2
    double stepUnit = 1.0;                                     // m; of the longest steps near the start
    double lengthUnit = 1.0;                                   // m; of movements by the present step
    double bestUnbalanced = 0.0, forceOfRounding = 0.0;        // N
    double growthToLookAt = 0.0;                               // 1/s^2
    unsigned numOfIdleSteps = 0;
    StaticReport report;
    std::string problem;
    bool modelIsAtFault = false;
};

} // namespace velmora::driver
