#include "velmora/bodies/MBS_RigidBody_EulerP_PAI.h"

#include "velmora/bodies/MBS_RigidBody_EulerP_PAI_Matrix.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/model/MBS_Math.h"
#include "velmora/model/MBS_ModelDofVector.h"

namespace velmora {

MBS_RigidBody_EulerP_PAI::MBS_RigidBody_EulerP_PAI(IO_DataModelBlock* block, MBS_Model* owner, unsigned index)
    : MBS_Body(block, owner, index, 0) {
    double mass = 0.0;
    Vec3 inertia, omega;
    MBM_GeneralDenseMatrix orientation(3, 3, 0.0);
    block->getValue("Mass", &mass, IO_ValueCode::Double);
    block->getValue("Inertia", inertia.data.data(), IO_ValueCode::DoubleVector3);
    block->getValue("LocationCenterMass", initialPositions.data(), IO_ValueCode::DoubleVector3);
    block->getValue("OrientationPAI", orientation.data, IO_ValueCode::DoubleMatrix3x3);
    MBS_Math::performOrthonormalization(&orientation);
    block->getValue("InitialVelocityVector", initialVelocities.data(), IO_ValueCode::DoubleVector3);
    block->getValue("InitialOmegaVector", omega.data.data(), IO_ValueCode::DoubleVector3);
    if (reportBlockErrors(*block))
        return;
    setInitialRotation(Mat3::from(orientation.data), omega);

    auto ownParameter = std::make_unique<MBS_RigidBody_EulerP_PAI_Parameter>(mass, inertia);
    MBS_RigidBody_EulerP_PAI_Commons ownCommons(bodyIndex);
    ownCommons.setParameter(*ownParameter);
    ownCommons.regardVelocityInertiaForcesInsideJacobian = regardVelocityInertiaForcesInsideJacobian;
    parameter = std::move(ownParameter);
    isZeroInertia = mass == 0.0;
    rigidCommons = &ownCommons;
    createBlocks(mass);
    join(std::make_shared<MBS_RigidBodyGroup>(bodyIndex, 1), mass, ownCommons);
    updateInitialPose();
}

void MBS_RigidBody_EulerP_PAI::createBlocks(double mass) {
    const MBS_BodyShape shape = getShape();
    massMatrix = std::make_unique<MBS_RigidBody_EulerP_PAI_MassMatrix>(shape, rigidCommons, mass);
    mQdd_q = std::make_unique<MBS_RigidBody_EulerP_PAI_MQdd_q>(shape, rigidCommons);
    qvv_q = std::make_unique<MBS_RigidBody_EulerP_PAI_Qvv_q>(shape, rigidCommons);
    qvv_qd = std::make_unique<MBS_RigidBody_EulerP_PAI_Qvv_qd>(shape, rigidCommons);
    cqLi_q = std::make_unique<MBS_RigidBody_EulerP_PAI_CqLi_q>(shape, rigidCommons);
    aBar4KinSolver = std::make_unique<MBS_RigidBody_EulerP_PAI_ABar4KinSolver>(shape, rigidCommons, actors);
    cqT = std::make_unique<MBS_RiBo_PAI_CqT>(shape);
    cqTdT = std::make_unique<MBS_RiBo_PAI_CqTdT>(shape);
}

void MBS_RigidBody_EulerP_PAI::join(const std::shared_ptr<MBS_RigidBodyGroup>& newGroup, double mass,
                                    const MBS_RigidBody_EulerP_PAI_Commons& currentCommons) {
    newGroup->add(currentCommons, mass, initialNormOffset);
    group = newGroup;
    place = group->commons.size() - 1;
    rigidCommons = &group->commons[place];
    commons = rigidCommons;
    const auto aim = [&](const MBS_GeneralBodyBodyMatrix::Block& block, auto& elements) {
        if (auto* owner = dynamic_cast<MBM_DenseStandAloneMatrix*>(block.get()))
            owner->moveStorage(std::shared_ptr<double[]>(group, elements.data.data()));
    };
    auto& jacobian = group->jacobian[place];
    aim(massMatrix->block[Trans][Trans], group->massTrans[place]);
    aim(massMatrix->block[Rot][Rot], group->massRot[place]);
    aim(mQdd_q->block[Rot][Rot], jacobian.mQdd_q);
    aim(qvv_q->block[Rot][Rot], jacobian.qvv_q);
    aim(qvv_qd->block[Rot][Rot], jacobian.qvv_qd);
    aim(cqLi_q->block[Rot][Rot], jacobian.cqLi_q);
    aim(cqT->rPart, group->cqT[place]);
    aim(cqTdT->rPart, group->cqTdT[place]);
}

std::shared_ptr<MBS_BodyGroup>
MBS_RigidBody_EulerP_PAI::makeGroup(std::span<const std::unique_ptr<MBS_Body>> bodies) {
    auto common = std::make_shared<MBS_RigidBodyGroup>(bodyIndex, bodies.size());
    for (const auto& body : bodies) {
        auto& rigid = dynamic_cast<MBS_RigidBody_EulerP_PAI&>(*body);
        const auto own = rigid.group; // outlives the move
        rigid.join(common, rigid.getMass(), *rigid.rigidCommons);
    }
    return common;
}

void MBS_RigidBody_EulerP_PAI::updateForMotion(double, const P* q, const P* qd, const P*) {
    group->updateForMotion(place, q->bodyData(bodyIndex), qd->bodyData(bodyIndex));
}

void MBS_RigidBody_EulerP_PAI::updateForJacobian(double, const P*, const P*, const P* qdd,
                                                 const C* multipliers) {
    group->updateForJacobian(place, qdd->bodyData(bodyIndex), multipliers->innerEquationOfBody(bodyIndex));
}

void MBS_RigidBody_EulerP_PAI::getAccInertiaForces(const P* qdd, P* out) const {
    group->getAccInertiaForces(place, qdd->bodyData(bodyIndex), out->bodyData(bodyIndex));
}

void MBS_RigidBody_EulerP_PAI::getInnerConstraintForces(const C* multipliers, P* out) const {
    group->getInnerConstraintForces(place, multipliers->innerEquationOfBody(bodyIndex),
                                    out->bodyData(bodyIndex));
}

void MBS_RigidBody_EulerP_PAI::getVelInertiaForces(const P*, const P*, P* Q) {
    group->getVelInertiaForces(place, Q->bodyData(bodyIndex));
}

void MBS_RigidBody_EulerP_PAI::getElasticForces(const P*, P* Q) {
    clear(Q);
}

void MBS_RigidBody_EulerP_PAI::getDampingForces(const P*, P* Q) {
    clear(Q);
}

} // namespace velmora
