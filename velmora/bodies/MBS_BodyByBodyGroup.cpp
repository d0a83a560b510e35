#include "velmora/bodies/MBS_BodyByBodyGroup.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/model/MBS_ModelDofVector.h"

namespace velmora {

void MBS_BodyByBodyGroup::updateForMotion(double t, const P* q, const P* qd, const P* qdd) {
    for (MBS_Body* body : bodies)
        body->updateForMotion(t, q, qd, qdd);
}

void MBS_BodyByBodyGroup::updateForJacobian(double t, const P* q, const P* qd, const P* qdd,
                                            const C* multipliers) {
    for (MBS_Body* body : bodies)
        body->updateForJacobian(t, q, qd, qdd, multipliers);
}

void MBS_BodyByBodyGroup::getAccInertiaForces(const P* qdd, P* out) const {
    for (const MBS_Body* body : bodies)
        body->getAccInertiaForces(qdd, out);
}

void MBS_BodyByBodyGroup::getVelInertiaForces(const P* q, const P* qd, P* out) const {
    for (MBS_Body* body : bodies)
        body->getVelInertiaForces(q, qd, out);
}

void MBS_BodyByBodyGroup::getInnerConstraintForces(const C* multipliers, P* out) const {
    for (const MBS_Body* body : bodies)
        body->getInnerConstraintForces(multipliers, out);
}

void MBS_BodyByBodyGroup::getNormResiduals(const P* q, C* out) const {
    for (const MBS_Body* body : bodies)
        out->innerEquationOfBody(body->bodyIndex) = body->getNormResidual(q);
}

} // namespace velmora
