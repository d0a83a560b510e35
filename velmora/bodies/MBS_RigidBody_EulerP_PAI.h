#pragma once

#include "velmora/bodies/MBS_Body.h"
#include "velmora/bodies/MBS_RigidBodyGroup.h"

namespace velmora {

/// Rigid body: origin at the centre of mass, axes along the principal axes of inertia, orientation in Euler
/// parameters p, one norm constraint.
///
/// Equations of motion, with w = Gbar dp the angular velocity in the body frame (Nikravesh, chapter 8):
///
///     m r'' = F,    Gbar' I Gbar p'' + 2 p lambda = -Gbar' (w x I w) + Q_r
class MBS_RigidBody_EulerP_PAI : public MBS_Body {
  public:
    /// Reads "Mass", "Inertia" (3 principal moments), "LocationCenterMass" (3, global), "OrientationPAI"
    /// (3x3, column after column: the principal axes in the global frame; made orthonormal),
    /// "InitialVelocityVector" (3, global) and "InitialOmegaVector" (3, global). A read error ends the
    /// construction.
    MBS_RigidBody_EulerP_PAI(IO_DataModelBlock* block, MBS_Model* owner, unsigned index);

    std::string getClassName() const override { return "MBS_RigidBody_EulerP_PAI"; }
    void getVelInertiaForces(const P* q, const P* qd, P* Q) override;
    void getElasticForces(const P* q, P* Q) override;
    void getDampingForces(const P* qd, P* Q) override;
    void updateForMotion(double t, const P* q, const P* qd, const P* qdd) override;
    void updateForJacobian(double t, const P* q, const P* qd, const P* qdd, const C* multipliers) override;
    void getAccInertiaForces(const P* qdd, P* out) const override;
    void getInnerConstraintForces(const C* multipliers, P* out) const override;
    std::shared_ptr<MBS_BodyGroup> makeGroup(std::span<const std::unique_ptr<MBS_Body>> bodies) override;
    bool isRigidBody() const override { return true; }
    bool isZeroInertiaBody() const override { return isZeroInertia; }

    bool isZeroInertia = false; ///< the mass is 0.0

  private:
    void createBlocks(double mass);
    /// Adds its numbers to the group and aims the blocks into it.
    void join(const std::shared_ptr<MBS_RigidBodyGroup>& newGroup, double mass,
              const MBS_RigidBody_EulerP_PAI_Commons& currentCommons);

    std::shared_ptr<MBS_RigidBodyGroup> group;                // all numbers of an evaluation
    std::size_t place = 0;                                    // in the group
    MBS_RigidBody_EulerP_PAI_Commons* rigidCommons = nullptr; // in the group
};

} // namespace velmora
