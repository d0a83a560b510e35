#pragma once

#include "velmora/bodies/MBS_BodyCommons.h"
#include "velmora/bodies/MBS_BodyParameter.h"

namespace velmora {

/// Mass and principal moments of inertia of a rigid body, about its centre of mass.
class MBS_RigidBody_EulerP_PAI_Parameter : public MBS_BodyParameter {
  public:
    MBS_RigidBody_EulerP_PAI_Parameter(double totalMass, const Vec3& principalMoments)
        : mass(totalMass),
          inertia(principalMoments) {}
    std::string getClassName() const override { return "MBS_RigidBody_EulerP_PAI_Parameter"; }
    double getMass() const override { return mass; }
    void getInertiaComponents(double* components) const override;

    double mass;
    Vec3 inertia; ///< I1, I2, I3
};

/// Kinematic products of a rigid body with its inertia in them; a massless body has none of these.
class MBS_RigidBody_EulerP_PAI_Commons : public MBS_BodyCommons {
  public:
    using MBS_BodyCommons::MBS_BodyCommons;
    void setParameter(const MBS_RigidBody_EulerP_PAI_Parameter& parameter);
    std::string getClassName() const override { return "MBS_RigidBody_EulerP_PAI_Commons"; }
    void update(double time, const P* q, const P* qd, const P* qdd) override;
    /// `update` from the Euler parameters and their rates.
    void setState(const Vec4& eulerParameters, const Vec4& rates) {
        MBS_BodyCommons::setState(eulerParameters, rates);
        if (!isMassless)
            IbarOmegaBar = diagTimes(Ibar, omegaBar);
    }
    /// tilde(w) I - tilde(I w): the derivative of w x I w with respect to w.
    Mat3 gyroscopicMatrix() const;

    Vec3 IbarOmegaBar; ///< diag(I) omegaBar: angular momentum about the centre of mass, body frame
    Vec3 Ibar;         ///< I1, I2, I3
    bool isMassless = false;
    bool regardVelocityInertiaForcesInsideJacobian = true;
};

} // namespace velmora
