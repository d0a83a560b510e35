#include "driver/ModelFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace velmora::driver {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

std::unique_ptr<ModelFile> read(const std::string& text) {
    std::ofstream("test_model.file.toml", std::ios::binary) << text;
    std::string error;
    auto file = readModelFile("test_model.file.toml", error);
    std::filesystem::remove("test_model.file.toml");
    EXPECT_EQ(error, "");
    return file;
}

std::vector<std::string> findingsOf(const std::string& text) {
    const auto file = read(text);
    std::vector<std::string> lines;
    for (const Finding& finding : file->findings)
        lines.push_back(format(finding, "m"));
    return lines;
}

TEST(ModelFile, TurnsTablesIntoBlocks) {
    const auto file = read("[model]\n"
                           "name = 'pair'\n"
                           "[[Force]]\n" // 3
                           "type = 'Gravity'\n"
                           "uuid = 'g'\n"
                           "[[Body]]\n" // 6
                           "uuid = 'a'\n"
                           "type = 'T'\n"
                           "label = 'Arm'\n"
                           "Long = [[1.0, 0.1], [-3],\n"
                           "        [1e30, 0x10]]\n"
                           "flags = [true, false]\n"
                           "text = 'a, b '\n"
                           "IDs = ['', 'x']\n"
                           "# the next block follows\n"
                           "\n"
                           "[[Force]]\n" // 17
                           "uuid = 'h'\n"
                           "number = 0.30000000000000004\n"
                           "\n");
    ASSERT_THAT(file->findings, IsEmpty());
    EXPECT_EQ(file->stem, "test_model.file");
    EXPECT_EQ(file->dataModel->modelName, "pair");
    EXPECT_THAT(file->dataModel->blockKinds, ElementsAre("Force", "Body", "Force"));
    const auto& blocks = file->dataModel->blocks;
    EXPECT_EQ(blocks[0]->lineNumber, 6U);
    EXPECT_EQ(blocks[1]->lineNumber, 17U);
    EXPECT_EQ(blocks[2]->lineNumber, 20U);
    EXPECT_EQ(blocks[0]->label, "g");
    EXPECT_EQ(blocks[1]->label, "Arm");
    EXPECT_EQ(blocks[1]->type, "T");
    EXPECT_EQ(blocks[1]->uuid, "a");
    EXPECT_THAT(blocks[1]->keys, ElementsAre("Long", "flags", "text", "IDs"));
    EXPECT_THAT(blocks[1]->values, ElementsAre("1, 0.1, -3, 1e+30, 16", "yes, no", "a, b ", ", x"));
    EXPECT_THAT(blocks[2]->values, ElementsAre("0.30000000000000004"));
    EXPECT_EQ(file->places[1].line, 6U);
    ASSERT_TRUE(file->places[1].find("flags"));
    EXPECT_EQ(file->places[1].find("flags")->line, 12U);
}

TEST(ModelFile, ReadsTheSections) {
    const std::string text = "[simulation]\nend_time = 2\nstep = 0.01\nfixed_step = true\ntolerance = 1e-4\n"
                             "alpha = -0.25\nmax_step = 0.02\nstart_correction_limit = 0.5\nredundant = "
                             "'error'\n[results]\nWriteStateResultFile = true\n"
                             "WriteMeasureResultFile = false\nOutputTimeStepSize = 0.1";
    std::string withCarriageReturns;
    for (const char c : text)
        withCarriageReturns += c == '\n' ? std::string("\r\n") : std::string(1, c);
    for (const std::string& variant : {text, withCarriageReturns, "\xEF\xBB\xBF" + text}) {
        const auto file = read(variant);
        EXPECT_THAT(file->findings, IsEmpty());
        EXPECT_EQ(file->simulation.endTime, 2.0);
        EXPECT_EQ(file->simulation.step, 0.01);
        EXPECT_TRUE(file->simulation.fixedStep);
        EXPECT_EQ(file->simulation.tolerance, 1e-4);
        EXPECT_EQ(file->simulation.alpha, -0.25);
        EXPECT_THAT(file->resultKeys,
                    ElementsAre(Pair("WriteStateResultFile", "yes"), Pair("WriteMeasureResultFile", "no"),
                                Pair("OutputTimeStepSize", "0.1")));
        EXPECT_EQ(file->simulation.maxStep, 0.02);
        EXPECT_EQ(file->resultsLine, 13U);
        EXPECT_EQ(file->simulation.startCorrectionLimit, 0.5);
        EXPECT_TRUE(file->simulation.refuseRedundant);
    }
}

TEST(ModelFile, RefusedValuesKeepTheDefaults) {
    const auto file = read("[simulation]\nend_time = 0\nstep = -1\ntolerance = nan\nalpha = -0.34\n");
    EXPECT_EQ(file->findings.size(), 4U);
    EXPECT_FALSE(file->simulation.endTime);
    EXPECT_EQ(file->simulation.step, 1e-3);
    EXPECT_EQ(file->simulation.tolerance, 1e-6);
    EXPECT_EQ(file->simulation.alpha, -0.05);
}

struct Fault {
    const char* text;
    const char* finding;
};

class ModelFileFault : public testing::TestWithParam<Fault> {};

TEST_P(ModelFileFault, IsNamed) {
    EXPECT_THAT(findingsOf(GetParam().text), ElementsAre(GetParam().finding));
}

INSTANTIATE_TEST_SUITE_P(
    Faults, ModelFileFault,
    testing::Values(
        Fault{"", "m: error: the file is empty: it holds neither sections nor blocks"},
        Fault{"# nothing\n\n", "m: error: the file is empty: it holds neither sections nor blocks"},
        Fault{"[model]\nname = 3", "m:2: error: section [model], key <name>: a number where a text belongs"},
        Fault{"[simulation]\nend_time = '2'",
              "m:2: error: section [simulation], key <end_time>: a text where a number belongs"},
        Fault{"[simulation]\nfixed_step = 1",
              "m:2: error: section [simulation], key <fixed_step>: a number where true or false belongs"},
        Fault{"[simulation]\nstep = inf",
              "m:2: error: section [simulation], key <step>: the number isn't finite"},
        Fault{"[simulation]\nalpha = 0.0", "m:2: error: section [simulation], key <alpha>: must lie in "
                                           "[-1/3, -0.01] unless fixed_step is true, but "
                                           "is 0"},
        Fault{"[simulation]\nfixed_step = true\nalpha = 0.1",
              "m:3: error: section [simulation], key <alpha>: must lie in [-1/3, 0], but is 0.1"},
        Fault{"[simulation]\nredundant = 'keep'", "m:2: error: section [simulation], key <redundant>: must "
                                                  "be \"drop\" or \"error\", but is \"keep\""},
        Fault{"[simulation]\n\nendtime = 2",
              "m:3: error: section [simulation], key <endtime>: unknown key; did you mean <end_time>?"},
        Fault{"[results]\nOutputTimeStepSize = -0.5",
              "m:2: error: section [results], key <OutputTimeStepSize>: must not be negative, but is -0.5"},
        Fault{"[results]\nColour = 1", "m:2: error: section [results], key <Colour>: unknown key"},
        Fault{"results = 3", "m:1: error: section [results]: a number where a table belongs; it begins with "
                             "[results]"},
        Fault{"end_time = 2", "m:1: error: key <end_time> stands outside of every section"},
        Fault{"[simulations]", "m:1: error: unknown section <simulations>; did you mean <simulation>?"},
        Fault{"[[body]]\nuuid = 'a'", "m:1: error: unknown section <body>; did you mean <Body>?"},
        Fault{"[Body]\nuuid = 'a'",
              "m:1: error: Body: a table where a block belongs; a block begins with [[Body]]"},
        Fault{"[[Body]]\nuuid = 7", "m:2: error: Body <>, key <uuid>: a number where a text belongs"},
        Fault{"[[Body]]\nuuid = 'a'\nMass = nan",
              "m:3: error: Body <a>, key <Mass>: the number isn't finite"},
        Fault{"[[Body]]\nuuid = 'a'\nMass = [1, []]", "m:3: error: Body <a>, key <Mass>: the list is empty"},
        Fault{"[[Body]]\nuuid = 'a'\nIDs = ['b, c', 'd']",
              "m:3: error: Body <a>, key <IDs>: a text in a list can't hold a comma"},
        Fault{"[[Body]]\nuuid = 'a'\nday = 2020-01-01",
              "m:3: error: Body <a>, key <day>: a date or time where a value belongs"},
        Fault{"[[Body]]\nuuid = 'a'\nMass = {x = 1}",
              "m:3: error: Body <a>, key <Mass>: a table where a value belongs"},
        Fault{"[model]\nname = 'a'\nname = 'b'\n",
              "m:3: error: column 8: Error while parsing key-value pair: cannot redefine existing string "
              "'name'"}));

TEST(ModelFile, NamesTheReasonIfItCannotRead) {
    std::string error;
    EXPECT_FALSE(readModelFile("no_such_model.toml", error));
    EXPECT_EQ(error, "no_such_model.toml: no such file");
    EXPECT_FALSE(readModelFile(".", error));
    EXPECT_EQ(error, ".: is a folder");
}

} // namespace
} // namespace velmora::driver
