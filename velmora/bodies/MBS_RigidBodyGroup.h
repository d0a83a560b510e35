#pragma once

#include "velmora/bodies/MBS_BodyGroup.h"
#include "velmora/bodies/MBS_RigidBody_EulerP_PAI_Commons.h"
#include "velmora/platform/LargePages.h"

namespace velmora {

class MBS_RigidBody_EulerP_PAI;

/// Numbers of neighbouring rigid bodies, one array per use: an evaluation touches the arrays that it needs
/// and nothing else. The dense blocks of the bodies aim into these arrays, and their `update` computes by the
/// same formulas. A body that belongs to no model yet has a group of its own.
class MBS_RigidBodyGroup final : public MBS_BodyGroup {
  public:
    /// Blocks that an `updateForJacobian` writes. Those of the inertia are unused in a massless body.
    struct JacobianElements {
        Mat4 mQdd_q, qvv_q, qvv_qd;
        Mat4 cqLi_q; ///< diagonal
    };

    /// Room for this many bodies; indices are consecutive from `firstBody` on.
    MBS_RigidBodyGroup(unsigned firstBody, std::size_t capacity);

    /// Appends a body; its kinematics and inertia are those of `bodyCommons`. `normOffset` is p'p - 1 at the
    /// start.
    void add(const MBS_RigidBody_EulerP_PAI_Commons& bodyCommons, double totalMass, double normOffset);

    void updateForMotion(double t, const P* q, const P* qd, const P* qdd) override;
    void updateForJacobian(double t, const P* q, const P* qd, const P* qdd, const C* multipliers) override;
    void getAccInertiaForces(const P* qdd, P* out) const override;
    void getVelInertiaForces(const P* q, const P* qd, P* out) const override;
    void getInnerConstraintForces(const C* multipliers, P* out) const override;
    void getNormResiduals(const P* q, C* out) const override;

    // The same for body k of the group; the pointers aim at its own coordinates.
    void updateForMotion(std::size_t k, const double* q, const double* qd);
    void updateForJacobian(std::size_t k, const double* qdd, double lambda);
    void getAccInertiaForces(std::size_t k, const double* qdd, double* out) const;
    void getVelInertiaForces(std::size_t k, double* out) const;
    void getInnerConstraintForces(std::size_t k, double lambda, double* out) const;

    EvaluationArray<MBS_RigidBody_EulerP_PAI_Commons> commons;
    EvaluationArray<double> mass, initialNormOffset;
    EvaluationArray<Mat3> massTrans; ///< m 1
    EvaluationArray<Mat4> massRot;   ///< Gbar' I Gbar
    EvaluationArray<Vec4> cqT, cqTdT;
    EvaluationArray<JacobianElements> jacobian;

  private:
    unsigned firstBodyIndex;
};

} // namespace velmora
