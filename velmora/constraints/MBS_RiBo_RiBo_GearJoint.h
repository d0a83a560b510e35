#pragma once

#include "velmora/constraints/GearFormulas.h"
#include "velmora/constraints/MBS_BodyBodyConstraint.h"
#include "velmora/constraints/MBS_ConstraintWithState.h"

namespace velmora {

/// Holds the angles by which two bodies have turned about their axes in a constant ratio, over any number of
/// turns: C = k1 (half angle of body 1) - k2 (half angle of body 2). Turns are counted at every evaluation,
/// so that successive evaluations must lie less than half a turn apart.
class MBS_RiBo_RiBo_GearJoint final : public MBS_ConstraintWithState<MBS_BodyBodyConstraint, GearState> {
  public:
    /// Reads "LocationBody1", "LocationBody2" (points of the results), "VectorBody1", "VectorBody2" (axes),
    /// all global in the initial configuration, and "Multiplier" (k1, k2).
    MBS_RiBo_RiBo_GearJoint(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp,
                            unsigned index);
    std::string getClassName() const override { return "MBS_RiBo_RiBo_GearJoint"; }
    void getConstraintResultData(const P* q, const P* qd, const P* qdd, const C* multipliers,
                                 ResultData& data) override;
    void exchangeHistory(MBS_History& history) override;

  private:
    void readKeys(IO_DataModelBlock& block);
    void aimBlocks() override;

    Vec3 localPoint1, localPoint2; // points of the results in the frames of the bodies
};

// The blocks; formulas stand in GearFormulas.h.

class MBS_RiBo_RiBo_GearJoint_CqT_1 : public MBS_BlockWithState<MBS_BodyBody_CqT, MBS_RiBo_RiBo_GearJoint> {
  public:
    explicit MBS_RiBo_RiBo_GearJoint_CqT_1(const MBS_RiBo_RiBo_GearJoint& c)
        : MBS_BlockWithState(c, 0, false) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_GearJoint_CqT_1"; }
    void update(double, const P* q, const P*, const P*) override { state().side1.setCqT(q); }
};

class MBS_RiBo_RiBo_GearJoint_CqT_2 : public MBS_BlockWithState<MBS_BodyBody_CqT, MBS_RiBo_RiBo_GearJoint> {
  public:
    explicit MBS_RiBo_RiBo_GearJoint_CqT_2(const MBS_RiBo_RiBo_GearJoint& c)
        : MBS_BlockWithState(c, 1, false) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_GearJoint_CqT_2"; }
    void update(double, const P* q, const P*, const P*) override { state().side2.setCqT(q); }
};

class MBS_RiBo_RiBo_GearJoint_CqTdT_1 : public MBS_BlockWithState<MBS_BodyBody_CqT, MBS_RiBo_RiBo_GearJoint> {
  public:
    explicit MBS_RiBo_RiBo_GearJoint_CqTdT_1(const MBS_RiBo_RiBo_GearJoint& c)
        : MBS_BlockWithState(c, 0, false) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_GearJoint_CqTdT_1"; }
    void update(double, const P* q, const P* qd, const P*) override { state().side1.setCqTdT(q, qd); }
};

class MBS_RiBo_RiBo_GearJoint_CqTdT_2 : public MBS_BlockWithState<MBS_BodyBody_CqT, MBS_RiBo_RiBo_GearJoint> {
  public:
    explicit MBS_RiBo_RiBo_GearJoint_CqTdT_2(const MBS_RiBo_RiBo_GearJoint& c)
        : MBS_BlockWithState(c, 1, false) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_GearJoint_CqTdT_2"; }
    void update(double, const P* q, const P* qd, const P*) override { state().side2.setCqTdT(q, qd); }
};

class MBS_RiBo_RiBo_GearJoint_CqTLe_q_11
    : public MBS_BlockWithState<MBS_BodyBodyConstraint_CqTLe_q, MBS_RiBo_RiBo_GearJoint> {
  public:
    explicit MBS_RiBo_RiBo_GearJoint_CqTLe_q_11(const MBS_RiBo_RiBo_GearJoint& c)
        : MBS_BlockWithState(c, 0, 0, Places{{Rot, Rot}}) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_GearJoint_CqTLe_q_11"; }
    void update(double, const P* q, const P*, const P*, const C* lagrange) override {
        state().side1.setCqTLe_q(lambda(lagrange), q);
    }
};

class MBS_RiBo_RiBo_GearJoint_CqTLe_q_22
    : public MBS_BlockWithState<MBS_BodyBodyConstraint_CqTLe_q, MBS_RiBo_RiBo_GearJoint> {
  public:
    explicit MBS_RiBo_RiBo_GearJoint_CqTLe_q_22(const MBS_RiBo_RiBo_GearJoint& c)
        : MBS_BlockWithState(c, 1, 1, Places{{Rot, Rot}}) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_GearJoint_CqTLe_q_22"; }
    void update(double, const P* q, const P*, const P*, const C* lagrange) override {
        state().side2.setCqTLe_q(lambda(lagrange), q);
    }
};

} // namespace velmora
