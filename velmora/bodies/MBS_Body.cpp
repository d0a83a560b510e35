#include "velmora/bodies/MBS_Body.h"

#include "velmora/bodies/MBS_RotationMath.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/model/BlockProducts.h"
#include "velmora/model/MBS_ModelDofVector.h"

#include <algorithm>

namespace velmora {

MBS_Body::MBS_Body(IO_DataModelBlock* block, MBS_Model* owner, unsigned index, unsigned numOfFlexDof)
    : MBS_ModelObject(block, owner),
      initialPositions(7 + numOfFlexDof, 0.0),
      initialVelocities(7 + numOfFlexDof, 0.0),
      numFlexDof(numOfFlexDof),
      bodyIndex(index) {
    if (block->isKeyInBlock("BodyName"))
        block->getValue("BodyName", &bodyName, IO_ValueCode::String);
    if (block->isKeyInBlock("RegardVelocityInertiaForcesInsideJacobian"))
        block->getValue("RegardVelocityInertiaForcesInsideJacobian",
                        &regardVelocityInertiaForcesInsideJacobian);
}

MBS_Body::~MBS_Body() = default;

void MBS_Body::clear(P* Q) const {
    std::fill_n(Q->bodyData(bodyIndex), getNumOfDof(), 0.0);
}

void MBS_Body::updateForMotion(double t, const P* q, const P* qd, const P* qdd) {
    commons->update(t, q, qd, qdd);
    massMatrix->update(t, q, qd, qdd, nullptr);
    cqT->update(t, q, qd, qdd);
}

void MBS_Body::updateForJacobian(double t, const P* q, const P* qd, const P* qdd, const C* multipliers) {
    commons->updateForAcceleration(t, q, qd, qdd);
    if (regardVelocityInertiaForcesInsideJacobian) {
        qvv_q->update(t, q, qd, qdd, nullptr);
        qvv_qd->update(t, q, qd, qdd, nullptr);
    }
    mQdd_q->update(t, q, qd, qdd, nullptr);
    cqLi_q->update(t, q, qd, qdd, multipliers);
    cqTdT->update(t, q, qd, qdd);
}

// M has the blocks tt, rr, rf, fr, ff.
void MBS_Body::getAccInertiaForces(const P* qdd, P* out) const {
    clear(out);
    addProduct(*massMatrix, qdd->bodyData(bodyIndex), out->bodyData(bodyIndex));
}

void MBS_Body::getInnerConstraintForces(const C* multipliers, P* out) const {
    clear(out);
    const double lambda = multipliers->innerEquationOfBody(bodyIndex);
    addProduct(*cqT, &lambda, out->bodyData(bodyIndex));
}

void MBS_Body::getMqddDqTimesW(const P* w, P* Q) {
    clear(Q);
    const double* wRot = w->bodyData(bodyIndex) + 3;
    double* rot = Q->bodyData(bodyIndex) + 3;
    const auto& B = mQdd_q->block;
    addTransposedProduct(B[Rot][Rot].get(), wRot, rot);
    addTransposedProduct(B[Flex][Rot].get(), wRot + 4, rot);
    addTransposedProduct(B[Flex][Flex].get(), wRot + 4, rot + 4);
    addTransposedProduct(B[Rot][Flex].get(), wRot, rot + 4);
}

void MBS_Body::copyInitialData(P* q, P* qd) const {
    std::copy(initialPositions.begin(), initialPositions.end(), q->bodyData(bodyIndex));
    std::copy(initialVelocities.begin(), initialVelocities.end(), qd->bodyData(bodyIndex));
}

double MBS_Body::getNormResidual(const P* q) const {
    return normResidual(q->bodyData(bodyIndex) + 3) - initialNormOffset;
}

void MBS_Body::computeBbar(const P* q, P* out) const {
    if (!out)
        return;
    clear(out);
    const Vec3 r = Vec3::from(q->bodyData(bodyIndex));
    const Vec4 e = Vec4::from(q->bodyData(bodyIndex) + 3);
    for (const MBS_ActorPull* actor : actors) {
        if (!actor->isActive)
            continue;
        const Vec3& u = actor->actingPoint;
        const Vec3 pull = actor->weight * (actor->targetPoint - (r + A(e) * u));
        pull.addTo(out->bodyData(bodyIndex));
        transposeTimes(J(e, u), pull).addTo(out->bodyData(bodyIndex) + 3);
    }
}

void MBS_Body::setInitialRotation(const Mat3& orientation, const Vec3& omega) {
    double* p = initialPositions.data() + 3;
    MBS_RotationMath::rotationMatrixToEulerParameters(3, orientation.data.data(), p);
    initialNormOffset = normResidual(p);
    const Vec3 omegaBar = transposeTimes(orientation, omega);
    MBS_RotationMath::omegaBarToEulerRates(omegaBar, Vec4::from(p)).to(initialVelocities.data() + 3);
}

void MBS_Body::updateInitialPose() {
    position = Vec3::from(initialPositions.data());
    rotationMatrix = A(Vec4::from(initialPositions.data() + 3));
}

} // namespace velmora
