#include "velmora/external_forces/MBS_SingleRiBo_ExtSub.h"

#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/model/MBS_ModelLookUp.h"

namespace velmora {

MBS_Single_RiBo_ExtSubForceObject::MBS_Single_RiBo_ExtSubForceObject(IO_DataModelBlock* block,
                                                                     MBS_Model* owner,
                                                                     const MBS_ModelLookUp& lookUp)
    : MBS_SingleBodyForce(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    const std::string error = state.build(*block, lookUp, "MBS_Single_RiBo_ExtSubForceObject", {body});
    if (!error.empty())
        appendErrorString(error);
    dependencyMeasures = state.measures;
    numOfDependencyMeasures = state.numOfMeasures;
}

template <class Qe_q, class Qe_qd>
void MBS_Single_RiBo_ExtSubForceObject::addBlocks(const MBS_ModelLookUp& lookUp, bool needsOwn) {
    if (isErrorOccured())
        return;
    for (const auto& column : lookUp.getBodies()) {
        const bool needsQ = (needsOwn && column.get() == body) || state.dependsOn(*column, 0);
        const bool needsQd = state.dependsOn(*column, 1);
        if (needsQ || needsQd)
            jacobianEntries.push_back({bodyIndex, column->bodyIndex,
                                       needsQ ? std::make_unique<Qe_q>(*this, *column) : nullptr,
                                       needsQd ? std::make_unique<Qe_qd>(*this, *column) : nullptr});
    }
}

void MBS_Single_RiBo_ExtSubForceObject::updateMatricesForJacobian(double t, const P* q, const P* qd,
                                                                  const P* qdd) {
    for (const JacobianEntry& entry : jacobianEntries)
        for (auto* block : {entry.qeQ.get(), entry.qeQd.get()})
            if (block)
                static_cast<MBS_Force_Qe_X*>(block)->updateForBody(t, q, qd, qdd, nullptr, entry.colBody);
}

void MBS_Single_RiBo_ExtSubForceObject::getForceResultData(const P* q, const P*, const P*, const C*,
                                                           ResultData& data) {
    const ExtSubVectors shown = state.library->resultVectors();
    const Vec3 r = Vec3::from(q->bodyData(bodyIndex));
    data = {r + bodyCommons->A * state.localPoints[0],
            shown.force,
            r,
            shown.torque,
            Vec3(),
            Vec3(),
            Vec3(),
            Vec3()};
}

MBS_Single_RiBo_ExtSubForceObject_Qe_q::MBS_Single_RiBo_ExtSubForceObject_Qe_q(
    MBS_Single_RiBo_ExtSubForceObject& owner, const MBS_Body& columnBody, ExtSubBy derivesBy)
    : MBS_BodyBodyForce_Qe_X(owner.ownBody(), columnBody),
      force(&owner),
      column(&columnBody),
      by(derivesBy) {
    keepOnly({{Trans, Trans}, {Trans, Rot}, {Rot, Trans}, {Rot, Rot}});
}

void MBS_Single_RiBo_ExtSubForceObject_Qe_q::updateForBody(double t, const P* q, const P* qd, const P* qdd,
                                                           const C* multipliers, unsigned) {
    const auto d = force->state.derivatives(by, 0, t, q, qd, qdd, multipliers, *column);
    const bool isOwn = by == ExtSubBy::Q && column == &force->ownBody();
    const ExtSubVectors own = isOwn ? force->state.vectors(0, t) : ExtSubVectors();
    fill(d, isOwn ? &own : nullptr);
}

MBS_SingleRiBo_ExtSub_BodyFixed::MBS_SingleRiBo_ExtSub_BodyFixed(IO_DataModelBlock* block, MBS_Model* owner,
                                                                 const MBS_ModelLookUp& lookUp)
    : MBS_Single_RiBo_ExtSubForceObject(block, owner, lookUp) {
    addBlocks<MBS_SingleRiBo_ExtSub_BodyFixed_Qe_q, MBS_SingleRiBo_ExtSub_BodyFixed_Qe_qd>(lookUp, true);
}

void MBS_SingleRiBo_ExtSub_BodyFixed::addExternalForces(double t, const P*, const P*, const P*, P* Q) {
    state.refreshMeasures();
    const auto [f, c] = state.vectors(0, t);
    (bodyCommons->A * f).addTo(Q->bodyData(bodyIndex));
    transposeTimes(bodyCommons->Gbar(), c + cross(state.localPoints[0], f)).addTo(Q->bodyData(bodyIndex) + 3);
}

void MBS_SingleRiBo_ExtSub_BodyFixed_Qe_q::fill(const ExtSubForceState::Derivatives& d,
                                                const ExtSubVectors* own) {
    fillBodyFixed(*this, *force->ownBody().commons, force->state.localPoints[0], d, own);
}

MBS_SingleRiBo_ExtSub_SpaceFixed::MBS_SingleRiBo_ExtSub_SpaceFixed(IO_DataModelBlock* block, MBS_Model* owner,
                                                                   const MBS_ModelLookUp& lookUp)
    : MBS_Single_RiBo_ExtSubForceObject(block, owner, lookUp) {
    addBlocks<MBS_SingleRiBo_ExtSub_SpaceFixed_Qe_q, MBS_SingleRiBo_ExtSub_SpaceFixed_Qe_qd>(lookUp, false);
}

void MBS_SingleRiBo_ExtSub_SpaceFixed::addExternalForces(double t, const P* q, const P*, const P*, P* Q) {
    state.refreshMeasures();
    const auto [f, c] = state.vectors(0, t);
    const Vec4 e = Vec4::from(q->bodyData(bodyIndex) + 3);
    f.addTo(Q->bodyData(bodyIndex));
    (transposeTimes(bodyCommons->G(), c) + transposeTimes(J(e, state.localPoints[0]), f))
        .addTo(Q->bodyData(bodyIndex) + 3);
}

void MBS_SingleRiBo_ExtSub_SpaceFixed_Qe_q::fill(const ExtSubForceState::Derivatives& d,
                                                 const ExtSubVectors* own) {
    fillSpaceFixed(*this, *force->ownBody().commons, force->state.localPoints[0], d, own);
}

} // namespace velmora
