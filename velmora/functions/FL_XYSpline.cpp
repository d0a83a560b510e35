#include "velmora/functions/FL_XYSpline.h"

#include "velmora/io/IO_TableDataReader.h"

#include <cmath>

namespace velmora {

namespace {

constexpr std::uint64_t leastNumOfPoints = 3;

} // namespace

FL_XYSpline::FL_XYSpline(std::string fileName, unsigned numOfHeaderLines, unsigned columnX,
                         unsigned columnY) {
    IO_TableDataReader reader(std::move(fileName), numOfHeaderLines);
    if (!reader.readColumns(columnX, columnY, &xData, &yData))
        errorString = reader.errorString;
    numOfPoints = xData.size();
}

void FL_XYSpline::setNewXAndYData(std::uint64_t n, const double* x, const double* y) {
    xData.assign(x, x + n);
    yData.assign(y, y + n);
    numOfPoints = n;
    lastIndex = 0;
}

std::uint64_t FL_XYSpline::findSegment(double x) {
    std::uint64_t i = lastIndex;
    while (i > 0 && x < xData[i])
        --i;
    while (i + 1 < numOfPoints && x >= xData[i + 1])
        ++i;
    lastIndex = i;
    return i;
}

void FL_XYCubicSpline::setNewXAndYData(std::uint64_t n, const double* x, const double* y) {
    if (n < leastNumOfPoints) {
        errorString =
            "ERROR in function " + getClassName() + "::setNewXAndYData. Minimum number of data points is 3!";
        return;
    }
    FL_XYSpline::setNewXAndYData(n, x, y);
    computeCoefficients();
}

FL_XYCubicSpline::Piece FL_XYCubicSpline::findPiece(double x) {
    if (c.empty())
        return {};
    const auto i = static_cast<std::size_t>(findSegment(x));
    const double dx = x - xData[i];
    if (i < b.size())
        return {dx, yData[i], b[i], c[i], d[i]};
    return {dx, yData[i], 0.0, dx > 0.0 ? 0.0 : c[i], 0.0}; // constant from here on
}

double FL_XYCubicSpline::getValue(double x) {
    const Piece p = findPiece(x);
    return p.a + p.b * p.dx + p.c * p.dx * p.dx + p.d * p.dx * p.dx * p.dx;
}

double FL_XYCubicSpline::getFirstDerivative(double x) {
    const Piece p = findPiece(x);
    return p.b + 2.0 * p.c * p.dx + 3.0 * p.d * p.dx * p.dx;
}

double FL_XYCubicSpline::getSecondDerivative(double x) {
    const Piece p = findPiece(x);
    return 2.0 * p.c + 6.0 * p.d * p.dx;
}

FL_XYZeroClampedCubicSpline::FL_XYZeroClampedCubicSpline(std::string fileName, unsigned numOfHeaderLines,
                                                         unsigned columnX, unsigned columnY)
    : FL_XYCubicSpline(std::move(fileName), numOfHeaderLines, columnX, columnY) {
    if (errorString.empty())
        computeCoefficients();
}

// With m segments of width h and slope s, the continuity of y' and y'' and zero slopes at the ends are
//
//      2 h_0 c_0 + h_0 c_1                                  =  3 s_0
//      h_i-1 c_i-1 + 2 (h_i-1 + h_i) c_i + h_i c_i+1        =  3 (s_i - s_i-1)
//      h_m-1 c_m-1 + 2 h_m-1 c_m                            = -3 s_m-1
//
// w_i is one over the i-th pivot.
void FL_XYZeroClampedCubicSpline::computeCoefficients() {
    const std::size_t m = xData.empty() ? 0 : xData.size() - 1;
    b.assign(m, 0.0);
    c.assign(xData.size(), 0.0);
    d.assign(m, 0.0);
    if (m == 0)
        return;
    std::vector<double> w(m + 1);
    w[0] = 0.5 / width(0);
    c[0] = 3.0 * slope(0);
    for (std::size_t i = 0; i + 1 < m; ++i) {
        const double t = w[i] * width(i);
        w[i + 1] = 1.0 / (2.0 * width(i + 1) + (2.0 - t) * width(i));
        c[i + 1] = 3.0 * (slope(i + 1) - slope(i)) - t * c[i];
    }
    const double t = w[m - 1] * width(m - 1);
    w[m] = 1.0 / ((2.0 - t) * width(m - 1));
    c[m] = (-3.0 * slope(m - 1) - t * c[m - 1]) * w[m];
    for (std::size_t i = m; i-- > 0;)
        c[i] = (c[i] - width(i) * c[i + 1]) * w[i];
    for (std::size_t i = 0; i < m; ++i) {
        d[i] = (c[i + 1] - c[i]) / (3.0 * width(i));
        b[i] = slope(i) - (d[i] * width(i) + c[i]) * width(i);
    }
}

FL_XYCubicAkimaSpline::FL_XYCubicAkimaSpline(std::string fileName, unsigned numOfHeaderLines,
                                             unsigned columnX, unsigned columnY)
    : FL_XYCubicSpline(std::move(fileName), numOfHeaderLines, columnX, columnY) {
    if (errorString.empty())
        computeCoefficients();
}

namespace {

/// Slope at a point, from the slopes of the two segments before it, A and B, and of the two behind it.
double akimaSlope(double A, double B, double C, double D) {
    if (B == C)
        return C;
    if (A == B)
        return C == D ? 0.5 * (B + C) : B;
    if (C == D)
        return C;
    const double before = std::abs(B - A), behind = std::abs(D - C);
    return (B * behind + C * before) / (behind + before);
}

} // namespace

// Segments beyond the ends go on as the first and the last one.
void FL_XYCubicAkimaSpline::computeCoefficients() {
    const std::size_t n = xData.size(), m = n == 0 ? 0 : n - 1;
    b.assign(n, 0.0);
    c.assign(n, 0.0);
    d.assign(n, 0.0);
    if (m == 0)
        return;
    std::vector<double> p(n + 3, slope(0));
    for (std::size_t i = 0; i < m; ++i)
        p[i + 2] = slope(i);
    p[m + 2] = p[m + 3] = slope(m - 1);
    for (std::size_t i = 0; i < n; ++i)
        b[i] = akimaSlope(p[i], p[i + 1], p[i + 2], p[i + 3]);
    for (std::size_t i = 0; i < m; ++i) {
        const double h = width(i);
        c[i] = (3.0 * slope(i) - 2.0 * b[i] - b[i + 1]) / h;
        d[i] = (b[i] + b[i + 1] - 2.0 * slope(i)) / (h * h);
    }
}

} // namespace velmora
