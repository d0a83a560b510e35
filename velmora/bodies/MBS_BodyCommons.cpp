#include "velmora/bodies/MBS_BodyCommons.h"

#include "velmora/model/MBS_ModelDofVector.h"

namespace velmora {

void MBS_BodyCommons::update(double, const P* q, const P* qd, const P*) {
    setState(Vec4::from(q->bodyData(bodyIndex) + 3), Vec4::from(qd->bodyData(bodyIndex) + 3));
}

void MBS_BodyCommons::updateRotationMatrix(const P* q) {
    A = velmora::A(Vec4::from(q->bodyData(bodyIndex) + 3));
}

void MBS_BodyCommons::updateForAcceleration(double, const P*, const P*, const P*) {}

} // namespace velmora
