#pragma once

#include "velmora/bodies/MBS_Body.h"
#include "velmora/bodies/MBS_RigidBody_EulerP_PAI_Commons.h"

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
    void moveStorage(const std::shared_ptr<double[]>& arena, std::size_t place) override;
    bool isRigidBody() const override { return true; }
    bool isZeroInertiaBody() const override { return isZeroInertia; }

    bool isZeroInertia = false; ///< the mass is 0.0

  private:
    void setInitialRotation(const Mat3& orientation, const Vec3& omega);
    void createBlocks();
    void findElements();

    /// Where the elements of the blocks lie, so that an evaluation reaches them without the blocks' headers.
    /// The formulas are those of the blocks' own `update`. Null for what a massless body lacks.
    struct Elements {
        double *mass, *mQdd_q, *qvv_q, *qvv_qd; // 4x4
        double* cqLi_q;                         // 4x4 diagonal
        double *cqT, *cqTdT;                    // 4x1
    };
    Elements elements{};
    double totalMass = 0.0;
    MBS_RigidBody_EulerP_PAI_Commons rigidCommons;
};

} // namespace velmora
