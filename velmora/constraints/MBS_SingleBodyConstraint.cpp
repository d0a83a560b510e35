#include "velmora/constraints/MBS_SingleBodyConstraint.h"

#include "velmora/bodies/MBS_Body.h"

namespace velmora {

MBS_SingleBodyConstraint::MBS_SingleBodyConstraint(IO_DataModelBlock* block, MBS_Model* owner,
                                                   const MBS_ModelLookUp& lookUp, unsigned index)
    : MBS_ExtConstraint(block, owner, lookUp, index, 1) {
    if (isErrorOccured())
        return;
    bodyIndex = constraintBodies[0]->bodyIndex;
    bodyCommons = constraintBodies[0]->commons;
}

MBS_SingleBody_CqT::MBS_SingleBody_CqT(const MBS_ExtConstraint& constraint, bool hasTransPart)
    : MBS_General_CqT(constraint.constraintBodies[0]->numTransDof, constraint.constraintBodies[0]->numRotDof,
                      0, 1) {
    if (!hasTransPart)
        tPart.reset();
}

MBS_BodyGroundConstraint_CqTLe_q::MBS_BodyGroundConstraint_CqTLe_q(const MBS_ExtConstraint& constraint)
    : MBS_GeneralSingleBodyMatrix(constraint.constraintBodies[0]->getShape()) {
    keepOnly({});
    setBlockMatrix(Rot, Rot, "MBM_SymmetricDenseMatrix", 4, 4, 0.0);
}

} // namespace velmora
