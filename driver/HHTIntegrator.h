#pragma once

#include "driver/HHTSystem.h"
#include "driver/SimulationSettings.h"

#include <velmora/velmora.h>

#include <array>
#include <vector>

namespace velmora::driver {

/// Single steps of the HHT method for the index-3 equations of motion.
///
/// The generalised-alpha form of Arnold and Bruls ("Convergence of the generalized-alpha scheme for
/// constrained mechanical systems", Multibody System Dynamics 18, 2007) with alpha_m = 0, alpha_f = -alpha.
/// It is of second order in positions, velocities, accelerations and multipliers, also with varying steps.
class HHTIntegrator {
  public:
    /// System and settings aren't owned and must outlive the integrator.
    HHTIntegrator(HHTSystem* system, const SimulationSettings& settings);

    /// Begins anew at the present state, which is consistent in all its parts but the auxiliary acceleration:
    /// estimates the lag of this one, for steps of about length h.
    StepResult start(double h);

    /// Attempts a step of length h from the present state; the outcome waits in the trial state.
    StepResult tryStep(double endTime, double h);
    /// Local error of the positions of the trial state, along the constraints: 1 is what the tolerance
    /// allows.
    double getLocalError() const { return localError; }
    /// Makes the trial state the present one, with the kernel's caches at this state.
    StepResult accept();

    /// Names the past states and all that steps to come depend on beside the system's own history.
    void exchangeHistory(MBS_History& history);

    HHTState& getState() { return *present; }
    /// The state at which a failure occurred.
    const HHTState& getTrialState() const { return *trial; }
    unsigned long getNumOfNewtonIterations() const { return newtonIterations; }
    /// Length by which positions of the model are measured.
    double getTypicalLength() const { return typicalLength; }

  private:
    void setWeights();
    void predict(double endTime, double h);
    StepResult iterate();
    StepResult iterateOnce();
    bool isConverged();
    bool arePositionsConverged();
    bool areMultipliersConverged();
    void applyCorrection();
    void estimateLocalError();
    void filterLocalError();
    double getWeightedNorm(const double* positions) const;

    HHTSystem* system; // not owned
    SimulationSettings settings;
    double alpha, beta, gamma;
    std::array<HHTState, 4> states;
    HHTState* beforePrevious = &states[0];
    HHTState* previous = &states[1]; // last state before the present one
    HHTState* present = &states[2];
    HHTState* trial = &states[3];
    MBS_ModelPhysicalDofVector startOfA; // a of the present state, its lag fitted to the step in work
    MBS_ModelPhysicalDofVector errors, weightedErrors; // of positions; times the mass matrix
    MBS_ModelConstraintDofVector constraintWork;
    std::vector<double> weights; // per coordinate, for norms: the sum of squares over a body counts

    double typicalLength = 1.0;
    double stepOfPresent =
        0.0; // length of the step that led to the present state: its a lags by alpha times this
    unsigned numOfPast = 0;    // states before the present one on which a guess may build: 0 to 2
    double step = 0.0;         // length of the step in work
    double c1 = 0.0, c2 = 0.0; // of the step in work
    double stepOfMatrix = 0.0; // length of the step for which the matrix was made; 0 without a matrix
    bool isMatrixWanted = true;
    bool isMatrixOfThisStep = false;
    unsigned iteration = 0;   // of the step in work
    double contraction = 1.0; // of the Newton corrections, with the present matrix
    double correctionNorm = 0.0, lastCorrectionNorm = 0.0;
    double meanMass = 0.0; // of the bodies
    double rounding = 0.0; // norm of the positions' rounding
    double localError = 0.0;
    double shareLeftByFilter = 0.0; // of the local error; 0: not known
    unsigned stepsSinceFilter = 0;
    unsigned long newtonIterations = 0;
};

} // namespace velmora::driver
