#include "velmora/constraints/MBS_RiBo_RiBo_Time_Motion.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/measures/MBS_Measure.h"
#include "velmora/model/MBS_ModelDofVector.h"

namespace velmora {

namespace {

constexpr const char* drivingMeasures[] = {"MBS_RiBoRiBoMeasure_Diff_Angle",
                                           "MBS_RiBoRiBoMeasure_Diff_GlobalDistance",
                                           "MBS_RiBoRiBoMeasure_Diff_x"};
constexpr const char* wrongBodies =
    "Given Measure for Motion must depend on same Bodies and same order as Constraint BodyIDs!\n";

} // namespace

MBS_RiBo_RiBo_Time_Motion::MBS_RiBo_RiBo_Time_Motion(IO_DataModelBlock* block, MBS_Model* owner,
                                                     const MBS_ModelLookUp& lookUp, unsigned index)
    : MBS_BodyBodyConstraint(block, owner, lookUp, index, 1) {
    if (isErrorOccured())
        return;
    const TimeMotion::Keys keys(*block, true);
    if (reportBlockErrors(*block))
        return;
    const std::string problem =
        motion.set(keys, {drivingMeasures, constraintBodies, wrongBodies}, owner, lookUp);
    if (!problem.empty()) {
        refuse(*block, problem);
        return;
    }
    localPoint1 = toLocalPoint(*constraintBodies[0], keys.point1);
    localPoint2 = toLocalPoint(*constraintBodies[1], keys.point2);
    createBlocks();
}

void MBS_RiBo_RiBo_Time_Motion::createBlocks() {
    MBS_Measure& m = *motion.motionMeasure;
    addCqTLe_q(body1Index, body1Index, std::make_unique<MBS_RiBo_RiBo_Time_Motion_CqTLe_q_11>(*this, m));
    addCqTLe_q(body1Index, body2Index, std::make_unique<MBS_RiBo_RiBo_Time_Motion_CqTLe_q_12>(*this, m));
    addCqTLe_q(body2Index, body1Index, std::make_unique<MBS_RiBo_RiBo_Time_Motion_CqTLe_q_21>(*this, m));
    addCqTLe_q(body2Index, body2Index, std::make_unique<MBS_RiBo_RiBo_Time_Motion_CqTLe_q_22>(*this, m));
    addCqT(body1Index, std::make_unique<MBS_RiBo_RiBo_Time_Motion_CqT_1>(*this, m));
    addCqT(body2Index, std::make_unique<MBS_RiBo_RiBo_Time_Motion_CqT_2>(*this, m));
    addCqTdT(std::make_unique<MBS_RiBo_RiBo_Time_Motion_CqTdT_1>(*this, m));
    addCqTdT(std::make_unique<MBS_RiBo_RiBo_Time_Motion_CqTdT_2>(*this, m));
}

void MBS_RiBo_RiBo_Time_Motion::getAndUpdateConstraints(double t, const P*, const P*, const P*, C* out) {
    *out->equationsOfConstraint(constraintIndex) = motion.motionMeasure->measureValue - motion.value(t);
}

void MBS_RiBo_RiBo_Time_Motion::get_C_t(double t, const P*, const P*, const P*, C* out) {
    *out->equationsOfConstraint(constraintIndex) = -motion.rate(t);
}

void MBS_RiBo_RiBo_Time_Motion::get_C_t_order2(double t, const P*, const P*, const P*, C* out) {
    *out->equationsOfConstraint(constraintIndex) = -motion.acceleration(t);
}

void MBS_RiBo_RiBo_Time_Motion::getConstraintResultData(const P* q, const P*, const P*, const C* multipliers,
                                                        ResultData& data) {
    computeReaction(0, localPoint1, q, multipliers, &data[0]);
    computeReaction(1, localPoint2, q, multipliers, &data[4]);
}

MBS_RiBo_RiBo_Time_Motion_Row::MBS_RiBo_RiBo_Time_Motion_Row(const MBS_RiBo_RiBo_Time_Motion& constraint,
                                                             MBS_Measure& measure, unsigned body)
    : MBS_BodyBody_CqT(constraint, body, true),
      row(measure, *constraint.constraintBodies[body]) {}

void MBS_RiBo_RiBo_Time_Motion_CqT_1::update(double t, const P* q, const P* qd, const P* qdd) {
    row.writeRow(t, q, qd, qdd, *this);
}

void MBS_RiBo_RiBo_Time_Motion_CqT_2::update(double t, const P* q, const P* qd, const P* qdd) {
    row.writeRow(t, q, qd, qdd, *this);
}

void MBS_RiBo_RiBo_Time_Motion_CqTdT_1::update(double t, const P* q, const P* qd, const P* qdd) {
    row.writeRateRow(t, q, qd, qdd, *this);
}

void MBS_RiBo_RiBo_Time_Motion_CqTdT_2::update(double t, const P* q, const P* qd, const P* qdd) {
    row.writeRateRow(t, q, qd, qdd, *this);
}

MBS_RiBo_RiBo_Time_Motion_CqTLe_q::MBS_RiBo_RiBo_Time_Motion_CqTLe_q(
    const MBS_RiBo_RiBo_Time_Motion& constraint, MBS_Measure& drivingMeasure, unsigned rowBody,
    unsigned colBody)
    : MBS_BodyBodyConstraint_CqTLe_q(constraint, rowBody, colBody, {}),
      constraintIndex(constraint.constraintIndex),
      rowIndex(constraint.constraintBodies[rowBody]->bodyIndex),
      colIndex(constraint.constraintBodies[colBody]->bodyIndex),
      motionMeasure(&drivingMeasure) {
    makeAllPlaces(*this);
}

void MBS_RiBo_RiBo_Time_Motion_CqTLe_q::update(double t, const P* q, const P* qd, const P* qdd,
                                               const C* lagrange) {
    motionMeasure->getMeasureLe_q(t, q, qd, qdd, lagrange, constraintIndex, *this, rowIndex, colIndex);
}

} // namespace velmora
