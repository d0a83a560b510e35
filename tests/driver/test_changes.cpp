#include "driver/CommandLine.h"
#include "driver/MeasureTable.h"
#include "driver/ModelFile.h"
#include "driver/RunCommand.h"

#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace velmora::driver {
namespace {

std::vector<std::string> linesOf(const std::string& fileName) {
    std::ifstream stream(fileName);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// One faulty [[Change]], and what is said of it.
struct FaultyChange {
    const char* keys;
    const char* finding;
};

class FaultyChanges : public testing::TestWithParam<FaultyChange> {};

TEST_P(FaultyChanges, AreNamed) {
    // Cases run beside each other.
    const std::string name = std::to_string(std::hash<std::string>()(GetParam().keys)) + ".test_changes.toml";
    std::ofstream(name) << "[[DataObject]]\ntype = 'Parameter'\nuuid = 'gain'\nInitialValue = 1\n"
                        << "[[Change]]\n" // line 5
                        << GetParam().keys;
    std::string error;
    const auto file = readModelFile(name, error);
    std::filesystem::remove(name);
    ASSERT_EQ(file->findings.size(), 1U);
    EXPECT_EQ(format(file->findings[0], "m"), GetParam().finding);
}

INSTANTIATE_TEST_SUITE_P(
    , FaultyChanges,
    testing::Values(
        FaultyChange{"uuid = 'gain'\nInitialValue = 2\n",
                     "m:5: error: Change <gain>, key <time>: missing; every change has its time"},
        FaultyChange{"uuid = 'gain'\ntime = -1\n",
                     "m:7: error: Change <gain>, key <time>: must be a number that isn't negative"},
        FaultyChange{"uuid = 'gain'\ntime = 'late'\n",
                     "m:7: error: Change <gain>, key <time>: a text where a number belongs"},
        FaultyChange{
            "time = 1\n",
            "m:5: error: Change, key <uuid>: missing; every change names the object that it changes"},
        FaultyChange{"time = 1\nuuid = 3\n", "m:7: error: Change, key <uuid>: a number where a text belongs"},
        FaultyChange{"time = 1\nuuid = 'gian'\n",
                     "m:5: error: Change <gian>: no data object has this UUID; did you mean <gain>?"},
        FaultyChange{
            "time = 1\nuuid = 'gain'\nInitialVlaue = 2\n",
            "m:8: error: Change <gain>, key <InitialVlaue>: unknown key; did you mean <InitialValue>?"},
        FaultyChange{"time = 1\nuuid = 'gain'\nInitialValue = 'two'\n",
                     "m:8: error: Change <gain>, key <InitialValue>: a number belongs here"}));

/// A mass on a spring of stiffness 40, from 2 s on 160, from 4 s on 10 N/m, let go at 0.1 m: place at a time.
double placeOfMass(double t) {
    double x = 0.1, v = 0.0;
    for (const auto& [begin, end, k] : {std::array{0.0, 2.0, 40.0}, {2.0, 4.0, 160.0}, {4.0, 6.0, 10.0}}) {
        if (t <= begin)
            break;
        const double w = std::sqrt(k), phase = w * (std::min(t, end) - begin), x0 = x;
        x = x0 * std::cos(phase) + v / w * std::sin(phase);
        v = v * std::cos(phase) - w * x0 * std::sin(phase);
    }
    return x;
}

TEST(Changes, TakeEffectAtTheirTimes) {
    Options options;
    options.modelFile = std::string(VELMORA_EXAMPLES) + "/changing_stiffness.toml";
    options.resultDirectory = "test_changes.results";
    options.isQuiet = true;
    ASSERT_EQ(runModel(options), 0);
    const std::vector<std::string> lines = linesOf("test_changes.results/changing_stiffness.csv");
    std::filesystem::remove_all(options.resultDirectory);
    ASSERT_EQ(lines.size(), 602U);
    EXPECT_EQ(lines[0], "t,x");
    for (std::size_t i = 1; i < lines.size(); ++i) {
        double t = 0.0, x = 0.0;
        char comma = 0;
        std::istringstream(lines[i]) >> t >> comma >> x;
        EXPECT_NEAR(x, placeOfMass(t), 2e-4) << t;
    }
}

TEST(MeasureTable, QuotesLabelsThatNeedIt) {
    IO_DataModel data("table");
    IO_OutputManager output(".", "table");
    for (const char* label : {"plain", "a, b", "say \"x\""}) {
        IO_DataModelBlock* block = data.addBlock("Measure", "EP", label, label, "");
        block->addKeyValue("BodyIDs", "body, 0");
        block->addKeyValue("EulerParameterIndex", "0");
        block->addKeyValue("IsStateMeasure", "yes");
    }
    IO_DataModelBlock* body = data.addBlock("Body", "Rigid_EulerParameter_PAI", "body", "body", "");
    for (const auto& [key, value] : {std::pair("Mass", "1"),
                                     {"Inertia", "1, 1, 1"},
                                     {"LocationCenterMass", "0, 0, 0"},
                                     {"OrientationPAI", "1,0,0,0,1,0,0,0,1"},
                                     {"InitialVelocityVector", "0,0,0"},
                                     {"InitialOmegaVector", "0,0,0"}})
        body->addKeyValue(key, value);
    const std::unique_ptr<MBS_Model> model(MBS_Model::makeModel(&data, &output));
    MeasureTable table(model.get(), "test_changes.csv");
    table.write(0.1);
    EXPECT_TRUE(table.close());
    const std::vector<std::string> lines = linesOf("test_changes.csv");
    std::filesystem::remove("test_changes.csv");
    EXPECT_THAT(lines, testing::ElementsAre("t,plain,\"a, b\",\"say \"\"x\"\"\"", "0.1,0,0,0"));
    EXPECT_FALSE(MeasureTable(model.get(), "no/such/folder.csv").close());
}

} // namespace
} // namespace velmora::driver
