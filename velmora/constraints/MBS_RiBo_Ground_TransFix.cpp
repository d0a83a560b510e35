#include "velmora/constraints/MBS_RiBo_Ground_TransFix.h"

#include "velmora/bodies/MBS_Body.h"

namespace velmora {

MBS_RiBo_Ground_TransFix::MBS_RiBo_Ground_TransFix(IO_DataModelBlock* block, MBS_Model* owner,
                                                   const MBS_ModelLookUp& lookUp, unsigned index,
                                                   unsigned axis)
    : MBS_ConstraintWithState(block, owner, lookUp, index) {
    if (isErrorOccured())
        return;
    setConstants(axis);
    addCqTLe_q(bodyIndex, bodyIndex, std::make_unique<MBS_RiBo_Ground_TransFix_CqTLe_q>(*this));
    addCqT(bodyIndex, std::make_unique<MBS_RiBo_Ground_TransFix_CqT>(*this));
    addCqTdT(std::make_unique<MBS_RiBo_Ground_TransFix_CqTdT>(*this));
    aimBlocks();
}

void MBS_RiBo_Ground_TransFix::setConstants(unsigned axis) {
    const MBS_Body& body = *constraintBodies[0];
    auto& s = *state;
    s.bodyIndex = bodyIndex;
    s.constraintIndex = constraintIndex;
    s.commons = bodyCommons;
    resultPoint = toLocalPoint(body, location);
    s.localPoint = resultPoint;
    s.fixedDirection = jointAxis(axis);
    s.planeConstant = dot(s.fixedDirection, location);
    s.initialOffset =
        dot(s.fixedDirection, body.position + body.rotationMatrix * s.localPoint) - s.planeConstant;
    s.hessian = E(s.fixedDirection, s.localPoint);
}

void MBS_RiBo_Ground_TransFix::aimBlocks() {
    aim(cqTObjects[0]->tPart, state->cqT_t);
    aim(cqTObjects[0]->rPart, state->cqT_r);
    aim(cqTdTObjects[0]->rPart, state->cqTdT_r);
    aim(cqTLe_qBlocks[0]->block[Rot][Rot], state->cqTLe_q);
}

void MBS_RiBo_Ground_TransFix::getConstraintResultData(const P* q, const P*, const P*, const C* multipliers,
                                                       ResultData& data) {
    computeReaction(0, resultPoint, q, multipliers, &data[0]);
}

} // namespace velmora
