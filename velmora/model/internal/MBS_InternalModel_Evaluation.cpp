#include "velmora/bodies/MBS_Body.h"
#include "velmora/bodies/MBS_BodyGroup.h"
#include "velmora/constraints/MBS_ConstraintGroup.h"
#include "velmora/constraints/MBS_ExtConstraint.h"
#include "velmora/forces/MBS_Force.h"
#include "velmora/model/BlockProducts.h"
#include "velmora/model/FetchAhead.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/model/internal/MBS_InternalModel.h"

#include <algorithm>

// What the model computes. Update operations refresh the caches of bodies, forces and constraints; get
// operations combine what the last update left.

namespace velmora {

namespace {

void clearAll(MBS_ModelPhysicalDofVector* v) {
    std::fill_n(v->dofVector->data, v->dofVector->size, 0.0);
}

void clearAll(MBS_ModelConstraintDofVector* v) {
    if (v->dofVector)
        std::fill_n(v->dofVector->data, v->dofVector->size, 0.0);
}

} // namespace

void MBS_InternalModel::updateMatricesForEquationOfMotion(double t, const P* q, const P* qd, const P* qdd) {
    for (const auto& group : bodyGroups)
        group->updateForMotion(t, q, qd, qdd);
}

void MBS_InternalModel::updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(double t, const P* q,
                                                                                        const P* qd,
                                                                                        const P* qdd,
                                                                                        C* out) {
    updateMatricesForEquationOfMotion(t, q, qd, qdd);
    updateMeasures(t, q, qd, qdd);
    getNormResiduals(q, out);
    for (const auto& group : constraintGroups)
        group->updateForMotion(t, q, qd, qdd, out);
}

void MBS_InternalModel::updateMatricesForJacobian(double t, const P* q, const P* qd, const P* qdd,
                                                  const C* multipliers) {
    for (const auto& group : bodyGroups)
        group->updateForJacobian(t, q, qd, qdd, multipliers);
    const auto ask = [](const MBS_Force& force, unsigned step) { force.fetchAhead(step, true); };
    forEachFetchedAhead(forces, ask,
                        [&](MBS_Force& force) { force.updateMatricesForJacobian(t, q, qd, qdd); });
    for (const auto& group : constraintGroups)
        group->updateForJacobian(t, q, qd, qdd, multipliers);
}

void MBS_InternalModel::setTimeOfLastSuccessfulStep(double t) {
    for (const auto& body : bodies)
        body->setTimeOfLastSuccessfulStep(t);
    for (const auto& constraint : constraints)
        constraint->setTimeOfLastSuccessfulStep(t);
    for (const auto& force : forces)
        force->setTimeOfLastSuccessfulStep(t);
}

void MBS_InternalModel::updateForKinematicSolverAndComputeBbar(const P* q, P* out, C* residual) {
    for (const auto& body : bodies) {
        body->commons->update(0.0, q, q, nullptr);
        body->cqT->update(0.0, q, nullptr, nullptr);
        if (body->aBar4KinSolver)
            body->aBar4KinSolver->update(0.0, q, nullptr, nullptr, nullptr);
        body->computeBbar(q, out);
    }
    getNormResiduals(q, residual);
    for (const auto& group : constraintGroups)
        group->updateForMotion(0.0, q, nullptr, nullptr, residual);
}

void MBS_InternalModel::getAccInertiaForces(const P* qdd, P* out) {
    for (const auto& group : bodyGroups)
        group->getAccInertiaForces(qdd, out);
}

void MBS_InternalModel::getVelInertiaForces(const P* q, const P* qd, P* out) {
    for (const auto& group : bodyGroups)
        group->getVelInertiaForces(q, qd, out);
}

// A rigid body has no such forces.
void MBS_InternalModel::getElasticForces(const P* q, P* out) {
    clearAll(out);
    for (MBS_Body* body : flexBodies)
        body->getElasticForces(q, out);
}

void MBS_InternalModel::getDampingForces(const P* qd, P* out) {
    clearAll(out);
    for (MBS_Body* body : flexBodies)
        body->getDampingForces(qd, out);
}

void MBS_InternalModel::getConstraintForces(const C* multipliers, P* out) {
    for (const auto& group : bodyGroups)
        group->getInnerConstraintForces(multipliers, out);
    for (const auto& group : constraintGroups)
        group->getConstraintForces(multipliers, out);
}

void MBS_InternalModel::getExternalForces(double t, const P* q, const P* qd, const P*, P* out) {
    clearAll(out);
    const auto ask = [](const MBS_Force& force, unsigned step) { force.fetchAhead(step, false); };
    forEachFetchedAhead(forces, ask,
                        [&](MBS_Force& force) { force.addExternalForces(t, q, qd, nullptr, out); });
}

void MBS_InternalModel::getExternalForcesDPar(double t, const P* q, const P* qd, const P* qdd,
                                              const std::string* label, P* out) {
    clearAll(out);
    updateMeasures(t, q, qd, qdd);
    for (const auto& force : forces)
        force->addExternalForcesDPar(t, q, qd, qdd, *label, out);
}

void MBS_InternalModel::getMqddDqTimesW(const P* w, P* out) {
    for (const auto& body : bodies)
        body->getMqddDqTimesW(w, out);
}

// Blocks of the quadratic velocity vector have rotational and flexible rows and columns alone.
void MBS_InternalModel::getVelInertiaForcesDqTimesW(const P* w, P* out) {
    clearAll(out);
    for (const auto& body : bodies)
        addTransposedProduct(*body->qvv_q, w->bodyData(body->bodyIndex), out->bodyData(body->bodyIndex));
}

void MBS_InternalModel::getExternalForcesDqTimesW(const P* w, P* out) {
    clearAll(out);
    for (const auto& force : forces)
        for (const auto& entry : force->jacobianEntries)
            if (entry.qeQ)
                addTransposedProduct(*entry.qeQ, w->bodyData(entry.rowBody), out->bodyData(entry.colBody));
}

void MBS_InternalModel::getConstraintForceDqTimesW(const P* w, P* out) {
    clearAll(out);
    for (const auto& body : bodies)
        addTransposedProduct(*body->cqLi_q, w->bodyData(body->bodyIndex), out->bodyData(body->bodyIndex));
    for (const auto& group : constraintGroups)
        for (const auto& part : group->cqTLe_q)
            if (part.isTransposed)
                addProduct(*part.block, w->bodyData(part.rowBody), out->bodyData(part.colBody));
            else
                addTransposedProduct(*part.block, w->bodyData(part.rowBody), out->bodyData(part.colBody));
}

void MBS_InternalModel::getNormResiduals(const P* q, C* out) {
    for (const auto& group : bodyGroups)
        group->getNormResiduals(q, out);
}

void MBS_InternalModel::getAndUpdateConstraints(double t, const P* q, const P* qd, const P* qdd, C* out) {
    getNormResiduals(q, out);
    for (const auto& constraint : constraints)
        constraint->getAndUpdateConstraints(t, q, qd, qdd, out);
}

void MBS_InternalModel::getCqdT_Mult_Qd(const P* q, const P* qd, const P* qdd, C* out) {
    for (const auto& body : bodies) {
        body->cqTdT->update(0.0, q, qd, nullptr);
        double& result = out->innerEquationOfBody(body->bodyIndex);
        result = 0.0;
        addTransposedProduct(*body->cqTdT, qd->bodyData(body->bodyIndex), &result);
    }
    for (const auto& constraint : constraints)
        constraint->getCqdT_Mult_Qd(q, qd, qdd, out);
}

void MBS_InternalModel::get_C_t(double t, const P* q, const P* qd, const P* qdd, C* out) {
    clearAll(out);
    for (const auto& constraint : constraints)
        constraint->get_C_t(t, q, qd, qdd, out);
}

void MBS_InternalModel::get_C_t_order2(double t, const P* q, const P* qd, const P* qdd, C* out) {
    clearAll(out);
    for (const auto& constraint : constraints)
        constraint->get_C_t_order2(t, q, qd, qdd, out);
}

void MBS_InternalModel::copyInitialDataIntoPhysicalDofVector(P* q, P* qd) {
    for (const auto& body : bodies)
        body->copyInitialData(q, qd);
}

void MBS_InternalModel::getCurrentStateResultFileBlock(const P* q, std::vector<double*>* blocks) {
    for (const auto& body : bodies) {
        double* block = (*blocks)[body->bodyIndex];
        std::copy_n(q->bodyData(body->bodyIndex), 3, block);
        body->commons->updateRotationMatrix(q);
        body->commons->A.to(block + 3);
    }
}

void MBS_InternalModel::getCurrentConstraintStateResultFileBlock(const P* q, std::vector<double*>* blocks) {
    for (std::size_t k = 0; k < jointsForResults.size(); ++k) {
        const MBS_ExtConstraint& joint = *jointsForResults[k];
        const MBS_Body& body = *joint.constraintBodies[0];
        body.commons->updateRotationMatrix(q);
        const Mat3& A = body.commons->A;
        (Vec3::from(q->bodyData(body.bodyIndex)) + A * joint.localLocation).to((*blocks)[k]);
        (A * joint.localOrientation).to((*blocks)[k] + 3);
    }
}

} // namespace velmora
