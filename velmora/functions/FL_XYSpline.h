#pragma once

#include "velmora/functions/FL_FunctionObject.h"

#include <cstdint>
#include <vector>

namespace velmora {

/// A function given by a table of points, x strictly increasing, which isn't tested. The root is 0.0
/// everywhere.
class FL_XYSpline : public FL_1DFunction {
  public:
    FL_XYSpline() = default;
    /// Reads two columns, counted from 0, of a text file behind its header lines. Errors: those of the table
    /// reader.
    FL_XYSpline(std::string fileName, unsigned numOfHeaderLines, unsigned columnX, unsigned columnY);
    std::string getClassName() const override { return "FL_XYSpline"; }

    double getValue(double) override { return 0.0; }
    double getFirstDerivative(double) override { return 0.0; }
    double getSecondDerivative(double) override { return 0.0; }
    /// Takes n points anew.
    virtual void setNewXAndYData(std::uint64_t n, const double* x, const double* y);

    std::vector<double> xData, yData;
    std::uint64_t lastIndex = 0; ///< segment of the last evaluation
    std::uint64_t numOfPoints = 0;

  protected:
    /// Index i with x_i <= x < x_i+1, found from the last one: 0 before the first point, n - 1 from the last
    /// on. There is at least one point.
    std::uint64_t findSegment(double x);
};

/// Splines of third order: y = y_i + b_i dx + c_i dx^2 + d_i dx^3, dx = x - x_i, in segment i.
class FL_XYCubicSpline : public FL_XYSpline {
  public:
    using FL_XYSpline::FL_XYSpline;
    std::string getClassName() const override { return "FL_XYCubicSpline"; }
    double getValue(double x) override;
    double getFirstDerivative(double x) override;
    double getSecondDerivative(double x) override;
    /// Errors: fewer than three points; the old ones stay then.
    void setNewXAndYData(std::uint64_t n, const double* x, const double* y) override;

    /// One of each per segment, with a further one past the last point, of which the zero-clamped spline has
    /// c alone.
    std::vector<double> b, c, d;

  protected:
    virtual void computeCoefficients() = 0;
    double width(std::size_t i) const { return xData[i + 1] - xData[i]; }
    double slope(std::size_t i) const { return (yData[i + 1] - yData[i]) / width(i); }

  private:
    /// The polynomial of one segment and the place in it; all zero without points.
    struct Piece {
        double dx = 0.0, a = 0.0, b = 0.0, c = 0.0, d = 0.0;
    };
    Piece findPiece(double x);
};

/// Twice continuously differentiable, with zero slope at both ends; constant beyond the last point.
///
/// The system for the second derivatives is that of the clamped spline in de Boor, "A Practical Guide to
/// Splines", 1978, chapter IV, solved by one forward and one backward sweep.
class FL_XYZeroClampedCubicSpline final : public FL_XYCubicSpline {
  public:
    FL_XYZeroClampedCubicSpline() = default;
    FL_XYZeroClampedCubicSpline(std::string fileName, unsigned numOfHeaderLines, unsigned columnX,
                                unsigned columnY);
    std::string getClassName() const override { return "FL_XYZeroClampedCubicSpline"; }

  private:
    void computeCoefficients() override;
};

/// Once continuously differentiable, with slopes that follow the neighbouring points alone and don't
/// overshoot beside straight stretches; goes on as a straight line beyond the last point (Akima, "A new
/// method of interpolation and smooth curve fitting based on local procedures", Journal of the ACM 17, 1970).
class FL_XYCubicAkimaSpline final : public FL_XYCubicSpline {
  public:
    FL_XYCubicAkimaSpline() = default;
    FL_XYCubicAkimaSpline(std::string fileName, unsigned numOfHeaderLines, unsigned columnX,
                          unsigned columnY);
    std::string getClassName() const override { return "FL_XYCubicAkimaSpline"; }

  private:
    void computeCoefficients() override;
};

} // namespace velmora
