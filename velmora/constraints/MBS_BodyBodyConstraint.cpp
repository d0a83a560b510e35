#include "velmora/constraints/MBS_BodyBodyConstraint.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/io/IO_DataModelBlock.h"

namespace velmora {

MBS_BodyBodyConstraint::MBS_BodyBodyConstraint(IO_DataModelBlock* block, MBS_Model* owner,
                                               const MBS_ModelLookUp& lookUp, unsigned index,
                                               unsigned numOfEquations)
    : MBS_ExtConstraint(block, owner, lookUp, index, numOfEquations) {
    if (isErrorOccured())
        return;
    const auto& [body1, body2] = constraintBodies;
    if (!body2)
        refuse(*block, "ERROR: Body2 not found using bodyID: 0!\n");
    else if (body1 == body2)
        refuse(*block, "ERROR: Body1 and Body2 are the same body: " + body1->uuid + "!\n");
    if (isErrorOccured())
        return;
    body1Index = body1->bodyIndex;
    body2Index = body2->bodyIndex;
    bodyCommons1 = body1->commons;
    bodyCommons2 = body2->commons;
}

MBS_BodyBody_CqT::MBS_BodyBody_CqT(const MBS_ExtConstraint& constraint, unsigned body, bool hasTransPart,
                                   bool hasFlexPart)
    : MBS_General_CqT(
          constraint.constraintBodies[body]->numTransDof, constraint.constraintBodies[body]->numRotDof,
          hasFlexPart ? constraint.constraintBodies[body]->numFlexDof : 0, constraint.numOfConstraintDof) {
    if (!hasTransPart)
        tPart.reset();
}

MBS_BodyBodyConstraint_CqTLe_q::MBS_BodyBodyConstraint_CqTLe_q(const MBS_ExtConstraint& constraint,
                                                               unsigned rowBody, unsigned colBody,
                                                               Places places)
    : MBS_GeneralBodyBodyMatrix(
          constraint.constraintBodies[rowBody]->numTransDof, constraint.constraintBodies[rowBody]->numRotDof,
          constraint.constraintBodies[rowBody]->numFlexDof, constraint.constraintBodies[colBody]->numTransDof,
          constraint.constraintBodies[colBody]->numRotDof, constraint.constraintBodies[colBody]->numFlexDof) {
    keepOnly(places);
    if (rowBody == colBody)
        setBlockMatrix(Rot, Rot, "MBM_SymmetricDenseMatrix", 4, 4, 0.0);
}

} // namespace velmora
