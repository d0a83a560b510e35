#pragma once

#include "velmora/forces/ExpressionForce.h"

namespace velmora {

/// Equal and opposite forces at points of two rigid bodies, their magnitude an expression: f = F e acts on
/// body 1 and -f on body 2, Q1 = [f; J(p1, u1)' f], Q2 = -[f; J(p2, u2)' f]. Along a line of sight a positive
/// F pulls the points together; a body-fixed direction is fixed in body 1.
///
/// Blocks of dQ/dq exist in pairs, of the rows of body 1 and of body 2: for the columns of both bodies, and
/// of the bodies that a measure of the expression depends on. Blocks of dQ/dqd are there for measures alone.
class MBS_RiBoRiBoForceVector final : public ExpressionForce<MBS_BodyBodyForce> {
  public:
    /// Reads "BodyIDs", "ForceExpression", "PointOfApplication_Body1" (3), "PointOfApplication_Body2" (3),
    /// "ForceDirectionType" ("In-line-of-sight", "BodyFixed" or "SpaceFixed") and, unless along a line of
    /// sight, "ForceDirection" (3, norm 1). Points and directions are global, at the start. Errors: a key
    /// missing or faulty; "ForceDirectionType not available in input-file!", "ForceDirectionType not
    /// defined!". A direction of another norm gives no force.
    MBS_RiBoRiBoForceVector(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);

    std::string getClassName() const override { return "MBS_RiBoRiBoForceVector"; }
    void getForceResultData(const P* q, const P* qd, const P* qdd, const C* multipliers,
                            ResultData& data) override;
    void updateColumn(double t, const P* q, const P* qd, const P* qdd, const C* multipliers,
                      std::size_t k) override;

    Vec3 localPoint1, localPoint2;           ///< u1, u2, frames of the bodies
    Vec3 forceVector;                        ///< f of the last evaluation, global frame
    Vec4 rotationalForce1, rotationalForce2; ///< J1' f and -J2' f of the last evaluation
    Mat34 pointJacobian1, pointJacobian2;    ///< J(p1, u1), J(p2, u2) of the last evaluation

  private:
    void addLoad(const Vec3& f, const P* q, P* Q) override;
};

/// Root of this force's derivative blocks.
using MBS_RiBoRiBoForceVector_Qe_X = PairLoadBlock;

/// dQ1/dq = [D; J1' D], D = df/dq; for body 1 with E(f; u1) in the rotational place.
class MBS_RiBoRiBoForceVector_Qe_q_1x final : public MBS_RiBoRiBoForceVector_Qe_X {
  public:
    using PairLoadBlock::PairLoadBlock;
    std::string getClassName() const override { return "MBS_RiBoRiBoForceVector_Qe_q_1x"; }
};

/// dQ2/dq = -[D; J2' D]; for body 2 with E(-f; u2) in the rotational place.
class MBS_RiBoRiBoForceVector_Qe_q_2x final : public MBS_RiBoRiBoForceVector_Qe_X {
  public:
    using PairLoadBlock::PairLoadBlock;
    std::string getClassName() const override { return "MBS_RiBoRiBoForceVector_Qe_q_2x"; }
};

/// dQ1/dqd = [D; J1' D], D = df/dqd.
class MBS_RiBoRiBoForceVector_Qe_qd_1x final : public MBS_RiBoRiBoForceVector_Qe_X {
  public:
    using PairLoadBlock::PairLoadBlock;
    std::string getClassName() const override { return "MBS_RiBoRiBoForceVector_Qe_qd_1x"; }
};

/// dQ2/dqd = -[D; J2' D].
class MBS_RiBoRiBoForceVector_Qe_qd_2x final : public MBS_RiBoRiBoForceVector_Qe_X {
  public:
    using PairLoadBlock::PairLoadBlock;
    std::string getClassName() const override { return "MBS_RiBoRiBoForceVector_Qe_qd_2x"; }
};

} // namespace velmora
