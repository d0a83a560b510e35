#pragma once

#include "velmora/forces/ExpressionForce.h"

namespace velmora {

/// Torque on a rigid body, its magnitude an expression: Q = [0; G' tau], tau = T e. A positive T turns the
/// body in the positive sense about e.
///
/// The block of dQ/dq exists for the own body, and for those that a measure of the expression depends on.
/// Blocks of dQ/dqd are there for measures alone.
class MBS_SingleRiBoTorqueVector final : public ExpressionForce<MBS_SingleBodyForce> {
  public:
    /// Reads "BodyIDs", "TorqueExpression", "Axis" (3, norm 1, global, at the start) and "AxisType"
    /// ("BodyFixed" or "SpaceFixed"). Errors: a key missing or faulty; "AxisType <...> not defined!". An axis
    /// of another norm gives no torque.
    MBS_SingleRiBoTorqueVector(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);

    std::string getClassName() const override { return "MBS_SingleRiBoTorqueVector"; }
    void getForceResultData(const P* q, const P* qd, const P* qdd, const C* multipliers,
                            ResultData& data) override;
    void updateColumn(double t, const P* q, const P* qd, const P* qdd, const C* multipliers,
                      std::size_t k) override;

    Vec4 rotationalTorque; ///< G' tau of the last evaluation

  private:
    void addLoad(const Vec3& tau, const P* q, P* Q) override;
};

/// Root of this torque's derivative blocks, which have rotational rows alone.
class MBS_SingleRiBoTorqueVector_Qe_X : public SingleLoadBlock {
  public:
    MBS_SingleRiBoTorqueVector_Qe_X(ExpressionForce<MBS_SingleBodyForce>& owner, const MBS_Body& rowBody,
                                    const MBS_Body& colBody, std::size_t ownColumn);
};

/// dQ/dq = G' D, D = dtau/dq; for the own body with H(tau) in the rotational place.
class MBS_SingleRiBoTorqueVector_Qe_q final : public MBS_SingleRiBoTorqueVector_Qe_X {
  public:
    using MBS_SingleRiBoTorqueVector_Qe_X::MBS_SingleRiBoTorqueVector_Qe_X;
    std::string getClassName() const override { return "MBS_SingleRiBoTorqueVector_Qe_q"; }
};

/// dQ/dqd = G' D, D = dtau/dqd.
class MBS_SingleRiBoTorqueVector_Qe_qd final : public MBS_SingleRiBoTorqueVector_Qe_X {
  public:
    using MBS_SingleRiBoTorqueVector_Qe_X::MBS_SingleRiBoTorqueVector_Qe_X;
    std::string getClassName() const override { return "MBS_SingleRiBoTorqueVector_Qe_qd"; }
};

} // namespace velmora
