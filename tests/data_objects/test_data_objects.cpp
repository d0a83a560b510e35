#include "tests/support/AllocationCounter.h"
#include "tests/support/ModelFixture.h"
#include "velmora/data_objects/MBS_DataObjectTypes.h"
#include "velmora/data_objects/MBS_Spline_1D.h"
#include "velmora/data_objects/MBS_StepFunction.h"
#include "velmora/functions/FL_XYSpline.h"

#include <filesystem>
#include <fstream>
#include <vector>

namespace velmora::test {

namespace {

using KeyList = std::vector<std::pair<const char*, std::string>>;

const std::string prefix = "In Block <DataObject> prior to line number 12:\n";

std::string missing(const std::string& key) {
    return "ERROR: Key <" + key + "> not found in read list of keys! Please check your input file!\n";
}

std::string tooFewPoints(const std::string& spline) {
    return "ERROR in function " + spline + "::setNewXAndYData. Minimum number of data points is 3!";
}

std::string wrongCount(const std::string& key, const std::string& count, const std::string& text) {
    return "ERROR: In definition of key <" + key + ">: \nWrong number of arguments in (double " + count +
           " parameters required)!\nPlease check <" + text + "> for typos! Delimiter: <, >\n";
}

class DataObjects : public ModelFixture {
  protected:
    DataObjects() {
        addRigidBody(data, "body");
        build();
    }
    IO_DataModelBlock blockOf(const std::string& type, const KeyList& keys) {
        IO_DataModelBlock block("DataObject", "object", "Object", "");
        block.type = type;
        block.lineNumber = 12;
        for (const auto& [key, value] : keys)
            block.addKeyValue(key, value);
        return block;
    }
    std::unique_ptr<MBS_DataObject> make(const std::string& type, const KeyList& keys) {
        IO_DataModelBlock block = blockOf(type, keys);
        for (const auto& row : MBS_dataObjectTypes())
            if (type == row.type)
                return row.create(&block, model.get());
        return nullptr;
    }
    std::unique_ptr<MBS_Spline_1D> makeSpline(const KeyList& keys) {
        auto object = make("Spline_1D", keys);
        return std::unique_ptr<MBS_Spline_1D>(dynamic_cast<MBS_Spline_1D*>(object.release()));
    }
};

struct Refusal {
    const char* type;
    KeyList keys;
    std::string text;
};

const Refusal refusals[] = {
    {"Parameter", {}, prefix + missing("InitialValue")},
    {"StepFunction",
     {{"Begin", "0"}, {"FinalValue", "one"}},
     prefix + missing("InitialValue") + missing("End") +
         "ERROR: In definition of key <FinalValue>: \nNot able to convert < one> to double value!\n\n\n"},
    {"Spline_1D", {}, prefix + "ERROR in MBS_Spline_1D: Either define PathToSpline or NumDataPts!"},
    {"Spline_1D",
     {{"InterpolationType", "Linear"}, {"NumDataPts", "1"}, {"XData", "0"}, {"YData", "0"}},
     prefix + "ERROR in MBS_Spline_1D: Unknown InterpolationType <linear>! Use akima or zccspl.\n"},
    {"Spline_1D",
     {{"PathToSplineData", "/no/such/table"},
      {"NumberOfHeaderLines", "0"},
      {"ColumnXData", "0"},
      {"ColumnYData", "1"}},
     "File /no/such/table not found.\nERROR in MBS_Spline_1D: files containing spline data does not exist!"},
    {"Spline_1D",
     {{"PathToSplineData", "/no/such/table"}},
     prefix + missing("NumberOfHeaderLines") + missing("ColumnXData") + missing("ColumnYData")},
    {"Spline_1D",
     {{"NumDataPts", "4"}, {"XData", "0, 1, 2"}, {"YData", "0, 1, 2, 3"}},
     prefix + wrongCount("XData", "4", "0, 1, 2")},
    {"Spline_1D",
     {{"NumDataPts", "2147483647"}, {"XData", "0, 1, 2"}},
     prefix + wrongCount("XData", "2147483647", "0, 1, 2") + missing("YData")},
};

} // namespace

TEST_F(DataObjects, RefuseFaultyBlocks) {
    for (const auto& [type, keys, text] : refusals)
        EXPECT_EQ(make(type, keys)->getErrorString(), text);
    for (const char* count : {"-1", "0", "three", "99999999999999999999"})
        EXPECT_TRUE(makeSpline({{"NumDataPts", count}, {"XData", ""}, {"YData", ""}})->isErrorOccured())
            << count;
    EXPECT_NE(takeMessages(), "");
}

TEST_F(DataObjects, ParameterKeepsItsValueIfTheNewOneIsFaulty) {
    const auto parameter = make("Parameter", {{"InitialValue", "2.5"}});
    IO_DataModelBlock change = blockOf("Parameter", {{"InitialValue", "-1e3"}});
    parameter->modifyModelElement(nullptr);
    EXPECT_EQ(parameter->getParameterValue(), 2.5);
    parameter->modifyModelElement(&change);
    EXPECT_EQ(parameter->getParameterValue(), -1e3);
    IO_DataModelBlock fault = blockOf("Parameter", {{"InitialValue", "x"}});
    parameter->modifyModelElement(&fault);
    EXPECT_EQ(parameter->getParameterValue(), -1e3);
    const std::string text =
        prefix +
        "ERROR: In definition of key <InitialValue>: \nNot able to convert < x> to double value!\n\n\n";
    EXPECT_EQ(parameter->getErrorString(), text);
    EXPECT_EQ(model->getErrorString(), "\n" + text);
    EXPECT_NE(takeMessages(), "");
}

TEST_F(DataObjects, StepIsSmoothForTwoWordsAlone) {
    const auto valueOf = [&](const char* mode) {
        const auto object =
            make("StepFunction",
                 {{"Begin", "0"}, {"InitialValue", "1"}, {"End", "4"}, {"FinalValue", "3"}, {"Mode", mode}});
        auto& step = dynamic_cast<MBS_StepFunction&>(*object);
        EXPECT_EQ(step.getValue(2.0, 1), step.getValue(2.0));
        EXPECT_EQ(step.getFirstDerivative(1.5, 0), step.getFirstDerivative(1.5));
        EXPECT_EQ(step.getSecondDerivative(1.5, -1), step.getSecondDerivative(1.5));
        return step.getValue(2.0);
    };
    EXPECT_DOUBLE_EQ(valueOf("polynomial"), 2.0);
    EXPECT_DOUBLE_EQ(valueOf("cosine"), 2.0);
    for (const char* mode : {"hard", "Polynomial", "COSINE", ""})
        EXPECT_EQ(valueOf(mode), 3.0) << mode;
}

TEST_F(DataObjects, StepChangesAsAWholeOrNotAtAll) {
    const auto object =
        make("StepFunction", {{"Begin", "0"}, {"InitialValue", "1"}, {"End", "4"}, {"FinalValue", "3"}});
    auto& step = dynamic_cast<MBS_StepFunction&>(*object);
    EXPECT_EQ(step.getValue(0.0), 3.0) << "hard without a mode";
    IO_DataModelBlock fault = blockOf("StepFunction", {{"Begin", "1"}, {"InitialValue", "7"}});
    step.modifyModelElement(&fault);
    EXPECT_EQ(step.getValue(-1.0), 1.0);
    IO_DataModelBlock change = blockOf(
        "StepFunction",
        {{"Begin", "1"}, {"InitialValue", "7"}, {"End", "2"}, {"FinalValue", "8"}, {"Mode", "cosine"}});
    step.modifyModelElement(nullptr);
    step.modifyModelElement(&change);
    EXPECT_EQ(step.getValue(0.0), 7.0);
    EXPECT_DOUBLE_EQ(step.getValue(1.5), 7.5);
    EXPECT_NE(takeMessages(), "");
}

TEST_F(DataObjects, SplineServesBothInterpolationsAtOnce) {
    FL_XYCubicAkimaSpline akima;
    FL_XYZeroClampedCubicSpline clamped;
    const std::vector x = {0.0, 1.0, 3.0, 4.0}, y = {1.0, -1.0, 0.5, 2.0};
    akima.setNewXAndYData(4, x.data(), y.data());
    clamped.setNewXAndYData(4, x.data(), y.data());
    const struct {
        const char* type;
        FL_XYSpline& expected;
    } rows[] = {{"AKISPL", akima}, {"akima", akima}, {"Zcc", clamped}, {"zccspl", clamped}};
    for (const auto& [type, expected] : rows) {
        const auto spline = makeSpline({{"InterpolationType", type},
                                        {"NumDataPts", "4"},
                                        {"XData", "0, 1, 3, 4"},
                                        {"YData", "1, -1, 0.5, 2"},
                                        {"PathToSplineData", "/no/such/table"}});
        EXPECT_EQ(spline->akimaSpline, nullptr);
        EXPECT_EQ(spline->zeroClampedSpline, nullptr);
        for (const double at : {-1.0, 0.3, 2.0, 3.9, 5.0}) {
            EXPECT_EQ(spline->getValue(at), expected.getValue(at)) << type;
            EXPECT_EQ(spline->getFirstDerivative(at), expected.getFirstDerivative(at)) << type;
            EXPECT_EQ(spline->getSecondDerivative(at), expected.getSecondDerivative(at)) << type;
            EXPECT_EQ(spline->getValue(at, -1), expected.getValue(at)) << type;
            EXPECT_EQ(spline->getValue(at, 0), akima.getValue(at)) << type;
            EXPECT_EQ(spline->getFirstDerivative(at, 1), clamped.getFirstDerivative(at)) << type;
            EXPECT_EQ(spline->getSecondDerivative(at, 7), akima.getSecondDerivative(at)) << type;
        }
        const unsigned long before = allocationCount();
        spline->getValue(0.5, 0);
        spline->getSecondDerivative(2.5, 1);
        EXPECT_EQ(allocationCount(), before);
    }
}

TEST_F(DataObjects, SplineReportsTooFewPointsWhenItIsFirstUsed) {
    const auto spline = makeSpline({{"NumDataPts", "2"}, {"XData", "0, 1"}, {"YData", "2, 3"}});
    EXPECT_FALSE(spline->isErrorOccured());
    EXPECT_EQ(spline->getValue(0.5), 0.0);
    const std::string first = tooFewPoints("FL_XYCubicAkimaSpline");
    EXPECT_EQ(spline->getErrorString(), first);
    EXPECT_EQ(spline->getFirstDerivative(0.5, 1), 0.0);
    spline->getValue(0.7);
    EXPECT_EQ(model->getErrorString(), "\n" + first + "\n" + tooFewPoints("FL_XYZeroClampedCubicSpline"));
    EXPECT_NE(takeMessages(), "");
}

TEST_F(DataObjects, SplineTakesNewPoints) {
    const auto spline = makeSpline({{"NumDataPts", "3"}, {"XData", "0, 1, 2"}, {"YData", "0, 1, 0"}});
    EXPECT_EQ(spline->getValue(1.0, 0), 1.0);
    const std::vector x = {0.0, 1.0, 2.0, 3.0}, y = {4.0, 5.0, 6.0, 7.0};
    spline->setNewXAndYData(4, x.data(), y.data());
    EXPECT_EQ(spline->getValue(1.0, 0), 5.0) << "built before";
    EXPECT_EQ(spline->getValue(3.0, 1), 7.0) << "built behind";

    IO_DataModelBlock change = blockOf(
        "Spline_1D",
        {{"InterpolationType", "zcc"}, {"NumDataPts", "3"}, {"XData", "0, 1, 2"}, {"YData", "8, 9, 8"}});
    spline->modifyModelElement(nullptr);
    spline->modifyModelElement(&change);
    EXPECT_EQ(spline->akimaSpline, nullptr);
    EXPECT_EQ(spline->zeroClampedSpline, nullptr);
    EXPECT_EQ(spline->getValue(1.0), 9.0);
    EXPECT_EQ(spline->getFirstDerivative(0.0), 0.0) << "clamped by default now";
}

TEST_F(DataObjects, SplineReadsATableFile) {
    const auto path = std::filesystem::path(testing::TempDir()) / "velmora_data_object_table.txt";
    std::ofstream(path) << "y, x\n0, 0\n1, 1\n0, 2\n";
    const auto spline = makeSpline({{"PathToSplineData", path.string()},
                                    {"NumberOfHeaderLines", "1"},
                                    {"ColumnXData", "1"},
                                    {"ColumnYData", "0"}});
    EXPECT_EQ(spline->getValue(1.0), 1.0);
    EXPECT_EQ(spline->getValue(2.0, 1), 0.0);
    const auto faulty = makeSpline({{"PathToSplineData", path.string()},
                                    {"NumberOfHeaderLines", "1"},
                                    {"ColumnXData", "1"},
                                    {"ColumnYData", "2"}});
    EXPECT_FALSE(faulty->isErrorOccured());
    EXPECT_EQ(faulty->getValue(1.0), 0.0);
    EXPECT_TRUE(faulty->isErrorOccured());
    EXPECT_NE(takeMessages(), "");
    std::filesystem::remove(path);
}

} // namespace velmora::test
