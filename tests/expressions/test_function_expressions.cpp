#include "tests/support/AllocationCounter.h"
#include "tests/support/ModelFixture.h"
#include "velmora/data_objects/MBS_DataObject.h"
#include "velmora/expressions/MBS_FunctionExpression.h"
#include "velmora/measures/MBS_Measure.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace velmora::test {

namespace {

constexpr double pi = std::numbers::pi;
constexpr double now = 0.25;

/// Parameters c1 = 3 and c2 = -0.5, measures m1 = 0.5 and m2 = -2, a hard step from 2 to 4 at 0, and a peak
/// through (0, 0), (1, 1), (2, 0). The latter starts as x + x^2 - x^3 by Akima, and as 3x^2 - 2x^3 clamped,
/// its default.
class FunctionExpressions : public ModelFixture {
  protected:
    FunctionExpressions() {
        addRigidBody(data, "body");
        addBlock(data, "DataObject", "Parameter", "C1", {{"InitialValue", "3"}});
        addBlock(data, "DataObject", "Parameter", "c2", {{"InitialValue", "-0.5"}});
        addBlock(data, "DataObject", "StepFunction", "jump",
                 {{"Begin", "0"}, {"InitialValue", "2"}, {"End", "1"}, {"FinalValue", "4"}});
        addBlock(
            data, "DataObject", "Spline_1D", "Peak",
            {{"InterpolationType", "zcc"}, {"NumDataPts", "3"}, {"XData", "0, 1, 2"}, {"YData", "0, 1, 0"}});
        for (const char* label : {"M1", "m2"})
            addBlock(data, "Measure", "Translational", label,
                     {{"BodyIDs", "body, 0"},
                      {"MeasureMode", "disp"},
                      {"MeasureCoordinate", "X"},
                      {"MeasureLocation_Body1", "0, 0, 0"},
                      {"MeasureLocation_Body2", "0, 0, 0"}});
        build();
        lookUp().getMeasureByLabel("m1")->measureValue = 0.5;
        lookUp().getMeasureByLabel("m2")->measureValue = -2.0;
    }
    const MBS_ModelLookUp& lookUp() const { return dynamic_cast<const MBS_ModelLookUp&>(*model); }
};

struct Sound {
    const char *text, *rewritten;
    double value, rate, acceleration; ///< at `now`
    std::vector<double> byMeasures, byParameters;
};

const Sound sound[] = {
    {"", "", 0, 0, 0, {}, {}},
    {"2*PI", "2*pi", 2 * pi, 0, 0, {}, {}},
    {"SIN(SIMTIME[])", "sin(time)", std::sin(now), std::cos(now), -std::sin(now), {}, {}},
    {"2*simtime[any, thing]^3", "2*time^3", 0.03125, 0.375, 3, {}, {}},
    {"parval[C1] + parval[c1]", "par[0] + par[0]", 6, 0, 0, {}, {2}},
    {"parval[c2]*parval[c1]^2", "par[0]*par[1]^2", -4.5, 0, 0, {}, {9, -3}},
    {"meaval[M1]*meaval[m2] - parval[c1]*meaval[m1]",
     "mea[0]*mea[1] - par[0]*mea[0]",
     -2.5,
     0,
     0,
     {-5, 0.5},
     {-0.5}},
    {"parval[c1]*simtime[]^2*meaval[m2]", "par[0]*time^2*mea[0]", -0.375, -3, -12, {0.1875}, {-0.125}},
    {"step[simtime[], 0, 0, 1, 1]", "funx[0]", 1, 0, 0, {}, {}},
    {"step[simtime[], 0, 0, 1, 1, hard]", "funx[0]", 1, 0, 0, {}, {}},
    {"step[simtime[], 0, 0, 1, 1, COSINE]",
     "funx[0]",
     0.5 * (1 - std::cos(pi / 4)),
     0.5 * pi* std::sin(pi / 4),
     0.5 * pi* pi* std::cos(pi / 4),
     {},
     {}},
    {"2*step[meaval[m1], 0, 1, 1, 5, polynomial]", "2*funx[0]", 6, 0, 0, {}, {}},
    {"akispl[simtime[], PEAK]", "funx[0]", 0.296875, 1.3125, 0.5, {}, {}},
    {"zccspl[simtime[], peak]", "funx[0]", 0.15625, 1.125, 3, {}, {}},
    {"spl[simtime[], peak]", "funx[0]", 0.15625, 1.125, 3, {}, {}},
    {"spl[2*simtime[]^2, peak]", "funx[0]", 0.04296875, 0.65625, 7.125, {}, {}},
    {"spl[-simtime[], jump]", "funx[0]", 2, 0, 0, {}, {}},
    {"meaval[m2]*spl[simtime[], jump]", "mea[0]*funx[0]", -8, 0, 0, {4}, {}},
    // one entry per mention, Akima's before the default's; no mixed terms in the second derivative
    {"simtime[]*spl[simtime[], peak] + akispl[meaval[m1], peak]",
     "time*funx[1] + funx[0]",
     0.6640625,
     0.4375,
     0.75,
     {},
     {}},
    // what doesn't compile is 0
    {"meaval[m1] +", "mea[0] +", 0, 0, 0, {0}, {}},
    {"time", "time", 0, 0, 0, {}, {}},
    {"1 + spl[parval[c1] + 1, jump]", "1 + funx[0]", 5, 0, 0, {}, {0}},
};

const std::string noParameter = "> not found in model! Check for typos like c_1 instead of c1, etc!\n";
const std::string noMeasure = "> not found in model! Check for typos like disp_X instead of dispX, etc!\n";
const std::string infinite =
    "ERROR: Evaluation of function expression results in INF! Check for division by zero!\n";
const std::string notANumber = "ERROR: Evaluation of function expression results in QNAN!\n";
const std::string stepArguments =
    "ERROR: Number of step arguments is wrong, 5 or 6 required!\n1...indep.var.expression\n"
    "2...begin of step\n3...initial value of step\n4...end of step\n5...final value of step\n"
    "6...mode of step (hard, polynomial, cosine)\n";
const std::string splineArguments =
    "ERROR: Number of spline arguments is wrong, 2 required!\n1...indep.var.expression\n"
    "2...label of spline data object\n";

std::string brackets(const std::string& text) {
    return "ERROR: wrong number of brackets in expression <" + text + ">!\n";
}

struct Faulty {
    std::string text, rewritten, error;
};

const Faulty faulty[] = {
    {"parval[c_1]", "parval[c_1]", "Parameter <c_1" + noParameter},
    {"parval[ C1]", "parval[ c1]", "Parameter < c1" + noParameter},
    {"parval[c1]*parval[x]*parval[c2]", "par[0]*parval[x]*parval[c2]", "Parameter <x" + noParameter},
    {"parval[PEAK]", "parval[peak]", "Given label <peak> not of type Parameter!\n"},
    {"meaval[M9] + simtime[]", "meaval[m9] + time", "Measure <m9" + noMeasure},
    {"step[simtime[], 0, 0, 1]", "step[time, 0, 0, 1]", stepArguments},
    {"step[1, 0, 0, 1, 1, 5, 6]", "step[1, 0, 0, 1, 1, 5, 6]", stepArguments},
    {"akispl[simtime[]]", "akispl[time]", splineArguments + splineArguments},
    {"zccspl[1, a, b]", "zccspl[1, a, b]", splineArguments + splineArguments},
    {"spl[1, c1]", "spl[1, c1]", "ERROR: c1 no spline data!\n"},
    {"spl[1, Nothing]", "spl[1, nothing]", "ERROR: nothing no spline data!\n"},
    {"spl[1/0, peak]", "funx[0]", infinite},
    {"spl[meaval[m9], peak]", "funx[0]", "Measure <m9" + noMeasure},
    {"parval[c1", "parval[c1", brackets("parval[c1") + "Parameter <" + noParameter},
    {"simtime[] + meaval[m1", "time + meaval[m1",
     brackets("simtime[] + meaval[m1") + "Measure <" + noMeasure + brackets("simtime[] + meaval[m1")},
    {"1/simtime[]", "1/time", infinite},
    {"0/(parval[c1] - 3)", "0/(par[0] - 3)", notANumber},
    {"1/akispl[simtime[], peak]", "1/funx[0]", infinite},
    {"sqrt(-1 - meaval[m1]^2)", "sqrt(-1 - mea[0]^2)", notANumber},
    {"while (1 < meaval[m1] + 9) { meaval[m1]; 1; }", "while (1 < mea[0] + 9) { mea[0]; 1; }", notANumber},
};

} // namespace

TEST_F(FunctionExpressions, GiveValueRewrittenTextAndDerivatives) {
    const auto isNear = [](double found, double expected, double tolerance) {
        return std::abs(found - expected) <= tolerance * std::max(1.0, std::abs(expected));
    };
    for (const Sound& row : sound) {
        SCOPED_TRACE(row.text);
        MBS_FunctionExpression f(model.get(), lookUp(), row.text);
        EXPECT_EQ(f.getErrorString(), "");
        EXPECT_EQ(f.expression, row.rewritten);
        EXPECT_EQ(f.usesTime,
                  std::string(row.text).find("imtime[") != std::string::npos || row.text[0] == 'S');
        f.getValue(9.0);
        EXPECT_DOUBLE_EQ(f.getValue(now), row.value);
        f.getSecondTimeDerivative(1.7);
        EXPECT_TRUE(isNear(f.getFirstTimeDerivative(now), row.rate, 1e-8)) << f.firstTimeDerivative;
        EXPECT_TRUE(isNear(f.getSecondTimeDerivative(now), row.acceleration, 1e-6)) << f.secondTimeDerivative;
        f.updateMeasureDerivatives(now);
        f.updateParameterDerivatives(now);
        ASSERT_EQ(f.numOfMeasures, row.byMeasures.size());
        ASSERT_EQ(f.numOfParameters, row.byParameters.size());
        for (unsigned j = 0; j < f.numOfMeasures; ++j)
            EXPECT_TRUE(isNear(f.meaDerivatives->data[j], row.byMeasures[j], 1e-8)) << j;
        for (unsigned k = 0; k < f.numOfParameters; ++k)
            EXPECT_TRUE(isNear(f.parDerivatives->data[k], row.byParameters[k], 1e-8)) << k;

        const unsigned long before = allocationCount();
        f.getValue(0.3);
        f.getFirstTimeDerivative(0.4);
        f.getSecondTimeDerivative(0.5);
        f.updateMeasureDerivatives(0.6);
        f.updateParameterDerivatives(0.7);
        EXPECT_EQ(allocationCount(), before);
    }
}

TEST_F(FunctionExpressions, SayWhatIsFaulty) {
    for (const auto& [text, rewritten, error] : faulty) {
        MBS_FunctionExpression f(model.get(), lookUp(), text);
        EXPECT_EQ(f.getErrorString(), error) << text;
        EXPECT_EQ(f.expression, rewritten);
    }
}

TEST_F(FunctionExpressions, ReportStepsWithoutNumbersToTheModel) {
    MBS_FunctionExpression f(model.get(), lookUp(), "1 + step[simtime[], zero, 0, 1, 1]");
    EXPECT_EQ(f.getErrorString(), "");
    EXPECT_EQ(f.getValue(2.0), 1.0);
    EXPECT_EQ(model->getErrorString(),
              "\nIn Block <DataObject> prior to line number 0:\nERROR: In definition of "
              "key <Begin>: \nNot able to convert < zero> to double value!\n\n\n");
    EXPECT_NE(takeMessages(), "");
}

// Measures have no values when a text is tried out; what has a value for some of them is sound.
TEST_F(FunctionExpressions, TryOutDistinctMeasures) {
    for (const char* text : {"sqrt(meaval[m1] - meaval[m2])", "sqrt(meaval[m2] - meaval[m1])",
                             "1/(meaval[m1] - meaval[m2])", "1/meaval[m1]", "asin(meaval[m1])"})
        EXPECT_FALSE(MBS_FunctionExpression(model.get(), lookUp(), text).isErrorOccured()) << text;
}

TEST_F(FunctionExpressions, FollowTheirMeasuresAndParameters) {
    MBS_FunctionExpression f(model.get(), lookUp(), "parval[c1]*meaval[m1] + spl[meaval[m2], jump]");
    EXPECT_EQ(f.getValue(0.0), 3.5);
    lookUp().getMeasureByLabel("m1")->measureValue = 2.0;
    lookUp().getMeasureByLabel("m2")->measureValue = 0.0;
    EXPECT_EQ(f.getValue(0.0), 10.0);
    IO_DataModelBlock change("DataObject", "C1", "c1", "");
    change.addKeyValue("InitialValue", "-7");
    model->modifyModelElement(&change);
    EXPECT_EQ(f.getValue(0.0), -10.0);
    f.updateMeasureDerivatives(0.0);
    EXPECT_NEAR(f.meaDerivatives->data[0], -7.0, 1e-8);
    EXPECT_EQ(f.stepFunctions.size(), 0u);
}

} // namespace velmora::test
