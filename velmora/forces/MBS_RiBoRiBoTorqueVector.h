#pragma once

#include "velmora/forces/ExpressionForce.h"

namespace velmora {

/// Equal and opposite torques on two rigid bodies, their magnitude an expression: tau = T e acts on body 1
/// and -tau on body 2, Q1 = [0; G1' tau], Q2 = -[0; G2' tau]. A body-fixed axis is fixed in body 1.
///
/// Blocks of dQ/dq exist in pairs, of the rows of body 1 and of body 2: for the columns of both bodies, and
/// of the bodies that a measure of the expression depends on. Blocks of dQ/dqd are there for measures alone.
class MBS_RiBoRiBoTorqueVector final : public ExpressionForce<MBS_BodyBodyForce> {
  public:
    /// Reads "BodyIDs", "TorqueExpression", "Axis" (3, norm 1, global, at the start) and "AxisType"
    /// ("BodyFixed" or "SpaceFixed"). Errors: a key missing or faulty; "AxisType not defined!". An axis of
    /// another norm gives no torque.
    MBS_RiBoRiBoTorqueVector(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);

    std::string getClassName() const override { return "MBS_RiBoRiBoTorqueVector"; }
    void getForceResultData(const P* q, const P* qd, const P* qdd, const C* multipliers,
                            ResultData& data) override;
    void updateColumn(double t, const P* q, const P* qd, const P* qdd, const C* multipliers,
                      std::size_t k) override;

    Vec4 rotationalTorque1, rotationalTorque2; ///< G1' tau and -G2' tau of the last evaluation

  private:
    void addLoad(const Vec3& tau, const P* q, P* Q) override;
};

/// Root of this torque's derivative blocks, which have rotational rows alone.
class MBS_RiBoRiBoTorqueVector_Qe_X : public PairLoadBlock {
  public:
    MBS_RiBoRiBoTorqueVector_Qe_X(ExpressionForce<MBS_BodyBodyForce>& owner, const MBS_Body& rowBody,
                                  const MBS_Body& colBody, std::size_t ownColumn);
};

/// dQ1/dq = G1' D, D = dtau/dq; for body 1 with H(tau) in the rotational place.
class MBS_RiBoRiBoTorqueVector_Qe_q_1x final : public MBS_RiBoRiBoTorqueVector_Qe_X {
  public:
    using MBS_RiBoRiBoTorqueVector_Qe_X::MBS_RiBoRiBoTorqueVector_Qe_X;
    std::string getClassName() const override { return "MBS_RiBoRiBoTorqueVector_Qe_q_1x"; }
};

/// dQ2/dq = -G2' D; for body 2 with H(-tau) in the rotational place.
class MBS_RiBoRiBoTorqueVector_Qe_q_2x final : public MBS_RiBoRiBoTorqueVector_Qe_X {
  public:
    using MBS_RiBoRiBoTorqueVector_Qe_X::MBS_RiBoRiBoTorqueVector_Qe_X;
    std::string getClassName() const override { return "MBS_RiBoRiBoTorqueVector_Qe_q_2x"; }
};

/// dQ1/dqd = G1' D, D = dtau/dqd.
class MBS_RiBoRiBoTorqueVector_Qe_qd_1x final : public MBS_RiBoRiBoTorqueVector_Qe_X {
  public:
    using MBS_RiBoRiBoTorqueVector_Qe_X::MBS_RiBoRiBoTorqueVector_Qe_X;
    std::string getClassName() const override { return "MBS_RiBoRiBoTorqueVector_Qe_qd_1x"; }
};

/// dQ2/dqd = -G2' D.
class MBS_RiBoRiBoTorqueVector_Qe_qd_2x final : public MBS_RiBoRiBoTorqueVector_Qe_X {
  public:
    using MBS_RiBoRiBoTorqueVector_Qe_X::MBS_RiBoRiBoTorqueVector_Qe_X;
    std::string getClassName() const override { return "MBS_RiBoRiBoTorqueVector_Qe_qd_2x"; }
};

} // namespace velmora
