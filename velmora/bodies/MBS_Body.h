#pragma once

#include "velmora/bodies/MBS_ActorPull.h"
#include "velmora/bodies/MBS_BodyCommons.h"
#include "velmora/bodies/MBS_BodyParameter.h"
#include "velmora/bodies/MBS_GeneralSingleBodyMatrix.h"
#include "velmora/bodies/MBS_InnerConstraint_CqT.h"
#include "velmora/model/MBS_ModelObject.h"

#include <memory>
#include <span>
#include <vector>

namespace velmora {

class MBS_BodyGroup;
class MBS_ModelConstraintDofVector;

/// What every body offers the model. Coordinates: r (3, global frame), p (4 Euler parameters), modal
/// coordinates; velocities and accelerations are the time derivatives of these very numbers.
///
/// Every body has one inner constraint, C = p'p - 1 - `initialNormOffset`: the norm of p keeps its initial
/// value.
class MBS_Body : public MBS_ModelObject {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;
    using Matrix = std::unique_ptr<MBS_GeneralSingleBodyMatrix>;

    /// Reads "BodyName" (text, default "noName") and "RegardVelocityInertiaForcesInsideJacobian" (bool,
    /// default yes).
    MBS_Body(IO_DataModelBlock* block, MBS_Model* owner, unsigned index, unsigned numOfFlexDof);
    ~MBS_Body() override;

    std::string getClassName() const override { return "MBS_Body"; }

    virtual void updateBodyData() {}
    /// Quadratic velocity vector into the body's part of Q; needs current commons.
    virtual void getVelInertiaForces(const P* q, const P* qd, P* Q) = 0;
    virtual void getElasticForces(const P* q, P* Q) = 0;
    virtual void getDampingForces(const P* qd, P* Q) = 0;
    /// Refreshes kinematics, mass matrix and the Jacobian of the inner constraint.
    virtual void updateForMotion(double t, const P* q, const P* qd, const P* qdd);
    /// Refreshes all other derivative blocks at the state of the last `updateForMotion`.
    virtual void updateForJacobian(double t, const P* q, const P* qd, const P* qdd, const C* multipliers);
    /// Body's part of out = M qdd.
    virtual void getAccInertiaForces(const P* qdd, P* out) const;
    /// Body's part of out = Cq' lambda of the inner constraint.
    virtual void getInnerConstraintForces(const C* multipliers, P* out) const;
    /// Q = (d(M qdd)/dq)' w over the rotational and flexible coordinates.
    virtual void getMqddDqTimesW(const P* w, P* Q);
    virtual void copyInitialData(P* q, P* qd) const;
    virtual bool isRigidBody() const = 0;
    virtual bool isZeroInertiaBody() const { return false; }
    /// Natural circular frequencies of the modes, rad/s; null for a rigid body.
    virtual const std::vector<double>* getOmegaOfModes() const { return nullptr; }
    virtual void setTimeOfLastSuccessfulStep(double t) { timeOfLastSuccessfulStep = t; }

    /// Total mass; 0.0 for a body without parameters.
    double getMass() const { return parameter ? parameter->getMass() : 0.0; }
    /// Residual of the inner constraint.
    double getNormResidual(const P* q) const;
    /// Right-hand side of the position-level solve into the body's part of `out` (null: nothing): the sum
    /// over active actors of J' W (target - r - A u) with J = [1, J(p, u)].
    void computeBbar(const P* q, P* out) const;

    /// Group of these bodies: this one and those after it, all of one class; null if the class has no group
    /// of its own. To be called once, before anything keeps pointers to the commons or to the elements of
    /// blocks, which may move.
    virtual std::shared_ptr<MBS_BodyGroup> makeGroup(std::span<const std::unique_ptr<MBS_Body>>) {
        return nullptr;
    }

    MBS_BodyShape getShape() const {
        return {bodyIndex, numTransDof, numRotDof, numFlexDof, numInnerConstraintDof};
    }
    unsigned getNumOfDof() const { return numTransDof + numRotDof + numFlexDof; }

    std::string bodyName = "noName";
    double initialNormOffset = 0.0; ///< p'p - 1 at the start
    bool regardVelocityInertiaForcesInsideJacobian = true;
    std::vector<double> initialPositions, initialVelocities; ///< over all coordinates of the body
    std::unique_ptr<MBS_BodyParameter> parameter;
    MBS_BodyCommons* commons = nullptr; ///< not owned; null if the construction failed

    // Derivative blocks; null where a class has none.
    Matrix massMatrix;     ///< M
    Matrix mQdd_q;         ///< d(M qdd)/dq
    Matrix qvv_q;          ///< dQ_velInertia/dq
    Matrix qvv_qd;         ///< dQ_velInertia/dqd
    Matrix cqLi_q;         ///< d(Cq' lambda)/dq of the inner constraint
    Matrix stiffnessBlock; ///< dF_elastic/dq
    Matrix dampingBlock;   ///< dF_damping/dqd
    Matrix aBar4KinSolver; ///< matrix of the position-level solve
    std::unique_ptr<MBS_InnerConstraint_CqT> cqT, cqTdT;

    unsigned numTransDof = 3;
    unsigned numRotDof = 4;
    unsigned numFlexDof;
    unsigned numInnerConstraintDof = 1;
    unsigned bodyIndex;
    double timeOfLastSuccessfulStep = 0.0;
    std::vector<MBS_ActorPull*> actors; ///< actors on this body, in their order; not owned

    Vec3 position;       ///< r at the start
    Mat3 rotationMatrix; ///< A at the start

  protected:
    /// Sets the initial Euler parameters and their rates from the axes of the body (columns) and its angular
    /// velocity, both in the global frame, and the norm that the parameters keep.
    void setInitialRotation(const Mat3& orientation, const Vec3& omega);
    /// Sets `position` and `rotationMatrix` from the initial coordinates.
    void updateInitialPose();
    /// Clears the body's part of Q.
    void clear(P* Q) const;
};

} // namespace velmora
