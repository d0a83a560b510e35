#include "velmora/constraints/MBS_RiBo_Time_Motion.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/measures/MBS_Measure.h"
#include "velmora/model/MBS_ModelDofVector.h"

namespace velmora {

namespace {

constexpr const char* drivingMeasures[] = {"MBS_RefFrameMeasureRiBo_XDisp", "MBS_RefFrameMeasureRiBo_YDisp",
                                           "MBS_RefFrameMeasureRiBo_ZDisp", "MBS_RefFrameMeasureRiBo_Angle"};
constexpr const char* wrongBodies =
    "Given Measure for Motion must not depend on Bodies different from Constraint BodyIDs!\n";

} // namespace

MBS_RiBo_Time_Motion::MBS_RiBo_Time_Motion(IO_DataModelBlock* block, MBS_Model* owner,
                                           const MBS_ModelLookUp& lookUp, unsigned index)
    : MBS_SingleBodyConstraint(block, owner, lookUp, index) {
    if (isErrorOccured())
        return;
    const TimeMotion::Keys keys(*block, false);
    if (reportBlockErrors(*block))
        return;
    MBS_Body* const bodies[] = {constraintBodies[0]};
    const std::string problem = motion.set(keys, {drivingMeasures, bodies, wrongBodies}, owner, lookUp);
    if (!problem.empty()) {
        refuse(*block, problem);
        return;
    }
    localPoint = toLocalPoint(*bodies[0], keys.point1);
    MBS_Measure& measure = *motion.motionMeasure;
    addCqTLe_q(bodyIndex, bodyIndex, std::make_unique<MBS_RiBo_Time_Motion_CqTLe_q>(*this, measure));
    addCqT(bodyIndex, std::make_unique<MBS_RiBo_Time_Motion_CqT>(*this, measure));
    addCqTdT(std::make_unique<MBS_RiBo_Time_Motion_CqTdT>(*this, measure));
}

void MBS_RiBo_Time_Motion::getAndUpdateConstraints(double t, const P*, const P*, const P*, C* out) {
    *out->equationsOfConstraint(constraintIndex) = motion.motionMeasure->measureValue - motion.value(t);
}

void MBS_RiBo_Time_Motion::get_C_t(double t, const P*, const P*, const P*, C* out) {
    *out->equationsOfConstraint(constraintIndex) = -motion.rate(t);
}

void MBS_RiBo_Time_Motion::get_C_t_order2(double t, const P*, const P*, const P*, C* out) {
    *out->equationsOfConstraint(constraintIndex) = -motion.acceleration(t);
}

void MBS_RiBo_Time_Motion::getConstraintResultData(const P* q, const P*, const P*, const C* multipliers,
                                                   ResultData& data) {
    computeReaction(0, localPoint, q, multipliers, &data[0]);
}

MBS_RiBo_Time_Motion_CqT::MBS_RiBo_Time_Motion_CqT(const MBS_RiBo_Time_Motion& constraint,
                                                   MBS_Measure& measure)
    : MBS_SingleBody_CqT(constraint, true),
      row(measure, *constraint.constraintBodies[0]) {}

void MBS_RiBo_Time_Motion_CqT::update(double t, const P* q, const P* qd, const P* qdd) {
    row.writeRow(t, q, qd, qdd, *this);
}

MBS_RiBo_Time_Motion_CqTdT::MBS_RiBo_Time_Motion_CqTdT(const MBS_RiBo_Time_Motion& constraint,
                                                       MBS_Measure& measure)
    : MBS_SingleBody_CqT(constraint, true),
      row(measure, *constraint.constraintBodies[0]) {}

void MBS_RiBo_Time_Motion_CqTdT::update(double t, const P* q, const P* qd, const P* qdd) {
    row.writeRateRow(t, q, qd, qdd, *this);
}

MBS_RiBo_Time_Motion_CqTLe_q::MBS_RiBo_Time_Motion_CqTLe_q(const MBS_RiBo_Time_Motion& constraint,
                                                           MBS_Measure& drivingMeasure)
    : MBS_BodyGroundConstraint_CqTLe_q(constraint),
      constraintIndex(constraint.constraintIndex),
      motionMeasure(&drivingMeasure) {
    makeAllPlaces(*this);
}

void MBS_RiBo_Time_Motion_CqTLe_q::update(double t, const P* q, const P* qd, const P* qdd,
                                          const C* lagrange) {
    motionMeasure->getMeasureLe_q(t, q, qd, qdd, lagrange, constraintIndex, *this, 0, 0);
}

} // namespace velmora
