#include "velmora/forces/MBS_GravityForce.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <cmath>
#include <numbers>

namespace velmora {

MBS_GravityForce::MBS_GravityForce(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp)
    : MBS_Force(block, owner) {
    block->getValue("GravityAccVector", gravityAcc.data.data(), IO_ValueCode::DoubleVector3);
    if (block->isKeyInBlock("ActivationTime"))
        block->getValue("ActivationTime", &activationTime, IO_ValueCode::Double);
    if (reportBlockErrors(*block))
        return;
    if (activationTime != 0.0)
        rampOmega = std::numbers::pi / activationTime;
    bodyWeights.reserve(lookUp.getBodies().size());
    for (const auto& body : lookUp.getBodies())
        bodyWeights.push_back(body->getMass() * gravityAcc);
}

double MBS_GravityForce::weightFactor(double t) const {
    const bool isRamp = activationTime > t && activationTime != 0.0;
    return isRamp ? 0.5 - 0.5 * std::cos(t * rampOmega) : 1.0;
}

void MBS_GravityForce::addExternalForces(double t, const P*, const P*, const P*, P* Q) {
    const double s = weightFactor(t);
    for (unsigned i = 0; i < bodyWeights.size(); ++i)
        (s * bodyWeights[i]).addTo(Q->bodyData(i));
}

} // namespace velmora
