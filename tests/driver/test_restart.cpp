#include "driver/CommandSupport.h"
#include "driver/LoadedModel.h"
#include "driver/RestartFile.h"
#include "driver/Simulation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>

namespace velmora::driver {
namespace {

using testing::HasSubstr;

/// Histories at the restart points of a run, as bytes: NaN is equal to itself, and 0 isn't to -0.
using Points = std::vector<std::string>;

std::string toBytes(const std::vector<double>& numbers) {
    std::string bytes(numbers.size() * sizeof(double), '\0');
    std::memcpy(bytes.data(), numbers.data(), bytes.size());
    return bytes;
}

struct Case {
    const char* example;
    double end; ///< s
    bool isFixed = false;

    friend void PrintTo(const Case& c, std::ostream* out) { *out << c.example; }
};

std::string nameOf(const testing::TestParamInfo<Case>& info) {
    std::string name = std::filesystem::path(info.param.example).stem().string();
    std::erase(name, '_');
    return name + (info.param.isFixed ? "Fixed" : "");
}

class Restarts : public testing::TestWithParam<Case> {
  protected:
    /// Runs the example with five restart points, from a history unless it is empty.
    Points run(const std::vector<double>& start) {
        Options options;
        options.modelFile = std::string(VELMORA_EXAMPLES) + "/" + GetParam().example;
        const LoadedModel loaded = loadModel(options, true);
        SimulationSettings settings = makeSettings(options, *loaded.file);
        settings.endTime = GetParam().end;
        settings.restartInterval = settings.endTime / 5;
        if (GetParam().isFixed) {
            settings.fixedStep = true;
            settings.step = settings.endTime / 30.5; // the last one is shortened
        }
        Points points;
        Simulation simulation(loaded.model.get(), loaded.file->dataModel.get(), nullptr, settings,
                              {.save = [&](double) {
                                  std::vector<double> numbers;
                                  MBS_History saved(&numbers);
                                  simulation.exchangeHistory(saved);
                                  points.push_back(toBytes(numbers));
                              }});
        MBS_History history{std::span<const double>(start)};
        const RunOutcome outcome = start.empty() ? simulation.run() : simulation.resume(history);
        EXPECT_TRUE(outcome.succeeded) << outcome.diagnostic;
        EXPECT_EQ(outcome.timeReached, settings.endTime);
        return points;
    }
};

TEST_P(Restarts, GoOnToTheLastBit) {
    const Points all = run({});
    ASSERT_GE(all.size(), 4U);
    for (const std::size_t from : {std::size_t{0}, all.size() - 3}) {
        std::vector<double> history(all[from].size() / sizeof(double));
        std::memcpy(history.data(), all[from].data(), all[from].size());
        const Points rest = run(history);
        ASSERT_EQ(rest.size(), all.size() - from - 1);
        for (std::size_t i = 0; i < rest.size(); ++i)
            EXPECT_TRUE(rest[i] == all[from + 1 + i]) << "point " << i << " after " << from;
    }
}

// Turned angles in a controller, changes, redundant equations, gears, modes, driven joints, impacts.
INSTANTIATE_TEST_SUITE_P(Examples, Restarts,
                         testing::Values(Case{"controlled_arm.toml", 1.0},
                                         Case{"controlled_arm.toml", 0.5, true},
                                         Case{"changing_stiffness.toml", 4.0}, Case{"bricard.toml", 0.5},
                                         Case{"bevel_gears.toml", 0.7}, Case{"flexible_pendulum.toml", 0.3},
                                         Case{"driven_slider_crank.toml", 0.5},
                                         Case{"contact/bouncing_ball.toml", 0.9}),
                         nameOf);

class RestartFiles : public testing::Test {
  protected:
    RestartFiles() {
        file.time = 0.1 + 0.2;
        file.identity = {{"tolerance", "1e-06"}, {"Body \"odd\" \n'''", "#12"}};
        file.results = {{"x.srf", 123456789012}, {"x.csv", 0}};
        file.history = {1.0, -0.0, 1e-310, std::nan(""), 0.1, -1.7e308, 3.0};
        EXPECT_TRUE(file.write(name));
        std::ifstream stream(name, std::ios::binary);
        text.assign(std::istreambuf_iterator<char>(stream), {});
    }
    ~RestartFiles() override { std::filesystem::remove(name); }
    std::string errorOf(const std::string& changed) const {
        std::ofstream(name, std::ios::binary) << changed;
        std::string error;
        EXPECT_FALSE(readRestartFile(name, error));
        EXPECT_TRUE(error.starts_with(name)) << error;
        return error.substr(std::min(name.size(), error.size()));
    }

    RestartFile file;
    const std::string name = testing::TempDir() + "velmora_test.restart";
    std::string text;
};

TEST_F(RestartFiles, ReadBackWhatTheyWere) {
    std::string error;
    const std::optional<RestartFile> read = readRestartFile(name, error);
    ASSERT_TRUE(read) << error;
    EXPECT_EQ(read->time, file.time);
    EXPECT_EQ(read->identity, file.identity);
    ASSERT_EQ(read->results.size(), 2U);
    EXPECT_EQ(read->results[0].name, "x.srf");
    EXPECT_EQ(read->results[0].size, 123456789012U);
    EXPECT_EQ(toBytes(read->history), toBytes(file.history));
    EXPECT_FALSE(std::filesystem::exists(name + ".new"));
    EXPECT_FALSE(file.write(testing::TempDir() + "no/such/folder/x.restart"));
}

TEST_F(RestartFiles, BrokenOnesAreRefused) {
    const auto swapped = [this](const std::string& old, const std::string& with) {
        std::string changed = text;
        changed.replace(changed.find(old), old.size(), with);
        return changed;
    };
    std::size_t numOfSilent = 0;
    for (std::size_t length = 0; length < text.size() - 1; ++length) // truncated anywhere
        numOfSilent += errorOf(text.substr(0, length)).empty();
    EXPECT_EQ(numOfSilent, 0U);
    EXPECT_EQ(errorOf(""), ": isn't a restart file");
    EXPECT_EQ(errorOf("[simulation]\nend_time = 1\n"), ": isn't a restart file");
    EXPECT_EQ(errorOf(swapped("format = 1", "format = 2")),
              std::string(": was written in format 2 by version ") + getVersionText() +
                  " of the program, and this is format 1 of version " + getVersionText());
    for (const auto& [old, with] : {std::pair("3ff0000000000000", "3ff0000000000001"),
                                    {"3ff0000000000000", "3ff000000000000"},
                                    {"123456789012", "123456789013"},
                                    {"123456789012", "-1"},
                                    {"123456789012", "'x'"},
                                    {"x.csv", "y.csv"},
                                    {"\"1e-06\"", "1e-06"},
                                    {"results", "remains"},
                                    {"0.30000000000000004", "0.3"},
                                    {"0.30000000000000004", "nan"},
                                    {"history = ", "history = 3\nrest = "}})
        EXPECT_EQ(errorOf(swapped(old, with)), ": the restart file is damaged") << with;
    EXPECT_THAT(errorOf(swapped("run = ", "run ")), HasSubstr("isn't a restart file, or is damaged: "));
    std::string error;
    EXPECT_FALSE(readRestartFile(testing::TempDir() + "velmora_nowhere", error));
    EXPECT_THAT(error, HasSubstr("no such file"));
}

} // namespace
} // namespace velmora::driver
