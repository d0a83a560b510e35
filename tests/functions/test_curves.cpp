#include "velmora/functions/FL_Step.h"
#include "velmora/functions/FL_XYSpline.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <type_traits>
#include <vector>

namespace velmora::test {

namespace {

using Curve = std::array<double, 3>; // value, first and second derivative

constexpr double tolerance = 1e-12; // relative to the number and 1

// Slopes in turn alone, alike in pairs, and in two pairs beside each other: each case of Akima's.
constexpr std::array X = {0.0, 0.5, 1.25, 2.0, 3.5, 4.0, 5.0, 5.5, 6.0, 7.5, 8.0};
constexpr std::array Y = {1.0, -0.5, 2.0, 2.0, 2.0, 0.25, -3.25, -3.0, -3.875, -0.875, -0.375};

struct SplineRow {
    double x;
    Curve zeroClamped, akima;
};

// In exact fractions: all coefficients of all segments from one dense system of the conditions at the points,
// and the Hermite form with the slopes of Akima's weights.
constexpr SplineRow splineRows[] = {
    {-0.75, {-15.604115268882314, 54.86093293212536, -115.48107943659055}, {3.25, -3.0, 0.0}},
    {0.0, {1.0, 0.0, -30.814741715743736}, {1.0, -3.0, 0.0}},
    {0.25, {0.3310196606915041, -4.1759213572339835, -2.5926291421281324}, {0.25, -3.0, 0.0}},
    {0.5, {-0.5, -1.2963145710640662, 25.629483431487472}, {-0.5, -3.0, 42.666666666666664}},
    {1.0,
     {0.9485485028682559, 4.8765493014658, -0.9380279413680066},
     {1.1851851851851851, 5.444444444444445, -8.88888888888889}},
    {2.0, {2.0, -0.6299768502172572, 4.590984413028844}, {2.0, 0.0, 2.3333333333333335}},
    {2.625,
     {2.197682706884347, 0.7741480644078661, -0.09778468622844885},
     {2.265842013888889, 0.546875, -0.5833333333333334}},
    {3.5, {2.0, -2.183284609337118, -6.662061425188658}, {2.0, -1.75, -14.0}},
    {4.5, {-2.0177471492343035, -4.051536585954308, 4.141977193874428}, {-1.5, -3.5, 0.0}},
    {5.25,
     {-3.111731914820686, 0.96604145629434, -0.42457872573803906},
     {-3.3024193548387095, 1.7903225806451613, 5.67741935483871}},
    {5.75,
     {-3.3916922625793826, -2.172655253305935, -1.4658475974597616},
     {-3.531715260545906, -2.6712158808933, 3.0148883374689825}},
    {7.0,
     {-2.245993248993482, 3.090383797584357, 0.04519189879217843},
     {-1.7809829059829059, 2.3846153846153846, -1.3333333333333333}},
    {7.5, {-0.875, 2.0338939240941336, -4.271151392753071}, {-0.875, 1.0, 0.0}},
    {8.0, {-0.375, 0.0, -3.8644243036234647}, {-0.375, 1.0, 0.0}},
    {9.25, {-0.375, 0.0, 0.0}, {0.875, 1.0, 0.0}},
};

struct StepRow {
    const char* mode;
    double x;
    Curve y;
};

// From 3 at 0.5 to -1 at 2.25, with 40 digits: the regularized incomplete beta function of 5 and 5, and a
// squared sine of half the angle, with their derivatives.
constexpr StepRow stepRows[] = {
    {"polynomial", 0.75, {2.9818810744724753, -0.3237301686562988, -4.31640224875065}},
    {"polynomial", 1.375, {1.0, -5.625, 0.0}},
    {"polynomial", 2.0, {-0.9818810744724753, -0.3237301686562988, 4.31640224875065}},
    {"polynomial", 2.1875, {-0.9999740448223059, -0.0020255981793918386, 0.12483686557437108}},
    {"cosine", 0.75, {2.801937735804838, -1.5578125340843325, -5.807155137237037}},
    {"cosine", 1.375, {1.0, -3.5903916041026207, 0.0}},
    {"cosine", 2.0, {-0.8019377358048383, -1.5578125340843325, 5.807155137237037}},
    {"cosine", 2.1875, {-0.9874244197864852, -0.40199631495906507, 6.404928261341113}},
};

Curve curveAt(FL_1DFunction& f, double x) {
    return {f.getValue(x), f.getFirstDerivative(x), f.getSecondDerivative(x)};
}

void expectCurve(FL_1DFunction& f, double x, const Curve& expected) {
    const Curve found = curveAt(f, x);
    for (unsigned k = 0; k < 3; ++k)
        EXPECT_NEAR(found[k], expected[k], tolerance * std::max(1.0, std::abs(expected[k])))
            << f.getClassName() << ", derivative " << k << " at " << x;
}

template <class Spline>
class Splines : public testing::Test {
  protected:
    static constexpr bool isAkima = std::is_same_v<Spline, FL_XYCubicAkimaSpline>;
    static const Curve& expectedOf(const SplineRow& row) { return isAkima ? row.akima : row.zeroClamped; }
    void set(const std::vector<double>& x, const std::vector<double>& y) {
        spline.setNewXAndYData(x.size(), x.data(), y.data());
    }
    Spline spline;
};

using SplineTypes = testing::Types<FL_XYZeroClampedCubicSpline, FL_XYCubicAkimaSpline>;

} // namespace

TYPED_TEST_SUITE(Splines, SplineTypes);

TYPED_TEST(Splines, FollowTheirDefinitionForwardsAndBackwards) {
    this->spline.setNewXAndYData(X.size(), X.data(), Y.data());
    for (const SplineRow& row : splineRows)
        expectCurve(this->spline, row.x, this->expectedOf(row));
    for (auto row = std::rbegin(splineRows); row != std::rend(splineRows); ++row)
        expectCurve(this->spline, row->x, this->expectedOf(*row));
    for (std::size_t i = 0; i < X.size(); ++i)
        EXPECT_EQ(this->spline.getValue(X[i]), Y[i]);
}

TYPED_TEST(Splines, NeedThreePoints) {
    EXPECT_EQ(curveAt(this->spline, 1.0), (Curve{0.0, 0.0, 0.0})) << "without points";
    this->set({0, 1, 2}, {0, 1, 0});
    this->set({3, 4}, {5, 6});
    EXPECT_EQ(this->spline.errorString, "ERROR in function " + this->spline.getClassName() +
                                            "::setNewXAndYData. Minimum number of data points is 3!");
    EXPECT_EQ(this->spline.getValue(1.0), 1.0) << "the old points stay";
    EXPECT_EQ(this->spline.numOfPoints, 3u);
}

TYPED_TEST(Splines, StartAnewWithFewerPoints) {
    this->spline.setNewXAndYData(X.size(), X.data(), Y.data());
    this->spline.getValue(100.0);
    this->set({0, 1, 2}, {0, 1, 0});
    EXPECT_EQ(this->spline.getValue(1.0), 1.0);
    EXPECT_EQ(this->spline.getValue(2.0), 0.0);
}

TYPED_TEST(Splines, ReadTableFiles) {
    const auto path =
        std::filesystem::path(testing::TempDir()) / ("velmora_table_" + this->spline.getClassName());
    std::ofstream table(path);
    table << "time, nothing, force\n";
    table.precision(17);
    for (std::size_t i = 0; i < X.size(); ++i)
        table << X[i] << ", 7, " << Y[i] << '\n';
    table.close();
    TypeParam fromFile(path.string(), 1, 0, 2);
    EXPECT_EQ(fromFile.errorString, "");
    EXPECT_EQ(fromFile.numOfPoints, X.size());
    for (const SplineRow& row : splineRows)
        expectCurve(fromFile, row.x, this->expectedOf(row));
    for (const unsigned column : {3u, 1000000u}) {
        TypeParam faulty(path.string(), 1, 0, column);
        EXPECT_NE(faulty.errorString, "");
        EXPECT_EQ(curveAt(faulty, 1.0), (Curve{0.0, 0.0, 0.0}));
    }
    std::filesystem::remove(path);
    EXPECT_NE(TypeParam(path.string(), 1, 0, 2).errorString, "");
}

TEST(AkimaSpline, KeepsALineToTheBit) {
    FL_XYCubicAkimaSpline spline;
    const std::array x = {-1.0, 0.0, 0.5, 2.0}, y = {-1.0, 1.0, 2.0, 5.0};
    spline.setNewXAndYData(x.size(), x.data(), y.data());
    for (const double at : {-3.0, -1.0, 0.25, 1.75, 2.0, 9.0})
        EXPECT_EQ(curveAt(spline, at), (Curve{1.0 + 2.0 * at, 2.0, 0.0})) << at;
}

TEST(Step, FollowsItsFormulaBetweenItsLimits) {
    for (const StepRow& row : stepRows) {
        FL_Step step(0.5, 3.0, 2.25, -1.0, row.mode);
        expectCurve(step, row.x, row.y);
        const double ends = std::string(row.mode) == "cosine" ? 2.0 * std::pow(step.pi / 1.75, 2) : 0.0;
        expectCurve(step, 0.5, {3.0, 0.0, -ends});
        expectCurve(step, 2.25, {-1.0, 0.0, ends});
        EXPECT_EQ(curveAt(step, std::nextafter(0.5, 0.0)), (Curve{3.0, 0.0, 0.0}));
        EXPECT_EQ(curveAt(step, std::nextafter(2.25, 3.0)), (Curve{-1.0, 0.0, 0.0}));
    }
}

TEST(Step, IsHardWithAnyOtherMode) {
    for (const char* mode : {"hard", "", "Polynomial", "cosine "}) {
        FL_Step step(0.5, 3.0, 2.25, -1.0, mode);
        EXPECT_EQ(curveAt(step, std::nextafter(0.5, 0.0)), (Curve{3.0, 0.0, 0.0})) << mode;
        EXPECT_EQ(curveAt(step, 0.5), (Curve{-1.0, 0.0, 0.0})) << mode;
    }
}

TEST(Step, WithoutLengthJumps) {
    for (const double end : {0.5, 0.25}) {
        FL_Step step(0.5, 3.0, end, -1.0, "polynomial");
        EXPECT_EQ(curveAt(step, 0.4), (Curve{3.0, 0.0, 0.0}));
        EXPECT_EQ(curveAt(step, 0.5), (Curve{-1.0, 0.0, 0.0}));
    }
}

} // namespace velmora::test
