#include "driver/CommandLine.h"

#include "driver/CheckCommand.h"
#include "driver/RunCommand.h"

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

std::string findErrorInEndTime(const std::string& text) {
    double value = 0.0;
    if (CLI::detail::lexical_cast(text, value) && std::isfinite(value) && value > 0.0)
        return {};
    return fmt::format("must be a positive number of seconds, and is {}", text);
}

} // namespace

int runProgram(int argc, const char* const* argv) {
    Options options;
    CLI::App app("Simulates multibody models.", "velmora");
    app.require_subcommand(1);
    app.set_version_flag("--version",
                         fmt::format("velmora {} ({}, {})", getVersionText(), getBuildDate(), getBuildId()));
    CLI::App* run = addCommand(app, options, "run", "Simulate a model");
    run->add_option("-o,--output", options.resultDirectory,
                    "Folder of the results; results/<name of the model file> if not given")
        ->type_name("DIR");
    run->add_option("--end-time", options.endTime, "End time in seconds, instead of the model file's")
        ->type_name("T")
        ->check(findErrorInEndTime);
    run->add_flag("--quiet", options.isQuiet, "Show neither progress nor summary");
    addCommand(app, options, "check", "Look for errors and show what a model holds");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? Done : WrongUsage;
    }
    return run->parsed() ? runModel(options) : checkModel(options);
}

} // namespace velmora::driver
