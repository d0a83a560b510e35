#pragma once

#include "velmora/measures/MBS_RefFrameMeasure.h"

namespace velmora {

/// Root of the velocities of a point of a body.
class MBS_RefFrameMeasureRiBo_Vel : public MBS_RefFrameMeasureRiBo {
  public:
    /// Reads "MeasureLocation_Body1" (3, global, in the initial configuration).
    MBS_RefFrameMeasureRiBo_Vel(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_Vel"; }

  protected:
    Vec3 measureLocation; // global frame, initial configuration
    Vec3 localPoint;      // u, body frame
};

/// m = a . (r' + J(e; u) e') along a global axis a.
class MBS_RefFrameMeasureRiBo_AxisVel : public MBS_RefFrameMeasureRiBo_Vel {
  public:
    MBS_RefFrameMeasureRiBo_AxisVel(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp,
                                    unsigned component);

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    void getMeasure_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                      Row row) override;
    void getMeasure_qd(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                       Row row) override;

  private:
    Vec3 axis; // a
};

class MBS_RefFrameMeasureRiBo_XVel : public MBS_RefFrameMeasureRiBo_AxisVel {
  public:
    MBS_RefFrameMeasureRiBo_XVel(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp)
        : MBS_RefFrameMeasureRiBo_AxisVel(block, owner, lookUp, 0) {}
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_XVel"; }
};

class MBS_RefFrameMeasureRiBo_YVel : public MBS_RefFrameMeasureRiBo_AxisVel {
  public:
    MBS_RefFrameMeasureRiBo_YVel(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp)
        : MBS_RefFrameMeasureRiBo_AxisVel(block, owner, lookUp, 1) {}
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_YVel"; }
};

class MBS_RefFrameMeasureRiBo_ZVel : public MBS_RefFrameMeasureRiBo_AxisVel {
  public:
    MBS_RefFrameMeasureRiBo_ZVel(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp)
        : MBS_RefFrameMeasureRiBo_AxisVel(block, owner, lookUp, 2) {}
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_ZVel"; }
};

/// Rate of the distance from a fixed point R: m = n . w with d = r + A u - R, n = d / |d| and the velocity w
/// of the point. Below a distance of 1e-6 the last direction n holds on.
class MBS_RefFrameMeasureRiBo_XYZVel : public MBS_RefFrameMeasureRiBo_Vel {
  public:
    /// Also reads "MeasureLocation_Body2" (3, global).
    MBS_RefFrameMeasureRiBo_XYZVel(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_XYZVel"; }

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    void getMeasure_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                      Row row) override;
    void getMeasure_qd(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                       Row row) override;
    void exchangeHistory(MBS_History& history) override;

  private:
    /// Takes d, |d| and n over from the state.
    void updateDirection(const P* q);
    Vec3 velocityOfPoint(const P* q, const P* qd) const;

    Vec3 referencePoint; // global frame
    Vec3 difference;     // d
    double distance = 0.0;
    Vec3 direction;    // n
    Vec3 transEntries; // P w, of the last state at a distance
    Vec4 rotEntries;   // J(e; u)' P w, alike
};

} // namespace velmora
