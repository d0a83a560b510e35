#pragma once

#include "velmora/measures/MBS_RefFrameMeasure.h"

namespace velmora {

/// Root of the positions of a point of a body, relative to a point that is fixed in space.
class MBS_RefFrameMeasureRiBo_Disp : public MBS_RefFrameMeasureRiBo {
  public:
    /// Reads "MeasureLocation_Body1" (3, point of the body) and "MeasureLocation_Body2" (3, the fixed point),
    /// both global in the initial configuration, and the optional flag "UseInitialValueAsOffset".
    MBS_RefFrameMeasureRiBo_Disp(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_Disp"; }

  protected:
    Vec3 referencePoint; // global frame
    bool useInitialValueAsOffset = false;
    double offset = 0.0;
    Vec3 measureLocation; // global frame, initial configuration
    Vec3 localPoint;      // u, body frame
};

/// m = a . (r + A u - R) - offset along a global axis a.
class MBS_RefFrameMeasureRiBo_AxisDisp : public MBS_RefFrameMeasureRiBo_Disp {
  public:
    MBS_RefFrameMeasureRiBo_AxisDisp(IO_DataModelBlock* block, MBS_Model* owner,
                                     const MBS_ModelLookUp& lookUp, unsigned component);

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    void getMeasure_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                      Row row) override;
    void getMeasureDot_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                         Row row) override;
    void getMeasureLe_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned constraint,
                        MBS_GeneralBodyBodyMatrix& block, unsigned rowBody, unsigned colBody) override;

  private:
    Vec3 axis; // a
};

class MBS_RefFrameMeasureRiBo_XDisp : public MBS_RefFrameMeasureRiBo_AxisDisp {
  public:
    MBS_RefFrameMeasureRiBo_XDisp(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp)
        : MBS_RefFrameMeasureRiBo_AxisDisp(block, owner, lookUp, 0) {}
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_XDisp"; }
};

class MBS_RefFrameMeasureRiBo_YDisp : public MBS_RefFrameMeasureRiBo_AxisDisp {
  public:
    MBS_RefFrameMeasureRiBo_YDisp(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp)
        : MBS_RefFrameMeasureRiBo_AxisDisp(block, owner, lookUp, 1) {}
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_YDisp"; }
};

class MBS_RefFrameMeasureRiBo_ZDisp : public MBS_RefFrameMeasureRiBo_AxisDisp {
  public:
    MBS_RefFrameMeasureRiBo_ZDisp(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp)
        : MBS_RefFrameMeasureRiBo_AxisDisp(block, owner, lookUp, 2) {}
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_ZDisp"; }
};

/// m = |r + A u - R| - offset.
class MBS_RefFrameMeasureRiBo_XYZDisp : public MBS_RefFrameMeasureRiBo_Disp {
  public:
    MBS_RefFrameMeasureRiBo_XYZDisp(IO_DataModelBlock* block, MBS_Model* owner,
                                    const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo_XYZDisp"; }

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    /// A row of zeros below a distance of 1e-6.
    void getMeasure_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                      Row row) override;

  private:
    /// d = r + A u - R.
    Vec3 difference(const P* q) const;
};

} // namespace velmora
