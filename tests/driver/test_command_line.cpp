#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>

namespace velmora::driver {
namespace {

namespace fs = std::filesystem;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::string gravity = "[[Force]]\ntype = 'Gravity'\nuuid = 'g'\nGravityAccVector = [0, 0, -10]\n";
const std::string body = "[[Body]]\ntype = 'Rigid_EulerParameter_PAI'\nuuid = 'stone'\nMass = 2\n"
                         "Inertia = [1, 1, 1]\nLocationCenterMass = [0, 0, 0]\n"
                         "OrientationPAI = [1, 0, 0, 0, 1, 0, 0, 0, 1]\n"
                         "InitialVelocityVector = [0, 0, 3]\nInitialOmegaVector = [0, 0, 0]\n";
const std::string falling = "[simulation]\nend_time = 0.5\n[results]\nWriteStateResultFile = true\n"
                            "OutputTimeStepSize = 0.25\n" +
                            body + gravity;

std::string readText(const fs::path& name) {
    std::ifstream file(name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

std::string replaceAll(std::string text, const std::string& old, const std::string& with) {
    for (auto at = text.find(old); at != std::string::npos; at = text.find(old, at + with.size()))
        text.replace(at, old.size(), with);
    return text;
}

/// Runs the built program in a folder of its own.
class Program : public testing::Test {
  protected:
    Program() {
        const auto* info = testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string("program_") + info->name();
        std::ranges::replace(name, '/', '_');
        folder = fs::absolute(name);
        fs::remove_all(folder);
        fs::create_directory(folder);
    }
    ~Program() override { fs::remove_all(folder); }

    void write(const std::string& name, const std::string& text) const {
        std::ofstream(folder / name, std::ios::binary) << text;
    }
    /// Exit code; the two outputs are left in `out` and `messages`.
    int run(const std::string& arguments) {
        const std::string command = "cd '" + folder.string() + "' && '" VELMORA_PROGRAM "' " + arguments +
                                    " > out.txt 2> messages.txt";
        const int status = std::system(command.c_str());
        out = readText(folder / "out.txt");
        messages = readText(folder / "messages.txt");
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    fs::path folder;
    std::string out, messages;
};

TEST_F(Program, RunsAModelAndReportsIt) {
    write("falling.toml", falling);
    ASSERT_EQ(run("run falling.toml"), 0) << messages;
    EXPECT_THAT(messages, IsEmpty()); // no progress in a pipe
    EXPECT_THAT(out, HasSubstr("Time reached      0.5 s\n"));
    EXPECT_THAT(out, HasSubstr("Energy            9 J at the start, 9 J at the end"));
    EXPECT_THAT(out, HasSubstr("Angular momentum  not conserved in this model\n"));
    EXPECT_THAT(out, HasSubstr("Results           results/falling/falling.srf\n"));
    // Three records on the schedule; the last shows the position 3 t - 5 t^2.
    const std::string states = readText(folder / "results/falling/falling.srf");
    const std::string data = states.substr(states.find("Data"));
    EXPECT_EQ(std::ranges::count(data, '\n'), 2 + 3 * 2);
    for (const char* time : {"\n0.000000000000E+00\n", "\n2.500000000000E-01\n", "\n5.000000000000E-01\n"})
        EXPECT_THAT(data, HasSubstr(time));
    EXPECT_THAT(data, HasSubstr(" 2.500000000000E-01 "));
}

TEST_F(Program, TakesOptionsBeforeTheModelFile) {
    write("falling.toml", falling);
    ASSERT_EQ(run("run falling.toml -o some/place --end-time 0.125 --quiet"), 0) << messages;
    EXPECT_THAT(out + messages, IsEmpty());
    EXPECT_TRUE(fs::exists(folder / "some/place/falling.srf"));
    EXPECT_FALSE(fs::exists(folder / "results"));
    EXPECT_THAT(readText(folder / "some/place/falling.srf"), HasSubstr("\n1.250000000000E-01\n"));
}

TEST_F(Program, ContinuesARunByteForByte) {
    const std::string measure =
        "[[Measure]]\ntype = 'Translational'\nuuid = 'height'\nBodyIDs = ['stone', '0']\n"
        "MeasureMode = 'disp'\nMeasureCoordinate = 'Z'\n"
        "MeasureLocation_Body1 = [0, 0, 0]\nMeasureLocation_Body2 = [0, 0, 0]\n";
    // Records at 0.15, 0.3, 0.45 and, since it is the end, 0.5.
    write("falling.toml", replaceAll(replaceAll(falling, "= 0.25", "= 0.15"), "[results]",
                                     "fixed_step = true\nstep = 0.03\n[results]\ncsv = true\n"
                                     "WriteMeasureResultFile = true") +
                              measure);
    const auto readResults = [this](const fs::path& in) {
        std::string all;
        for (const char* kind : {"srf", "mrf", "csv"})
            all += readText(folder / in / (std::string("falling.") + kind));
        // Headers hold the time of day.
        return std::regex_replace(all, std::regex("\\d\\d:\\d\\d:\\d\\d"), "");
    };
    ASSERT_EQ(run("run falling.toml --quiet -o whole"), 0) << messages;
    ASSERT_EQ(run("run falling.toml -o parts --end-time 0.3 --restart-every 0.1"), 0) << messages;
    EXPECT_THAT(out, HasSubstr(" parts/falling.restart\n"));
    for (const char* kind : {"srf", "mrf", "csv"}) // as a killed run leaves them
        std::ofstream(folder / "parts" / (std::string("falling.") + kind), std::ios::app)
            << "0.35, rest of a l";
    ASSERT_EQ(run("run falling.toml -o parts --continue parts/falling.restart"), 0) << messages;
    EXPECT_THAT(out, HasSubstr("Continued from    0.3 s\n"));
    EXPECT_EQ(readResults("parts"), readResults("whole"));

    // Nothing is touched when the restart file doesn't fit.
    const std::string before = readResults("parts");
    const std::string again = "run falling.toml -o parts --continue parts/falling.restart";
    const auto refuse = [&](const std::string& arguments, const std::string& text) {
        EXPECT_EQ(run(arguments), 2);
        EXPECT_EQ(messages, "velmora: " + text + "\n");
    };
    refuse(again + " --end-time 0.2",
           "parts/falling.restart is of the time 0.3 s, and the end time is 0.2 s");
    refuse("run falling.toml -o parts --continue falling.toml", "falling.toml: isn't a restart file");
    refuse(
        "run falling.toml --continue parts/falling.restart",
        "<results/falling/falling.srf> isn't the file that the run up to 0.3 s has written: No such file or "
        "directory");
    const std::string model = readText(folder / "falling.toml");
    const std::pair<std::string, std::string> changes[] = {
        {replaceAll(model, "step = 0.03", "step = 0.02"), "<step> was 0.03 and is 0.02 now"},
        {replaceAll(model, "Mass = 2", "Mass = 3"), "<Body stone> has changed"},
        {replaceAll(model, "csv = true", ""), "<csv> was true and is false now"},
        {replaceAll(model, "'height'", "'depth'"), "<Measure depth> stands where <Measure height> was"},
        {replaceAll(model, measure, ""), "<Measure height> is missing now"}};
    for (const auto& [text, difference] : changes) {
        write("falling.toml", text);
        refuse(again, "parts/falling.restart is of another run: " + difference);
    }
    write("falling.toml", "# a remark\n" + model);
    EXPECT_EQ(readResults("parts"), before);
    EXPECT_EQ(run(again), 0) << messages;
    fs::resize_file(folder / "parts/falling.srf", 10);
    refuse(again, "<parts/falling.srf> isn't the file that the run up to 0.3 s has written: it is too short");
}

TEST_F(Program, ChecksWithoutRunning) {
    write("falling.toml", body + gravity);
    ASSERT_EQ(run("check falling.toml"), 0) << messages;
    EXPECT_THAT(out, ContainsRegex("Body +Rigid_EulerParameter_PAI +1\n"));
    EXPECT_THAT(out, ContainsRegex("Coordinates of bodies +7\n"));
    EXPECT_THAT(out, ContainsRegex("residual of inner constraints +0.000e\\+00\n"));
    EXPECT_FALSE(fs::exists(folder / "results"));
    ASSERT_EQ(run("run falling.toml"), 1); // the end time is missing
    EXPECT_EQ(messages,
              "falling.toml: error: section [simulation], key <end_time>: missing; give it there or "
              "by --end-time\nfalling.toml: the model has errors\n");
}

TEST_F(Program, FindsARestThatARunKeeps) {
    const std::string hinge =
        "[[Constraint]]\ntype = 'Generic'\nuuid = 'hinge, left'\nBodyIDs = ['stone', '0']\n"
        "Location = [1, 0, 0]\ndxFixed = true\ndyFixed = true\ndzFixed = true\n"
        "axFixed = true\nazFixed = true\n";
    write("model.toml", falling + hinge);
    ASSERT_EQ(run("static model.toml"), 0) << messages;
    EXPECT_THAT(out,
                HasSubstr("Moved             at most 1.41 m (body <stone>) and 1.57 rad (body <stone>)\n"));
    EXPECT_THAT(out, HasSubstr("Stability         no small movement away grows\n"));
    EXPECT_THAT(out, HasSubstr("Results           results/model/model_static.toml\n"));
    const std::string reactions = readText(folder / "results/model/model_reactions.csv");
    EXPECT_THAT(reactions, StartsWith("joint,on body,x [m],y [m],z [m],Fx [N],Fy [N],Fz [N],Mx [Nm],"));
    EXPECT_THAT(reactions,
                ContainsRegex("\n\"hinge, left\",stone,(1|1[.]0000000000|0[.]9999999999)[0-9]*,0,"));
    EXPECT_THAT(readText(folder / "results/model/model_positions.csv"),
                ContainsRegex(",0,-(1|1[.]0000000000|0[.]9999999999)[0-9]*,0[.]70710678"));
    ASSERT_EQ(run("run results/model/model_static.toml -o again"), 0) << messages;
    EXPECT_THAT(out, HasSubstr("Start positions   fulfil the constraints as they are\n"));
    EXPECT_THAT(out, ContainsRegex("accelerations of at most [0-9.]+e-[0-9]+ m"));

    write("model.toml", falling);
    EXPECT_EQ(run("static model.toml"), 3);
    EXPECT_THAT(messages,
                StartsWith("velmora: No equilibrium was found: body <stone> moves away without end."));
    EXPECT_THAT(out, IsEmpty());
    EXPECT_EQ(run("static none.toml"), 2);
    EXPECT_EQ(run("static model.toml --time -1"), 2);
}

TEST_F(Program, NamesRedundantEquations) {
    const auto hinge = [](const std::string& name, const std::string& height) {
        return "[[Constraint]]\ntype = 'Generic'\nuuid = '" + name +
               "'\nBodyIDs = ['stone', '0']\nLocation = [1, 0, " + height +
               "]\ndxFixed = true\ndyFixed = true\naxFixed = true\nayFixed = true\n";
    };
    const std::string model = falling + hinge("one", "0") + hinge("two", "1") + "dzFixed = true\n";
    write("model.toml", model);
    EXPECT_EQ(run("check model.toml"), 0) << messages;
    EXPECT_THAT(out, ContainsRegex("Redundant equations +4\nDegrees of freedom +1\n"));
    EXPECT_THAT(out, HasSubstr("    dyFixed of two (stone, ground) repeats one\n"));
    EXPECT_THAT(out, Not(HasSubstr("dzFixed")));
    EXPECT_EQ(run("run model.toml --lenient"), 1); // the initial velocity is along z
    EXPECT_THAT(messages,
                StartsWith("model.toml: error: The initial velocities don't fulfil the constraints"));
    write("model.toml", "[simulation]\nend_time = 0.5\nstart_correction_limit = 2\n" +
                            model.substr(model.find("[results]")));
    EXPECT_EQ(run("run model.toml"), 0) << messages;
    EXPECT_THAT(messages, StartsWith("model.toml: warning: 4 redundant constraint equations are left out and "
                                     "carry no force: dxFixed of two (stone, ground) repeats one; "));
    EXPECT_THAT(out, ContainsRegex("Freedom +1 degrees of freedom, 4 redundant equations\n"));
    EXPECT_THAT(out, ContainsRegex(
                         "Start velocities +changed by at most 3.000e\\+00 m/s .body <stone>. and 0 rad/s"));
    write("model.toml",
          "[simulation]\nend_time = 0.5\nredundant = 'error'\n" + model.substr(model.find("[results]")));
    EXPECT_EQ(run("run model.toml"), 1);
    EXPECT_THAT(messages,
                StartsWith("model.toml: error: 4 constraint equations are redundant: dxFixed of two"));
}

TEST_F(Program, TellsAllMistakesOfAModel) {
    const std::string model = "[model]\nnam = 'ten mistakes'\n" // line 2
                              "[[Body]]\ntype = 'Rigid_EulerParameter_PAI'\nuuid = 'a'\n"
                              "Masss = 1\n"                               // 6: unknown, and Mass is missing
                              "Inertia = [1, 1, 3]\n"                     // 7: no body has these moments
                              "LocationCenterMass = [0, 0]\n"             // 8: too few
                              "OrientationPAI = [1,0,0, 0,1,0, 0,0,-1]\n" // 9: left-handed
                              "InitialVelocityVector = [0, 0, 0]\n"
                              "InitialOmegaVector = 'fast'\n"                            // 11: a text
                              "[[Body]]\ntype = 'Rigid_EulerParameterPAI'\nuuid = 'b'\n" // 13: unknown
                              "[[Force]]\ntype = 'Gravity'\nuuid = 'a'\n"                // 17: UUID again
                              "[[Force]]\ntype = 'TireForce'\nuuid = 'c'\n"              // 19: makes nothing
                              "[[DataObject]]\ntype = 'Splin'\nuuid = 'd'\n";            // 22: unknown
    write("ten.toml", model);
    EXPECT_EQ(run("check ten.toml"), 1);
    for (const char* line : {":2: error: ", ":6: error: ", ":7: error: ", ":9: error: ", ":11: error: ",
                             ":13: error: ", ":17: error: ", ":19: error: ", ":22: error: "})
        EXPECT_THAT(messages, HasSubstr(std::string("ten.toml") + line));
    EXPECT_THAT(messages, HasSubstr("did you mean <Mass>?"));
    // Two blocks lack a key or have too few values: known by line 12, and the gravity by line 18.
    EXPECT_THAT(messages, HasSubstr("In Block <Body> prior to line number 12:\n"));
    EXPECT_THAT(messages, HasSubstr("LocationCenterMass"));
    EXPECT_THAT(messages, HasSubstr("GravityAccVector"));
    EXPECT_THAT(messages, HasSubstr("ten.toml: the model has errors\n"));
    EXPECT_THAT(out, IsEmpty());
}

TEST_F(Program, LenientlyTakesFindingsAsWarnings) {
    write("model.toml", falling + "Colour = 'red'\n");
    EXPECT_EQ(run("run model.toml"), 1);
    EXPECT_THAT(messages, HasSubstr(": error: Force <g>, key <Colour>: unknown key"));
    EXPECT_EQ(run("run model.toml --lenient"), 0);
    EXPECT_THAT(messages, HasSubstr(": warning: Force <g>, key <Colour>: unknown key"));
}

TEST_F(Program, LineEndsDoNotMatter) {
    write("model.toml", replaceAll(falling, "\n", "\r\n"));
    EXPECT_EQ(run("run model.toml --quiet"), 0) << messages;
}

TEST_F(Program, FailingRunsLeaveTheirResultsReadable) {
    // A step of several turns of the body is too long for Newton's iteration.
    std::string model = "[simulation]\nend_time = 5\nfixed_step = true\nstep = 0.5\n" +
                        falling.substr(falling.find("[results]"));
    model = replaceAll(model, "[1, 1, 1]", "[1, 2, 2.5]");
    model = replaceAll(model, "InitialOmegaVector = [0, 0, 0]", "InitialOmegaVector = [30, 70, 50]");
    write("model.toml", model);
    EXPECT_EQ(run("run model.toml"), 3);
    EXPECT_THAT(messages, StartsWith("velmora: Time "));
    EXPECT_THAT(out, HasSubstr(" (the run failed)\n"));
    const std::string states = readText(folder / "results/model/model.srf");
    EXPECT_THAT(states, HasSubstr("\n0.000000000000E+00\n"));
    EXPECT_TRUE(states.ends_with("\n"));
}

struct Usage {
    const char* arguments;
    int exitCode;
    const char* message; ///< part of standard error; of standard output for exit code 0
};

void PrintTo(const Usage& usage, std::ostream* stream) {
    *stream << "velmora " << usage.arguments;
}

class ProgramUsage : public Program, public testing::WithParamInterface<Usage> {};

TEST_P(ProgramUsage, GivesExitCodeAndMessage) {
    write("good.toml", falling);
    write("empty.toml", "");
    write("syntax.toml", "[model]\nname = \n");
    write("twice.toml", "[simulation]\nstep = 1\nstep = 2\n");
    write("file", "");
    fs::create_directory(folder / "folder.toml");
    EXPECT_EQ(run(GetParam().arguments), GetParam().exitCode) << out << messages;
    EXPECT_THAT(GetParam().exitCode == 0 ? out : messages, HasSubstr(GetParam().message));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ProgramUsage,
    testing::Values(
        Usage{"--version", 0, "velmora 0.1.0 ("}, Usage{"--help", 0, "check"},
        Usage{"run --help", 0, "--end-time"},
        Usage{"", 2, "a command is missing: run, check, static, pose, eigen or mtx"},
        Usage{"rnu good.toml", 2, "unknown command <rnu>; did you mean <run>?"},
        Usage{"run", 2, "MODEL is required"}, Usage{"run good.toml --end-tim 3", 2, "--end-tim"},
        Usage{"run good.toml --end-time=-1", 2, "must be a positive number of seconds"},
        Usage{"run good.toml --end-time nan", 2, "must be a positive number of seconds"},
        Usage{"run good.toml -o file/results", 2, "the results folder <file/results> can't be"},
        Usage{"check missing.toml", 2, "missing.toml"}, Usage{"check folder.toml", 2, "folder.toml"},
        Usage{"check empty.toml", 1, "empty.toml"}, Usage{"check syntax.toml", 1, "syntax.toml:2: error: "},
        Usage{"check twice.toml", 1, "twice.toml:3: error: "},
        Usage{"pose good.toml", 1, "the model has no actor: there is nothing to move"},
        Usage{"pose missing.toml", 2, "missing.toml"}, Usage{"mtx", 2, "subcommand is required"},
        Usage{"mtx info", 2, "FILE is required"}, Usage{"mtx info missing.mtx", 2, "missing.mtx"},
        Usage{"mtx check empty.toml", 1, "head of file not valid"},
        Usage{"mtx check " VELMORA_EXAMPLES "/rotating_beam.mtx", 0, "0 errors, 0 warnings"},
        Usage{"eigen " VELMORA_EXAMPLES "/quarter_car.toml --at static", 0, "   2      11.08"},
        Usage{"eigen " VELMORA_EXAMPLES "/falling_bodies.toml --at static", 3, "No equilibrium was found"},
        Usage{"eigen good.toml --at soon", 2, "--at: must be start, static or a number of seconds"},
        Usage{"eigen good.toml --modes 0", 2, "--modes: must be a positive number of modes, and is 0"},
        Usage{"mtx info " VELMORA_EXAMPLES "/rotating_beam.mtx", 0, "13.0900287 Hz"}));

TEST_F(Program, DragsPointsToTheTargetsOfActors) {
    std::string model = readText(VELMORA_EXAMPLES "/posed_four_bar.toml");
    write("model.toml", model);
    ASSERT_EQ(run("pose model.toml -o results"), 0) << messages;
    EXPECT_THAT(out, ContainsRegex("Actor <grip> +[0-9.]+e-[0-9]+ m from its target"));
    EXPECT_THAT(readText(folder / "results/model_path.csv"),
                StartsWith("step,grip.x,grip.y,grip.z\n0,0.25,0.35,0\n"));
    ASSERT_EQ(run("run results/model_pose.toml --end-time 0.01 -o again"), 0) << messages;
    EXPECT_THAT(out, ContainsRegex("Start positions +(fulfil|changed by at most [0-9.]+e-1)"));
    const std::size_t target = model.find("TargetPointIRF = [");
    model.replace(target, model.find(']', target) - target, "TargetPointIRF = [0.25, 0.36, 0");
    write("model.toml", model);
    EXPECT_EQ(run("pose model.toml -o results"), 3);
    EXPECT_THAT(messages,
                ContainsRegex("target of <grip> can't be reached: its point stays 0.00[0-9]+ m away"));
}

TEST_F(Program, ExamplesRun) {
    // The work of drives is summed by the trapezoidal rule, over torques that change quickly, and more so in
    // an impact.
    for (const auto& [place, largestDrift] :
         {std::pair(VELMORA_EXAMPLES, 1e-3), {VELMORA_EXAMPLES "/contact", 5e-3}}) {
        unsigned numOfModels = 0;
        for (const auto& entry : fs::directory_iterator(place)) {
            if (entry.path().extension() != ".toml")
                continue;
            ++numOfModels;
            EXPECT_EQ(run("run '" + entry.path().string() + "'"), 0) << messages;
            const std::string before = "at the end, largest drift ";
            ASSERT_THAT(out, HasSubstr(before));
            EXPECT_LT(std::stod(out.substr(out.find(before) + before.size())), largestDrift) << entry.path();
        }
        EXPECT_GE(numOfModels, 2u);
    }
}

} // namespace
} // namespace velmora::driver
