#pragma once

#include "velmora/bodies/RotationAlgebra.h"
#include "velmora/measures/MBS_Measure.h"

#include <array>
#include <optional>
#include <string>

namespace velmora {

class MBS_ModelLookUp;

/// Root of measures between two bodies.
class MBS_BodyBodyMeasure : public MBS_Measure {
  public:
    using MBS_Measure::MBS_Measure;
    std::string getClassName() const override { return "MBS_BodyBodyMeasure"; }
};

/// Root of those between rigid bodies, or reference frames of flexible ones.
class MBS_RiBoRiBoMeasure : public MBS_BodyBodyMeasure {
  public:
    using MBS_BodyBodyMeasure::MBS_BodyBodyMeasure;
    std::string getClassName() const override { return "MBS_RiBoRiBoMeasure"; }
};

/// Finds the two bodies and gives their state: L_i = r_i + A_i u_i and v_i = r_i' + J(e_i; u_i) e_i' with a
/// point u_i in the frame of body i. Bodies are numbered 0 and 1 here. Rows of `getMeasure_q` come from the
/// members; those of velocities and accelerations are zero if a member doesn't override them.
class MBS_RiBoRiBoMeasure_Difference : public MBS_RiBoRiBoMeasure {
  public:
    /// Reads "BodyIDs". Errors: the block's; its text + "ERROR: Body1 not found using bodyID: " + id + "!\n",
    /// Body2 alike.
    MBS_RiBoRiBoMeasure_Difference(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RiBoRiBoMeasure_Difference"; }

    void getMeasure_qd(double, const P*, const P*, const P*, const C*, unsigned, Row row) override;
    void getMeasure_qdd(double, const P*, const P*, const P*, const C*, unsigned, Row row) override;

  protected:
    using Body = std::size_t; // 0 or 1

    /// Reads "MeasureLocation_Body1" and "MeasureLocation_Body2" (3 each, global, in the initial
    /// configuration) into locations and local points; false if that failed.
    bool readPoints(IO_DataModelBlock& block);
    /// Component that "MeasureCoordinate" names: "X", "Y" or "Z". Errors: the block's; its text + `intro` +
    /// "MeasureCoordinate <" + text + "> not valid!\n".
    unsigned readComponent(IO_DataModelBlock& block, const std::string& intro);

    /// Clears the row; which of the two bodies it is for, if any.
    std::optional<Body> startRow(unsigned bodyIndex, Row row) const;
    static void setRow(Row row, const Vec3& trans, const Vec4& rot);
    /// Which of the two bodies has this index; the first unless it is the second.
    Body bodyOf(unsigned bodyIndex) const;

    Vec3 transOf(Body i, const P* x) const;
    Vec4 rotOf(Body i, const P* x) const;
    const Mat3& rotation(Body i) const;
    const Vec3& localPoint(Body i) const { return i == 0 ? localPoint1 : localPoint2; }
    Vec3 pointOf(Body i, const P* q) const;                 // L_i
    Vec3 velocityOf(Body i, const P* q, const P* qd) const; // v_i
    Mat34 pointJ(Body i, const P* x) const;                 // J(x; u_i)

    Vec3 measureLocation1; // global frame, initial configuration
    Vec3 localPoint1;      // u_1, frame of body 1
    Vec3 measureLocation2;
    Vec3 localPoint2;

  private:
    std::array<unsigned, 2> bodyIndices{};
};

/// +1 for body 1, -1 for body 2: the sign of L_i in d = L_1 - L_2.
inline double signOf(std::size_t i) {
    return i == 0 ? 1.0 : -1.0;
}

} // namespace velmora
