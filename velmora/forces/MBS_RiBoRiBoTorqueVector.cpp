#include "velmora/forces/MBS_RiBoRiBoTorqueVector.h"

#include "velmora/forces/LoadBlocks.h"
#include "velmora/forces/LoadKeys.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/model/MBS_ModelDofVector.h"

// Notation: p1, p2 Euler parameters of the bodies, G1 = G(p1), G2 = G(p2), tau = T e the torque on body 1.
//
// (1) Q1 = [0; G1' tau], Q2 = -[0; G2' tau]
// (2) dQ1/dx = [0; G1' D], dQ2/dx = -[0; G2' D], D = dtau/dx, for the coordinates x of any body
// (3) for a body's own q also H(tau), H(-tau) in the rotational place: d(G' tau)/dp at constant tau
// (4) moments, global frame: 1/4 A Gbar Q_rot, since G = A Gbar and Gbar Gbar' = 4 I at norm 1

namespace velmora {

MBS_RiBoRiBoTorqueVector::MBS_RiBoRiBoTorqueVector(IO_DataModelBlock* block, MBS_Model* owner,
                                                   const MBS_ModelLookUp& lookUp)
    : ExpressionForce(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    const TorqueVectorKeys keys(*block);
    if (reportBlockErrors(*block))
        return;
    MBS_Body* const ownBodies[] = {body1, body2};
    setLoad(std::make_unique<ExpressionLoad>(owner, lookUp, keys.expression, ownBodies));
    load->unitVector = makeGivenDirection(keys.axisType, keys.axis, body1);
    if (!load->unitVector)
        refuse(*block, "AxisType not defined!\n");
    reserveValues(2, numOfTorqueValues);
    for (std::size_t k = 0; k < load->columns.size(); ++k) {
        addBlocks<MBS_RiBoRiBoTorqueVector_Qe_q_1x, MBS_RiBoRiBoTorqueVector_Qe_qd_1x>(*body1, 0, k);
        addBlocks<MBS_RiBoRiBoTorqueVector_Qe_q_2x, MBS_RiBoRiBoTorqueVector_Qe_qd_2x>(*body2, 1, k);
    }
}

// (1)
void MBS_RiBoRiBoTorqueVector::addLoad(const Vec3& tau, const P*, P* Q) {
    rotationalTorque1 = transposeTimes(bodyCommons1->G(), tau);
    rotationalTorque2 = -transposeTimes(bodyCommons2->G(), tau);
    rotationalTorque1.addTo(Q->bodyData(body1Index) + 3);
    rotationalTorque2.addTo(Q->bodyData(body2Index) + 3);
}

// (2), (3)
void MBS_RiBoRiBoTorqueVector::updateColumn(double t, const P* q, const P* qd, const P* qdd,
                                            const C* multipliers, std::size_t k) {
    using enum ExpressionLoad::By;
    const auto& column = load->columns[k];
    const Mat34 G1 = bodyCommons1->G(), G2 = bodyCommons2->G();
    const auto D = load->derivative(Q, t, q, qd, qdd, multipliers, column);
    double *rows1 = valuesOf(0, column.firstBlock), *rows2 = valuesOf(1, column.firstBlock);
    setTorqueRows(rows1, D, G1);
    setTorqueRows(rows2, -D, G2);
    if (column.body == body1)
        addOwnRotation(rows1, numOfTorqueValues, H(load->vector()));
    if (column.body == body2)
        addOwnRotation(rows2, numOfTorqueValues, H(-load->vector()));
    if (!column.needsQd)
        return;
    const auto Dd = load->derivative(Qd, t, q, qd, qdd, multipliers, column);
    setTorqueRows(valuesOf(0, column.firstBlock + 1), Dd, G1);
    setTorqueRows(valuesOf(1, column.firstBlock + 1), -Dd, G2);
}

// (4)
void MBS_RiBoRiBoTorqueVector::getForceResultData(const P* q, const P*, const P*, const C*,
                                                  ResultData& data) {
    data = {};
    data[0] = data[2] = Vec3::from(q->bodyData(body1Index));
    data[3] = 0.25 * (bodyCommons1->A * (bodyCommons1->Gbar() * rotationalTorque1));
    data[4] = data[6] = Vec3::from(q->bodyData(body2Index));
    data[7] = 0.25 * (bodyCommons2->A * (bodyCommons2->Gbar() * rotationalTorque2));
}

MBS_RiBoRiBoTorqueVector_Qe_X::MBS_RiBoRiBoTorqueVector_Qe_X(ExpressionForce<MBS_BodyBodyForce>& owner,
                                                             const MBS_Body& rowBody, const MBS_Body& colBody,
                                                             std::size_t ownColumn)
    : PairLoadBlock(owner, rowBody, colBody, ownColumn) {
    keepTorqueRows(*this);
}

} // namespace velmora
