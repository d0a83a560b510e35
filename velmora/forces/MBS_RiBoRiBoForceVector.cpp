#include "velmora/forces/MBS_RiBoRiBoForceVector.h"

#include "velmora/forces/LoadBlocks.h"
#include "velmora/forces/LoadKeys.h"
#include "velmora/forces/LoadPoints.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/model/MBS_ModelDofVector.h"

// Notation: p1, p2 Euler parameters of the bodies, u1, u2 points of application in their frames,
// J1 = J(p1, u1), J2 = J(p2, u2), f = F e the force on body 1.
//
// (1) Q1 = [f; J1' f], Q2 = -[f; J2' f]
// (2) dQ1/dx = [D; J1' D], dQ2/dx = -[D; J2' D], D = df/dx, for the coordinates x of any body
// (3) for a body's own q also E(f; u1), E(-f; u2) in the rotational place: d(J' f)/dp at constant f
// (4) moments about the centres of mass, global frame: 1/4 A Gbar Q_rot

namespace velmora {

MBS_RiBoRiBoForceVector::MBS_RiBoRiBoForceVector(IO_DataModelBlock* block, MBS_Model* owner,
                                                 const MBS_ModelLookUp& lookUp)
    : ExpressionForce(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    const ForceVectorKeys keys(*block);
    if (!keys.isTypeGiven)
        refuse(*block, "ForceDirectionType not available in input-file!\n");
    if (!keys.isTypeGiven || reportBlockErrors(*block))
        return;
    MBS_Body* const ownBodies[] = {body1, body2};
    setLoad(std::make_unique<ExpressionLoad>(owner, lookUp, keys.expression, ownBodies));
    localPoint1 = toLocalPoint(*body1, keys.point1);
    localPoint2 = toLocalPoint(*body2, keys.point2);
    if (keys.directionType == "In-line-of-sight")
        load->unitVector =
            std::make_unique<MBS_3DUnitVector_BodyBody>(keys.point1, body1, keys.point2, body2);
    else
        load->unitVector = makeGivenDirection(keys.directionType, keys.direction, body1);
    if (!load->unitVector)
        refuse(*block, "ForceDirectionType not defined!\n");
    reserveValues(2, numOfForceValues);
    for (std::size_t k = 0; k < load->columns.size(); ++k) {
        addBlocks<MBS_RiBoRiBoForceVector_Qe_q_1x, MBS_RiBoRiBoForceVector_Qe_qd_1x>(*body1, 0, k);
        addBlocks<MBS_RiBoRiBoForceVector_Qe_q_2x, MBS_RiBoRiBoForceVector_Qe_qd_2x>(*body2, 1, k);
    }
}

// (1)
void MBS_RiBoRiBoForceVector::addLoad(const Vec3& f, const P* q, P* Q) {
    forceVector = f;
    pointJacobian1 = J(Vec4::from(q->bodyData(body1Index) + 3), localPoint1);
    pointJacobian2 = J(Vec4::from(q->bodyData(body2Index) + 3), localPoint2);
    rotationalForce1 = transposeTimes(pointJacobian1, f);
    rotationalForce2 = -transposeTimes(pointJacobian2, f);
    double *Q1 = Q->bodyData(body1Index), *Q2 = Q->bodyData(body2Index);
    f.addTo(Q1);
    (-f).addTo(Q2);
    rotationalForce1.addTo(Q1 + 3);
    rotationalForce2.addTo(Q2 + 3);
}

// (2), (3)
void MBS_RiBoRiBoForceVector::updateColumn(double t, const P* q, const P* qd, const P* qdd,
                                           const C* multipliers, std::size_t k) {
    using enum ExpressionLoad::By;
    const auto& column = load->columns[k];
    const auto D = load->derivative(Q, t, q, qd, qdd, multipliers, column);
    double *rows1 = valuesOf(0, column.firstBlock), *rows2 = valuesOf(1, column.firstBlock);
    setForceRows(rows1, D, pointJacobian1);
    setForceRows(rows2, -D, pointJacobian2);
    if (column.body == body1)
        addOwnRotation(rows1, numOfForceValues, E(load->vector(), localPoint1));
    if (column.body == body2)
        addOwnRotation(rows2, numOfForceValues, E(-load->vector(), localPoint2));
    if (!column.needsQd)
        return;
    const auto Dd = load->derivative(Qd, t, q, qd, qdd, multipliers, column);
    setForceRows(valuesOf(0, column.firstBlock + 1), Dd, pointJacobian1);
    setForceRows(valuesOf(1, column.firstBlock + 1), -Dd, pointJacobian2);
}

// (4)
void MBS_RiBoRiBoForceVector::getForceResultData(const P* q, const P*, const P*, const C*, ResultData& data) {
    const Vec3 place1 = Vec3::from(q->bodyData(body1Index)), place2 = Vec3::from(q->bodyData(body2Index));
    const Mat3 &A1 = bodyCommons1->A, &A2 = bodyCommons2->A;
    data = {place1 + A1 * localPoint1,
            forceVector,
            place1,
            0.25 * (A1 * (bodyCommons1->Gbar() * rotationalForce1)),
            place2 + A2 * localPoint2,
            -forceVector,
            place2,
            0.25 * (A2 * (bodyCommons2->Gbar() * rotationalForce2))};
}

} // namespace velmora
