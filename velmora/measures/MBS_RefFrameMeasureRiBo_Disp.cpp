// Notation: r, e and e' = translations, Euler parameters and their rates; u = point in the body frame.
//
// (1) along an axis    m = a . (r + A u - R) - offset
// (2)                  dm/dq = [a, J(e; u)' a]
// (3)                  dm'/dq = [0, J(e'; u)' a], since J is linear in e
// (4)                  d(lambda dm/dq')/dq = lambda E(a; u)
// (5) distance         m = |d| - offset, d = r + A u - R
// (6)                  dm/dq = [d, J(e; u)' d] / |d|

#include "velmora/measures/MBS_RefFrameMeasureRiBo_Disp.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"
#include "velmora/model/MBS_ModelDofVector.h"

namespace velmora {

namespace {

constexpr double smallestDistance = 1e-6; // below it the line between the points has no direction

} // namespace

MBS_RefFrameMeasureRiBo_Disp::MBS_RefFrameMeasureRiBo_Disp(IO_DataModelBlock* block, MBS_Model* owner,
                                                           const MBS_ModelLookUp& lookUp)
    : MBS_RefFrameMeasureRiBo(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    block->getValue("MeasureLocation_Body1", measureLocation.data.data(), IO_ValueCode::DoubleVector3);
    block->getValue("MeasureLocation_Body2", referencePoint.data.data(), IO_ValueCode::DoubleVector3);
    if (reportBlockErrors(*block))
        return;
    useInitialValueAsOffset = readFlag(*block, "UseInitialValueAsOffset");
    if (reportBlockErrors(*block))
        return;
    localPoint = toLocalPoint(*measureBodies[0], measureLocation);
}

MBS_RefFrameMeasureRiBo_AxisDisp::MBS_RefFrameMeasureRiBo_AxisDisp(IO_DataModelBlock* block, MBS_Model* owner,
                                                                   const MBS_ModelLookUp& lookUp,
                                                                   unsigned component)
    : MBS_RefFrameMeasureRiBo_Disp(block, owner, lookUp),
      axis(unitVector(component)) {
    if (isErrorOccured())
        return;
    const double initialValue = dot(axis, measureLocation - referencePoint);
    (useInitialValueAsOffset ? offset : measureValue) = initialValue;
}

// (1)
void MBS_RefFrameMeasureRiBo_AxisDisp::updateMeasure(double, const P* q, const P*, const P*) {
    measureValue = dot(axis, transOf(q) + A(rotOf(q)) * localPoint - referencePoint) - offset;
}

// (2)
void MBS_RefFrameMeasureRiBo_AxisDisp::getMeasure_q(double, const P* q, const P*, const P*, const C*,
                                                    unsigned body, Row row) {
    if (startRow(body, row))
        setRow(row, axis, transposeTimes(J(rotOf(q), localPoint), axis));
}

// (3)
void MBS_RefFrameMeasureRiBo_AxisDisp::getMeasureDot_q(double, const P*, const P* qd, const P*, const C*,
                                                       unsigned body, Row row) {
    if (startRow(body, row))
        setRow(row, Vec3(), transposeTimes(J(rotOf(qd), localPoint), axis));
}

// (4)
void MBS_RefFrameMeasureRiBo_AxisDisp::getMeasureLe_q(double, const P*, const P*, const P*, const C* L,
                                                      unsigned constraint, MBS_GeneralBodyBodyMatrix& block,
                                                      unsigned, unsigned) {
    const double lambda = *L->equationsOfConstraint(constraint);
    (lambda * E(axis, localPoint)).to(block.block[Rot][Rot]->data);
}

MBS_RefFrameMeasureRiBo_XYZDisp::MBS_RefFrameMeasureRiBo_XYZDisp(IO_DataModelBlock* block, MBS_Model* owner,
                                                                 const MBS_ModelLookUp& lookUp)
    : MBS_RefFrameMeasureRiBo_Disp(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    const double initialValue = norm(measureLocation - referencePoint);
    (useInitialValueAsOffset ? offset : measureValue) = initialValue;
}

Vec3 MBS_RefFrameMeasureRiBo_XYZDisp::difference(const P* q) const {
    return transOf(q) + commons().A * localPoint - referencePoint;
}

// (5)
void MBS_RefFrameMeasureRiBo_XYZDisp::updateMeasure(double, const P* q, const P*, const P*) {
    measureValue = norm(difference(q)) - offset;
}

// (6)
void MBS_RefFrameMeasureRiBo_XYZDisp::getMeasure_q(double, const P* q, const P*, const P*, const C*,
                                                   unsigned body, Row row) {
    const Vec3 d = difference(q);
    const double distance = norm(d);
    if (!startRow(body, row) || distance < smallestDistance)
        return;
    const Vec3 n = (1.0 / distance) * d;
    setRow(row, n, transposeTimes(J(rotOf(q), localPoint), n));
}

} // namespace velmora
