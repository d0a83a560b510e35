// velmora-beam: writes the modal file of a straight beam.

#include "tools/beam/BeamModel.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <map>

namespace velmora::tools {

namespace {

constexpr int wrongUsage = 2;

struct Options {
    std::string file;
    BeamModel beam{1.0, {}, {210e9, 0.3, 7850.0}, 16};
    double diameter = 0.0;
    std::vector<double> sides;
    HeldNodes held = HeldNodes::Both;
    int numOfModes = 6;
    unsigned firstLabel = 1;
};

void addOptions(CLI::App& app, Options& options) {
    app.add_option("FILE", options.file, "Modal file to write")->required();
    app.add_option("--length", options.beam.length, "m")->check(CLI::PositiveNumber)->capture_default_str();
    auto* circle = app.add_option("--circle", options.diameter, "Circular section of this diameter, m")
                       ->check(CLI::PositiveNumber)
                       ->type_name("D");
    auto* rectangle =
        app.add_option("--rectangle", options.sides, "Rectangular section: sizes along y and z, m")
            ->expected(2)
            ->check(CLI::PositiveNumber)
            ->type_name("Y Z");
    circle->excludes(rectangle);
    app.add_option("--young", options.beam.material.youngsModulus, "Young's modulus, Pa")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--poisson", options.beam.material.poissonsRatio, "Poisson's ratio")
        ->check(CLI::Range(-0.99, 0.5))
        ->capture_default_str();
    app.add_option("--density", options.beam.material.density, "kg/m^3")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app.add_option("--elements", options.beam.numOfElements, "Number of elements")
        ->check(CLI::Range(1, 300))
        ->capture_default_str();
    const std::map<std::string, HeldNodes> names{{"none", HeldNodes::None},
                                                 {"first", HeldNodes::First},
                                                 {"last", HeldNodes::Last},
                                                 {"both", HeldNodes::Both}};
    app.add_option("--interface", options.held, "Nodes that are to carry joints: none, first, last or both")
        ->transform(CLI::CheckedTransformer(names))
        ->option_text("NODES");
    app.add_option("--modes", options.numOfModes,
                   "Number of elastic modes of the free beam, or of modes with the interface held")
        ->check(CLI::Range(0, 1000))
        ->capture_default_str();
    app.add_option("--first-label", options.firstLabel,
                   "Label of the node at the end -x; labels count up along x")
        ->check(CLI::Range(1u, 99999000u))
        ->capture_default_str();
}

int writeBeam(Options& options) {
    if (options.diameter > 0.0)
        options.beam.section = Section::circle(options.diameter);
    else if (options.sides.size() == 2)
        options.beam.section = Section::rectangle(options.sides[0], options.sides[1]);
    else {
        fmt::print(stderr, "velmora-beam: a section is missing: --circle or --rectangle\n");
        return wrongUsage;
    }
    std::string error;
    const ModalBody body =
        makeModalBody(options.beam, options.held, options.numOfModes, options.firstLabel, error);
    if (error.empty())
        error = writeModalFile(body, options.file);
    if (!error.empty()) {
        fmt::print(stderr, "velmora-beam: {}\n", error);
        return 1;
    }
    fmt::print("{}: {} modes, {} nodes from {} on, {:.9g} kg\n", options.file, body.frequencies.size(),
               body.nodeLabels.size(), options.firstLabel, body.invariants.mass);
    for (Eigen::Index j = 0; j < body.frequencies.size(); ++j)
        fmt::print("{:4} {:16.9g} Hz\n", j + 1, body.frequencies(j));
    return 0;
}

int run(int argc, char** argv) {
    Options options;
    CLI::App app(
        "Writes the modal file of a straight beam, in kg, m, s, N, with its origin in the centre of mass "
        "and x along the axis.",
        "velmora-beam");
    addOptions(app, options);
    try {
        app.parse(argc, argv);
        return writeBeam(options);
    } catch (const CLI::ParseError& stop) {
        return app.exit(stop) == 0 ? 0 : wrongUsage;
    }
}

} // namespace

} // namespace velmora::tools

int main(int argc, char** argv) {
    try {
        return velmora::tools::run(argc, argv);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "velmora-beam: %s\n", exception.what());
        return 1;
    }
}
