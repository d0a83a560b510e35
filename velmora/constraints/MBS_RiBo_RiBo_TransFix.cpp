#include "velmora/constraints/MBS_RiBo_RiBo_TransFix.h"

#include "velmora/bodies/MBS_Body.h"

namespace velmora {

namespace {

PointJointState::CqTLe_q blocksOf(const MBS_RiBo_RiBo_TransFix& constraint,
                                  const MBS_ModelPhysicalDofVector* q,
                                  const MBS_ModelConstraintDofVector* multipliers) {
    PointJointState::CqTLe_q blocks;
    constraint.joint().setCqTLe_q(q, constraint.weightedAxis(multipliers), blocks);
    return blocks;
}

} // namespace

MBS_RiBo_RiBo_TransFix::MBS_RiBo_RiBo_TransFix(IO_DataModelBlock* block, MBS_Model* owner,
                                               const MBS_ModelLookUp& lookUp, unsigned index, unsigned axis)
    : MBS_BodyBodyConstraint(block, owner, lookUp, index, 1) {
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
    join(std::make_shared<MBS_PointJointGroup>(1));
}

void MBS_RiBo_RiBo_TransFix::setConstants(unsigned axis) {
    const MBS_Body &body1 = *constraintBodies[0], &body2 = *constraintBodies[1];
    resultPoint1 = toLocalPoint(body1, location);
    resultPoint2 = toLocalPoint(body2, location);
    const Vec3 globalAxis = jointAxis(axis);
    localAxis = toLocalAxis(body1, globalAxis);
    localProduct = dot(localAxis, resultPoint1);
    const Vec3 difference = body2.position + body2.rotationMatrix * resultPoint2 - body1.position;
    initialOffset = dot(globalAxis, difference) - localProduct;
}

void MBS_RiBo_RiBo_TransFix::join(const std::shared_ptr<MBS_PointJointGroup>& newGroup) {
    if (!newGroup->isLastJoint(bodyPair(), resultPoint2))
        newGroup->addJoint(bodyPair(), resultPoint2);
    column = newGroup->addEquation(constraintIndex, localAxis, localProduct, initialOffset);
    place = newGroup->joints.size() - 1;
    group = newGroup;
    aimBlocks();
}

std::shared_ptr<MBS_ConstraintGroup>
MBS_RiBo_RiBo_TransFix::makeGroup(const std::vector<MBS_ExtConstraint*>& members) {
    auto common = std::make_shared<MBS_PointJointGroup>(members.size());
    for (MBS_ExtConstraint* member : members)
        dynamic_cast<MBS_RiBo_RiBo_TransFix&>(*member).join(common);
    common->createBlocks();
    return common;
}

void MBS_RiBo_RiBo_TransFix::aimBlocks() {
    const auto aim = [&](const std::unique_ptr<MBM_DenseMatrix>& matrix, double* elements) {
        auto& standAlone = dynamic_cast<MBM_DenseStandAloneMatrix&>(*matrix);
        standAlone.moveStorage(std::shared_ptr<double[]>(group, elements));
    };
    const auto i = static_cast<int>(column);
    const auto aimBoth = [&](const auto& objects, PointJointState::ColumnsOfBodies& columns) {
        aim(objects[0]->tPart, &columns.body1.t(0, i));
        aim(objects[0]->rPart, &columns.body1.r(0, i));
        aim(objects[1]->tPart, &columns.body2.t(0, i));
        aim(objects[1]->rPart, &columns.body2.r(0, i));
    };
    aimBoth(cqTObjects, cqT());
    aimBoth(cqTdTObjects, cqTdT());
}

Vec3 MBS_RiBo_RiBo_TransFix::weightedAxis(const C* multipliers) const {
    return *multipliers->equationsOfConstraint(constraintIndex) * localAxis;
}

void MBS_RiBo_RiBo_TransFix::updateRates(const P* q, const P* qd) const {
    joint().setRateOfDifference(q, qd);
    joint().setCqTdT(cqTdT());
}

void MBS_RiBo_RiBo_TransFix::getAndUpdateConstraints(double, const P* q, const P*, const P*, C* out) {
    *out->equationsOfConstraint(constraintIndex) = joint().residual(q)(static_cast<int>(column));
}

void MBS_RiBo_RiBo_TransFix::getConstraintResultData(const P* q, const P*, const P*, const C* multipliers,
                                                     ResultData& data) {
    computeReaction(0, resultPoint1, q, multipliers, &data[0]);
    computeReaction(1, resultPoint2, q, multipliers, &data[4]);
}

void MBS_RiBo_RiBo_TransFix_CqT_1::update(double, const P* q, const P*, const P*) {
    constraint->joint().setCqT(q, constraint->cqT());
}

void MBS_RiBo_RiBo_TransFix_CqT_2::update(double, const P* q, const P*, const P*) {
    constraint->joint().setCqT(q, constraint->cqT());
}

void MBS_RiBo_RiBo_TransFix_CqTdT_1::update(double, const P* q, const P* qd, const P*) {
    constraint->updateRates(q, qd);
}

void MBS_RiBo_RiBo_TransFix_CqTdT_2::update(double, const P* q, const P* qd, const P*) {
    constraint->updateRates(q, qd);
}

void MBS_RiBo_RiBo_TransFix_CqTLe_q_11::update(double, const P* q, const P*, const P*, const C* lagrange) {
    const auto blocks = blocksOf(*constraint, q, lagrange);
    blocks.tr_11.to(block[Trans][Rot]->data);
    transpose(blocks.tr_11).to(block[Rot][Trans]->data);
    blocks.rr_11.to(block[Rot][Rot]->data);
}

void MBS_RiBo_RiBo_TransFix_CqTLe_q_12::update(double, const P* q, const P*, const P*, const C* lagrange) {
    const auto blocks = blocksOf(*constraint, q, lagrange);
    transpose(blocks.tr_21).to(block[Rot][Trans]->data);
    transpose(blocks.rr_21).to(block[Rot][Rot]->data);
}

void MBS_RiBo_RiBo_TransFix_CqTLe_q_21::update(double, const P*, const P*, const P*, const C*) {
    const auto& of12 = constraint->cqTLe_qBlocks[1]->block;
    transpose(Mat43::from(of12[Rot][Trans]->data)).to(block[Trans][Rot]->data);
    transpose(Mat4::from(of12[Rot][Rot]->data)).to(block[Rot][Rot]->data);
}

void MBS_RiBo_RiBo_TransFix_CqTLe_q_22::update(double, const P* q, const P*, const P*, const C* lagrange) {
    blocksOf(*constraint, q, lagrange).rr_22.to(block[Rot][Rot]->data);
}

} // namespace velmora
