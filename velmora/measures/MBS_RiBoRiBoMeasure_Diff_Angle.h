#pragma once

#include "velmora/measures/MBS_RiBoRiBoMeasure.h"
#include "velmora/measures/RelativeAngle.h"

namespace velmora {

/// Angle of a vector of body 1 in a plane of body 2: m = atan2(Y, X), with full turns counted from update to
/// update. The value goes on over any number of turns as long as no step turns by more than pi/4 around the
/// jump of atan2; updates follow the history of the motion. The rows are those of X dY - Y dX, at the plane
/// coordinates of the last update.
class MBS_RiBoRiBoMeasure_Diff_Angle : public MBS_RiBoRiBoMeasure_Difference {
  public:
    /// Reads "MeasureVec" (on body 1), "MeasurePlaneVec1" and "MeasurePlaneVec2" (on body 2; 3 each, global,
    /// in the initial configuration) and the optional flag "UseInitialValueAsOffset". Nothing is normalised.
    MBS_RiBoRiBoMeasure_Diff_Angle(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RiBoRiBoMeasure_Diff_Angle"; }

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    void getMeasure_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                      Row row) override;
    void getMeasureDot_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                         Row row) override;
    /// Not symmetric over the two bodies.
    void getMeasureLe_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned constraint,
                        MBS_GeneralBodyBodyMatrix& block, unsigned rowBody, unsigned colBody) override;
    void resetCount() override;
    void exchangeHistory(MBS_History& history) override;

  private:
    /// Counts a full turn where atan2 has jumped since the last angle.
    void count(double angle);

    bool useInitialValueAsOffset = false;
    RelativeAngle plane; // l, p1, p2 and their present state
    double initialAngle = 0.0;
    double lastAngle = 0.0;
    bool lastAngleNotNegative = true;
    bool isCounting = true; // false from a reset to the next update
    int halfTurnCount = 0;  // of full turns
};

/// Rate of that angle: m = X Y' - Y X'.
class MBS_RiBoRiBoMeasure_Diff_AngleVel : public MBS_RiBoRiBoMeasure_Difference {
  public:
    /// Reads "MeasureVec", "MeasurePlaneVec1" and "MeasurePlaneVec2" as the angle does.
    MBS_RiBoRiBoMeasure_Diff_AngleVel(IO_DataModelBlock* block, MBS_Model* owner,
                                      const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RiBoRiBoMeasure_Diff_AngleVel"; }

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    void getMeasure_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                      Row row) override;
    void getMeasure_qd(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                       Row row) override;

  private:
    void updatePlane(const P* q, const P* qd);

    RelativeAngle plane;
};

} // namespace velmora
