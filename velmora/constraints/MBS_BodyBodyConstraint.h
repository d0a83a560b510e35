#pragma once

#include "velmora/constraints/MBS_ExtConstraint.h"

namespace velmora {

class MBS_BodyCommons;

/// Root of constraints between two bodies.
class MBS_BodyBodyConstraint : public MBS_ExtConstraint {
  public:
    /// Errors beside those of the root: the block's text + "ERROR: Body1 and Body2 are the same body: " +
    /// id + "!\n".
    MBS_BodyBodyConstraint(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp,
                           unsigned index, unsigned numOfEquations);
    std::string getClassName() const override { return "MBS_BodyBodyConstraint"; }

  protected:
    unsigned body1Index = 0, body2Index = 0;
    const MBS_BodyCommons *bodyCommons1 = nullptr, *bodyCommons2 = nullptr; // not owned
};

/// Root of the CqT and CqTdT objects of two-body constraints: coordinates of one of the bodies in the rows,
/// equations in the columns.
class MBS_BodyBody_CqT : public MBS_General_CqT {
  public:
    /// A rotational part and, unless the constraint doesn't depend on translations, a translational one; one
    /// for modal coordinates, which a body may have, where the constraint depends on these. `body`: 0 or 1
    /// for the first or the second.
    MBS_BodyBody_CqT(const MBS_ExtConstraint& constraint, unsigned body, bool hasTransPart,
                     bool hasFlexPart = false);
    std::string getClassName() const override { return "MBS_BodyBody_CqT"; }
};

/// Root of the blocks d(Cq' lambda)/dq of two-body constraints: rows of one body, columns of one body.
class MBS_BodyBodyConstraint_CqTLe_q : public MBS_GeneralBodyBodyMatrix {
  public:
    using Places = std::initializer_list<std::array<unsigned, 2>>;

    /// `rowBody`, `colBody`: 0 or 1. Has the places named; rotational blocks within one body are symmetric.
    MBS_BodyBodyConstraint_CqTLe_q(const MBS_ExtConstraint& constraint, unsigned rowBody, unsigned colBody,
                                   Places places);
    std::string getClassName() const override { return "MBS_BodyBodyConstraint_CqTLe_q"; }
};

} // namespace velmora
