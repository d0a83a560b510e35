#pragma once

#include "velmora/bodies/RotationAlgebra.h"
#include "velmora/measures/MBS_Measure.h"

#include <string>

namespace velmora {

class MBS_ModelLookUp;

/// Root of measures of one body relative to the global frame.
class MBS_RefFrameMeasure : public MBS_Measure {
  public:
    /// Reads "BodyIDs", of which the first counts. Errors: the block's; "ERROR: Body not found using bodyID:
    /// " + id + "!\n".
    MBS_RefFrameMeasure(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RefFrameMeasure"; }

    // Rows of zeros; what depends on velocities or accelerations overrides them.
    void getMeasure_q(double, const P*, const P*, const P*, const C*, unsigned, Row row) override;
    void getMeasure_qd(double, const P*, const P*, const P*, const C*, unsigned, Row row) override;
    void getMeasure_qdd(double, const P*, const P*, const P*, const C*, unsigned, Row row) override;

  protected:
    /// Clears the row; true if the row is that of the measured body.
    bool startRow(unsigned body, Row row) const;
    /// Writes the entries of translations and of Euler parameters.
    static void setRow(Row row, const Vec3& trans, const Vec4& rot);

    const MBS_BodyCommons& commons() const { return *measureBodyCommons[0]; }
    /// Translations, or their rates.
    Vec3 transOf(const P* x) const;
    /// Euler parameters, or their rates.
    Vec4 rotOf(const P* x) const;

    unsigned bodyIndex = 0;
};

/// Root of those that measure a rigid body, or the reference frame of a flexible one.
class MBS_RefFrameMeasureRiBo : public MBS_RefFrameMeasure {
  public:
    using MBS_RefFrameMeasure::MBS_RefFrameMeasure;
    std::string getClassName() const override { return "MBS_RefFrameMeasureRiBo"; }
};

} // namespace velmora
