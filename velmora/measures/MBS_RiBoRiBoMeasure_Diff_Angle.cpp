#include "velmora/measures/MBS_RiBoRiBoMeasure_Diff_Angle.h"

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

/// The three vectors of the block, global, in the initial configuration.
RelativeAngle readVectors(IO_DataModelBlock& block) {
    RelativeAngle plane;
    block.getValue("MeasureVec", plane.localVector.data.data(), IO_ValueCode::DoubleVector3);
    block.getValue("MeasurePlaneVec1", plane.planeVec1.data.data(), IO_ValueCode::DoubleVector3);
    block.getValue("MeasurePlaneVec2", plane.planeVec2.data.data(), IO_ValueCode::DoubleVector3);
    return plane;
}

/// Turns the vectors into the frames of their bodies.
void toLocal(RelativeAngle& plane, const std::vector<MBS_Body*>& bodies) {
    plane.localVector = transposeTimes(bodies[0]->rotationMatrix, plane.localVector);
    plane.planeVec1 = transposeTimes(bodies[1]->rotationMatrix, plane.planeVec1);
    plane.planeVec2 = transposeTimes(bodies[1]->rotationMatrix, plane.planeVec2);
}

} // namespace

MBS_RiBoRiBoMeasure_Diff_Angle::MBS_RiBoRiBoMeasure_Diff_Angle(IO_DataModelBlock* block, MBS_Model* owner,
                                                               const MBS_ModelLookUp& lookUp)
    : MBS_RiBoRiBoMeasure_Difference(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    plane = readVectors(*block);
    useInitialValueAsOffset = readFlag(*block, "UseInitialValueAsOffset");
    if (reportBlockErrors(*block))
        return;
    toLocal(plane, measureBodies);
    plane.update(measureBodies[0]->rotationMatrix, measureBodies[1]->rotationMatrix);
    initialAngle = lastAngle = std::atan2(plane.planeY, plane.planeX);
    lastAngleNotNegative = !(initialAngle < 0.0);
    if (!useInitialValueAsOffset)
        measureValue = initialAngle;
}

void MBS_RiBoRiBoMeasure_Diff_Angle::count(double angle) {
    const bool notNegative = angle >= 0.0;
    if (isCounting && notNegative != lastAngleNotNegative && std::abs(lastAngle - angle) > pi - jumpTolerance)
        halfTurnCount += notNegative ? -1 : 1;
    lastAngleNotNegative = notNegative;
    lastAngle = angle;
    isCounting = true;
}

void MBS_RiBoRiBoMeasure_Diff_Angle::updateMeasure(double, const P*, const P*, const P*) {
    plane.update(rotation(0), rotation(1));
    const double angle = std::atan2(plane.planeY, plane.planeX);
    count(angle);
    measureValue = 2 * pi * halfTurnCount + angle - (useInitialValueAsOffset ? initialAngle : 0.0);
}

void MBS_RiBoRiBoMeasure_Diff_Angle::resetCount() {
    measureValue -= 2 * pi * halfTurnCount;
    halfTurnCount = 0;
    isCounting = false;
}

void MBS_RiBoRiBoMeasure_Diff_Angle::exchangeHistory(MBS_History& history) {
    history.exchange(lastAngle);
    history.exchange(lastAngleNotNegative);
    history.exchange(isCounting);
    history.exchange(halfTurnCount);
}

void MBS_RiBoRiBoMeasure_Diff_Angle::getMeasure_q(double, const P* q, const P*, const P*, const C*,
                                                  unsigned body, Row row) {
    if (const auto i = startRow(body, row))
        setRow(row, Vec3(), plane.row(*i, rotOf(*i, q)));
}

void MBS_RiBoRiBoMeasure_Diff_Angle::getMeasureDot_q(double, const P* q, const P* qd, const P*, const C*,
                                                     unsigned body, Row row) {
    const auto i = startRow(body, row);
    if (!i)
        return;
    plane.updateRates({rotOf(0, q), rotOf(1, q)}, {rotOf(0, qd), rotOf(1, qd)});
    setRow(row, Vec3(), plane.rateDerivative(*i, rotOf(*i, q), rotOf(*i, qd)));
}

void MBS_RiBoRiBoMeasure_Diff_Angle::getMeasureLe_q(double, const P* q, const P*, const P*, const C* L,
                                                    unsigned constraint, MBS_GeneralBodyBodyMatrix& block,
                                                    unsigned rowBody, unsigned colBody) {
    const double lambda = *L->equationsOfConstraint(constraint);
    Mat3().to(block.block[Trans][Trans]->data);
    Mat34().to(block.block[Trans][Rot]->data);
    Mat43().to(block.block[Rot][Trans]->data);
    (lambda * plane.rowDerivative(bodyOf(rowBody), bodyOf(colBody), {rotOf(0, q), rotOf(1, q)}))
        .to(block.block[Rot][Rot]->data);
}

MBS_RiBoRiBoMeasure_Diff_AngleVel::MBS_RiBoRiBoMeasure_Diff_AngleVel(IO_DataModelBlock* block,
                                                                     MBS_Model* owner,
                                                                     const MBS_ModelLookUp& lookUp)
    : MBS_RiBoRiBoMeasure_Difference(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    measureOrder = 1;
    plane = readVectors(*block);
    if (!reportBlockErrors(*block))
        toLocal(plane, measureBodies);
}

void MBS_RiBoRiBoMeasure_Diff_AngleVel::updatePlane(const P* q, const P* qd) {
    plane.update(rotation(0), rotation(1));
    plane.updateRates({rotOf(0, q), rotOf(1, q)}, {rotOf(0, qd), rotOf(1, qd)});
}

void MBS_RiBoRiBoMeasure_Diff_AngleVel::updateMeasure(double, const P* q, const P* qd, const P*) {
    updatePlane(q, qd);
    measureValue = plane.rate();
}

void MBS_RiBoRiBoMeasure_Diff_AngleVel::getMeasure_q(double, const P* q, const P* qd, const P*, const C*,
                                                     unsigned body, Row row) {
    const auto i = startRow(body, row);
    if (!i)
        return;
    updatePlane(q, qd);
    setRow(row, Vec3(), plane.rateDerivative(*i, rotOf(*i, q), rotOf(*i, qd)));
}

void MBS_RiBoRiBoMeasure_Diff_AngleVel::getMeasure_qd(double, const P* q, const P* qd, const P*, const C*,
                                                      unsigned body, Row row) {
    const auto i = startRow(body, row);
    if (!i)
        return;
    updatePlane(q, qd);
    setRow(row, Vec3(), plane.row(*i, rotOf(*i, q)));
}

} // namespace velmora
