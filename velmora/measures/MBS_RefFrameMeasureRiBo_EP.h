#pragma once

#include "velmora/measures/MBS_RefFrameMeasure.h"

namespace velmora {

/// One Euler parameter of a body (order 0), or its rate (order 1).
class MBS_RefFrameMeasureRiBo_EP : public MBS_RefFrameMeasureRiBo {
  public:
    /// Reads "EulerParameterIndex" (0 to 3) and the flag "IsStateMeasure" (no: the rate). Error: the block's
    /// text + "ERROR: EulerParameterIndex <" + value + "> not valid!\n".
    MBS_RefFrameMeasureRiBo_EP(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_EP"; }

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    void getMeasure_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                      Row row) override;
    void getMeasure_qd(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                       Row row) override;

  private:
    bool isStateMeasure = true;
    unsigned eulerParameterIndex = 0;
};

/// One component of the angular velocity in the body frame, Gbar e'. The rows of q and qd aren't defined:
/// both operations leave the row as it is.
class MBS_SingleRiBo_LocalAngleVel : public MBS_RefFrameMeasureRiBo {
  public:
    /// Reads "Component" (0 to 2). Error: the block's text + "ERROR: Component <" + value + "> not
    /// valid!\n".
    MBS_SingleRiBo_LocalAngleVel(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_SingleRiBo_LocalAngleVel"; }

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    void getMeasure_q(double, const P*, const P*, const P*, const C*, unsigned, Row) override {}
    void getMeasure_qd(double, const P*, const P*, const P*, const C*, unsigned, Row) override {}

  private:
    unsigned component = 0;
    Vec3 localAngularVelocity; // body frame
};

} // namespace velmora
