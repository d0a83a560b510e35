#include "velmora/constraints/MBS_RiBo_RiBo_TransFix.h"

#include "velmora/bodies/MBS_Body.h"

namespace velmora {

MBS_RiBo_RiBo_TransFix::MBS_RiBo_RiBo_TransFix(IO_DataModelBlock* block, MBS_Model* owner,
                                               const MBS_ModelLookUp& lookUp, unsigned index, unsigned axis)
    : MBS_ConstraintWithState(block, owner, lookUp, index, 1) {
    if (isErrorOccured())
        return;
    setConstants(axis);
    addCqTLe_q(body1Index, body1Index, std::make_unique<MBS_RiBo_RiBo_TransFix_CqTLe_q_11>(*this));
    addCqTLe_q(body1Index, body2Index, std::make_unique<MBS_RiBo_RiBo_TransFix_CqTLe_q_12>(*this));
    addCqTLe_q(body2Index, body1Index, std::make_unique<MBS_RiBo_RiBo_TransFix_CqTLe_q_21>(*this));
    addCqTLe_q(body2Index, body2Index, std::make_unique<MBS_RiBo_RiBo_TransFix_CqTLe_q_22>(*this));
    addCqT(body1Index, std::make_unique<MBS_RiBo_RiBo_TransFix_CqT_1>(*this));
    addCqT(body2Index, std::make_unique<MBS_RiBo_RiBo_TransFix_CqT_2>(*this));
    addCqTdT(std::make_unique<MBS_RiBo_RiBo_TransFix_CqTdT_1>(*this));
    addCqTdT(std::make_unique<MBS_RiBo_RiBo_TransFix_CqTdT_2>(*this));
    aimBlocks();
}

void MBS_RiBo_RiBo_TransFix::setConstants(unsigned axis) {
    const MBS_Body &body1 = *constraintBodies[0], &body2 = *constraintBodies[1];
    auto& s = *state;
    s.body1Index = body1Index;
    s.body2Index = body2Index;
    s.constraintIndex = constraintIndex;
    s.commons1 = bodyCommons1;
    s.commons2 = bodyCommons2;
    resultPoint1 = toLocalPoint(body1, location);
    resultPoint2 = toLocalPoint(body2, location);
    s.localPoint2 = resultPoint2;
    s.currentAxis = jointAxis(axis);
    s.localAxis = toLocalAxis(body1, s.currentAxis);
    s.localProduct = dot(s.localAxis, resultPoint1);
    const Vec3 difference = body2.position + body2.rotationMatrix * s.localPoint2 - body1.position;
    s.initialOffset = dot(s.currentAxis, difference) - s.localProduct;
}

void MBS_RiBo_RiBo_TransFix::aimBlocks() {
    auto& s = *state;
    aim(cqTObjects[0]->tPart, s.cqT_1.t);
    aim(cqTObjects[0]->rPart, s.cqT_1.r);
    aim(cqTdTObjects[0]->tPart, s.cqTdT_1.t);
    aim(cqTdTObjects[0]->rPart, s.cqTdT_1.r);
    aim(cqTObjects[1]->tPart, s.cqT_2.t);
    aim(cqTObjects[1]->rPart, s.cqT_2.r);
    aim(cqTdTObjects[1]->tPart, s.cqTdT_2.t);
    aim(cqTdTObjects[1]->rPart, s.cqTdT_2.r);
    aim(cqTLe_qBlocks[0]->block[Trans][Rot], s.cqTLe_q_11_tr);
    aim(cqTLe_qBlocks[0]->block[Rot][Trans], s.cqTLe_q_11_rt);
    aim(cqTLe_qBlocks[0]->block[Rot][Rot], s.cqTLe_q_11_rr);
    aim(cqTLe_qBlocks[1]->block[Rot][Trans], s.cqTLe_q_12_rt);
    aim(cqTLe_qBlocks[1]->block[Rot][Rot], s.cqTLe_q_12_rr);
    aim(cqTLe_qBlocks[2]->block[Trans][Rot], s.cqTLe_q_21_tr);
    aim(cqTLe_qBlocks[2]->block[Rot][Rot], s.cqTLe_q_21_rr);
    aim(cqTLe_qBlocks[3]->block[Rot][Rot], s.cqTLe_q_22_rr);
}

void MBS_RiBo_RiBo_TransFix::getConstraintResultData(const P* q, const P*, const P*, const C* multipliers,
                                                     ResultData& data) {
    computeReaction(0, resultPoint1, q, multipliers, &data[0]);
    computeReaction(1, resultPoint2, q, multipliers, &data[4]);
}

} // namespace velmora
