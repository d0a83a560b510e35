#pragma once

#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/measures/MBS_RefFrameMeasure.h"

namespace velmora {

/// Position of a point of a flexible body along a global axis, relative to a point that is fixed in space:
/// m = r_c + (A u)_c - R_c - offset + sum over j of Phi(c, j) eta_j. The mode shapes Phi count in the global
/// frame: they aren't turned with the body.
class MBS_RefFrameMeasureFleBo_Disp : public MBS_RefFrameMeasure {
  public:
    /// Reads "MeasureCoordinate" ("X", "Y" or "Z"), "MeasureLocation_Body1" (3, point of the body) and
    /// "MeasureLocation_Body2" (3, the fixed point), both global in the initial configuration,
    /// "ModeShapeFile" (name of a matrix file with Phi, 3 x modes) and the optional flag
    /// "UseInitialValueAsOffset". Errors: the block's; "MeasureCoordinate <" + text + "> not valid!\n"; the
    /// matrix's text; the block's text + "ERROR: BodyIDs <" + id + "> not valid!\n" for a rigid body, "ERROR:
    /// ModeShapeFile <" + name + "> not valid!\n" for a matrix of other dimensions.
    MBS_RefFrameMeasureFleBo_Disp(IO_DataModelBlock* block, MBS_Model* owner, const MBS_ModelLookUp& lookUp);
    std::string getClassName() const override { return "MBS_RefFrameMeasureFleBo_Disp"; }

    void updateMeasure(double t, const P* q, const P* qd, const P* qdd) override;
    void getMeasure_q(double t, const P* q, const P* qd, const P* qdd, const C* L, unsigned body,
                      Row row) override;

  private:
    void readCoordinate(IO_DataModelBlock& block);
    void readShapes(IO_DataModelBlock& block);

    int coordinateIndex = 0;
    bool useInitialValueAsOffset = false;
    double offset = 0.0;
    Vec3 referencePoint;                          // global frame
    Vec3 measureLocation;                         // global frame, initial configuration
    Vec3 localPoint;                              // u, body frame
    MBM_GeneralDenseMatrix modeShapes{3, 1, 0.0}; // Phi
};

} // namespace velmora
