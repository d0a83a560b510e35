#pragma once

#include "velmora/measures/MBS_RefFrameMeasure.h"

namespace velmora {

/// Angle of a vector of a body in a plane that is fixed in space, spanned by p1 and p2: m = atan(Y / X) with
/// X = v . p1, Y = v . p2, v = A l. Half turns are counted from update to update, so that the value goes on
/// over any number of turns as long as no step turns by more than pi/4 around a jump of atan; updates follow
/// the history of the motion.
///
/// The rows are those of X dY - Y dX = dv . (n x v) with n = p1 x p2: the derivative of the angle while p1
/// and p2 are orthonormal and v is a unit vector in their plane. Nothing is normalised.
class MBS_RefFrameMeasureRiBo_Angle : public MBS_RefFrameMeasureRiBo {
  public:
    /// Reads "MeasureVec", "MeasurePlaneVec1" and "MeasurePlaneVec2" (3 each, global, in the initial
    /// configuration) and the optional flag "UseInitialValueAsOffset".
    MBS_RefFrameMeasureRiBo_Angle(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_Angle"; }

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    void getMeasure_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                      Row row) override;
    void getMeasureDot_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                         Row row) override;
    /// (rot, rot) = lambda d(row')/de; not symmetric.
    void getMeasureLe_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned constraint,
                        MBS_GeneralBodyBodyMatrix& block, unsigned rowBody, unsigned colBody) override;
    void resetCount() override;
    void exchangeHistory(MBS_History& history) override;

  private:
    /// Takes v, X and Y over from the rotation matrix; atan(Y / X).
    double computeAngle(const Mat3& rotation);
    /// Counts a half turn where atan has jumped since the last angle.
    void count(double angle);

    bool useInitialValueAsOffset = false;
    double planeY = 0.0, planeX = 0.0;
    double initialAngle = 0.0;
    Vec3 localVector;   // l, body frame
    Vec3 planeVec1;     // p1, global frame
    Vec3 planeVec2;     // p2, global frame
    Vec3 currentVector; // v, global frame, of the last update
    Vec3 planeNormal;   // n
    Mat3 skewNormal;    // S
    double lastAngle = 0.0;
    bool lastAngleNotNegative = true;
    bool isCounting = true; // false from a reset to the next update
    int halfTurnCount = 0;
};

/// Rate of that angle: m = v' . (n x v) for unit vectors l, p1 and p2, made so at construction.
class MBS_RefFrameMeasureRiBo_AngleVel : public MBS_RefFrameMeasureRiBo {
  public:
    /// Reads "MeasureVec", "MeasurePlaneVec1" and "MeasurePlaneVec2" (3 each, global, in the initial
    /// configuration).
    MBS_RefFrameMeasureRiBo_AngleVel(IO_DataModelBlock* block, MBS_Model* owner,
                                     const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_AngleVel"; }

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    void getMeasure_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                      Row row) override;
    void getMeasure_qd(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                       Row row) override;

  private:
    Vec3 localVector; // l, body frame
    Vec3 planeVec1;   // p1, global frame
    Vec3 planeVec2;   // p2, global frame
    Vec3 planeNormal; // n
    Mat3 skewNormal;  // S
};

} // namespace velmora
