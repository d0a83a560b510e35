#pragma once

#include "velmora/constraints/MBS_BodyBodyConstraint.h"
#include "velmora/constraints/TimeMotion.h"

namespace velmora {

/// Makes a measure m of two bodies follow a function of time: C = m(q) - g(t), g as `TimeMotion` tells. The
/// measure is a difference in the frame of body 1, a distance or an angle; all derivatives are the measure's.
/// It must be current whenever the residual is asked for.
class MBS_RiBo_RiBo_Time_Motion final : public MBS_BodyBodyConstraint {
  public:
    /// Reads the keys of `TimeMotion`. Errors beside those of the root: the block's text with one of the
    /// messages of `TimeMotion::set` behind it.
    MBS_RiBo_RiBo_Time_Motion(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp,
                              unsigned index);
    std::string getClassName() const override { return "MBS_RiBo_RiBo_Time_Motion"; }
    void getAndUpdateConstraints(double t, const P* q, const P* qd, const P* qdd, C* out) override;
    void get_C_t(double t, const P* q, const P* qd, const P* qdd, C* out) override;
    void get_C_t_order2(double t, const P* q, const P* qd, const P* qdd, C* out) override;
    void getConstraintResultData(const P* q, const P* qd, const P* qdd, const C* multipliers,
                                 ResultData& data) override;
    void resetStartPolynomial() override { motion.resetStartPolynomial(); }
    void exchangeHistory(MBS_History& history) override { motion.exchangeHistory(history); }

  private:
    void createBlocks();

    Vec3 localPoint1, localPoint2; // of the reactions, frames of the bodies
    TimeMotion motion;
};

/// Root of the CqT and CqTdT objects; `body`: 0 or 1 for the first or the second.
class MBS_RiBo_RiBo_Time_Motion_Row : public MBS_BodyBody_CqT {
  public:
    MBS_RiBo_RiBo_Time_Motion_Row(const MBS_RiBo_RiBo_Time_Motion& constraint, MBS_Measure& measure,
                                  unsigned body);

  protected:
    MeasureRow row;
};

class MBS_RiBo_RiBo_Time_Motion_CqT_1 : public MBS_RiBo_RiBo_Time_Motion_Row {
  public:
    MBS_RiBo_RiBo_Time_Motion_CqT_1(const MBS_RiBo_RiBo_Time_Motion& constraint, MBS_Measure& measure)
        : MBS_RiBo_RiBo_Time_Motion_Row(constraint, measure, 0) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_Time_Motion_CqT_1"; }
    void update(double t, const P* q, const P* qd, const P* qdd) override;
};

class MBS_RiBo_RiBo_Time_Motion_CqT_2 : public MBS_RiBo_RiBo_Time_Motion_Row {
  public:
    MBS_RiBo_RiBo_Time_Motion_CqT_2(const MBS_RiBo_RiBo_Time_Motion& constraint, MBS_Measure& measure)
        : MBS_RiBo_RiBo_Time_Motion_Row(constraint, measure, 1) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_Time_Motion_CqT_2"; }
    void update(double t, const P* q, const P* qd, const P* qdd) override;
};

/// Updates the measure first: the row of an angle reads what that leaves.
class MBS_RiBo_RiBo_Time_Motion_CqTdT_1 : public MBS_RiBo_RiBo_Time_Motion_Row {
  public:
    MBS_RiBo_RiBo_Time_Motion_CqTdT_1(const MBS_RiBo_RiBo_Time_Motion& constraint, MBS_Measure& measure)
        : MBS_RiBo_RiBo_Time_Motion_Row(constraint, measure, 0) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_Time_Motion_CqTdT_1"; }
    void update(double t, const P* q, const P* qd, const P* qdd) override;
};

/// Updates the measure first, alike.
class MBS_RiBo_RiBo_Time_Motion_CqTdT_2 : public MBS_RiBo_RiBo_Time_Motion_Row {
  public:
    MBS_RiBo_RiBo_Time_Motion_CqTdT_2(const MBS_RiBo_RiBo_Time_Motion& constraint, MBS_Measure& measure)
        : MBS_RiBo_RiBo_Time_Motion_Row(constraint, measure, 1) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_Time_Motion_CqTdT_2"; }
    void update(double t, const P* q, const P* qd, const P* qdd) override;
};

/// Root of the blocks d(Cq' lambda)/dq, with all places; `rowBody`, `colBody`: 0 or 1.
class MBS_RiBo_RiBo_Time_Motion_CqTLe_q : public MBS_BodyBodyConstraint_CqTLe_q {
  public:
    MBS_RiBo_RiBo_Time_Motion_CqTLe_q(const MBS_RiBo_RiBo_Time_Motion& constraint, MBS_Measure& measure,
                                      unsigned rowBody, unsigned colBody);
    void update(double t, const P* q, const P* qd, const P* qdd, const C* lagrange) override;

  private:
    unsigned constraintIndex, rowIndex, colIndex;
    MBS_Measure* motionMeasure; // not owned
};

class MBS_RiBo_RiBo_Time_Motion_CqTLe_q_11 : public MBS_RiBo_RiBo_Time_Motion_CqTLe_q {
  public:
    MBS_RiBo_RiBo_Time_Motion_CqTLe_q_11(const MBS_RiBo_RiBo_Time_Motion& constraint, MBS_Measure& measure)
        : MBS_RiBo_RiBo_Time_Motion_CqTLe_q(constraint, measure, 0, 0) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_Time_Motion_CqTLe_q_11"; }
};

class MBS_RiBo_RiBo_Time_Motion_CqTLe_q_12 : public MBS_RiBo_RiBo_Time_Motion_CqTLe_q {
  public:
    MBS_RiBo_RiBo_Time_Motion_CqTLe_q_12(const MBS_RiBo_RiBo_Time_Motion& constraint, MBS_Measure& measure)
        : MBS_RiBo_RiBo_Time_Motion_CqTLe_q(constraint, measure, 0, 1) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_Time_Motion_CqTLe_q_12"; }
};

class MBS_RiBo_RiBo_Time_Motion_CqTLe_q_21 : public MBS_RiBo_RiBo_Time_Motion_CqTLe_q {
  public:
    MBS_RiBo_RiBo_Time_Motion_CqTLe_q_21(const MBS_RiBo_RiBo_Time_Motion& constraint, MBS_Measure& measure)
        : MBS_RiBo_RiBo_Time_Motion_CqTLe_q(constraint, measure, 1, 0) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_Time_Motion_CqTLe_q_21"; }
};

class MBS_RiBo_RiBo_Time_Motion_CqTLe_q_22 : public MBS_RiBo_RiBo_Time_Motion_CqTLe_q {
  public:
    MBS_RiBo_RiBo_Time_Motion_CqTLe_q_22(const MBS_RiBo_RiBo_Time_Motion& constraint, MBS_Measure& measure)
        : MBS_RiBo_RiBo_Time_Motion_CqTLe_q(constraint, measure, 1, 1) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_Time_Motion_CqTLe_q_22"; }
};

} // namespace velmora
