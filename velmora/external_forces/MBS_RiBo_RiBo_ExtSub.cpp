#include "velmora/external_forces/MBS_RiBo_RiBo_ExtSub.h"

#include "velmora/forces/LoadBlocks.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/model/MBS_ModelLookUp.h"

namespace velmora {

MBS_RiBo_RiBo_ExtSubForceObject::MBS_RiBo_RiBo_ExtSubForceObject(IO_DataModelBlock* block, MBS_Model* owner,
                                                                 const MBS_ModelLookUp& lookUp)
    : MBS_BodyBodyForce(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    const std::string error = state.build(*block, lookUp, "MBS_RiBo_RiBo_ExtSubForceObject", {body1, body2});
    if (!error.empty())
        appendErrorString(error);
    dependencyMeasures = state.measures;
    numOfDependencyMeasures = state.numOfMeasures;
}

template <class Q_1x, class Q_2x, class Qd_1x, class Qd_2x>
void MBS_RiBo_RiBo_ExtSubForceObject::addBlocks(const MBS_ModelLookUp& lookUp) {
    if (isErrorOccured())
        return;
    for (const auto& owned : lookUp.getBodies()) {
        const MBS_Body& column = *owned;
        const bool needsQ = &column == body1 || &column == body2 || state.dependsOn(column, 0);
        const bool needsQd = state.dependsOn(column, 1);
        if (!needsQ && !needsQd)
            continue;
        jacobianEntries.push_back({body1Index, column.bodyIndex,
                                   needsQ ? std::make_unique<Q_1x>(*this, column) : nullptr,
                                   needsQd ? std::make_unique<Qd_1x>(*this, column) : nullptr});
        jacobianEntries.push_back({body2Index, column.bodyIndex,
                                   needsQ ? std::make_unique<Q_2x>(*this, column) : nullptr,
                                   needsQd ? std::make_unique<Qd_2x>(*this, column) : nullptr});
    }
}

void MBS_RiBo_RiBo_ExtSubForceObject::updateMatricesForJacobian(double t, const P* q, const P* qd,
                                                                const P* qdd) {
    for (const JacobianEntry& entry : jacobianEntries)
        for (auto* block : {entry.qeQ.get(), entry.qeQd.get()})
            if (block)
                static_cast<MBS_Force_Qe_X*>(block)->updateForBody(t, q, qd, qdd, nullptr, entry.colBody);
}

void MBS_RiBo_RiBo_ExtSubForceObject::getForceResultData(const P* q, const P*, const P*, const C*,
                                                         ResultData& data) {
    const ExtSubVectors shown = state.library->resultVectors();
    const Vec3 r1 = Vec3::from(q->bodyData(body1Index)), r2 = Vec3::from(q->bodyData(body2Index));
    data = {r1 + bodyCommons1->A * state.localPoints[0], shown.force,  r1, shown.torque,
            r2 + bodyCommons2->A * state.localPoints[1], -shown.force, r2, -shown.torque};
}

MBS_RiBo_RiBo_ExtSubForceObject_Qe_q::MBS_RiBo_RiBo_ExtSubForceObject_Qe_q(
    MBS_RiBo_RiBo_ExtSubForceObject& owner, unsigned rowBody, const MBS_Body& columnBody, ExtSubBy derivesBy)
    : MBS_BodyBodyForce_Qe_X(owner.bodyAt(rowBody), columnBody),
      force(&owner),
      column(&columnBody),
      row(rowBody),
      by(derivesBy) {
    keepOnly({{Trans, Trans}, {Trans, Rot}, {Rot, Trans}, {Rot, Rot}});
}

void MBS_RiBo_RiBo_ExtSubForceObject_Qe_q::updateForBody(double t, const P* q, const P* qd, const P* qdd,
                                                         const C* multipliers, unsigned) {
    const auto d = force->state.derivatives(by, row, t, q, qd, qdd, multipliers, *column);
    const bool isOwn = by == ExtSubBy::Q && (isColumn(0) || isColumn(1));
    const ExtSubVectors own = isOwn ? force->state.vectors(row, t) : ExtSubVectors();
    fill(d, isOwn ? &own : nullptr);
}

MBS_RiBo_RiBo_ExtSub_BodyFixed::MBS_RiBo_RiBo_ExtSub_BodyFixed(IO_DataModelBlock* block, MBS_Model* owner,
                                                               const MBS_ModelLookUp& lookUp)
    : MBS_RiBo_RiBo_ExtSubForceObject(block, owner, lookUp) {
    addBlocks<MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_q_1x, MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_q_2x,
              MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_qd_1x, MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_qd_2x>(lookUp);
}

void MBS_RiBo_RiBo_ExtSub_BodyFixed::addExternalForces(double t, const P* q, const P*, const P*, P* Q) {
    state.refreshMeasures();
    const auto [f1, c1] = state.vectors(0, t);
    const auto [f2, c2] = state.vectors(1, t);
    const Mat3& A1 = bodyCommons1->A;
    const Vec3 a = A1 * f2, b = A1 * c2;
    const Vec4 e2 = Vec4::from(q->bodyData(body2Index) + 3);
    (A1 * f1).addTo(Q->bodyData(body1Index));
    transposeTimes(bodyCommons1->Gbar(), c1 + cross(state.localPoints[0], f1))
        .addTo(Q->bodyData(body1Index) + 3);
    a.addTo(Q->bodyData(body2Index));
    (transposeTimes(bodyCommons2->G(), b) + transposeTimes(J(e2, state.localPoints[1]), a))
        .addTo(Q->bodyData(body2Index) + 3);
}

void MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_q_1x::fill(const ExtSubForceState::Derivatives& d,
                                                  const ExtSubVectors* own) {
    fillBodyFixed(*this, commonsOf(0), point(), d, isColumn(0) ? own : nullptr);
}

// D = A1 df,  R = G2' A1 dc + J2' D;  by q of body 1: D_e += J(e1; f), R_e += G2' J(e1; c) + J2' J(e1; f); by
// q of body 2: R_e += H(b) + E(a; u2)
void MBS_RiBo_RiBo_ExtSub_BodyFixed_Qe_q_2x::fill(const ExtSubForceState::Derivatives& d,
                                                  const ExtSubVectors* own) {
    const MBS_BodyCommons &c1 = commonsOf(0), &c2 = commonsOf(1);
    const Mat34 J2 = J(c2.p, point());
    Mat<3, 7> D = c1.A * d.force, T = c1.A * d.torque;
    if (own && isColumn(0)) {
        addRotational(D, J(c1.p, own->force));
        addRotational(T, J(c1.p, own->torque));
    }
    Mat<4, 7> R = transposeTimes(c2.G(), T) + transposeTimes(J2, D);
    if (own && isColumn(1))
        addRotational(R, H(c1.A * own->torque) + E(c1.A * own->force, point()));
    setRows(*this, D, R);
}

MBS_RiBo_RiBo_ExtSub_SpaceFixed::MBS_RiBo_RiBo_ExtSub_SpaceFixed(IO_DataModelBlock* block, MBS_Model* owner,
                                                                 const MBS_ModelLookUp& lookUp)
    : MBS_RiBo_RiBo_ExtSubForceObject(block, owner, lookUp) {
    addBlocks<MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_q_1x, MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_q_2x,
              MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_qd_1x, MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_qd_2x>(lookUp);
}

void MBS_RiBo_RiBo_ExtSub_SpaceFixed::addExternalForces(double t, const P* q, const P*, const P*, P* Q) {
    state.refreshMeasures();
    const ExtSubVectors loads[] = {state.vectors(0, t), state.vectors(1, t)};
    for (const unsigned i : {0u, 1u}) {
        const MBS_Body& body = bodyAt(i);
        double* Q_i = Q->bodyData(body.bodyIndex);
        const Vec4 e = Vec4::from(q->bodyData(body.bodyIndex) + 3);
        loads[i].force.addTo(Q_i);
        (transposeTimes(body.commons->G(), loads[i].torque) +
         transposeTimes(J(e, state.localPoints[i]), loads[i].force))
            .addTo(Q_i + 3);
    }
}

void MBS_RiBo_RiBo_ExtSub_SpaceFixed_Qe_q_1x::fill(const ExtSubForceState::Derivatives& d,
                                                   const ExtSubVectors* own) {
    fillSpaceFixed(*this, commonsOf(row), point(), d, isColumn(row) ? own : nullptr);
}

} // namespace velmora
