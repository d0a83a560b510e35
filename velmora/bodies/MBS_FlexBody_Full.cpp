#include "velmora/bodies/MBS_FlexBody_Full.h"

#include "velmora/bodies/MBS_FlexBody_Full_Matrix.h"
#include "velmora/bodies/MBS_FlexBody_Full_Parameter.h"
#include "velmora/bodies/MBS_RotationMath.h"
#include "velmora/model/MBS_ModelDofVector.h"

namespace velmora {

MBS_FlexBody_Full::MBS_FlexBody_Full(IO_DataModelBlock* block, MBS_Model* owner, unsigned index)
    : MBS_Body(block, owner, index, 1) {
    auto ownParameter = std::make_unique<MBS_FlexBody_Full_Parameter>(block);
    if (ownParameter->isErrorOccured()) {
        appendErrorString(ownParameter->getErrorString());
        return;
    }
    flexParameter = ownParameter.get();
    parameter = std::move(ownParameter);
    setInitialState();
    if (isErrorOccured())
        return;
    flexCommons = std::make_unique<MBS_FlexBody_Full_Commons>(bodyIndex, *flexParameter);
    commons = flexCommons.get();
    createBlocks();
    updateInitialPose();
}

MBS_FlexBody_Full::~MBS_FlexBody_Full() = default;

void MBS_FlexBody_Full::setInitialState() {
    numFlexDof = flexParameter->numOfModes;
    initialPositions.assign(7 + std::size_t{numFlexDof}, 0.0);
    initialVelocities.assign(7 + std::size_t{numFlexDof}, 0.0);
    flexParameter->location.to(initialPositions.data());
    flexParameter->initialVelocity.to(initialVelocities.data());
    setInitialRotation(flexParameter->orientation, flexParameter->initialOmega);
}

void MBS_FlexBody_Full::createBlocks() {
    const MBS_BodyShape shape = getShape();
    const MBS_FlexBody_Full_Commons& c = *flexCommons;
    massMatrix = std::make_unique<MBS_FlexBody_Full_MassMatrix>(shape, c);
    mQdd_q = std::make_unique<MBS_FlexBody_Full_MQdd_q>(shape, c);
    qvv_q = std::make_unique<MBS_FlexBody_Full_Qvv_q>(shape, c);
    qvv_qd = std::make_unique<MBS_FlexBody_Full_Qvv_qd>(shape, c);
    cqLi_q = std::make_unique<MBS_FlexBody_Full_CqLi_q>(shape, c);
    stiffnessBlock = std::make_unique<MBS_FlexBody_Full_Kq_q>(shape, c);
    dampingBlock = std::make_unique<MBS_FlexBody_Full_Dqd_qd>(shape, c);
    cqT = std::make_unique<MBS_FlexBody_Full_CqT>(shape);
    cqTdT = std::make_unique<MBS_FlexBody_Full_CqTdT>(shape);
}

// Equation (4) of the derivative blocks.
void MBS_FlexBody_Full::getVelInertiaForces(const P*, const P*, P* Q) {
    clear(Q);
    const auto& c = *flexCommons;
    double* Q_r = Q->bodyData(bodyIndex) + 3;
    double* Q_f = Q->bodyData(bodyIndex) + 7;
    const Vec3 momentum = c.IbarOmegaBar + c.WtfTimesFlexVelocity;
    (-transposeTimes(c.Gbar(), c.IbarDotOmegaBar) - 2.0 * transposeTimes(c.GbarDot(), momentum)).to(Q_r);
    c.rowsWithOmega.addTransposedProduct(0.5, c.omegaBar, Q_f);
    if (c.isItfActive())
        c.Wtf->TofEtaDot.addTransposedProduct(-2.0, c.omegaBar, Q_f);
}

void MBS_FlexBody_Full::getElasticForces(const P* q, P* Q) {
    clear(Q);
    for (unsigned j = 0; j < numFlexDof; ++j)
        Q->bodyData(bodyIndex)[7 + j] = flexParameter->Kred[j] * q->bodyData(bodyIndex)[7 + j];
}

void MBS_FlexBody_Full::getDampingForces(const P* qd, P* Q) {
    clear(Q);
    for (unsigned j = 0; j < numFlexDof; ++j)
        Q->bodyData(bodyIndex)[7 + j] = flexParameter->Dred[j] * qd->bodyData(bodyIndex)[7 + j];
}

const std::vector<double>* MBS_FlexBody_Full::getOmegaOfModes() const {
    return flexParameter ? &flexParameter->omegaOfModes : nullptr;
}

} // namespace velmora
