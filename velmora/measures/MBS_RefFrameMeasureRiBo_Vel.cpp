// Notation: r, e and r', e' = translations, Euler parameters and their rates; u = point in the body frame;
// w = r' + J(e; u) e', where J(e; u) e' = J(e'; u) e.
//
// (1) along an axis    m = a . w
// (2)                  dm/dq = [0, J(e'; u)' a]
// (3)                  dm/dqd = [a, J(e; u)' a]
// (4) along the line   m = n . w, n = d / |d|, d = r + A u - R
// (5)                  dm/dq = [P w, J(e; u)' P w + J(e'; u)' n], P = dn/dd = (1 - n n') / |d|
// (6)                  dm/dqd = [n, J(e; u)' n]

#include "velmora/measures/MBS_RefFrameMeasureRiBo_Vel.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/model/MBS_History.h"

namespace velmora {

namespace {

constexpr double smallestDistance = 1e-6; // below it the line between the points has no direction

} // namespace

MBS_RefFrameMeasureRiBo_Vel::MBS_RefFrameMeasureRiBo_Vel(IO_DataModelBlock* block, MBS_Model* owner,
                                                         const MBS_ModelLookUp& lookUp)
    : MBS_RefFrameMeasureRiBo(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    measureOrder = 1;
    block->getValue("MeasureLocation_Body1", measureLocation.data.data(), IO_ValueCode::DoubleVector3);
    if (reportBlockErrors(*block))
        return;
    localPoint = toLocalPoint(*measureBodies[0], measureLocation);
}

MBS_RefFrameMeasureRiBo_AxisVel::MBS_RefFrameMeasureRiBo_AxisVel(IO_DataModelBlock* block, MBS_Model* owner,
                                                                 const MBS_ModelLookUp& lookUp,
                                                                 unsigned component)
    : MBS_RefFrameMeasureRiBo_Vel(block, owner, lookUp),
      axis(unitVector(component)) {}

// (1)
void MBS_RefFrameMeasureRiBo_AxisVel::updateMeasure(double, const P* q, const P* qd, const P*) {
    measureValue = dot(axis, transOf(qd) + J(rotOf(qd), localPoint) * rotOf(q));
}

// (2)
void MBS_RefFrameMeasureRiBo_AxisVel::getMeasure_q(double, const P*, const P* qd, const P*, const C*,
                                                   unsigned body, Row row) {
    if (startRow(body, row))
        setRow(row, Vec3(), transposeTimes(J(rotOf(qd), localPoint), axis));
}

// (3)
void MBS_RefFrameMeasureRiBo_AxisVel::getMeasure_qd(double, const P* q, const P*, const P*, const C*,
                                                    unsigned body, Row row) {
    if (startRow(body, row))
        setRow(row, axis, transposeTimes(J(rotOf(q), localPoint), axis));
}

MBS_RefFrameMeasureRiBo_XYZVel::MBS_RefFrameMeasureRiBo_XYZVel(IO_DataModelBlock* block, MBS_Model* owner,
                                                               const MBS_ModelLookUp& lookUp)
    : MBS_RefFrameMeasureRiBo_Vel(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    block->getValue("MeasureLocation_Body2", referencePoint.data.data(), IO_ValueCode::DoubleVector3);
    reportBlockErrors(*block);
}

void MBS_RefFrameMeasureRiBo_XYZVel::updateDirection(const P* q) {
    difference = transOf(q) + commons().A * localPoint - referencePoint;
    distance = norm(difference);
    if (distance >= smallestDistance)
        direction = (1.0 / distance) * difference;
}

Vec3 MBS_RefFrameMeasureRiBo_XYZVel::velocityOfPoint(const P* q, const P* qd) const {
    return transOf(qd) + J(rotOf(qd), localPoint) * rotOf(q);
}

// (4)
void MBS_RefFrameMeasureRiBo_XYZVel::updateMeasure(double, const P* q, const P* qd, const P*) {
    updateDirection(q);
    measureValue = dot(direction, velocityOfPoint(q, qd));
}

// (5)
void MBS_RefFrameMeasureRiBo_XYZVel::getMeasure_q(double, const P* q, const P* qd, const P*, const C*,
                                                  unsigned body, Row row) {
    if (!startRow(body, row))
        return;
    updateDirection(q);
    if (distance >= smallestDistance) {
        const Vec3 w = velocityOfPoint(q, qd);
        transEntries = (1.0 / distance) * (w - dot(direction, w) * direction);
        rotEntries = transposeTimes(J(rotOf(q), localPoint), transEntries);
    }
    setRow(row, transEntries, rotEntries + transposeTimes(J(rotOf(qd), localPoint), direction));
}

// (6)
void MBS_RefFrameMeasureRiBo_XYZVel::getMeasure_qd(double, const P* q, const P*, const P*, const C*,
                                                   unsigned body, Row row) {
    if (!startRow(body, row))
        return;
    updateDirection(q);
    setRow(row, direction, transposeTimes(J(rotOf(q), localPoint), direction));
}

void MBS_RefFrameMeasureRiBo_XYZVel::exchangeHistory(MBS_History& history) {
    history.exchange(direction.data);
    history.exchange(transEntries.data);
    history.exchange(rotEntries.data);
}

} // namespace velmora
