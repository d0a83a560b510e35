#pragma once

#include "velmora/constraints/MBS_BodyBodyConstraint.h"
#include "velmora/constraints/MBS_PointJointGroup.h"

namespace velmora {

/// Keeps the joint point of body 2 on a plane of body 1: through body 1's joint point, perpendicular to one
/// joint axis that body 1 carries. C = a . (r2 + A2 u2 - r1) - constants.
///
/// Its numbers are one column of a joint of its group, and its `update` operations refresh the other columns
/// with it. Within a model the blocks of d(Cq' lambda)/dq are summed over the joint, and those of one
/// equation are as their own `update` has left them.
class MBS_RiBo_RiBo_TransFix final : public MBS_BodyBodyConstraint {
  public:
    /// `axis`: 0, 1, 2 for the joint's x, y, z.
    MBS_RiBo_RiBo_TransFix(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp,
                           unsigned index, unsigned axis);
    std::string getClassName() const override { return "MBS_RiBo_RiBo_TransFix"; }
    void getAndUpdateConstraints(double, const P* q, const P*, const P*, C* out) override;
    void getConstraintResultData(const P* q, const P* qd, const P* qdd, const C* multipliers,
                                 ResultData& data) override;
    std::shared_ptr<MBS_ConstraintGroup> makeGroup(const std::vector<MBS_ExtConstraint*>& members) override;

    PointJointState& joint() const { return group->joints[place]; }
    PointJointState::ColumnsOfBodies& cqT() const { return group->cqT[place]; }
    PointJointState::ColumnsOfBodies& cqTdT() const { return group->cqTdT[place]; }
    /// Refreshes all CqTdT objects of the joint.
    void updateRates(const P* q, const P* qd) const;
    /// w of this equation alone.
    Vec3 weightedAxis(const C* multipliers) const;

  private:
    void setConstants(unsigned axis);
    BodyPair bodyPair() const { return {body1Index, body2Index, bodyCommons1, bodyCommons2}; }
    /// Becomes an equation of a joint of the group, which is made if the last one doesn't fit.
    void join(const std::shared_ptr<MBS_PointJointGroup>& newGroup);
    void aimBlocks();

    std::shared_ptr<MBS_PointJointGroup> group; // all numbers of an evaluation
    std::size_t place = 0;                      // of the joint in the group
    unsigned column = 0;                        // of the equation in the joint
    Vec3 localAxis;                             // abar, frame of body 1
    double localProduct = 0.0, initialOffset = 0.0;
    Vec3 resultPoint1, resultPoint2; // joint point in the frames of the bodies
};

/// Derivative block of a translation fix.
template <class Root>
class MBS_RiBo_RiBo_TransFix_Block : public Root {
  public:
    template <class... Arguments>
    explicit MBS_RiBo_RiBo_TransFix_Block(const MBS_RiBo_RiBo_TransFix& owner, Arguments&&... arguments)
        : Root(owner, std::forward<Arguments>(arguments)...),
          constraint(&owner) {}

  protected:
    const MBS_RiBo_RiBo_TransFix* constraint; // not owned
};

// The blocks; formulas stand in PointJointFormulas.h.

class MBS_RiBo_RiBo_TransFix_CqT_1 : public MBS_RiBo_RiBo_TransFix_Block<MBS_BodyBody_CqT> {
  public:
    explicit MBS_RiBo_RiBo_TransFix_CqT_1(const MBS_RiBo_RiBo_TransFix& c)
        : MBS_RiBo_RiBo_TransFix_Block(c, 0, true) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_TransFix_CqT_1"; }
    void update(double, const P* q, const P*, const P*) override;
};

class MBS_RiBo_RiBo_TransFix_CqT_2 : public MBS_RiBo_RiBo_TransFix_Block<MBS_BodyBody_CqT> {
  public:
    explicit MBS_RiBo_RiBo_TransFix_CqT_2(const MBS_RiBo_RiBo_TransFix& c)
        : MBS_RiBo_RiBo_TransFix_Block(c, 1, true) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_TransFix_CqT_2"; }
    void update(double, const P* q, const P*, const P*) override;
};

class MBS_RiBo_RiBo_TransFix_CqTdT_1 : public MBS_RiBo_RiBo_TransFix_Block<MBS_BodyBody_CqT> {
  public:
    explicit MBS_RiBo_RiBo_TransFix_CqTdT_1(const MBS_RiBo_RiBo_TransFix& c)
        : MBS_RiBo_RiBo_TransFix_Block(c, 0, true) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_TransFix_CqTdT_1"; }
    void update(double, const P* q, const P* qd, const P*) override;
};

class MBS_RiBo_RiBo_TransFix_CqTdT_2 : public MBS_RiBo_RiBo_TransFix_Block<MBS_BodyBody_CqT> {
  public:
    explicit MBS_RiBo_RiBo_TransFix_CqTdT_2(const MBS_RiBo_RiBo_TransFix& c)
        : MBS_RiBo_RiBo_TransFix_Block(c, 1, true) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_TransFix_CqTdT_2"; }
    void update(double, const P* q, const P* qd, const P*) override;
};

class MBS_RiBo_RiBo_TransFix_CqTLe_q_11
    : public MBS_RiBo_RiBo_TransFix_Block<MBS_BodyBodyConstraint_CqTLe_q> {
  public:
    explicit MBS_RiBo_RiBo_TransFix_CqTLe_q_11(const MBS_RiBo_RiBo_TransFix& c)
        : MBS_RiBo_RiBo_TransFix_Block(c, 0, 0, Places{{Trans, Rot}, {Rot, Trans}, {Rot, Rot}}) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_TransFix_CqTLe_q_11"; }
    void update(double, const P* q, const P*, const P*, const C* lagrange) override;
};

class MBS_RiBo_RiBo_TransFix_CqTLe_q_12
    : public MBS_RiBo_RiBo_TransFix_Block<MBS_BodyBodyConstraint_CqTLe_q> {
  public:
    explicit MBS_RiBo_RiBo_TransFix_CqTLe_q_12(const MBS_RiBo_RiBo_TransFix& c)
        : MBS_RiBo_RiBo_TransFix_Block(c, 0, 1, Places{{Rot, Trans}, {Rot, Rot}}) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_TransFix_CqTLe_q_12"; }
    void update(double, const P* q, const P*, const P*, const C* lagrange) override;
};

class MBS_RiBo_RiBo_TransFix_CqTLe_q_21
    : public MBS_RiBo_RiBo_TransFix_Block<MBS_BodyBodyConstraint_CqTLe_q> {
  public:
    explicit MBS_RiBo_RiBo_TransFix_CqTLe_q_21(const MBS_RiBo_RiBo_TransFix& c)
        : MBS_RiBo_RiBo_TransFix_Block(c, 1, 0, Places{{Trans, Rot}, {Rot, Rot}}) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_TransFix_CqTLe_q_21"; }
    /// Copies `_12` of the same state.
    void update(double, const P*, const P*, const P*, const C*) override;
};

class MBS_RiBo_RiBo_TransFix_CqTLe_q_22
    : public MBS_RiBo_RiBo_TransFix_Block<MBS_BodyBodyConstraint_CqTLe_q> {
  public:
    explicit MBS_RiBo_RiBo_TransFix_CqTLe_q_22(const MBS_RiBo_RiBo_TransFix& c)
        : MBS_RiBo_RiBo_TransFix_Block(c, 1, 1, Places{{Rot, Rot}}) {}
    std::string getClassName() const override { return "MBS_RiBo_RiBo_TransFix_CqTLe_q_22"; }
    void update(double, const P*, const P*, const P*, const C* lagrange) override;
};

} // namespace velmora
