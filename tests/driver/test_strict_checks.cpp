#include "driver/ModelFile.h"
#include "driver/NearName.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace velmora::driver {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

// A family with a key of every role, so that the rules are tested apart from what the kernel offers.
constexpr MBS_KeyInfo springKeys[] = {
    {"active", IO_ValueCode::Bool, false},
    {"BodyIDs", IO_ValueCode::StringPair, false, MBS_KeyRole::BodyIDs},
    {"Direction", IO_ValueCode::DoubleVector3, false, MBS_KeyRole::UnitVector},
    {"Measure", IO_ValueCode::String, false, MBS_KeyRole::MeasureLabel},
    {"Curve", IO_ValueCode::String, false, MBS_KeyRole::DataObjectLabel},
    {"Law", IO_ValueCode::String, false, MBS_KeyRole::Expression},
    {"Shape", IO_ValueCode::String, false, MBS_KeyRole::File},
    {"Count", IO_ValueCode::Unsigned, false},
    {"Note", IO_ValueCode::String, false},
    {"Gauge_", IO_ValueCode::String, false, MBS_KeyRole::MeasureLabel, true},
};
constexpr MBS_KeyInfo stoneKeys[] = {
    {"Mass", IO_ValueCode::Double, true, MBS_KeyRole::Mass},
    {"Inertia", IO_ValueCode::DoubleVector3, true, MBS_KeyRole::Inertia},
    {"Axes", IO_ValueCode::DoubleMatrix3x3, false, MBS_KeyRole::Orientation},
};
constexpr MBS_KeyInfo pairKeys[] = {
    {"BodyIDs", IO_ValueCode::StringPair, true, MBS_KeyRole::BodyIDs},
    {"azFixed", IO_ValueCode::Bool, false},
};
constexpr MBS_BlockTypeInfo vocabulary[] = {
    {"Body", "Stone", MBS_TypeStatus::Available, stoneKeys},
    {"Force", "Spring", MBS_TypeStatus::Available, springKeys},
    {"Force", "Wind", MBS_TypeStatus::CreatesNothing, {}},
    {"Measure", "Length", MBS_TypeStatus::Available, {}},
    {"DataObject", "Table", MBS_TypeStatus::Available, {}},
    {"Constraint", "Generic", MBS_TypeStatus::Available, pairKeys},
    {"Measure", "FlexTranslational", MBS_TypeStatus::NotInThisBuild, pairKeys},
    {"DataObject", "Chart", MBS_TypeStatus::NotInThisBuild, {}},
};

std::vector<std::string> check(const std::string& text, std::span<const MBS_BlockTypeInfo> types) {
    std::ofstream("strict.toml") << text;
    std::string error;
    const auto file = readModelFile("strict.toml", error);
    std::filesystem::remove("strict.toml");
    const std::size_t numOfReadingFindings = file->findings.size();
    checkStrictly(*file, types);
    std::vector<std::string> lines;
    for (std::size_t i = numOfReadingFindings; i < file->findings.size(); ++i)
        lines.push_back(format(file->findings[i], "m"));
    return lines;
}

/// One line in a block of a model that is right without it, and what is to be said of the line.
struct Line {
    const char* block; // "Stone" or "Spring"
    const char* text;
    const char* finding; // behind "key <...>: "; null if there is none
};

class StrictLine : public testing::TestWithParam<Line> {};

TEST_P(StrictLine, IsJudged) {
    const Line& line = GetParam();
    const std::string text = line.text;
    const bool isStone = std::string(line.block) == "Stone";
    const std::string model = "[[Measure]]\nuuid = 'm'\nlabel = 'Gap'\ntype = 'Length'\n"
                              "[[DataObject]]\nuuid = 'd'\nlabel = 'Table1'\ntype = 'Table'\n" +
                              ("[[Body]]\ntype = 'Stone'\nuuid = 'link1'\n" + (isStone ? text + "\n" : "")) +
                              ("[[Force]]\ntype = 'Spring'\nuuid = 's'\n" + (isStone ? "" : text));
    std::vector<std::string> expected;
    if (line.finding) {
        const std::string key =
            text.substr(text.rfind('\n') + 1, text.find(" =", text.rfind('\n') + 1) - text.rfind('\n') - 1);
        const auto lineNumber = (isStone ? 12 : 15) + std::ranges::count(text, '\n');
        expected.push_back("m:" + std::to_string(lineNumber) + ": error: " +
                           (isStone ? "Body <link1>" : "Force <s>") + ", key <" + key + ">: " + line.finding);
    }
    EXPECT_THAT(check(model, vocabulary), ElementsAreArray(expected)) << text;
}

INSTANTIATE_TEST_SUITE_P(
    Bodies, StrictLine,
    testing::Values(
        Line{"Stone", "Masss = 1", "unknown key; did you mean <Mass>?"},
        Line{"Stone", "Label = 'x'", "unknown key; did you mean <label>?"},
        Line{"Stone", "Colour = 1", "unknown key"},     //
        Line{"Stone", "Mass = -1", "negative mass -1"}, //
        Line{"Stone", "Mass = '1'", "a text where a number belongs"},
        Line{"Stone", "Mass = true", "true or false where a number belongs"},
        Line{"Stone", "Mass = 1\nInertia = [1, 0, 1]", "a moment of inertia is zero, but the body has mass"},
        Line{"Stone", "Mass = 0\nInertia = [0, 0, 0]", nullptr},
        Line{"Stone", "Mass = 1\nInertia = [1, -2, 1]", "negative moment of inertia -2"},
        Line{"Stone", "Mass = 1\nInertia = [1, 3, 2]", nullptr},
        Line{"Stone", "Mass = 1\nInertia = [0.0833, 0.0833, 0.1667]", nullptr},
        Line{"Stone", "Mass = 1\nInertia = [1, 2, 3.1]",
             "no body has these moments: 3.1 is more than the sum of the other two, 3"},
        Line{"Stone", "Axes = [0, 1, 0,  -1, 0, 0,  0, 0, 1]", nullptr},
        Line{"Stone", "Axes = [0.7071, 0.7071, 0,  -0.7071, 0.7071, 0,  0, 0, 1]", nullptr},
        Line{"Stone", "Axes = [1, 0, 0,  0, 1, 0,  0, 0, -1]",
             "left-handed: the third axis points against the cross product of the first two"},
        Line{"Stone", "Axes = [1, 0, 0,  0, 1, 0,  1, 1, 0]", "singular: the three axes lie in a plane"},
        Line{"Stone", "Axes = [0, 0, 0,  0, 1, 0,  0, 0, 1]", "singular: the three axes lie in a plane"},
        Line{"Stone", "Axes = [1, 0, 0,  0, 1.5, 0,  0, 0, 1]",
             "not orthonormal: a length or scalar product of the axes is off by 0.5"},
        Line{"Stone", "Axes = [1, 0, 0]", nullptr})); // the kernel counts the numbers

INSTANTIATE_TEST_SUITE_P(
    Forces, StrictLine,
    testing::Values(
        Line{"Spring", "Direction = [0.6, 0, 0.8]", nullptr},
        Line{"Spring", "Direction = [1.00001, 0, 0]", nullptr},
        Line{"Spring", "Direction = [1.0001, 0, 0]", "not a unit vector: its length is 1.0001"},
        Line{"Spring", "Direction = [0, 0, 0]", "not a unit vector: its length is 0"},
        Line{"Spring", "BodyIDs = ['link1', '0']", nullptr}, //
        Line{"Spring", "BodyIDs = 'link1, 0'", nullptr},
        Line{"Spring", "BodyIDs = ['link2', '0']", "no body has the UUID <link2>; did you mean <link1>?"},
        Line{"Spring", "BodyIDs = ['link1', 'm']", "no body has the UUID <m>"},
        Line{"Spring", "BodyIDs = 'link1'", "two UUIDs of bodies belong here, \"0\" for the ground"},
        Line{"Spring", "BodyIDs = ['link1', 0]", "a number where a text belongs"},
        Line{"Spring", "Measure = 'gap'", nullptr},
        Line{"Spring", "Gauge_0 = 'gap'\nGauge_1 = 'gip'",
             "no measure has the label <gip>; did you mean <gap>?"},
        Line{"Spring", "Gauge_0 = 'gap'\nGauge_2 = 'gap'", "not read: <Gauge_1> is missing"},
        Line{"Spring", "Gauge_0 = 'gap'\nGauge_00 = 'gap'", "not read: the number begins with a zero"},
        Line{"Spring", "Gauge_x = 'gap'", "unknown key; did you mean <Gauge_0>?"},
        Line{"Spring", "Measure = 'Gip'", "no measure has the label <Gip>; did you mean <gap>?"},
        Line{"Spring", "Curve = 'Table2'", "no data object has the label <Table2>; did you mean <table1>?"},
        Line{"Spring", "Law = 3.5", nullptr}, //
        Line{"Spring", "Note = 3.5", "a number where a text belongs"},
        Line{"Spring", "Note = true", "true or false where a text belongs"},
        Line{"Spring", "Count = '3'", "a text where a number belongs"},
        Line{"Spring", "Shape = 'no/such.mtx'", "there is no file <no/such.mtx>"},
        Line{"Spring", "Shape = '.'", "there is no file <.>"}, Line{"Spring", "active = 'Yes'", nullptr}, //
        Line{"Spring", "active = 'on'", "a text where true or false belongs"},
        Line{"Spring", "active = 1", "a number where true or false belongs"}));

TEST(StrictChecks, WarnOfContactWithoutDerivatives) {
    static constexpr MBS_KeyInfo keys[] = {{"IsNumericJacobiRequired", IO_ValueCode::Bool}};
    const MBS_BlockTypeInfo contact[] = {{"Force", "RigidContact", MBS_TypeStatus::Available, keys}};
    const std::string block = "[[Force]]\ntype = 'RigidContact'\nuuid = 'a'\nIsNumericJacobiRequired = ";
    EXPECT_THAT(check(block + "true", contact), ElementsAre());
    EXPECT_THAT(
        check(block + "false", contact),
        ElementsAre("m:4: warning: Force <a>, key <IsNumericJacobiRequired>: false: Newton's method will "
                    "be slow while the bodies touch"));
}

TEST(StrictChecks, JudgesTypesAndUuids) {
    EXPECT_THAT(
        check("[[Body]]\n" // 1
              "[[Force]]\ntype = 'Wind'\nuuid = 'a'\n"
              "[[Force]]\ntype = 'Sprong'\nuuid = 'a'\n"
              "[[Force]]\ntype = 'Stone'\nuuid = '0'\nanything = 1\n" // 8
              "[[DataObject]]\ntype = 'Chart'\nuuid = 'noUUID'\nanything = 1\n"
              "[[Body]]\ntype = 3\nuuid = ''\n", // 16
              vocabulary),
        ElementsAre("m:1: error: Body <>, key <uuid>: missing; every block needs one",
                    "m:1: error: Body <>, key <type>: missing; every block needs one",
                    "m:3: error: Force <a>, key <type>: <Wind> is accepted, but makes nothing",
                    "m:6: error: Force <a>, key <type>: unknown type <Sprong>; did you mean <Spring>?",
                    "m:7: error: Force <a>, key <uuid>: already used by the Force in line 2",
                    "m:9: error: Force <0>, key <type>: unknown type <Stone>",
                    "m:10: error: Force <0>, key <uuid>: <0> stands for the ground",
                    "m:13: error: DataObject <noUUID>, key <type>: <Chart> is not available in this build",
                    "m:14: error: DataObject <noUUID>, key <uuid>: <noUUID> marks the kernel's own blocks",
                    "m:18: error: Body <>, key <uuid>: empty; every block needs one"));
}

TEST(StrictChecks, FindBlocksWhoseKeysMakeNothing) {
    const std::string head = "[[Constraint]]\ntype = 'Generic'\nuuid = 'c'\n";
    const std::string nothing = "m:2: error: Constraint <c>, key <type>: none of dxFixed, axFixed, dyFixed, "
                                "ayFixed, dzFixed, azFixed is true: the constraint makes nothing";
    EXPECT_THAT(check(head + "azFixed = true\n", vocabulary), ElementsAre());
    EXPECT_THAT(check(head + "azFixed = false\n", vocabulary), ElementsAre(nothing));
    EXPECT_THAT(
        check(head + "BodyIDs = ['no', '0']\nazFxed = true\n", vocabulary),
        ElementsAre(nothing, "m:4: error: Constraint <c>, key <BodyIDs>: no body has the UUID <no>",
                    "m:5: error: Constraint <c>, key <azFxed>: unknown key; did you mean <azFixed>?"));
    EXPECT_THAT(
        check("[[Measure]]\ntype = 'FlexTranslational'\nuuid = 'm'\nBodyIDs = ['a', 'b']\n", vocabulary),
        testing::Contains("m:4: error: Measure <m>, key <BodyIDs>: the second must be \"0\": between two "
                          "bodies the measure makes nothing"));
}

TEST(StrictChecks, KnowTheKernelsBlocks) {
    EXPECT_THAT(check("[[Body]]\ntype = 'Rigid_EulerParameter_PAI'\nuuid = 'b'\nMass = -1\n"
                      "OrientationPIA = [1, 0, 0, 0, 1, 0, 0, 0, 1]\n"
                      "[[Force]]\ntype = 'Gravity'\nuuid = 'g'\nGravityAccVector = [0, 0, -9.81]\n"
                      "ActivationTme = 1\n",
                      MBS_getBlockVocabulary()),
                ElementsAre("m:4: error: Body <b>, key <Mass>: negative mass -1",
                            "m:5: error: Body <b>, key <OrientationPIA>: unknown key; did you mean "
                            "<OrientationPAI>?",
                            "m:10: error: Force <g>, key <ActivationTme>: unknown key; did you mean "
                            "<ActivationTime>?"));
}

TEST(NearName, CountsEditsAndRefusesWhatIsFar) {
    EXPECT_EQ(getEditDistance("", "abc"), 3U);
    EXPECT_EQ(getEditDistance("Inertia", "inertia"), 0U);
    EXPECT_EQ(getEditDistance("Inetria", "Inertia"), 1U);
    EXPECT_EQ(getEditDistance("kitten", "sitting"), 3U);
    EXPECT_EQ(findNearName("Mas", {"Mass", "Mask"}), "Mass");
    EXPECT_EQ(findNearName("Wood", {"Mass"}), "");
    EXPECT_EQ(findNearName("a", {"b"}), "");
    EXPECT_EQ(suggestNearName("far", {"away"}), "");
}

} // namespace
} // namespace velmora::driver
