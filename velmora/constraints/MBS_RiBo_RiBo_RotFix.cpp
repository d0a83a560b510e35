#include "velmora/constraints/MBS_RiBo_RiBo_RotFix.h"

#include "velmora/bodies/MBS_Body.h"

namespace velmora {

MBS_RiBo_RiBo_RotFix::MBS_RiBo_RiBo_RotFix(IO_DataModelBlock* block, MBS_Model* owner,
                                           const MBS_ModelLookUp& lookUp, unsigned index, unsigned axis)
    : MBS_ConstraintWithState(block, owner, lookUp, index, 1) {
    if (isErrorOccured())
        return;
    setConstants(axis);
    addCqTLe_q(body1Index, body1Index, std::make_unique<MBS_RiBo_RiBo_RotFix_CqTLe_q_11>(*this));
    addCqTLe_q(body1Index, body2Index, std::make_unique<MBS_RiBo_RiBo_RotFix_CqTLe_q_12>(*this));
    addCqTLe_q(body2Index, body1Index, std::make_unique<MBS_RiBo_RiBo_RotFix_CqTLe_q_21>(*this));
    addCqTLe_q(body2Index, body2Index, std::make_unique<MBS_RiBo_RiBo_RotFix_CqTLe_q_22>(*this));
    addCqT(body1Index, std::make_unique<MBS_RiBo_RiBo_RotFix_CqT_1>(*this));
    addCqT(body2Index, std::make_unique<MBS_RiBo_RiBo_RotFix_CqT_2>(*this));
    addCqTdT(std::make_unique<MBS_RiBo_RiBo_RotFix_CqTdT_1>(*this));
    addCqTdT(std::make_unique<MBS_RiBo_RiBo_RotFix_CqTdT_2>(*this));
    aimBlocks();
}

void MBS_RiBo_RiBo_RotFix::setConstants(unsigned axis) {
    const MBS_Body &body1 = *constraintBodies[0], &body2 = *constraintBodies[1];
    auto& s = *state;
    s.body1Index = body1Index;
    s.body2Index = body2Index;
    s.constraintIndex = constraintIndex;
    s.commons1 = bodyCommons1;
    s.commons2 = bodyCommons2;
    resultPoint1 = toLocalPoint(body1, location);
    resultPoint2 = toLocalPoint(body2, location);
    const auto [on1, on2] = fixedPairOf(axis);
    s.localAxis1 = toLocalAxis(body1, jointAxis(on1));
    s.localAxis2 = toLocalAxis(body2, jointAxis(on2));
    s.currentAxis1 = body1.rotationMatrix * s.localAxis1;
    s.currentAxis2 = body2.rotationMatrix * s.localAxis2;
    s.initialProduct = dot(s.currentAxis1, s.currentAxis2);
}

void MBS_RiBo_RiBo_RotFix::aimBlocks() {
    auto& s = *state;
    aim(cqTObjects[0]->rPart, s.cqT_1);
    aim(cqTdTObjects[0]->rPart, s.cqTdT_1);
    aim(cqTObjects[1]->rPart, s.cqT_2);
    aim(cqTdTObjects[1]->rPart, s.cqTdT_2);
    aim(cqTLe_qBlocks[0]->block[Rot][Rot], s.cqTLe_q_11_rr);
    aim(cqTLe_qBlocks[1]->block[Rot][Rot], s.cqTLe_q_12_rr);
    aim(cqTLe_qBlocks[2]->block[Rot][Rot], s.cqTLe_q_21_rr);
    aim(cqTLe_qBlocks[3]->block[Rot][Rot], s.cqTLe_q_22_rr);
}

void MBS_RiBo_RiBo_RotFix::getConstraintResultData(const P* q, const P*, const P*, const C* multipliers,
                                                   ResultData& data) {
    computeReaction(0, resultPoint1, q, multipliers, &data[0]);
    computeReaction(1, resultPoint2, q, multipliers, &data[4]);
}

} // namespace velmora
