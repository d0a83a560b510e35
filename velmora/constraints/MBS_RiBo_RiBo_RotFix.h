#pragma once

#include "velmora/constraints/BodyBodyFixFormulas.h"
#include "velmora/constraints/MBS_BodyBodyConstraint.h"
#include "velmora/constraints/MBS_ConstraintWithState.h"

namespace velmora {

/// Keeps the angle between a joint axis of body 1 and one of body 2, and so fixes the rotation about the
/// third axis. C = (A1 abar1) . (A2 abar2) - constant.
class MBS_RiBo_RiBo_RotFix final : public MBS_ConstraintWithState<MBS_BodyBodyConstraint, RotFixState> {
  public:
    /// `axis`: 0, 1, 2 for the joint's x, y, z.
    MBS_RiBo_RiBo_RotFix(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp,
                         unsigned index, unsigned axis);
    std::string getClassName() const override { return "MBS_RiBo_RiBo_RotFix"; }
    void getConstraintResultData(const P* q, const P* qd, const P* qdd, const C* multipliers,
                                 ResultData& data) override;

  private:
    void setConstants(unsigned axis);
    void aimBlocks() override;

    Vec3 resultPoint1, resultPoint2; // joint point in the frames of the bodies
};

// The blocks; formulas stand in BodyBodyFixFormulas.h.

class MBS_RiBo_RiBo_RotFix_CqT_1 : public MBS_BlockWithState<MBS_BodyBody_CqT, MBS_RiBo_RiBo_RotFix> {
  public:
    explicit MBS_RiBo_RiBo_RotFix_CqT_1(const MBS_RiBo_RiBo_RotFix& c) : MBS_BlockWithState(c, 0, false) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_RotFix_CqT_1"; }
    void update(double, const P* q, const P*, const P*) override { state().setCqT_1(state().J1(q)); }
};

class MBS_RiBo_RiBo_RotFix_CqT_2 : public MBS_BlockWithState<MBS_BodyBody_CqT, MBS_RiBo_RiBo_RotFix> {
  public:
    explicit MBS_RiBo_RiBo_RotFix_CqT_2(const MBS_RiBo_RiBo_RotFix& c) : MBS_BlockWithState(c, 1, false) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_RotFix_CqT_2"; }
    void update(double, const P* q, const P*, const P*) override { state().setCqT_2(state().J2(q)); }
};

class MBS_RiBo_RiBo_RotFix_CqTdT_1 : public MBS_BlockWithState<MBS_BodyBody_CqT, MBS_RiBo_RiBo_RotFix> {
  public:
    explicit MBS_RiBo_RiBo_RotFix_CqTdT_1(const MBS_RiBo_RiBo_RotFix& c) : MBS_BlockWithState(c, 0, false) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_RotFix_CqTdT_1"; }
    void update(double, const P* q, const P* qd, const P*) override {
        state().setCqTdT_1(state().motion(q, qd));
    }
};

class MBS_RiBo_RiBo_RotFix_CqTdT_2 : public MBS_BlockWithState<MBS_BodyBody_CqT, MBS_RiBo_RiBo_RotFix> {
  public:
    explicit MBS_RiBo_RiBo_RotFix_CqTdT_2(const MBS_RiBo_RiBo_RotFix& c) : MBS_BlockWithState(c, 1, false) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_RotFix_CqTdT_2"; }
    void update(double, const P* q, const P* qd, const P*) override {
        state().setCqTdT_2(state().motion(q, qd));
    }
};

class MBS_RiBo_RiBo_RotFix_CqTLe_q_11
    : public MBS_BlockWithState<MBS_BodyBodyConstraint_CqTLe_q, MBS_RiBo_RiBo_RotFix> {
  public:
    explicit MBS_RiBo_RiBo_RotFix_CqTLe_q_11(const MBS_RiBo_RiBo_RotFix& c)
        : MBS_BlockWithState(c, 0, 0, Places{{Rot, Rot}}) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_RotFix_CqTLe_q_11"; }
    void update(double, const P*, const P*, const P*, const C* lagrange) override {
        state().setCqTLe_q_11(lambda(lagrange));
    }
};

class MBS_RiBo_RiBo_RotFix_CqTLe_q_12
    : public MBS_BlockWithState<MBS_BodyBodyConstraint_CqTLe_q, MBS_RiBo_RiBo_RotFix> {
  public:
    explicit MBS_RiBo_RiBo_RotFix_CqTLe_q_12(const MBS_RiBo_RiBo_RotFix& c)
        : MBS_BlockWithState(c, 0, 1, Places{{Rot, Rot}}) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_RotFix_CqTLe_q_12"; }
    void update(double, const P* q, const P*, const P*, const C* lagrange) override {
        state().setCqTLe_q_12(lambda(lagrange), state().J1(q), state().J2(q));
    }
};

class MBS_RiBo_RiBo_RotFix_CqTLe_q_21
    : public MBS_BlockWithState<MBS_BodyBodyConstraint_CqTLe_q, MBS_RiBo_RiBo_RotFix> {
  public:
    explicit MBS_RiBo_RiBo_RotFix_CqTLe_q_21(const MBS_RiBo_RiBo_RotFix& c)
        : MBS_BlockWithState(c, 1, 0, Places{{Rot, Rot}}) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_RotFix_CqTLe_q_21"; }
    void update(double, const P*, const P*, const P*, const C*) override { state().setCqTLe_q_21(); }
};

class MBS_RiBo_RiBo_RotFix_CqTLe_q_22
    : public MBS_BlockWithState<MBS_BodyBodyConstraint_CqTLe_q, MBS_RiBo_RiBo_RotFix> {
  public:
    explicit MBS_RiBo_RiBo_RotFix_CqTLe_q_22(const MBS_RiBo_RiBo_RotFix& c)
        : MBS_BlockWithState(c, 1, 1, Places{{Rot, Rot}}) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_RotFix_CqTLe_q_22"; }
    void update(double, const P*, const P*, const P*, const C* lagrange) override {
        state().setCqTLe_q_22(lambda(lagrange));
    }
};

} // namespace velmora
