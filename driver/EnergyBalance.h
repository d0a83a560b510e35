#pragma once

#include "driver/HHTSystem.h"
#include "driver/SimulationSettings.h"

#include <array>

namespace velmora {
class IO_DataModel;
} // namespace velmora

namespace velmora::driver {

/// Follows energy and angular momentum along a run, through the kernel's public interface alone.
///
///     T = qd' M qd / 2,   V = -sum m g . r + q' F_elastic / 2,   W = integral of the power of all other
///     forces
///
/// Gravity without a ramp goes into V exactly; the power of everything else, driven joints included, is
/// integrated by the trapezoidal rule. The angular momentum about the origin is, per rigid body with g = M
/// qd, r x g_t + G(p) g_r / 4 (Nikravesh, "Computer-Aided Analysis of Mechanical Systems", 1988, chapter 6).
class EnergyBalance {
  public:
    /// Neither is owned. The data model is the one that the system's model was made of.
    EnergyBalance(HHTSystem* system, IO_DataModel* dataModel);

    /// Takes the state of the system's last `evaluate` as the start.
    void start(const HHTState& state);
    /// Takes the state of the system's last `evaluate` as the end of the next step.
    void addStep(const HHTState& state);
    /// Takes the power of forces anew where it jumps, at the state of the system's last `evaluate`.
    void takeUp(const HHTState& state) { last = measure(state); }
    /// Names the sums.
    void exchangeHistory(MBS_History& history);
    /// Writes what was found into the outcome.
    void report(RunOutcome& outcome) const;

  private:
    using Vector3 = std::array<double, 3>;
    struct Sample {
        double time = 0.0;
        double kinetic = 0.0;
        double potential = 0.0;
        double power = 0.0; // of forces that have no part in `potential`
        Vector3 angularMomentum = {};
        double sumOfMomenta = 0.0; // norms of the bodies' own shares, for scale

        void exchange(MBS_History& history);
    };
    void readGravity(IO_DataModel& dataModel);
    bool isFreeOfOutsideForces(IO_DataModel& dataModel) const;
    Sample measure(const HHTState& state);
    void addGravity(const HHTState& state, Sample& sample) const;
    double getPowerOfDrivenJoints(const HHTState& state);
    void addAngularMomentum(const HHTState& state, Sample& sample) const;
    void compareWithStart();

    HHTSystem* system;                      // not owned
    MBS_ModelPhysicalDofVector momenta;     // M qd
    MBS_ModelConstraintDofVector timeTerms; // C_t
    Vector3 gravity = {};
    bool isAngularMomentumConserved;
    Sample first, last;
    double work = 0.0;
    double energyScale = 0.0, largestDrift = 0.0;
    double momentumScale = 0.0, largestMomentumDrift = 0.0;
};

} // namespace velmora::driver
