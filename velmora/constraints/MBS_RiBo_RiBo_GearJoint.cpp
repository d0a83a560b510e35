#include "velmora/constraints/MBS_RiBo_RiBo_GearJoint.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/model/MBS_History.h"

namespace velmora {

namespace {

constexpr Mat3 unitMatrix{{1, 0, 0, 0, 1, 0, 0, 0, 1}};

void setSide(GearSide& side, const MBS_Body& body, const Vec3& axis, double factor) {
    side.bodyIndex = body.bodyIndex;
    side.commons = body.commons;
    side.factor = factor;
    side.axisSum = axis(0) + axis(1) + axis(2);
    side.startOrientation = body.rotationMatrix;
    side.hasUnitOrientation = side.startOrientation.data == unitMatrix.data;
}

} // namespace

MBS_RiBo_RiBo_GearJoint::MBS_RiBo_RiBo_GearJoint(IO_DataModelBlock* block, MBS_Model* owner,
                                                 const MBS_ModelLookUp& lookUp, unsigned index)
    : MBS_ConstraintWithState(block, owner, lookUp, index, 1) {
    if (isErrorOccured())
        return;
    readKeys(*block);
    if (isErrorOccured())
        return;
    addCqTLe_q(body1Index, body1Index, std::make_unique<MBS_RiBo_RiBo_GearJoint_CqTLe_q_11>(*this));
    addCqTLe_q(body2Index, body2Index, std::make_unique<MBS_RiBo_RiBo_GearJoint_CqTLe_q_22>(*this));
    addCqT(body1Index, std::make_unique<MBS_RiBo_RiBo_GearJoint_CqT_1>(*this));
    addCqT(body2Index, std::make_unique<MBS_RiBo_RiBo_GearJoint_CqT_2>(*this));
    addCqTdT(std::make_unique<MBS_RiBo_RiBo_GearJoint_CqTdT_1>(*this));
    addCqTdT(std::make_unique<MBS_RiBo_RiBo_GearJoint_CqTdT_2>(*this));
    aimBlocks();
}

void MBS_RiBo_RiBo_GearJoint::readKeys(IO_DataModelBlock& block) {
    Vec3 point1, point2, axis1, axis2;
    Mat<2, 1> multiplier{{1.0, 1.0}};
    block.getValue("LocationBody1", point1.data.data(), IO_ValueCode::DoubleVector3);
    block.getValue("LocationBody2", point2.data.data(), IO_ValueCode::DoubleVector3);
    block.getValue("VectorBody1", axis1.data.data(), IO_ValueCode::DoubleVector3);
    block.getValue("VectorBody2", axis2.data.data(), IO_ValueCode::DoubleVector3);
    block.getValue("Multiplier", multiplier.data.data(), IO_ValueCode::DoubleVector2);
    if (reportBlockErrors(block))
        return;
    state->constraintIndex = constraintIndex;
    setSide(state->side1, *constraintBodies[0], axis1, multiplier(0));
    setSide(state->side2, *constraintBodies[1], axis2, -multiplier(1));
    localPoint1 = toLocalPoint(*constraintBodies[0], point1);
    localPoint2 = toLocalPoint(*constraintBodies[1], point2);
}

void MBS_RiBo_RiBo_GearJoint::aimBlocks() {
    std::size_t k = 0;
    for (GearSide* side : {&state->side1, &state->side2}) {
        aim(cqTObjects[k]->rPart, side->cqT);
        aim(cqTdTObjects[k]->rPart, side->cqTdT);
        aim(cqTLe_qBlocks[k++]->block[Rot][Rot], side->cqTLe_q);
    }
}

void MBS_RiBo_RiBo_GearJoint::exchangeHistory(MBS_History& history) {
    for (GearSide* side : {&state->side1, &state->side2}) {
        history.exchange(side->halfAngle);
        history.exchange(side->isPositive);
        history.exchange(side->turnCount);
    }
}

void MBS_RiBo_RiBo_GearJoint::getConstraintResultData(const P* q, const P*, const P*, const C* multipliers,
                                                      ResultData& data) {
    computeReaction(0, localPoint1, q, multipliers, &data[0]);
    computeReaction(1, localPoint2, q, multipliers, &data[4]);
}

} // namespace velmora
