#include "velmora/constraints/MBS_RiBo_Ground_RotFix.h"

#include "velmora/bodies/MBS_Body.h"

namespace velmora {

MBS_RiBo_Ground_RotFix::MBS_RiBo_Ground_RotFix(IO_DataModelBlock* block, MBS_Model* owner,
                                               const MBS_ModelLookUp& lookUp, unsigned index, unsigned axis)
    : MBS_ConstraintWithState(block, owner, lookUp, index) {
    if (isErrorOccured())
        return;
    setConstants(axis);
    addCqTLe_q(bodyIndex, bodyIndex, std::make_unique<MBS_RiBo_Ground_RotFix_CqTLe_q>(*this));
    addCqT(bodyIndex, std::make_unique<MBS_RiBo_Ground_RotFix_CqT>(*this));
    addCqTdT(std::make_unique<MBS_RiBo_Ground_RotFix_CqTdT>(*this));
    aimBlocks();
}

void MBS_RiBo_Ground_RotFix::setConstants(unsigned axis) {
    const MBS_Body& body = *constraintBodies[0];
    auto& s = *state;
    s.bodyIndex = bodyIndex;
    s.constraintIndex = constraintIndex;
    s.commons = bodyCommons;
    resultPoint = toLocalPoint(body, location);
    const auto [onBody, inGround] = fixedPairOf(axis);
    s.localAxis = toLocalAxis(body, jointAxis(onBody));
    s.groundAxis = jointAxis(inGround);
    s.currentAxis = body.rotationMatrix * s.localAxis;
    s.initialProduct = dot(s.currentAxis, s.groundAxis);
    s.hessian = E(s.groundAxis, s.localAxis);
}

void MBS_RiBo_Ground_RotFix::aimBlocks() {
    aim(cqTObjects[0]->rPart, state->cqT_r);
    aim(cqTdTObjects[0]->rPart, state->cqTdT_r);
    aim(cqTLe_qBlocks[0]->block[Rot][Rot], state->cqTLe_q);
}

void MBS_RiBo_Ground_RotFix::getConstraintResultData(const P* q, const P*, const P*, const C* multipliers,
                                                     ResultData& data) {
    computeReaction(0, resultPoint, q, multipliers, &data[0]);
}

} // namespace velmora
