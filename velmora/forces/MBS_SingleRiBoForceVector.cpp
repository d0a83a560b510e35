#include "velmora/forces/MBS_SingleRiBoForceVector.h"

#include "velmora/forces/LoadBlocks.h"
#include "velmora/forces/LoadKeys.h"
#include "velmora/forces/LoadPoints.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/model/MBS_ModelDofVector.h"

// Notation: p Euler parameters of the body, u point of application in its frame, f = F e the force.
//
// (1) Q = [f; J(p, u)' f]
// (2) dQ/dx = [D; J(p, u)' D], D = df/dx, for the coordinates x of any body
// (3) for the body's own q also d(J(p, u)' f)/dp = E(f; u) at constant f
// (4) moment about the centre of mass, global frame: 1/4 A Gbar J' f

namespace velmora {

MBS_SingleRiBoForceVector::MBS_SingleRiBoForceVector(IO_DataModelBlock* block, MBS_Model* owner,
                                                     const MBS_ModelLookUp& lookUp)
    : ExpressionForce(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    const ForceVectorKeys keys(*block);
    if (!keys.isTypeGiven)
        refuse(*block, "ForceDirectionType not available in input-file!\n");
    if (!keys.isTypeGiven || reportBlockErrors(*block))
        return;
    setLoad(std::make_unique<ExpressionLoad>(owner, lookUp, keys.expression, std::span<MBS_Body*>()));
    localPoint = toLocalPoint(*body, keys.point1);
    secondPoint = keys.point2;
    if (keys.directionType == "In-line-of-sight")
        load->unitVector = std::make_unique<MBS_3DUnitVector_GroundBody>(keys.point2, keys.point1, body);
    else
        load->unitVector = makeGivenDirection(keys.directionType, keys.direction, body);
    if (!load->unitVector)
        refuse(*block, "ForceDirectionType not defined!\n");
    reserveValues(1, numOfForceValues);
    for (std::size_t k = 0; k < load->columns.size(); ++k)
        addBlocks<MBS_SingleRiBoForceVector_Qe_q, MBS_SingleRiBoForceVector_Qe_qd>(*body, 0, k);
}

// (1)
void MBS_SingleRiBoForceVector::addLoad(const Vec3& f, const P* q, P* Q) {
    forceVector = f;
    pointJacobian = J(Vec4::from(q->bodyData(bodyIndex) + 3), localPoint);
    rotationalForce = transposeTimes(pointJacobian, f);
    forceVector.addTo(Q->bodyData(bodyIndex));
    rotationalForce.addTo(Q->bodyData(bodyIndex) + 3);
}

// (2), (3)
void MBS_SingleRiBoForceVector::updateColumn(double t, const P* q, const P* qd, const P* qdd,
                                             const C* multipliers, std::size_t k) {
    using enum ExpressionLoad::By;
    const auto& column = load->columns[k];
    double* rows = valuesOf(0, column.firstBlock);
    setForceRows(rows, load->derivative(Q, t, q, qd, qdd, multipliers, column), pointJacobian);
    if (column.body == body)
        addOwnRotation(rows, numOfForceValues, E(load->vector(), localPoint));
    if (column.needsQd)
        setForceRows(valuesOf(0, column.firstBlock + 1),
                     load->derivative(Qd, t, q, qd, qdd, multipliers, column), pointJacobian);
}

// (4)
void MBS_SingleRiBoForceVector::getForceResultData(const P* q, const P*, const P*, const C*,
                                                   ResultData& data) {
    const Vec3 place = Vec3::from(q->bodyData(bodyIndex)), zero;
    const Vec3 moment = 0.25 * (bodyCommons->A * (bodyCommons->Gbar() * rotationalForce));
    data = {place + bodyCommons->A * localPoint, forceVector, place, moment, zero, zero, zero, zero};
    if (load->unitVector->getClassName() != "MBS_3DUnitVector_GroundBody")
        return;
    data[4] = data[6] = secondPoint;
    data[5] = -forceVector;
    data[7] = -moment;
}

} // namespace velmora
