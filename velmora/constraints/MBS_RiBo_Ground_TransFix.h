#pragma once

#include "velmora/constraints/GroundFixFormulas.h"
#include "velmora/constraints/MBS_ConstraintWithState.h"
#include "velmora/constraints/MBS_SingleBodyConstraint.h"

namespace velmora {

/// Keeps the joint point of a body on the plane through "Location" that is perpendicular to one joint axis;
/// the axis stays in the ground. C = a . (r + A u) - constant.
class MBS_RiBo_Ground_TransFix final
    : public MBS_ConstraintWithState<MBS_SingleBodyConstraint, GroundTransFixState> {
  public:
    /// `axis`: 0, 1, 2 for the joint's x, y, z.
    MBS_RiBo_Ground_TransFix(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp,
                             unsigned index, unsigned axis);
    std::string getClassName() const override { return "MBS_RiBo_Ground_TransFix"; }
    void getConstraintResultData(const P* q, const P* qd, const P* qdd, const C* multipliers,
                                 ResultData& data) override;

  private:
    void setConstants(unsigned axis);
    void aimBlocks() override;

    Vec3 resultPoint; // joint point, body frame
};

/// t = a, r = J(e; u)' a.
class MBS_RiBo_Ground_TransFix_CqT : public MBS_BlockWithState<MBS_SingleBody_CqT, MBS_RiBo_Ground_TransFix> {
  public:
    explicit MBS_RiBo_Ground_TransFix_CqT(const MBS_RiBo_Ground_TransFix& c) : MBS_BlockWithState(c, true) {}
    std::string getClassName() const override { return "MBS_RiBo_Ground_TransFix_CqT"; }
    void update(double, const P* q, const P*, const P*) override { state().setCqT(q); }
};

/// r = J(de/dt; u)' a.
class MBS_RiBo_Ground_TransFix_CqTdT
    : public MBS_BlockWithState<MBS_SingleBody_CqT, MBS_RiBo_Ground_TransFix> {
  public:
    explicit MBS_RiBo_Ground_TransFix_CqTdT(const MBS_RiBo_Ground_TransFix& c)
        : MBS_BlockWithState(c, false) {}
    std::string getClassName() const override { return "MBS_RiBo_Ground_TransFix_CqTdT"; }
    void update(double, const P*, const P* qd, const P*) override { state().setCqTdT(qd); }
};

/// rr = lambda E(a; u).
class MBS_RiBo_Ground_TransFix_CqTLe_q
    : public MBS_BlockWithState<MBS_BodyGroundConstraint_CqTLe_q, MBS_RiBo_Ground_TransFix> {
  public:
    explicit MBS_RiBo_Ground_TransFix_CqTLe_q(const MBS_RiBo_Ground_TransFix& c) : MBS_BlockWithState(c) {}
    std::string getClassName() const override { return "MBS_RiBo_Ground_TransFix_CqTLe_q"; }
    void update(double, const P*, const P*, const P*, const C* lagrange) override {
        state().setCqTLe_q(lambda(lagrange));
    }
};

} // namespace velmora
