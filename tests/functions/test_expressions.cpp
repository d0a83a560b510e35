#include "tests/support/AllocationCounter.h"
#include "velmora/functions/FL_FunctionExpression.h"
#include "velmora/functions/exprTk_Interface.h"

#include <array>
#include <cmath>
#include <gmock/gmock.h>
#include <limits>

namespace velmora::test {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// Over the scalar x = 2 and the vectors v = (1, 2, 3), u = (7).
class Parser : public testing::Test {
  protected:
    Parser() {
        const std::string names[] = {"x", "v", "u", "none"};
        const int three = 3, one = 1, zero = 0;
        expression.addVariableSymbol(&names[0], &x);
        expression.addVectorSymbol(&names[1], v.data(), &three);
        expression.addVectorSymbol(&names[2], u.data(), &one);
        expression.addVectorSymbol(&names[3], v.data(), &zero);
    }
    double valueOf(const std::string& text) {
        v = {1.0, 2.0, 3.0};
        expression.setExpression(&text);
        EXPECT_TRUE(expression.isExpressionValid()) << text << ": " << expression.getErrorText();
        return expression.evaluateExpression();
    }

    double x = 2.0;
    std::array<double, 3> v = {1.0, 2.0, 3.0};
    std::array<double, 1> u = {7.0};
    exprTk_Interface expression;
};

struct Value {
    const char* text;
    double value;
};

constexpr Value sound[] = {
    {"cos(pi) + 2^3", 7.0},
    {"-inf", -std::numeric_limits<double>::infinity()},
    {"if (x > 1, v[2], u[0])", 3.0},
    {"v[x]", 3.0},
    {"v[1]v[2]", 6.0},
    // indices outside
    {"v[x + 1]", 3.0},
    {"v[1e300 * x]", 3.0},
    {"v[-x]", 1.0},
    {"v [ x - 9 ]", 1.0},
    {"v[log(-x)]", 3.0},
    {"v[v[x + 9] - v[x]]", 1.0},
    {"u[x]", 7.0},
    {"3v[x + 5]", 9.0},
    {"2.5e2v[x + 500]", 750.0},
    {"1e-1v[x + 1]", 3.0 * 1e-1},
    {"v[2]v[x + 5]", 9.0},
    {"v[x + 5] := 9; v[2]", 9.0},
    // local vectors
    {"var w[3] := {1, 2}; w[x * 9] + w[x - 1]", 2.0},
    {"var w[9] := v; w[x] + w[8]", 3.0},
    {"x; 2var w[9] := v; w[8] + w[x + 7]", 0.0},
    {"var w [9] := v + 1; w[x - 1] + w[x + 9]", 3.0},
    {"var w[9] := [x]; w[8]", 2.0},
    {"var w[10000]; w[9999] + x", 2.0},
    // loops
    {"var s := 0; for (var i := 0; i < 1000; i += 1) { s += i; }; s", 499500.0},
    {"var w[1000]; for (var i := 0; i < 1000; i += 1) { w[i] := i; }; w[x + 2000]", 999.0},
    {"for (var i := 0; x > 0; i += 1) { i; }", nan},
    {"while (x > 0) { x; 1; }", nan},
    {"repeat x; until (x < 0)", nan},
    {"while (x > 0) { while (x > 0) { x; 1; } }", nan},
    {"while (x > 0) { for (var i := 0; x > 0; i += 1) { repeat x; until (x < 0) } }", nan},
    {"for (var i := 0; i < 9e5; i += 1) { for (var j := 0; j < 9e5; j += 1) { x; } }", nan},
    {"for (var i := 0; i < 9e5; i += 1) { 2for (var j := 0; j < 9e5; j += 1) { x; } }", nan},
    {"for (var i := 0; i < 9e5; i += 1) { 1e+0for (var j := 0; j < 9e5; j += 1) { x; } }", nan},
    {"1 + while (x > 0) { x; 1; }", nan},
    {"var w[10000]; while (x > 0) { w := w + 1; 1; }", nan},
};

std::string repeat(const std::string& text, unsigned times) {
    std::string result;
    for (unsigned i = 0; i < times; ++i)
        result += text;
    return result;
}

struct Fault {
    std::string text;
    std::size_t column;
    const char* message; ///< part of it
};

const std::string sizeMessage =
    "The size of a local vector must be a plain number, at most 10000 for all of them together";

const Fault faults[] = {
    {"x + y", 4, "Undefined symbol: 'y'"},
    {"1 + foo(x)", 4, "Undefined symbol: 'foo'"},
    {"sin(x", 3, "Mismatched brackets"},
    {"none[0]", 0, "Undefined symbol: 'none'"},
    {"1 + v[3]", 8, "Index of 3 out of range for vector 'v' of size 3"},
    {"v[-1]", 5, "Index of -1 out of range"},
    {"v[0 / 0]", 8, "out of range"},
    {"X", 0, "Undefined symbol: 'X'"},
    {"'text'", 0, "General token error"},
    {"return [x]", 0, "return"},
    {"println(x)", 0, "println"},
    {"var w[10001]; x", 6, sizeMessage.c_str()},
    {"var w[5000]; var z[5001]; x", 19, sizeMessage.c_str()},
    {"var w[2000000000]; w[5]", 6, sizeMessage.c_str()},
    {"var w[99999999999999999999999999]; x", 6, sizeMessage.c_str()},
    {"2var w[10001]; x", 7, sizeMessage.c_str()},
    {"var w[100 * 100]; x", 6, sizeMessage.c_str()},
    {repeat("(", 500) + "x" + repeat(")", 500), 1001, "stack depth"},
    {repeat("v[", 100) + "x" + repeat("]", 100), 301, "stack depth"},
};

} // namespace

TEST_F(Parser, GivesEachSoundTextItsValue) {
    for (const auto& [text, value] : sound)
        EXPECT_THAT(valueOf(text), testing::NanSensitiveDoubleEq(value)) << text;
}

TEST_F(Parser, TellsWhereATextIsFaulty) {
    for (const auto& [text, column, message] : faults) {
        expression.setExpression(&text);
        EXPECT_FALSE(expression.isExpressionValid()) << text;
        EXPECT_EQ(expression.evaluateExpression(), 0.0) << text;
        EXPECT_EQ(expression.getErrorColumn(), column) << text;
        EXPECT_THAT(expression.getErrorText(), testing::HasSubstr(message)) << text;
    }
    valueOf("x");
    EXPECT_EQ(expression.getErrorText(), "") << "after a sound text";
}

TEST_F(Parser, StartsEachEvaluationAnewAndAllocatesNothing) {
    valueOf("var w[3]; var old := w[1]; w[x] := 5; w[1] := 6; old + v[x]");
    const unsigned long before = allocationCount();
    EXPECT_EQ(expression.evaluateExpression(), 3.0);
    x = 1.0;
    EXPECT_EQ(expression.evaluateExpression(), 2.0);
    EXPECT_EQ(allocationCount(), before);
}

} // namespace velmora::test
