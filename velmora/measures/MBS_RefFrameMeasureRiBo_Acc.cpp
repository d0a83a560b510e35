// Notation: r, e = translations and Euler parameters, with primes for time derivatives; u = point in the body
// frame; the acceleration of the point is w = r'' + J(e'; u) e' + J(e; u) e''.
//
// (1) m = a . A' (w + g)
// The rows belong to a . w:
// (2) dm/dq = [0, J(e''; u)' a]
// (3) dm/dqd = [0, 2 J(e'; u)' a]
// (4) dm/dqdd = [a, J(e; u)' a]

#include "velmora/measures/MBS_RefFrameMeasureRiBo_Acc.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/io/IO_DataModelBlock.h"

namespace velmora {

namespace {

constexpr Vec3 gravity = {{0.0, 0.0, 9810.0}}; // mm/s^2

} // namespace

MBS_RefFrameMeasureRiBo_Acc::MBS_RefFrameMeasureRiBo_Acc(IO_DataModelBlock* block, MBS_Model* owner,
                                                         const MBS_ModelLookUp& lookUp, unsigned component)
    : MBS_RefFrameMeasureRiBo(block, owner, lookUp),
      axis(unitVector(component)) {
    if (isErrorOccured())
        return;
    measureOrder = 2;
    block->getValue("MeasureLocation_Body1", measureLocation.data.data(), IO_ValueCode::DoubleVector3);
    if (reportBlockErrors(*block))
        return;
    localPoint = toLocalPoint(*measureBodies[0], measureLocation);
}

// (1)
void MBS_RefFrameMeasureRiBo_Acc::updateMeasure(double, const P* q, const P* qd, const P* qdd) {
    const Vec4 dp = rotOf(qd);
    Vec3 w = J(dp, localPoint) * dp;
    if (qdd)
        w += J(rotOf(q), localPoint) * rotOf(qdd) + transOf(qdd);
    measureValue = dot(commons().A * axis, w + gravity);
}

// (2)
void MBS_RefFrameMeasureRiBo_Acc::getMeasure_q(double, const P*, const P*, const P* qdd, const C*,
                                               unsigned body, Row row) {
    if (startRow(body, row) && qdd)
        setRow(row, Vec3(), transposeTimes(J(rotOf(qdd), localPoint), axis));
}

// (3)
void MBS_RefFrameMeasureRiBo_Acc::getMeasure_qd(double, const P*, const P* qd, const P*, const C*,
                                                unsigned body, Row row) {
    if (startRow(body, row))
        setRow(row, Vec3(), 2.0 * transposeTimes(J(rotOf(qd), localPoint), axis));
}

// (4)
void MBS_RefFrameMeasureRiBo_Acc::getMeasure_qdd(double, const P* q, const P*, const P*, const C*,
                                                 unsigned body, Row row) {
    if (startRow(body, row))
        setRow(row, axis, transposeTimes(J(rotOf(q), localPoint), axis));
}

} // namespace velmora
