#pragma once

#include "driver/StartState.h"

#include <array>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace velmora {
class IO_DataModelBlock;
} // namespace velmora

namespace velmora::driver {

/// The alpha nearest to 0 that steps of controlled length take: a varying step feeds what is damped less.
constexpr double weakestDamping = -0.01;

/// A block that an object of the model takes at a time of the run.
struct ScheduledChange {
    double time = 0.0;
    std::shared_ptr<IO_DataModelBlock> block;
};

/// What a run needs to be told. Times in seconds.
struct SimulationSettings {
    double endTime = 0.0;      ///< must be positive; the last step ends exactly here
    double step = 1.0e-3;      ///< first step, or every step if `fixedStep`
    bool fixedStep = false;    ///< no error control; only the last step is shortened
    double tolerance = 1.0e-6; ///< relative local error of the positions per step
    double alpha =
        -0.05; ///< numerical damping of the HHT form, in [-1/3, 0], with varying steps at most -0.01
    /// How far initial positions may be moved, in typical lengths and radians, and by which share, in the
    /// metric of the masses, velocities may be changed to fulfil the constraints.
    double startCorrectionLimit = 1e-3;
    bool refuseRedundant = false; ///< redundant constraint equations end the run instead of being left out
    /// In rising order of time. A step ends where a change is due; a fixed step takes up what has become due
    /// at its end. Results at the time of a change still show the state before it.
    std::vector<ScheduledChange> changes = {};
    bool positionsOnly = false;         ///< velocities and accelerations of the start don't matter
    std::vector<BodyStart> starts = {}; ///< bodies that start elsewhere than the model puts them
    double longestStep = std::numeric_limits<double>::infinity();     ///< of steps of controlled length
    double restartInterval = std::numeric_limits<double>::infinity(); ///< between restart points
};

/// How the initial state was made consistent with the constraints.
struct StartReport {
    /// Largest over the bodies, and the body.
    struct Largest {
        double size = 0.0;
        std::string body;
    };
    Largest translation;     ///< by which a position was moved, in m
    Largest rotation;        ///< in rad
    Largest velocity;        ///< by which a velocity was changed, in m/s
    Largest angularVelocity; ///< in rad/s
    Largest acceleration;    ///< of a centre of mass at the start, in m/s^2

    unsigned degreesOfFreedom = 0;               ///< coordinates less independent equations
    std::vector<std::string> redundantEquations; ///< left out, with what they repeat
};

/// What a run did, complete also when it failed.
struct RunOutcome {
    bool succeeded = false;
    std::string diagnostic;      ///< why the run failed; empty if it succeeded
    bool isStopped = false;      ///< somebody stopped it before its end; it hasn't failed then
    bool isModelAtFault = false; ///< the run failed, since the model contradicts itself or the settings
    StartReport start;
    double timeOfResumption = 0.0; ///< of the restart point from which the run went on; 0: of the start
    double timeReached = 0.0;

    unsigned long steps = 0;         ///< accepted steps
    unsigned long rejectedSteps = 0; ///< steps repeated for their error or a failing Newton iteration
    unsigned long newtonIterations = 0;
    unsigned long factorisations = 0;   ///< with pivoting
    unsigned long refactorisations = 0; ///< with the pivots of an earlier one
    double largestStep = 0.0;
    double smallestStep = 0.0; ///< the shortened last step and steps cut for output don't count
    double wallSeconds = 0.0;
    double kernelSeconds = 0.0; ///< share of `wallSeconds` spent in evaluations by the model

    double energyStart = 0.0;    ///< kinetic energy, potential energy of gravity and strain energy
    double energyEnd = 0.0;      ///< the same at the end
    double workOfForces = 0.0;   ///< done by all other forces and by driven joints over the run
    double energyScale = 0.0;    ///< largest kinetic energy, or change of potential energy, met in the run
    double maxEnergyDrift = 0.0; ///< largest | T + V - W - (T + V at the start) | over `energyScale`

    bool isAngularMomentumConserved = false;         ///< true if nothing acts on the bodies; else no drift
    std::array<double, 3> angularMomentumStart = {}; ///< about the origin, global frame
    double maxAngularMomentumDrift = 0.0;            ///< over the sum of the bodies' own momenta
};

} // namespace velmora::driver
