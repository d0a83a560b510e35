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

MBS_BodyBody_CqT::MBS_BodyBody_CqT(const MBS_Body& body)
    : MBS_General_CqT(body.numTransDof, body.numRotDof, body.numFlexDof, 1) {}

MBS_BodyBodyConstraint_CqTLe_q::MBS_BodyBodyConstraint_CqTLe_q(
    const MBS_Body& rowBody, const MBS_Body& colBody, std::initializer_list<std::array<unsigned, 2>> places)
    : MBS_GeneralBodyBodyMatrix(rowBody.numTransDof, rowBody.numRotDof, rowBody.numFlexDof,
                                colBody.numTransDof, colBody.numRotDof, colBody.numFlexDof) {
    keepOnly(places);
    if (&rowBody == &colBody)
        setBlockMatrix(Rot, Rot, "MBM_SymmetricDenseMatrix", 4, 4, 0.0);
}

} // namespace velmora
