// Notation: e, e' = Euler parameters and their rates; v = A(e) l; n = p1 x p2; S v = n x v; J = J(e; l).
//
// (1) angle    m = atan(Y / X) + half turns, X = v . p1, Y = v . p2
// (2)          X dY - Y dX = dv . (S v): row [0, J' S v]
// (3)          rate of the row's product m' = (J e') . (S v): dm'/de = J' S' J e' + E(S v; l) e'
// (4)          d(row')/de = J' S J + E(S v; l)
// (5) rate     m = v' . (S v), v' = J e'
// (6)          dm/de = J(e'; l)' S v - J' S v'
// (7)          dm/de' = J' S v

#include "velmora/measures/MBS_RefFrameMeasureRiBo_Angle.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"
#include "velmora/model/MBS_History.h"
#include "velmora/model/MBS_ModelDofVector.h"

#include <cmath>
#include <numbers>

namespace velmora {

namespace {

constexpr double pi = std::numbers::pi;
constexpr double jumpTolerance = pi / 4;

} // namespace

MBS_RefFrameMeasureRiBo_Angle::MBS_RefFrameMeasureRiBo_Angle(IO_DataModelBlock* block, MBS_Model* owner,
                                                             const MBS_ModelLookUp& lookUp)
    : MBS_RefFrameMeasureRiBo(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    Vec3 vector;
    block->getValue("MeasureVec", vector.data.data(), IO_ValueCode::DoubleVector3);
    block->getValue("MeasurePlaneVec1", planeVec1.data.data(), IO_ValueCode::DoubleVector3);
    block->getValue("MeasurePlaneVec2", planeVec2.data.data(), IO_ValueCode::DoubleVector3);
    useInitialValueAsOffset = readFlag(*block, "UseInitialValueAsOffset");
    if (reportBlockErrors(*block))
        return;
    localVector = toLocalAxis(*measureBodies[0], vector);
    planeNormal = cross(planeVec1, planeVec2);
    skewNormal = skew(planeNormal);
    initialAngle = lastAngle = computeAngle(measureBodies[0]->rotationMatrix);
    lastAngleNotNegative = !(initialAngle < 0.0);
    if (!useInitialValueAsOffset)
        measureValue = initialAngle;
}

double MBS_RefFrameMeasureRiBo_Angle::computeAngle(const Mat3& rotation) {
    currentVector = rotation * localVector;
    planeX = dot(currentVector, planeVec1);
    planeY = dot(currentVector, planeVec2);
    return std::atan(planeY / planeX);
}

void MBS_RefFrameMeasureRiBo_Angle::count(double angle) {
    const bool notNegative = angle >= 0.0;
    if (isCounting && notNegative != lastAngleNotNegative && std::abs(lastAngle - angle) > pi - jumpTolerance)
        halfTurnCount += notNegative ? -1 : 1;
    lastAngleNotNegative = notNegative;
    lastAngle = angle;
    isCounting = true;
}

// (1)
void MBS_RefFrameMeasureRiBo_Angle::updateMeasure(double, const P*, const P*, const P*) {
    const double angle = computeAngle(commons().A);
    count(angle);
    measureValue = halfTurnCount * pi + angle - (useInitialValueAsOffset ? initialAngle : 0.0);
}

void MBS_RefFrameMeasureRiBo_Angle::resetCount() {
    measureValue -= halfTurnCount * pi;
    halfTurnCount = 0;
    isCounting = false;
}

void MBS_RefFrameMeasureRiBo_Angle::exchangeHistory(MBS_History& history) {
    history.exchange(lastAngle);
    history.exchange(lastAngleNotNegative);
    history.exchange(isCounting);
    history.exchange(halfTurnCount);
}

// (2)
void MBS_RefFrameMeasureRiBo_Angle::getMeasure_q(double, const P* q, const P*, const P*, const C*,
                                                 unsigned body, Row row) {
    if (startRow(body, row))
        setRow(row, Vec3(), transposeTimes(J(rotOf(q), localVector), skewNormal * currentVector));
}

// (3)
void MBS_RefFrameMeasureRiBo_Angle::getMeasureDot_q(double, const P* q, const P* qd, const P*, const C*,
                                                    unsigned body, Row row) {
    if (!startRow(body, row))
        return;
    const Mat34 Jl = J(rotOf(q), localVector);
    const Vec4 dp = rotOf(qd);
    setRow(row, Vec3(),
           transposeTimes(Jl, transposeTimes(skewNormal, Jl * dp)) +
               E(skewNormal * currentVector, localVector) * dp);
}

// (4)
void MBS_RefFrameMeasureRiBo_Angle::getMeasureLe_q(double, const P* q, const P*, const P*, const C* L,
                                                   unsigned constraint, MBS_GeneralBodyBodyMatrix& block,
                                                   unsigned, unsigned) {
    const double lambda = *L->equationsOfConstraint(constraint);
    const Mat34 Jl = J(rotOf(q), localVector);
    const Mat4 derivative = transposeTimes(Jl, skewNormal * Jl) + E(skewNormal * currentVector, localVector);
    (lambda * derivative).to(block.block[Rot][Rot]->data);
}

MBS_RefFrameMeasureRiBo_AngleVel::MBS_RefFrameMeasureRiBo_AngleVel(IO_DataModelBlock* block, MBS_Model* owner,
                                                                   const MBS_ModelLookUp& lookUp)
    : MBS_RefFrameMeasureRiBo(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    measureOrder = 1;
    Vec3 vector;
    block->getValue("MeasureVec", vector.data.data(), IO_ValueCode::DoubleVector3);
    block->getValue("MeasurePlaneVec1", planeVec1.data.data(), IO_ValueCode::DoubleVector3);
    block->getValue("MeasurePlaneVec2", planeVec2.data.data(), IO_ValueCode::DoubleVector3);
    if (reportBlockErrors(*block))
        return;
    localVector = toLocalAxis(*measureBodies[0], vector);
    for (Vec3* unit : {&localVector, &planeVec1, &planeVec2})
        *unit *= 1.0 / norm(*unit);
    planeNormal = cross(planeVec1, planeVec2);
    skewNormal = skew(planeNormal);
}

// (5)
void MBS_RefFrameMeasureRiBo_AngleVel::updateMeasure(double, const P* q, const P* qd, const P*) {
    const Vec3 rate = rateOfA(rotOf(q), rotOf(qd)) * localVector;
    measureValue = dot(rate, skewNormal * (commons().A * localVector));
}

// (6)
void MBS_RefFrameMeasureRiBo_AngleVel::getMeasure_q(double, const P* q, const P* qd, const P*, const C*,
                                                    unsigned body, Row row) {
    if (!startRow(body, row))
        return;
    const Vec4 p = rotOf(q), dp = rotOf(qd);
    const Mat34 Jl = J(p, localVector);
    setRow(row, Vec3(),
           transposeTimes(J(dp, localVector), skewNormal * (commons().A * localVector)) -
               transposeTimes(Jl, skewNormal * (Jl * dp)));
}

// (7)
void MBS_RefFrameMeasureRiBo_AngleVel::getMeasure_qd(double, const P* q, const P*, const P*, const C*,
                                                     unsigned body, Row row) {
    if (startRow(body, row))
        setRow(row, Vec3(),
               transposeTimes(J(rotOf(q), localVector), skewNormal * (commons().A * localVector)));
}

} // namespace velmora
