#include "velmora/bodies/MBS_RigidBody_EulerP_PAI.h"

#include "velmora/bodies/MBS_RigidBody_EulerP_PAI_Matrix.h"
#include "velmora/bodies/MBS_RotationMath.h"
#include "velmora/bodies/RigidBodyFormulas.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/model/MBS_Math.h"
#include "velmora/model/MBS_ModelDofVector.h"

#include <algorithm>

namespace velmora {

MBS_RigidBody_EulerP_PAI::MBS_RigidBody_EulerP_PAI(IO_DataModelBlock* block, MBS_Model* owner, unsigned index)
    : MBS_Body(block, owner, index, 0),
      rigidCommons(index) {
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
    rigidCommons.setParameter(*ownParameter);
    parameter = std::move(ownParameter);
    commons = &rigidCommons;
    isZeroInertia = mass == 0.0;
    totalMass = mass;
    createBlocks();
    findElements();
    updateInitialPose();
}

void MBS_RigidBody_EulerP_PAI::setInitialRotation(const Mat3& orientation, const Vec3& omega) {
    double* p = initialPositions.data() + 3;
    MBS_RotationMath::rotationMatrixToEulerParameters(3, orientation.data.data(), p);
    initialNormOffset = normResidual(p);
    const Vec3 omegaBar = transposeTimes(orientation, omega);
    MBS_RotationMath::omegaBarToEulerRates(omegaBar, Vec4::from(p)).to(initialVelocities.data() + 3);
}

void MBS_RigidBody_EulerP_PAI::createBlocks() {
    const auto& c = rigidCommons;
    const MBS_BodyShape shape = getShape();
    massMatrix = std::make_unique<MBS_RigidBody_EulerP_PAI_MassMatrix>(shape, c, totalMass);
    mQdd_q = std::make_unique<MBS_RigidBody_EulerP_PAI_MQdd_q>(shape, c);
    qvv_q = std::make_unique<MBS_RigidBody_EulerP_PAI_Qvv_q>(shape, c);
    qvv_qd = std::make_unique<MBS_RigidBody_EulerP_PAI_Qvv_qd>(shape, c);
    cqLi_q = std::make_unique<MBS_RigidBody_EulerP_PAI_CqLi_q>(shape, c);
    aBar4KinSolver = std::make_unique<MBS_RigidBody_EulerP_PAI_ABar4KinSolver>(shape, c, actors);
    cqT = std::make_unique<MBS_RiBo_PAI_CqT>(shape);
    cqTdT = std::make_unique<MBS_RiBo_PAI_CqTdT>(shape);
}

void MBS_RigidBody_EulerP_PAI::moveStorage(const std::shared_ptr<double[]>& arena, std::size_t place) {
    MBS_Body::moveStorage(arena, place);
    findElements();
}

void MBS_RigidBody_EulerP_PAI::findElements() {
    const auto rr = [](const Matrix& m) { return m->block[Rot][Rot] ? m->block[Rot][Rot]->data : nullptr; };
    elements = {rr(massMatrix), rr(mQdd_q),       rr(qvv_q),         rr(qvv_qd),
                rr(cqLi_q),     cqT->rPart->data, cqTdT->rPart->data};
}

void MBS_RigidBody_EulerP_PAI::updateForMotion(double t, const P* q, const P* qd, const P* qdd) {
    rigidCommons.MBS_RigidBody_EulerP_PAI_Commons::update(t, q, qd, qdd);
    const auto& c = rigidCommons;
    (2.0 * c.p).to(elements.cqT);
    if (!isZeroInertia)
        rigid::massBlock(c.Ibar, c.p).to(elements.mass);
}

void MBS_RigidBody_EulerP_PAI::updateForJacobian(double, const P*, const P*, const P* qdd,
                                                 const C* multipliers) {
    const auto& c = rigidCommons;
    const double lambda = multipliers->innerEquationOfBody(bodyIndex);
    for (unsigned i = 0; i < 4; ++i)
        elements.cqLi_q[5 * i] = 2.0 * lambda;
    (2.0 * c.dp).to(elements.cqTdT);
    if (isZeroInertia)
        return;
    const Vec4 a = Vec4::from(qdd->bodyData(bodyIndex) + 3);
    rigid::inertiaForce_q(c.Ibar, c.p, a).to(elements.mQdd_q);
    if (!regardVelocityInertiaForcesInsideJacobian)
        return;
    const Mat3 gyroscopic = c.gyroscopicMatrix();
    const Vec3 wxn = cross(c.omegaBar, c.IbarOmegaBar);
    rigid::velInertiaForce_q(c.p, c.dp, gyroscopic, wxn).to(elements.qvv_q);
    rigid::velInertiaForce_qd(c.p, gyroscopic).to(elements.qvv_qd);
}

void MBS_RigidBody_EulerP_PAI::getAccInertiaForces(const P* qdd, P* out) const {
    const double* a = qdd->bodyData(bodyIndex);
    double* result = out->bodyData(bodyIndex);
    (totalMass * Vec3::from(a)).to(result);
    if (isZeroInertia)
        Vec4().to(result + 3);
    else
        (Mat4::from(elements.mass) * Vec4::from(a + 3)).to(result + 3);
}

void MBS_RigidBody_EulerP_PAI::getInnerConstraintForces(const C* multipliers, P* out) const {
    double* result = out->bodyData(bodyIndex);
    Vec3().to(result);
    (multipliers->innerEquationOfBody(bodyIndex) * Vec4::from(elements.cqT)).to(result + 3);
}

// The translational part vanishes since the reference point is the centre of mass.
void MBS_RigidBody_EulerP_PAI::getVelInertiaForces(const P*, const P*, P* Q) {
    clear(Q);
    if (isZeroInertia)
        return;
    const auto& c = rigidCommons;
    rigid::velInertiaForce(c.p, c.omegaBar, c.IbarOmegaBar).to(Q->bodyData(bodyIndex) + 3);
}

void MBS_RigidBody_EulerP_PAI::getElasticForces(const P*, P* Q) {
    clear(Q);
}

void MBS_RigidBody_EulerP_PAI::getDampingForces(const P*, P* Q) {
    clear(Q);
}

} // namespace velmora
