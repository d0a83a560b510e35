#pragma once

#include "velmora/measures/MBS_RiBoRiBoMeasure.h"

namespace velmora {

/// Component c of the difference of two points in the frame of body 1: m = c . (A1' d - offset) with
/// d = L2 - L1. The rows take A1' A1 for the unit matrix, as it is for Euler parameters of norm 1.
class MBS_RiBoRiBoMeasure_Diff_x : public MBS_RiBoRiBoMeasure_Difference {
  public:
    /// Reads "MeasureCoordinate" ("X", "Y", "Z"), "MeasureLocation_Body1", "MeasureLocation_Body2" and the
    /// optional flag "UseInitialValueAsOffset"; the offset is the difference of the two locations in the
    /// global frame. Error: the block's text + "MeasureCoordinate <" + text + "> not valid!\n".
    MBS_RiBoRiBoMeasure_Diff_x(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RiBoRiBoMeasure_Diff_x"; }

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    void getMeasure_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                      Row row) override;
    void getMeasureDot_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                         Row row) override;
    void getMeasureLe_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned constraint,
                        MBS_GeneralBodyBodyMatrix& block, unsigned rowBody, unsigned colBody) override;

  private:
    /// s = L2 - r1, which is d + A1 u1.
    Vec3 lever(const P* q) const;

    unsigned coordinateIndex = 0;
    bool useInitialValueAsOffset = false;
    Vec3 offsetVector;
    Vec3 axis; // c, frame of body 1
};

/// Component c of the relative velocity of two points in the frame of body 1: m = (A1 c) . (v2 - v1).
class MBS_RiBoRiBoMeasure_Vel_x : public MBS_RiBoRiBoMeasure_Difference {
  public:
    /// Reads "MeasureCoordinate" ("X", "Y", "Z"), "MeasureLocation_Body1" and "MeasureLocation_Body2". Error:
    /// the block's text + "ERROR: MeasureCoordinate <" + text + "> not valid!\n".
    MBS_RiBoRiBoMeasure_Vel_x(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RiBoRiBoMeasure_Vel_x"; }

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    void getMeasure_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                      Row row) override;
    void getMeasure_qd(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                       Row row) override;

  private:
    Vec3 localAxis; // c, frame of body 1
};

} // namespace velmora
