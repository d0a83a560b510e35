#include "velmora/bodies/MBS_RigidBody_EulerP_PAI_Commons.h"

#include "velmora/bodies/RigidBodyFormulas.h"
#include "velmora/model/MBS_ModelDofVector.h"

#include <algorithm>

namespace velmora {

void MBS_RigidBody_EulerP_PAI_Parameter::getInertiaComponents(double* components) const {
    inertia.to(components);
    std::fill_n(components + 3, 3, 0.0);
}

void MBS_RigidBody_EulerP_PAI_Commons::setParameter(const MBS_RigidBody_EulerP_PAI_Parameter& parameter) {
    Ibar = parameter.inertia;
    isMassless = parameter.mass == 0.0;
}

void MBS_RigidBody_EulerP_PAI_Commons::update(double, const P* q, const P* qd, const P*) {
    setState(Vec4::from(q->bodyData(bodyIndex) + 3), Vec4::from(qd->bodyData(bodyIndex) + 3));
}

Mat3 MBS_RigidBody_EulerP_PAI_Commons::gyroscopicMatrix() const {
    return rigid::gyroscopicMatrix(Ibar, omegaBar, IbarOmegaBar);
}

} // namespace velmora
