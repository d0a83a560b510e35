#pragma once

#include "driver/ConstraintRank.h"
#include "driver/SparseSolver.h"

#include <velmora/velmora.h>

#include <chrono>
#include <memory>
#include <vector>

namespace velmora::driver {

/// How an attempt to find a state ended.
enum class StepResult { Converged, NotConverged, NotFinite, Singular };

/// State of the model at one time, with the auxiliary acceleration of the integrator.
struct HHTState {
    explicit HHTState(MBS_Model* model);
    void exchange(MBS_History& history);

    double time = 0.0;
    MBS_ModelPhysicalDofVector q, qd, qdd;
    MBS_ModelPhysicalDofVector a; ///< auxiliary acceleration
    MBS_ModelConstraintDofVector lambda;
};

/// The equations of motion as one square system, evaluated by the kernel and solved by the sparse solver.
///
///     R = M qdd + Cq' lambda + F_elastic + F_damping - Q_velInertia - Q_external = 0,   C(q, t) = 0
///
/// The matrix is described to the kernel once; with the derivatives K = dR/dq and D = dR/dqd it is
///
///     | M + c1 D + c2 K   m Cq' |   | delta qdd        |
///     | m Cq              0     | * | delta lambda / m |
///
/// where m is the mean mass of the bodies, so that both kinds of rows have the size of a mass. With
/// c1 = c2 = 0 it is the matrix of the initial accelerations.
class HHTSystem {
  public:
    /// The model isn't owned; it must hold at least one body.
    explicit HHTSystem(MBS_Model* model);

    /// Evaluates residual and forces and leaves the kernel's caches at this state. False if a value of the
    /// residual isn't finite.
    bool evaluate(const HHTState& state);

    /// Refreshes the matrix at the state of the last `evaluate`, for `computeVelocityResidual` and
    /// `getConstraintRows`.
    void refreshJacobian(const HHTState& state, double c1 = 0.0, double c2 = 0.0);
    /// Constraint Jacobian of the last refresh, with scaled columns: a translation of 1 is one by the body's
    /// radius of gyration, a rotation of 1 one by the angle 1.
    SparseRows getConstraintRows() const;
    /// Leaves constraint equations, from 0, out of the system: their multipliers are 0. Replaces an earlier
    /// choice.
    void leaveOut(const std::vector<unsigned>& equations);
    /// The equations that are left out.
    const std::vector<unsigned>& getLeftOut() const { return leftOut; }

    /// Largest sum of stiffnesses in a row over the inertia of its coordinate, in 1/s^2, at the state of the
    /// last `evaluate`; allocates. Bodies without mass don't count.
    double measureStiffness(const HHTState& state);

    /// Refreshes and factorises the matrix at the state of the last `evaluate`; false if it is singular.
    bool refreshMatrix(const HHTState& state, double c1, double c2);

    /// Solves for accelerations and multipliers: R + dR = 0 and Cq delta qdd = -constraintPart.
    /// The correction stays in `getCorrection`.
    void solve(const double* physicalResidual, const double* constraintPart);
    /// The same with the residual of the last `evaluate` and C / c2.
    void solveForNewtonCorrection(double c2);

    /// Cq v + C_t at the state of the last `evaluate` and `refreshMatrix`.
    void computeVelocityResidual(const HHTState& state, MBS_ModelConstraintDofVector& out);
    /// C_t at the state of the last `evaluate`.
    void computeTimeTerms(const HHTState& state, MBS_ModelConstraintDofVector& out);
    /// Cq x for equations that depend on time at the state of the last `evaluate`, 0 for others; with the
    /// matrix of the last `refreshMatrix`.
    void computeDrivenPart(const HHTState& state, const MBS_ModelPhysicalDofVector& x,
                           MBS_ModelConstraintDofVector& out);
    /// out = M x, with the mass matrix of the last `evaluate`.
    void multiplyByMass(const MBS_ModelPhysicalDofVector& x, MBS_ModelPhysicalDofVector& out);
    /// (dCq/dt) qd + C_tt: what Cq qdd has to balance.
    void computeAccelerationTerms(const HHTState& state, MBS_ModelConstraintDofVector& out);

    /// Accelerations and multipliers that belong to time, positions and velocities of the state. Leaves the
    /// kernel's caches and the matrix at this state, with zero accelerations.
    StepResult solveForAccelerations(HHTState& state);

    /// Length by which positions are measured: the largest extent of the model along a global axis, at least
    /// the largest radius of gyration; 1 if both are 0.
    double measureTypicalLength(const MBS_ModelPhysicalDofVector& q) const;

    unsigned getNumOfPhysicalDof() const { return numOfPhysicalDof; }
    unsigned getNumOfConstraints() const { return numOfConstraints; }
    MBS_Model* getModel() const { return model; }

    /// Correction of the last solve: accelerations, then multipliers.
    const std::vector<double>& getCorrection() const { return correction; }
    /// Right-hand side of the last solve in the units of a force: where the equations aren't fulfilled.
    const std::vector<double>& getRightHandSide() const { return rightHandSide; }
    const SparseSolver& getSolver() const { return *solver; }

    /// Names what solutions to come depend on beside the state: the factorised matrix. The equations left out
    /// must be the same.
    void exchangeHistory(MBS_History& history) { solver->exchangeHistory(history); }

    /// Seconds spent in the kernel so far.
    double getKernelSeconds() const { return std::chrono::duration<double>(kernelTime).count(); }

    MBS_ModelPhysicalDofVector residual;                                     ///< R of the last `evaluate`
    MBS_ModelConstraintDofVector constraintResidual;                         ///< C of the last `evaluate`
    MBS_ModelPhysicalDofVector elasticForces, dampingForces, externalForces; ///< of the last `evaluate`
    std::vector<double> bodyMasses;                                          ///< per body
    std::vector<double> modalMasses;   ///< per coordinate; of modal ones alone, 0 for others
    std::vector<double> bodyGyrations; ///< per body: radius of gyration of the sum of principal moments

  private:
    using Clock = std::chrono::steady_clock;
    void measureBodies();
    void measureModes(HHTState& state);
    bool sumResidual();
    void makeMatrix();
    double multiplyConstraintRow(unsigned i, const MBS_ModelPhysicalDofVector& x) const;

    MBS_Model* model; // not owned
    unsigned numOfPhysicalDof;
    unsigned numOfConstraints;
    MBS_ModelPhysicalDofVector velInertiaForces, constraintForces;
    bool hasFlexibleBodies = false;
    MBS_ModelConstraintDofVector constraintWork, accelerationTerms;
    double typicalMass = 1.0;
    std::vector<unsigned> leftOut;
    std::vector<double> weights;
    std::unique_ptr<MBS_GlobalModelMatrix> matrix;
    std::unique_ptr<SparseSolver> solver;
    std::vector<double> correction, rightHandSide;
    Clock::duration kernelTime{};
};

} // namespace velmora::driver
