#include "velmora/forces/MBS_SingleRiBoTorqueVector.h"

#include "velmora/forces/LoadBlocks.h"
#include "velmora/forces/LoadKeys.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/model/MBS_ModelDofVector.h"

// Notation: p Euler parameters of the body, G = G(p), tau = T e the torque.
//
// (1) Q = [0; G' tau]
// (2) dQ/dx = [0; G' D], D = dtau/dx, for the coordinates x of any body
// (3) for the body's own q also d(G' tau)/dp = H(tau) at constant tau
// (4) moment, global frame: 1/4 A Gbar G' tau, since G = A Gbar and Gbar Gbar' = 4 I at norm 1

namespace velmora {

MBS_SingleRiBoTorqueVector::MBS_SingleRiBoTorqueVector(IO_DataModelBlock* block, MBS_Model* owner,
                                                       const MBS_ModelLookUp& lookUp)
    : ExpressionForce(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    const TorqueVectorKeys keys(*block);
    if (reportBlockErrors(*block))
        return;
    setLoad(std::make_unique<ExpressionLoad>(owner, lookUp, keys.expression, std::span(&body, 1)));
    load->unitVector = makeGivenDirection(keys.axisType, keys.axis, body);
    if (!load->unitVector)
        refuse(*block, "AxisType <" + keys.axisType + "> not defined!\n");
    reserveValues(1, numOfTorqueValues);
    for (std::size_t k = 0; k < load->columns.size(); ++k)
        addBlocks<MBS_SingleRiBoTorqueVector_Qe_q, MBS_SingleRiBoTorqueVector_Qe_qd>(*body, 0, k);
}

// (1)
void MBS_SingleRiBoTorqueVector::addLoad(const Vec3& tau, const P*, P* Q) {
    rotationalTorque = transposeTimes(bodyCommons->G(), tau);
    rotationalTorque.addTo(Q->bodyData(bodyIndex) + 3);
}

// (2), (3)
void MBS_SingleRiBoTorqueVector::updateColumn(double t, const P* q, const P* qd, const P* qdd,
                                              const C* multipliers, std::size_t k) {
    using enum ExpressionLoad::By;
    const auto& column = load->columns[k];
    const Mat34 G = bodyCommons->G();
    double* rows = valuesOf(0, column.firstBlock);
    setTorqueRows(rows, load->derivative(Q, t, q, qd, qdd, multipliers, column), G);
    if (column.body == body)
        addOwnRotation(rows, numOfTorqueValues, H(load->vector()));
    if (column.needsQd)
        setTorqueRows(valuesOf(0, column.firstBlock + 1),
                      load->derivative(Qd, t, q, qd, qdd, multipliers, column), G);
}

// (4)
void MBS_SingleRiBoTorqueVector::getForceResultData(const P* q, const P*, const P*, const C*,
                                                    ResultData& data) {
    data = {};
    data[0] = data[2] = Vec3::from(q->bodyData(bodyIndex));
    data[3] = 0.25 * (bodyCommons->A * (bodyCommons->Gbar() * rotationalTorque));
}

MBS_SingleRiBoTorqueVector_Qe_X::MBS_SingleRiBoTorqueVector_Qe_X(ExpressionForce<MBS_SingleBodyForce>& owner,
                                                                 const MBS_Body& rowBody,
                                                                 const MBS_Body& colBody,
                                                                 std::size_t ownColumn)
    : SingleLoadBlock(owner, rowBody, colBody, ownColumn) {
    keepTorqueRows(*this);
}

} // namespace velmora
