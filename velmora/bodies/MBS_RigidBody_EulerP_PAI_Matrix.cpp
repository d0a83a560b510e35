#include "velmora/bodies/MBS_RigidBody_EulerP_PAI_Matrix.h"

#include "velmora/bodies/RigidBodyFormulas.h"
#include "velmora/model/MBS_ModelDofVector.h"

#include <algorithm>

// Numbers in brackets are those of RigidBodyFormulas.h; further
//
// (6) CqLi_q = d(2 p l)/dp = 2 l 1
// (7) Abar   = diag(s) + sum of J' W J

namespace velmora {

void MBS_RigidBody_EulerP_PAI_Matrix::keepRotational() {
    if (commons().isMassless)
        keepOnly({});
    else
        keepOnly({{Rot, Rot}});
}

MBS_RigidBody_EulerP_PAI_MassMatrix::MBS_RigidBody_EulerP_PAI_MassMatrix(const MBS_BodyShape& shape,
                                                                         const CommonsPlace& c, double mass)
    : MBS_RigidBody_EulerP_PAI_Matrix(shape, c) {
    keepRotational();
    if (c->isMassless)
        return;
    setBlockMatrix(Trans, Trans, "MBM_DiagonalDenseMatrix", 3, 3, mass);
    setBlockMatrix(Rot, Rot, "MBM_SymmetricDenseMatrix", 4, 4, 0.0);
}

void MBS_RigidBody_EulerP_PAI_MassMatrix::update(double, const P*, const P*, const P*, const C*) {
    if (!commons().isMassless)
        rigid::massBlock(commons().Ibar, commons().p).to(rr()); // (1)
}

MBS_RigidBody_EulerP_PAI_MQdd_q::MBS_RigidBody_EulerP_PAI_MQdd_q(const MBS_BodyShape& shape,
                                                                 const CommonsPlace& c)
    : MBS_RigidBody_EulerP_PAI_Matrix(shape, c) {
    keepRotational();
}

void MBS_RigidBody_EulerP_PAI_MQdd_q::update(double, const P*, const P*, const P* qdd, const C*) {
    if (commons().isMassless)
        return;
    const Vec4 a = Vec4::from(qdd->bodyData(bodyIndex) + 3);
    rigid::inertiaForce_q(commons().Ibar, commons().p, a).to(rr()); // (2)
}

MBS_RigidBody_EulerP_PAI_Qvv_q::MBS_RigidBody_EulerP_PAI_Qvv_q(const MBS_BodyShape& shape,
                                                               const CommonsPlace& c)
    : MBS_RigidBody_EulerP_PAI_Matrix(shape, c) {
    keepRotational();
}

void MBS_RigidBody_EulerP_PAI_Qvv_q::update(double, const P*, const P*, const P*, const C*) {
    if (commons().isMassless)
        return;
    const auto& c = commons();
    const Vec3 wxn = cross(c.omegaBar, c.IbarOmegaBar);
    rigid::velInertiaForce_q(c.p, c.dp, c.gyroscopicMatrix(), wxn).to(rr()); // (4)
}

MBS_RigidBody_EulerP_PAI_Qvv_qd::MBS_RigidBody_EulerP_PAI_Qvv_qd(const MBS_BodyShape& shape,
                                                                 const CommonsPlace& c)
    : MBS_RigidBody_EulerP_PAI_Matrix(shape, c) {
    keepRotational();
}

void MBS_RigidBody_EulerP_PAI_Qvv_qd::update(double, const P*, const P*, const P*, const C*) {
    if (commons().isMassless)
        return;
    rigid::velInertiaForce_qd(commons().p, commons().gyroscopicMatrix()).to(rr()); // (5)
}

MBS_RigidBody_EulerP_PAI_CqLi_q::MBS_RigidBody_EulerP_PAI_CqLi_q(const MBS_BodyShape& shape,
                                                                 const CommonsPlace& c)
    : MBS_RigidBody_EulerP_PAI_Matrix(shape, c) {
    keepOnly({});
    setBlockMatrix(Rot, Rot, "MBM_DiagonalDenseMatrix", 4, 4, 0.0);
}

void MBS_RigidBody_EulerP_PAI_CqLi_q::update(double, const P*, const P*, const P*, const C* lagrange) {
    const double lambda = lagrange->innerEquationOfBody(bodyIndex);
    for (unsigned i = 0; i < 4; ++i)
        rr()[5 * i] = 2.0 * lambda; // (6)
}

MBS_RigidBody_EulerP_PAI_ABar4KinSolver::MBS_RigidBody_EulerP_PAI_ABar4KinSolver(
    const MBS_BodyShape& shape, const CommonsPlace& c, const std::vector<MBS_ActorPull*>& bodyActors)
    : MBS_RigidBody_EulerP_PAI_Matrix(shape, c),
      actors(&bodyActors) {}

void MBS_RigidBody_EulerP_PAI_ABar4KinSolver::update(double, const P* q, const P*, const P*, const C*) {
    for (unsigned r : {Trans, Rot})
        for (unsigned c : {Trans, Rot})
            std::fill_n(block[r][c]->data, rowDof[r] * colDof[c], 0.0);
    for (unsigned i = 0; i < 3; ++i)
        block[Trans][Trans]->data[4 * i] = actors->empty() ? 1.0 : actors->front()->scaleA_t;
    for (unsigned i = 0; i < 4; ++i)
        rr()[5 * i] = actors->empty() ? 1.0 : actors->front()->scaleA_r;
    const double* coordinates = q->bodyData(bodyIndex);
    for (MBS_ActorPull* actor : *actors)
        if (actor->isActive)
            addActor(*actor, Vec3::from(coordinates), Vec4::from(coordinates + 3));
}

// (7)
void MBS_RigidBody_EulerP_PAI_ABar4KinSolver::addActor(MBS_ActorPull& actor, const Vec3& r, const Vec4& p) {
    if (!actor.isLocalPointValid) {
        actor.actingPoint = transposeTimes(A(p), actor.actingPoint - r);
        actor.isLocalPointValid = true;
    }
    const Mat34 D = J(p, actor.actingPoint);
    const Mat34 WD = actor.weight * D;
    actor.weight.addTo(block[Trans][Trans]->data);
    WD.addTo(block[Trans][Rot]->data);
    transpose(WD).addTo(block[Rot][Trans]->data);
    transposeTimes(WD, D).addTo(rr());
}

} // namespace velmora
