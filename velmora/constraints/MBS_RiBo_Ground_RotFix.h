#pragma once

#include "velmora/constraints/GroundFixFormulas.h"
#include "velmora/constraints/MBS_ConstraintWithState.h"
#include "velmora/constraints/MBS_SingleBodyConstraint.h"

namespace velmora {

/// Keeps the angle between a joint axis of the body and one of the ground, and so fixes the rotation about
/// the third axis. C = g . (A abar) - constant.
class MBS_RiBo_Ground_RotFix final
    : public MBS_ConstraintWithState<MBS_SingleBodyConstraint, GroundRotFixState> {
  public:
    /// `axis`: 0, 1, 2 for the joint's x, y, z.
    MBS_RiBo_Ground_RotFix(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp,
                           unsigned index, unsigned axis);
    std::string getClassName() const override { return "MBS_RiBo_Ground_RotFix"; }
    void getConstraintResultData(const P* q, const P* qd, const P* qdd, const C* multipliers,
                                 ResultData& data) override;

  private:
    void setConstants(unsigned axis);
    void aimBlocks() override;

    Vec3 resultPoint; // joint point, body frame
};

/// r = J(e; abar)' g.
class MBS_RiBo_Ground_RotFix_CqT : public MBS_BlockWithState<MBS_SingleBody_CqT, MBS_RiBo_Ground_RotFix> {
  public:
    explicit MBS_RiBo_Ground_RotFix_CqT(const MBS_RiBo_Ground_RotFix& c) : MBS_BlockWithState(c, false) {}
    std::string getClassName() const override { return "MBS_RiBo_Ground_RotFix_CqT"; }
    void update(double, const P* q, const P*, const P*) override { state().setCqT(q); }
};

/// r = J(de/dt; abar)' g.
class MBS_RiBo_Ground_RotFix_CqTdT : public MBS_BlockWithState<MBS_SingleBody_CqT, MBS_RiBo_Ground_RotFix> {
  public:
    explicit MBS_RiBo_Ground_RotFix_CqTdT(const MBS_RiBo_Ground_RotFix& c) : MBS_BlockWithState(c, false) {}
    std::string getClassName() const override { return "MBS_RiBo_Ground_RotFix_CqTdT"; }
    void update(double, const P*, const P* qd, const P*) override { state().setCqTdT(qd); }
};

/// rr = lambda E(g; abar).
class MBS_RiBo_Ground_RotFix_CqTLe_q
    : public MBS_BlockWithState<MBS_BodyGroundConstraint_CqTLe_q, MBS_RiBo_Ground_RotFix> {
  public:
    explicit MBS_RiBo_Ground_RotFix_CqTLe_q(const MBS_RiBo_Ground_RotFix& c) : MBS_BlockWithState(c) {}
    std::string getClassName() const override { return "MBS_RiBo_Ground_RotFix_CqTLe_q"; }
    void update(double, const P*, const P*, const P*, const C* lagrange) override {
        state().setCqTLe_q(lambda(lagrange));
    }
};

} // namespace velmora
