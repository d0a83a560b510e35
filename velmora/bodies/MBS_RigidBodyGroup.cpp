#include "velmora/bodies/MBS_RigidBodyGroup.h"

#include "velmora/bodies/RigidBodyFormulas.h"
#include "velmora/model/MBS_ModelDofVector.h"

// Numbers in brackets are those of RigidBodyFormulas.h.

namespace velmora {

namespace {

constexpr std::size_t dofPerBody = 7;

} // namespace

MBS_RigidBodyGroup::MBS_RigidBodyGroup(unsigned firstBody, std::size_t capacity) : firstBodyIndex(firstBody) {
    commons.reserve(capacity);
    mass.reserve(capacity);
    initialNormOffset.reserve(capacity);
    massTrans.reserve(capacity);
    massRot.reserve(capacity);
    cqT.reserve(capacity);
    cqTdT.reserve(capacity);
    jacobian.reserve(capacity);
}

void MBS_RigidBodyGroup::add(const MBS_RigidBody_EulerP_PAI_Commons& bodyCommons, double totalMass,
                             double normOffset) {
    commons.push_back(bodyCommons);
    mass.push_back(totalMass);
    initialNormOffset.push_back(normOffset);
    massTrans.emplace_back();
    massRot.emplace_back();
    cqT.emplace_back();
    cqTdT.emplace_back();
    jacobian.emplace_back();
}

void MBS_RigidBodyGroup::updateForMotion(std::size_t k, const double* q, const double* qd) {
    auto& c = commons[k];
    c.setState(Vec4::from(q + 3), Vec4::from(qd + 3));
    cqT[k] = 2.0 * c.p;
    if (!c.isMassless)
        massRot[k] = rigid::massBlock(c.Ibar, c.p); // (1)
}

void MBS_RigidBodyGroup::updateForJacobian(std::size_t k, const double* qdd, double lambda) {
    const auto& c = commons[k];
    JacobianElements& to = jacobian[k];
    for (int i = 0; i < 4; ++i)
        to.cqLi_q(i, i) = 2.0 * lambda;
    cqTdT[k] = 2.0 * c.dp;
    if (c.isMassless)
        return;
    to.mQdd_q = rigid::inertiaForce_q(c.Ibar, c.p, Vec4::from(qdd + 3)); // (2)
    if (!c.regardVelocityInertiaForcesInsideJacobian)
        return;
    const Mat3 gyroscopic = rigid::gyroscopicMatrix(c.Ibar, c.omegaBar, c.IbarOmegaBar);
    const Vec3 wxn = cross(c.omegaBar, c.IbarOmegaBar);
    to.qvv_q = rigid::velInertiaForce_q(c.p, c.dp, gyroscopic, wxn); // (4)
    to.qvv_qd = rigid::velInertiaForce_qd(c.p, gyroscopic);          // (5)
}

void MBS_RigidBodyGroup::getAccInertiaForces(std::size_t k, const double* qdd, double* out) const {
    (mass[k] * Vec3::from(qdd)).to(out);
    if (mass[k] == 0.0)
        Vec4().to(out + 3);
    else
        (massRot[k] * Vec4::from(qdd + 3)).to(out + 3);
}

// The translational part vanishes since the reference point is the centre of mass.
void MBS_RigidBodyGroup::getVelInertiaForces(std::size_t k, double* out) const {
    Vec3().to(out);
    const auto& c = commons[k];
    if (c.isMassless)
        Vec4().to(out + 3);
    else
        rigid::velInertiaForce(c.p, c.omegaBar, c.IbarOmegaBar).to(out + 3); // (3)
}

void MBS_RigidBodyGroup::getInnerConstraintForces(std::size_t k, double lambda, double* out) const {
    Vec3().to(out);
    (lambda * cqT[k]).to(out + 3);
}

void MBS_RigidBodyGroup::updateForMotion(double, const P* q, const P* qd, const P*) {
    const double* x = q->bodyData(firstBodyIndex);
    const double* v = qd->bodyData(firstBodyIndex);
    for (std::size_t k = 0; k < commons.size(); ++k)
        updateForMotion(k, x + dofPerBody * k, v + dofPerBody * k);
}

void MBS_RigidBodyGroup::updateForJacobian(double, const P*, const P*, const P* qdd, const C* multipliers) {
    const double* a = qdd->bodyData(firstBodyIndex);
    const double* lambda = &multipliers->innerEquationOfBody(firstBodyIndex);
    for (std::size_t k = 0; k < commons.size(); ++k)
        updateForJacobian(k, a + dofPerBody * k, lambda[k]);
}

void MBS_RigidBodyGroup::getAccInertiaForces(const P* qdd, P* out) const {
    const double* a = qdd->bodyData(firstBodyIndex);
    double* f = out->bodyData(firstBodyIndex);
    for (std::size_t k = 0; k < mass.size(); ++k)
        getAccInertiaForces(k, a + dofPerBody * k, f + dofPerBody * k);
}

void MBS_RigidBodyGroup::getVelInertiaForces(const P*, const P*, P* out) const {
    double* f = out->bodyData(firstBodyIndex);
    for (std::size_t k = 0; k < commons.size(); ++k)
        getVelInertiaForces(k, f + dofPerBody * k);
}

void MBS_RigidBodyGroup::getInnerConstraintForces(const C* multipliers, P* out) const {
    const double* lambda = &multipliers->innerEquationOfBody(firstBodyIndex);
    double* f = out->bodyData(firstBodyIndex);
    for (std::size_t k = 0; k < cqT.size(); ++k)
        getInnerConstraintForces(k, lambda[k], f + dofPerBody * k);
}

void MBS_RigidBodyGroup::getNormResiduals(const P* q, C* out) const {
    const double* p = q->bodyData(firstBodyIndex) + 3;
    double* residual = &out->innerEquationOfBody(firstBodyIndex);
    for (std::size_t k = 0; k < initialNormOffset.size(); ++k)
        residual[k] = normResidual(p + dofPerBody * k) - initialNormOffset[k];
}

} // namespace velmora
