#include "tests/support/AllocationCounter.h"
#include "velmora/functions/FL_FunctionExpression.h"
#include "velmora/functions/exprTk_Interface.h"

#include <array>
#include <cmath>
#include <gmock/gmock.h>
#include <string>
#include <utility>

namespace velmora::test {

namespace {

struct Order {
    unsigned order;
    double first;     ///< step at 1
    double tolerance; ///< of first derivatives at values about 1
    double secondTolerance;
};

constexpr Order orders[] = {
    {1, 1.4901161193847656e-08, 1e-7, 2e-2},
    {2, 6.055454452393343e-06, 1e-9, 1e-6},
    {4, 0.000740095979741405, 1e-11, 1e-8},
};

/// With a vector a, a scalar b and a vector without elements.
class Differences : public testing::TestWithParam<Order> {
  protected:
    Differences() {
        f.addSymbol("a", a.data(), 3);
        f.addScalarSymbol("b", &b);
        f.addSymbol("none", nullptr, 0);
        f.differenceOrder = GetParam().order;
    }

    std::array<double, 3> a = {0.8, -1.5, 2.0};
    double b = 0.6;
    FL_FunctionExpression f;
};

} // namespace

TEST_P(Differences, GiveTheGradientAndLeaveTheValuesAlone) {
    f.setExpression("a[0]^2 * exp(a[1]) + b * sin(a[2])");
    b = -0.7; // after set-up: the copies follow
    const std::array expected = {2 * a[0] * std::exp(a[1]), a[0] * a[0] * std::exp(a[1]), b * std::cos(a[2])};
    const std::array before = a;
    std::array<double, 3> found{};
    f.getDerivative("a", found.data());
    for (unsigned k = 0; k < 3; ++k)
        EXPECT_NEAR(found[k], expected[k], GetParam().tolerance) << k;
    f.getDerivative("b", found.data());
    EXPECT_NEAR(found[0], std::sin(a[2]), GetParam().tolerance);
    EXPECT_EQ(a, before);
    EXPECT_EQ(b, -0.7);
}

TEST_P(Differences, GiveSecondDerivativesOfAllPairs) {
    f.setExpression("a[0]^2 * exp(a[1]) + b * a[0] * sin(a[2])");
    const double e = std::exp(a[1]), s = std::sin(a[2]), c = std::cos(a[2]);
    const double expected[3][3] = {
        {2 * e, 2 * a[0] * e, b * c}, {2 * a[0] * e, a[0] * a[0] * e, 0}, {b * c, 0, -b * a[0] * s}};
    const unsigned long before = allocationCount();
    f.getSecondDerivatives("a");
    f.getSecondDerivatives("b");
    f.getSecondDerivatives("unknown");
    EXPECT_EQ(allocationCount(), before);
    const double* H = f.secondDerivatives[0].get();
    for (unsigned i = 0; i < 3; ++i)
        for (unsigned j = 0; j < 3; ++j) {
            EXPECT_NEAR(H[3 * i + j], expected[i][j], GetParam().secondTolerance) << i << ", " << j;
            EXPECT_EQ(H[3 * i + j], H[3 * j + i]);
        }
    EXPECT_NEAR(f.secondDerivatives[1][0], 0.0, GetParam().secondTolerance);
}

// A jump at the outermost number that a step reaches is seen, one beyond it isn't.
TEST_P(Differences, StepByTheShareOfTheValue) {
    for (const auto& [v, size] : {std::pair(0.0, 1.0), std::pair(9e-11, 1.0), std::pair(-1e-10, 1.0),
                                  std::pair(2e-10, 2e-10), std::pair(-40.0, 40.0)}) {
        const double h = size * GetParam().first;
        FL_FunctionExpression jump;
        double x = v, place = 0.0, derivative = 0.0;
        jump.addScalarSymbol("x", &x);
        jump.addScalarSymbol("place", &place);
        jump.differenceOrder = GetParam().order;
        jump.setExpression("x >= place");
        const double beyond = GetParam().order == 4 ? -1.0 / (4 * h) / 3 : 0.0; // the doubled step sees it
        const double seen = GetParam().order == 1   ? 1.0 / h
                            : GetParam().order == 2 ? 1.0 / (2 * h)
                                                    : (4.0 / (2 * h) - 1.0 / (4 * h)) / 3;
        place = v + h;
        jump.getDerivative("x", &derivative);
        EXPECT_EQ(derivative, seen) << v;
        place = std::nextafter(v + h, 1e3);
        jump.getDerivative("x", &derivative);
        EXPECT_EQ(derivative, beyond) << v;
        if (GetParam().order == 1)
            continue;
        place = std::nextafter(v - h, 1e3);
        jump.getDerivative("x", &derivative);
        EXPECT_EQ(derivative, seen) << v;
        place = v - h;
        jump.getDerivative("x", &derivative);
        EXPECT_EQ(derivative, beyond) << v;
    }
}

INSTANTIATE_TEST_SUITE_P(Orders, Differences, testing::ValuesIn(orders),
                         [](const auto& row) { return "Order" + std::to_string(row.param.order); });

TEST(FunctionExpression, RefusesWhatIsntFiniteAtSetUp) {
    constexpr auto notANumber = "ERROR: Evaluation of function expression results in QNAN!";
    constexpr auto infinite =
        "ERROR: Evaluation of function expression results in INF! Check for division by zero!";
    const struct {
        const char *text, *error;
        double value;
    } rows[] = {{"1 / x", infinite, INFINITY},
                {"-1 / x", infinite, -INFINITY},
                {"x / x", notANumber, NAN},
                {"sqrt(x - 1)", notANumber, NAN},
                {"x + 3", "", 3.0},
                {"1 / y", "", 0.0}};
    for (const auto& [text, error, value] : rows) {
        FL_FunctionExpression f;
        double x = 0.0;
        f.addScalarSymbol("x", &x);
        f.setExpression(text);
        EXPECT_EQ(f.errorString, error) << text;
        EXPECT_THAT(f.value, testing::NanSensitiveDoubleEq(value)) << text;
        EXPECT_EQ(f.evaluator->isExpressionValid(), std::string(text) != "1 / y");
    }
}

TEST(FunctionExpression, WritesNothingForAnotherOrderOrAnUnknownName) {
    FL_FunctionExpression f;
    double x = 1.0, out = 5.0;
    f.addScalarSymbol("x", &x);
    f.setExpression("x^2");
    f.getDerivative("y", &out);
    EXPECT_EQ(out, 5.0);
    f.differenceOrder = 3;
    f.getDerivative("x", &out);
    f.getSecondDerivatives("x");
    EXPECT_EQ(out, 5.0);
    EXPECT_EQ(f.secondDerivatives[0][0], 0.0);
}

} // namespace velmora::test
