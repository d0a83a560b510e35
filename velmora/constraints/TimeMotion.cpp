#include "velmora/constraints/TimeMotion.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/expressions/MBS_FunctionExpression.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/measures/MBS_Measure.h"
#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"
#include "velmora/model/MBS_General_CqT.h"
#include "velmora/model/MBS_History.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <algorithm>
#include <cmath>

namespace velmora {

TimeMotion::Keys::Keys(IO_DataModelBlock& block, bool isOfTwoBodies) {
    block.getValue("PointOfApplication_Body1", point1.data.data(), IO_ValueCode::DoubleVector3);
    if (isOfTwoBodies)
        block.getValue("PointOfApplication_Body2", point2.data.data(), IO_ValueCode::DoubleVector3);
    block.getValue("Measure", &measure, IO_ValueCode::String);
    block.getValue("MotionExpression", &expression, IO_ValueCode::String);
    if (block.isKeyInBlock("ActivationPeriod"))
        block.getValue("ActivationPeriod", &activationPeriod, IO_ValueCode::Double);
}

TimeMotion::TimeMotion() = default;
TimeMotion::~TimeMotion() = default;

std::string TimeMotion::set(const Keys& keys, const Rules& rules, MBS_Model* model,
                            const MBS_ModelLookUp& lookUp) {
    MBS_Measure* measure = lookUp.getMeasureByLabel(keys.measure);
    if (!measure)
        return "Given Measure for Motion <" + keys.measure + "> does not exist!\n";
    if (std::ranges::find(rules.measureClasses, measure->getClassName()) == rules.measureClasses.end())
        return "Given Measure for Motion must be of type Translational or Rotational!\n";
    motionMeasure = measure;
    if (!std::ranges::equal(measure->measureBodies, rules.bodies, {}, &MBS_Body::uuid, &MBS_Body::uuid))
        return rules.wrongBodies;
    motionExpression = std::make_unique<MBS_FunctionExpression>(model, lookUp, keys.expression);
    if (motionExpression->isErrorOccured())
        return motionExpression->getErrorString();
    if (motionExpression->numOfMeasures != 0)
        return "Given Expression for Motion must not depend on Measures (only time)!\n";
    if (0.0 > keys.activationPeriod)
        return "Value for ActivationPeriod must not be negative!\n";
    activationPeriod = keys.activationPeriod;
    resetStartPolynomial();
    return "";
}

void TimeMotion::resetStartPolynomial() {
    const double T = activationPeriod;
    startValue = motionMeasure->measureValue;
    const double rise = motionExpression->getValue(T) - startValue;
    const double d = motionExpression->getFirstTimeDerivative(T) * T;
    const double dd = motionExpression->getSecondTimeDerivative(T) * T * T;
    c4 = 21 * rise - 6 * d + 0.5 * dd;
    c5 = -35 * rise + 11 * d - dd;
    c6 = 15 * rise - 5 * d + 0.5 * dd;
}

void TimeMotion::exchangeHistory(MBS_History& history) {
    for (double* number : {&startValue, &c4, &c5, &c6})
        history.exchange(*number);
}

double TimeMotion::value(double t) {
    if (!(activationPeriod > t))
        return motionExpression->getValue(t);
    const double s = t / activationPeriod;
    return startValue + std::pow(s, 5) * (c4 + s * (c5 + s * c6));
}

double TimeMotion::rate(double t) {
    if (!(activationPeriod > t))
        return motionExpression->getFirstTimeDerivative(t);
    const double s = t / activationPeriod;
    return std::pow(s, 4) * (5 * c4 + s * (6 * c5 + s * 7 * c6)) / activationPeriod;
}

double TimeMotion::acceleration(double t) {
    if (!(activationPeriod > t))
        return motionExpression->getSecondTimeDerivative(t);
    const double s = t / activationPeriod;
    return std::pow(s, 3) * (20 * c4 + s * (30 * c5 + s * 42 * c6)) / (activationPeriod * activationPeriod);
}

MeasureRow::MeasureRow(MBS_Measure& drivingMeasure, const MBS_Body& measuredBody)
    : measure(&drivingMeasure),
      bodyIndex(measuredBody.bodyIndex),
      row(measuredBody.getNumOfDof()) {}

void MeasureRow::writeRow(double t, const P* q, const P* qd, const P* qdd, MBS_General_CqT& target) {
    std::ranges::fill(row, 0.0);
    measure->getMeasure_q(t, q, qd, qdd, nullptr, bodyIndex, row);
    copyTo(target);
}

void MeasureRow::writeRateRow(double t, const P* q, const P* qd, const P* qdd, MBS_General_CqT& target) {
    std::ranges::fill(row, 0.0);
    measure->updateMeasure(t, q, qd, qdd);
    measure->getMeasureDot_q(t, q, qd, qdd, nullptr, bodyIndex, row);
    copyTo(target);
}

void MeasureRow::copyTo(MBS_General_CqT& target) const {
    std::copy_n(row.begin(), 3, target.tPart->data);
    std::copy_n(row.begin() + 3, 4, target.rPart->data);
}

void makeAllPlaces(MBS_GeneralBodyBodyMatrix& matrix) {
    for (unsigned r : {Trans, Rot, Flex})
        for (unsigned c : {Trans, Rot, Flex})
            if (matrix.rowDof[r] != 0 && matrix.colDof[c] != 0)
                matrix.setBlockMatrix(r, c, "MBM_GeneralDenseMatrix", matrix.rowDof[r], matrix.colDof[c],
                                      0.0);
}

} // namespace velmora
