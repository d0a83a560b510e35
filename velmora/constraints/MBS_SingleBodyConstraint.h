#pragma once

#include "velmora/bodies/MBS_GeneralSingleBodyMatrix.h"
#include "velmora/constraints/MBS_ExtConstraint.h"

namespace velmora {

class MBS_BodyCommons;

/// Root of constraints between one body and the ground, with one equation.
class MBS_SingleBodyConstraint : public MBS_ExtConstraint {
  public:
    MBS_SingleBodyConstraint(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp,
                             unsigned index);
    std::string getClassName() const override { return "MBS_SingleBodyConstraint"; }
    bool isSingleBodyConstraint() const override { return true; }

  protected:
    unsigned bodyIndex = 0;
    const MBS_BodyCommons* bodyCommons = nullptr; // not owned
};

/// Root of the CqT and CqTdT objects of single-body constraints; column vectors.
class MBS_SingleBody_CqT : public MBS_General_CqT {
  public:
    /// A rotational part and, unless a constraint doesn't depend on translations, a translational one.
    MBS_SingleBody_CqT(const MBS_ExtConstraint& constraint, bool hasTransPart);
    std::string getClassName() const override { return "MBS_SingleBody_CqT"; }
};

/// Root of the blocks d(Cq' lambda)/dq of single-body constraints. The constraints on rigid bodies have none
/// but a symmetric block of the Euler parameters.
class MBS_BodyGroundConstraint_CqTLe_q : public MBS_GeneralSingleBodyMatrix {
  public:
    explicit MBS_BodyGroundConstraint_CqTLe_q(const MBS_ExtConstraint& constraint);
    std::string getClassName() const override { return "MBS_BodyGroundConstraint_CqTLe_q"; }
};

} // namespace velmora
