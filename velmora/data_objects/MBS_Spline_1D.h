#pragma once

#include "velmora/data_objects/MBS_1D_DataObject.h"

#include <memory>
#include <vector>

namespace velmora {

class FL_XYCubicAkimaSpline;
class FL_XYSpline;
class FL_XYZeroClampedCubicSpline;

/// A table of points, interpolated in either of two ways; a spline is made when it is first asked for.
class MBS_Spline_1D final : public MBS_1D_DataObject {
  public:
    /// Reads, optional, "InterpolationType" ("akima" or "akispl", "zcc" or "zccspl", in any case of letters)
    /// and either "NumDataPts", "XData", "YData" or "PathToSplineData", "NumberOfHeaderLines", "ColumnXData",
    /// "ColumnYData" (from 0). Errors: unknown interpolation, neither kind of data, a file that isn't there.
    /// Fewer than three points are reported when the spline is made.
    MBS_Spline_1D(IO_DataModelBlock* block, MBS_Model* owner);
    ~MBS_Spline_1D() override;
    std::string getClassName() const override { return "MBS_Spline_1D"; }
    void modifyModelElement(IO_DataModelBlock* block) override;
    /// Of the segments in which the next search begins: in a table that doesn't rise they decide where it
    /// ends.
    void exchangeHistory(MBS_History& history) override;

    double getValue(double x, int splineType) override;
    double getValue(double x) override;
    double getFirstDerivative(double x, int splineType) override;
    double getFirstDerivative(double x) override;
    double getSecondDerivative(double x, int splineType) override;
    double getSecondDerivative(double x) override;
    /// Takes n points in the place of those of the block.
    virtual void setNewXAndYData(unsigned n, const double* x, const double* y);

    /// The spline of a type, made now if it isn't there yet.
    FL_XYSpline* getSpline(int splineType);

    std::unique_ptr<FL_XYCubicAkimaSpline> akimaSpline;
    std::unique_ptr<FL_XYZeroClampedCubicSpline> zeroClampedSpline;
    unsigned defaultType = 0; ///< 0 Akima, 1 zero-clamped cubic
    bool readFromFile = false;
    std::string pathToSplineData;
    unsigned numOfHeaderLines = 0, columnXData = 0, columnYData = 0;
    unsigned numDataPts = 0;
    std::vector<double> xData, yData;

  private:
    void read(IO_DataModelBlock& block);
    void readInterpolationType(IO_DataModelBlock& block);
    void readPoints(IO_DataModelBlock& block);
    void readPath(IO_DataModelBlock& block);
    template <class Spline>
    std::unique_ptr<Spline> makeSpline();
    void report(const IO_DataModelBlock& block, const std::string& message);
};

} // namespace velmora
