#pragma once

#include "velmora/forces/ExpressionForce.h"

namespace velmora {

/// Force at a point of a rigid body, its magnitude an expression: Q = [f; J(p, u)' f], f = F e. Along a line
/// of sight a positive F pushes the point away from the ground point.
///
/// Blocks exist for bodies that a measure of the expression depends on, and for no others: not for the
/// force's own body, even where its rotation turns e or moves the point.
class MBS_SingleRiBoForceVector final : public ExpressionForce<MBS_SingleBodyForce> {
  public:
    /// Reads "BodyIDs", "ForceExpression", "PointOfApplication_Body1" (3), "PointOfApplication_Body2" (3: the
    /// ground point of a line of sight), "ForceDirectionType" ("In-line-of-sight", "BodyFixed" or
    /// "SpaceFixed") and, unless along a line of sight, "ForceDirection" (3, norm 1). Points and directions
    /// are global, at the start. Errors: a key missing or faulty; "ForceDirectionType not available in
    /// input-file!", "ForceDirectionType not defined!". A direction of another norm gives no force.
    MBS_SingleRiBoForceVector(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);

    std::string getClassName() const override { return "MBS_SingleRiBoForceVector"; }
    void getForceResultData(const P* q, const P* qd, const P* qdd, const C* multipliers,
                            ResultData& data) override;
    void updateColumn(double t, const P* q, const P* qd, const P* qdd, const C* multipliers,
                      std::size_t k) override;

    Vec3 localPoint;      ///< u, body frame
    Vec3 forceVector;     ///< f of the last evaluation, global frame
    Vec4 rotationalForce; ///< J' f of the last evaluation
    Mat34 pointJacobian;  ///< J(p, u) of the last evaluation
    Vec3 secondPoint;     ///< the ground point, global frame

  private:
    void addLoad(const Vec3& f, const P* q, P* Q) override;
};

/// dQ/dq = [D; J' D], D = df/dq; for the force's own body with E(f; u) in the rotational place.
class MBS_SingleRiBoForceVector_Qe_q final : public SingleLoadBlock {
  public:
    using SingleLoadBlock::SingleLoadBlock;
    std::string getClassName() const override { return "MBS_SingleRiBoForceVector_Qe_q"; }
};

/// dQ/dqd = [D; J' D], D = df/dqd.
class MBS_SingleRiBoForceVector_Qe_qd final : public SingleLoadBlock {
  public:
    using SingleLoadBlock::SingleLoadBlock;
    std::string getClassName() const override { return "MBS_SingleRiBoForceVector_Qe_qd"; }
};

} // namespace velmora
