#pragma once

#include "velmora/measures/MBS_RefFrameMeasure.h"

namespace velmora {

/// What an accelerometer at a point of a body senses along an axis of the body: m = a . A' (r'' + J(e'; u) e'
/// + J(e; u) e'' + g), with g = 9810 mm/s^2 along the global z axis in all systems of units. Without
/// accelerations (qdd null) their terms are left out.
///
/// The derivative rows are those of the acceleration along the global axis: a . (r'' + ...).
class MBS_RefFrameMeasureRiBo_Acc : public MBS_RefFrameMeasureRiBo {
  public:
    /// Reads "MeasureLocation_Body1" (3, global, in the initial configuration).
    MBS_RefFrameMeasureRiBo_Acc(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp,
                                unsigned component);
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_Acc"; }

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    /// Leaves the row of zeros if qdd is null.
    void getMeasure_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                      Row row) override;
    void getMeasure_qd(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                       Row row) override;
    void getMeasure_qdd(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                        Row row) override;

  private:
    Vec3 measureLocation; // global frame, initial configuration
    Vec3 localPoint;      // u, body frame
    Vec3 axis;            // a
};

class MBS_RefFrameMeasureRiBo_XAcc : public MBS_RefFrameMeasureRiBo_Acc {
  public:
    MBS_RefFrameMeasureRiBo_XAcc(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp)
        : MBS_RefFrameMeasureRiBo_Acc(block, owner, lookUp, 0) {}
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_XAcc"; }
};

class MBS_RefFrameMeasureRiBo_YAcc : public MBS_RefFrameMeasureRiBo_Acc {
  public:
    MBS_RefFrameMeasureRiBo_YAcc(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp)
        : MBS_RefFrameMeasureRiBo_Acc(block, owner, lookUp, 1) {}
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_YAcc"; }
};

class MBS_RefFrameMeasureRiBo_ZAcc : public MBS_RefFrameMeasureRiBo_Acc {
  public:
    MBS_RefFrameMeasureRiBo_ZAcc(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp)
        : MBS_RefFrameMeasureRiBo_Acc(block, owner, lookUp, 2) {}
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_ZAcc"; }
};

} // namespace velmora
