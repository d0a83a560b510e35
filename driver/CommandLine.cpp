#include "driver/CommandLine.h"

#include "driver/CheckCommand.h"
#include "driver/EigenCommand.h"
#include "driver/ModalFileCommand.h"
#include "driver/NearName.h"
#include "driver/Options.h"
#include "driver/PoseCommand.h"
#include "driver/RunCommand.h"
#include "driver/StaticCommand.h"

#include <velmora/velmora.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <cmath>

namespace velmora::driver {

namespace {

CLI::App* addCommand(CLI::App& app, Options& options, const char* name, const char* description) {
    CLI::App* command = app.add_subcommand(name, description);
    command->add_option("MODEL", options.modelFile, "Model file in TOML")->required();
    command->add_flag("--lenient", options.isLenient, "Take the findings of the strict checks as warnings");
    return command;
}

void addOutputOption(CLI::App& command, Options& options) {
    command
        .add_option("-o,--output", options.resultDirectory,
                    "Folder of the results; results/<name of the model file> if not given")
        ->type_name("DIR");
}

std::string findErrorInDuration(const std::string& text) {
    double value = 0.0;
    if (CLI::detail::lexical_cast(text, value) && std::isfinite(value) && value > 0.0)
        return {};
    return fmt::format("must be a positive number of seconds, and is {}", text);
}

std::string findErrorInTime(const std::string& text) {
    double value = 0.0;
    if (CLI::detail::lexical_cast(text, value) && std::isfinite(value) && value >= 0.0)
        return {};
    return fmt::format("must be a number of seconds that isn't negative, and is {}", text);
}

CLI::App* addRunCommand(CLI::App& app, Options& options) {
    CLI::App* command = addCommand(app, options, "run", "Simulate a model");
    addOutputOption(*command, options);
    command->add_option("--end-time", options.endTime, "End time in seconds, instead of the model file's")
        ->type_name("T")
        ->check(findErrorInDuration);
    command
        ->add_option(
            "--restart-every", options.restartInterval,
            "Write a restart file beside the results after each T seconds of the run, and at its end")
        ->type_name("T")
        ->check(findErrorInDuration);
    command
        ->add_option("--continue", options.restartFile,
                     "Go on from a restart file; results are appended to those that are there")
        ->type_name("FILE");
    command->add_flag("--quiet", options.isQuiet, "Show neither progress nor summary");
    return command;
}

CLI::App* addStaticCommand(CLI::App& app, Options& options) {
    CLI::App* command = addCommand(app, options, "static", "Find a position in which a model stays at rest");
    addOutputOption(*command, options);
    command
        ->add_option("--time", options.time,
                     "Time of the run, in seconds, whose forces and motions act; 0 if not given")
        ->type_name("T")
        ->check(findErrorInTime);
    command->add_flag("--quiet", options.isQuiet, "Show no results");
    return command;
}

std::string findErrorInPlace(const std::string& text) {
    if (text == "start" || text == "static" || findErrorInTime(text).empty())
        return {};
    return fmt::format("must be start, static or a number of seconds that isn't negative, and is {}", text);
}

std::string findErrorInNumberOfModes(const std::string& text) {
    unsigned value = 0;
    if (CLI::detail::lexical_cast(text, value) && value > 0)
        return {};
    return fmt::format("must be a positive number of modes, and is {}", text);
}

std::string findErrorInFrequency(const std::string& text) {
    double value = 0.0;
    if (CLI::detail::lexical_cast(text, value) && std::isfinite(value) && value >= 0.0)
        return {};
    return fmt::format("must be a frequency in Hz that isn't negative, and is {}", text);
}

CLI::App* addPoseCommand(CLI::App& app, Options& options) {
    CLI::App* command = addCommand(app, options, "pose", "Drag points of bodies to the targets of actors");
    addOutputOption(*command, options);
    command->add_flag("--quiet", options.isQuiet, "Show no results");
    return command;
}

CLI::App* addEigenCommand(CLI::App& app, Options& options) {
    CLI::App* command =
        addCommand(app, options, "eigen", "Find frequencies and damping of small motions about a state");
    EigenOptions& eigen = options.eigen;
    command
        ->add_option("--at", eigen.place,
                     "About which state: start (if not given), static, or a time of the run in seconds")
        ->type_name("PLACE")
        ->check(findErrorInPlace);
    command->add_option("--modes", eigen.numOfModes, "Number of modes; 20 if not given")
        ->type_name("N")
        ->check(findErrorInNumberOfModes);
    command->add_option("--target", eigen.target, "Frequency near which modes are wanted; 0 if not given")
        ->type_name("HZ")
        ->check(findErrorInFrequency);
    command
        ->add_option("--frame", eigen.frame,
                     "Axes of small motions: global (if not given), or body for what turns as one")
        ->type_name("AXES")
        ->check(CLI::IsMember({"global", "body"}));
    return command;
}

/// `words` are those that are neither options nor commands of the program.
std::string findErrorInCommand(const std::vector<std::string>& words, bool isCommandGiven) {
    if (words.empty())
        return isCommandGiven ? "" : "a command is missing: run, check, static, pose, eigen or mtx";
    if (words.front().starts_with('-'))
        return fmt::format("unknown option <{}>", words.front());
    return fmt::format("unknown command <{}>{}", words.front(),
                       suggestNearName(words.front(), {"run", "check", "static", "pose", "eigen", "mtx"}));
}

} // namespace

int runProgram(int argc, const char* const* argv) {
    Options options;
    CLI::App app("Simulates multibody models.", "velmora");
    app.require_subcommand(0, 1);
    app.set_version_flag("--version",
                         fmt::format("velmora {} ({}, {})", getVersionText(), getBuildDate(), getBuildId()));
    const CLI::App* run = addRunCommand(app, options);
    CLI::App* check = addCommand(app, options, "check", "Look for errors and show what a model holds");
    check->add_flag("--derivatives", options.checksDerivatives,
                    "Compare all derivatives of the model with differences");
    const CLI::App* equilibrium = addStaticCommand(app, options);
    const CLI::App* pose = addPoseCommand(app, options);
    const CLI::App* eigen = addEigenCommand(app, options);
    std::string modalFile;
    CLI::App* mtx = app.add_subcommand("mtx", "Look into the modal file of a flexible body");
    mtx->require_subcommand(1);
    CLI::App* info = mtx->add_subcommand("info", "Show modes, nodes, mass and invariants");
    CLI::App* faults = mtx->add_subcommand("check", "Look for what is wrong with it, in form and in physics");
    for (CLI::App* command : {info, faults})
        command->add_option("FILE", modalFile, "Modal file")->required();
    app.allow_extras(); // for own messages; commands, which would take this over, were made before
    try {
        app.parse(argc, argv);
        const std::string problem = findErrorInCommand(app.remaining(), !app.get_subcommands().empty());
        if (!problem.empty())
            throw CLI::ParseError(problem, WrongUsage);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? Done : WrongUsage;
    }
    if (mtx->parsed())
        return info->parsed() ? showModalFile(modalFile) : checkModalFile(modalFile);
    if (equilibrium->parsed())
        return findEquilibrium(options);
    if (pose->parsed())
        return findPose(options);
    if (eigen->parsed())
        return findEigenvalues(options);
    return run->parsed() ? runModel(options) : checkModel(options);
}

} // namespace velmora::driver
