#pragma once

#include "velmora/constraints/MBS_SingleBodyConstraint.h"
#include "velmora/constraints/TimeMotion.h"

#include <vector>

namespace velmora {

/// Makes a measure m of one body follow a function of time: C = m(q) - g(t), g as `TimeMotion` tells. The
/// measure is a position along a global axis, or an angle in a plane that is fixed in space; all derivatives
/// are the measure's. It must be current whenever the residual is asked for.
class MBS_RiBo_Time_Motion final : public MBS_SingleBodyConstraint {
  public:
    /// Reads the keys of `TimeMotion`. Errors beside those of the root: the block's text with one of the
    /// messages of `TimeMotion::set` behind it.
    MBS_RiBo_Time_Motion(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp,
                         unsigned index);
    std::string getClassName() const override { return "MBS_RiBo_Time_Motion"; }
    void getAndUpdateConstraints(double t, const P* q, const P* qd, const P* qdd, C* out) override;
    void get_C_t(double t, const P* q, const P* qd, const P* qdd, C* out) override;
    void get_C_t_order2(double t, const P* q, const P* qd, const P* qdd, C* out) override;
    void getConstraintResultData(const P* q, const P* qd, const P* qdd, const C* multipliers,
                                 ResultData& data) override;
    void resetStartPolynomial() override { motion.resetStartPolynomial(); }
    void exchangeHistory(MBS_History& history) override { motion.exchangeHistory(history); }

  private:
    Vec3 localPoint; // of the reactions, body frame
    TimeMotion motion;
};

class MBS_RiBo_Time_Motion_CqT : public MBS_SingleBody_CqT {
  public:
    MBS_RiBo_Time_Motion_CqT(const MBS_RiBo_Time_Motion& constraint, MBS_Measure& measure);
    std::string getClassName() const override { return "MBS_RiBo_Time_Motion_CqT"; }
    void update(double t, const P* q, const P* qd, const P* qdd) override;

  private:
    MeasureRow row;
};

class MBS_RiBo_Time_Motion_CqTdT : public MBS_SingleBody_CqT {
  public:
    MBS_RiBo_Time_Motion_CqTdT(const MBS_RiBo_Time_Motion& constraint, MBS_Measure& measure);
    std::string getClassName() const override { return "MBS_RiBo_Time_Motion_CqTdT"; }
    /// Updates the measure first: the row of an angle reads what that leaves.
    void update(double t, const P* q, const P* qd, const P* qdd) override;

  private:
    MeasureRow row;
};

class MBS_RiBo_Time_Motion_CqTLe_q : public MBS_BodyGroundConstraint_CqTLe_q {
  public:
    MBS_RiBo_Time_Motion_CqTLe_q(const MBS_RiBo_Time_Motion& constraint, MBS_Measure& measure);
    std::string getClassName() const override { return "MBS_RiBo_Time_Motion_CqTLe_q"; }
    void update(double t, const P* q, const P* qd, const P* qdd, const C* lagrange) override;

  private:
    unsigned constraintIndex;
    MBS_Measure* motionMeasure; // not owned
};

} // namespace velmora
