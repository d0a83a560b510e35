#include "driver/ModelFile.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

namespace velmora::driver {
namespace {

/// A text for a force, what is said of it, and where the caret stands; no message for a sound text.
struct Text {
    const char* text;
    const char* message;
    std::size_t column;

    friend void PrintTo(const Text& row, std::ostream* out) { *out << row.text; }
};

class ExpressionMessages : public testing::TestWithParam<Text> {};

constexpr MBS_KeyInfo keys[] = {{"Law", IO_ValueCode::String, true, MBS_KeyRole::Expression}};
constexpr MBS_BlockTypeInfo vocabulary[] = {
    {"Force", "Spring", MBS_TypeStatus::Available, keys},
    {"Measure", "Length", MBS_TypeStatus::Available, {}},
    {"DataObject", "Parameter", MBS_TypeStatus::Available, {}},
    {"DataObject", "Spline_1D", MBS_TypeStatus::Available, {}},
};

TEST_P(ExpressionMessages, ShowThePlace) {
    const Text& row = GetParam();
    // Cases run beside each other.
    const std::string name = std::to_string(std::hash<std::string>()(row.text)) + ".test_expressions.toml";
    std::ofstream(name) << "[[Measure]]\ntype = 'Length'\nuuid = 'Travel'\n"
                           "[[DataObject]]\ntype = 'Parameter'\nuuid = 'gain'\n"
                           "[[DataObject]]\ntype = 'Spline_1D'\nuuid = 'road'\n"
                           "[[Force]]\ntype = 'Spring'\nuuid = 's'\n" // line 10
                        << "Law = \"" << row.text << "\"\n";
    std::string error;
    const auto file = readModelFile(name, error);
    std::filesystem::remove(name);
    checkStrictly(*file, vocabulary);
    std::vector<std::string> expected;
    if (*row.message)
        expected.push_back(std::string("m:13: error: Force <s>, key <Law>: ") + row.message + "\n    " +
                           row.text + "\n    " + std::string(row.column, ' ') + "^");
    std::vector<std::string> lines;
    for (const Finding& finding : file->findings)
        lines.push_back(format(finding, "m"));
    EXPECT_EQ(lines, expected);
}

const char* const noValue = "gives no finite number for any of the sample values tried";
const char* const wrongStep =
    "step takes an argument, begin, initial value, end, final value and, if it is not a "
    "hard one, polynomial or cosine";

INSTANTIATE_TEST_SUITE_P(Sound, ExpressionMessages,
                         testing::Values(Text{"", "", 0}, Text{"-3 * meaval[travel] + parval[GAIN]", "", 0},
                                         Text{"sqrt(meaval[travel] - 0.7)", "", 0},
                                         Text{"SIN(SIMTIME[]) * akispl[2 * simtime[], Road]", "", 0},
                                         Text{"step[meaval[travel], 0, 0, 1, 2, cosine]", "", 0},
                                         Text{"if (meaval[travel] > 0.5, 1, pi)", "", 0}));

INSTANTIATE_TEST_SUITE_P(
    Faulty, ExpressionMessages,
    testing::Values(
        Text{"2 * meaval[travle]", "no measure has the label <travle>; did you mean <travel>?", 11},
        Text{"1 + spl[3 * meaval[travle], road]", "no measure has the label <travle>; did you mean <travel>?",
             19},
        Text{"parval[gian]", "no data object has the label <gian>; did you mean <gain>?", 7},
        Text{"parval[road]", "the data object <road> is no parameter", 7},
        Text{"zccspl[simtime[],  gain]", "the data object <gain> is a parameter, where a spline belongs", 19},
        Text{"step[parval[gain], 0, 0, 1, 1]", "a parameter can't stand in the argument of a function", 5},
        Text{"meaval[travel", "brackets aren't balanced", 6}, Text{"3 + 1]", "brackets aren't balanced", 5},
        Text{"1 + step[simtime[], 0, 1]", wrongStep, 4},
        Text{"step[simtime[], 0, 0, 1, 1, 5, 6]", wrongStep, 0},
        Text{"akispl[simtime[]]", "akispl takes an argument without a comma and the label of a spline", 0},
        Text{"meaval[travel] $ 3", "Invalid special function token: $ 3", 15},
        Text{"2 * foo(meaval[travel])", "Undefined symbol: 'foo'", 4},
        Text{"1 + spl[2 * foo, road]", "Undefined symbol: 'foo'", 12}, Text{"sqrt(-1)", noValue, 0},
        Text{"1 / spl[simtime[], road]", noValue, 0}));

} // namespace
} // namespace velmora::driver
