// velmora-ccx: makes a modal file of a part that CalculiX has assembled.

#include "tools/ccx/CcxFiles.h"
#include "tools/modal/ModalFile.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <exception>

namespace velmora::tools {

namespace {
using Eigen::Index;

constexpr int wrongUsage = 2;

struct Options {
    std::string job, mesh, file;
    std::vector<std::string> interfaces; // SET=LABEL
    int numOfModes = 10;
};

/// A joint: label in the modal file, and the surface that carries it.
struct Joint {
    unsigned label;
    Interface surface;
};

/// The text of what is wrong with an interface, or nothing.
std::string addInterface(const CcxPart& part, const std::string& text, std::vector<Joint>& joints) {
    const std::size_t mark = text.find('=');
    unsigned label = 0;
    if (mark == std::string::npos || !CLI::detail::lexical_cast(text.substr(mark + 1), label) ||
        label > 99999999)
        return fmt::format("--interface takes SET=LABEL, and not <{}>", text);
    if (std::ranges::any_of(joints, [&](const Joint& joint) { return joint.label == label; }))
        return fmt::format("two interfaces have the label {}", label);
    std::string name = text.substr(0, mark);
    std::ranges::transform(name, name.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    const auto set = part.sets.find(name);
    if (set == part.sets.end() || set->second.empty())
        return fmt::format("the mesh has no node set <{}>", name);
    joints.push_back({label, Interface(part.model, set->second)});
    return joints.back().surface.isSurface() ? "" : fmt::format("the nodes of <{}> lie in one line", name);
}

/// The part with its modes, about its centre of mass.
ModalBody makeBody(const SolidModel& model, const std::vector<Joint>& joints, const Modes& modes) {
    MassField field{model.positions, model.masses};
    const Eigen::Vector3d center = centerOfMass(field);
    moveToCenterOfMass(field);
    ModalBody body;
    body.frequencies = modes.frequencies;
    body.invariants = computeInvariants(field, modes.shapes);
    const auto count = static_cast<Index>(joints.size());
    body.nodePositions.resize(3, count);
    body.nodeShapes.resize(6 * count, modes.shapes.cols());
    for (Index i = 0; i < count; ++i) {
        const Joint& joint = joints[static_cast<std::size_t>(i)];
        body.nodeLabels.push_back(joint.label);
        body.nodePositions.col(i) = joint.surface.center - center;
        body.nodeShapes.middleRows(6 * i, 6) = joint.surface.motion * modes.shapes;
    }
    return body;
}

int fail(const std::string& error, int code) {
    fmt::print(stderr, "velmora-ccx: {}\n", error);
    return code;
}

int writePart(const Options& options) {
    const CcxPart part = readCcxPart(options.job, options.mesh);
    if (!part.error.empty())
        return fail(part.error, 1);
    std::vector<Joint> joints;
    for (const std::string& text : options.interfaces)
        if (const std::string error = addInterface(part, text, joints); !error.empty())
            return fail(error, wrongUsage);
    std::vector<Interface> surfaces;
    surfaces.reserve(joints.size());
    for (const Joint& joint : joints)
        surfaces.push_back(joint.surface);
    const auto elastic = static_cast<int>(part.model.stiffness.rows()) - 6;
    const Modes modes = computeSparseModes(part.model, surfaces, std::min(options.numOfModes, elastic));
    if (!modes.error.empty())
        return fail(modes.error, 1);
    const ModalBody body = makeBody(part.model, joints, modes);
    if (const std::string error = writeModalFile(body, options.file); !error.empty())
        return fail(error, 1);
    fmt::print("{}: {} modes, {:.9g} kg\n", options.file, body.frequencies.size(), body.invariants.mass);
    for (Index i = 0; i < body.nodePositions.cols(); ++i)
        fmt::print("node {:<8} at {:.9g}, {:.9g}, {:.9g} from the centre of mass\n",
                   joints[static_cast<std::size_t>(i)].label, body.nodePositions(0, i),
                   body.nodePositions(1, i), body.nodePositions(2, i));
    for (Index j = 0; j < body.frequencies.size(); ++j)
        fmt::print("{:4} {:16.9g} Hz\n", j + 1, body.frequencies(j));
    return 0;
}

int run(int argc, char** argv) {
    Options options;
    CLI::App app("Makes a modal file of a part that CalculiX has stored with *FREQUENCY, "
                 "SOLVER=MATRIXSTORAGE, in kg, m, s, N.",
                 "velmora-ccx");
    app.add_option("JOB", options.job, "Job of CalculiX: JOB.dof, JOB.sti and JOB.mas are read")->required();
    app.add_option("FILE", options.file, "Modal file to write")->required();
    app.add_option("--mesh", options.mesh, "File with the *NODE and *NSET cards of the mesh")->required();
    app.add_option("--interface", options.interfaces,
                   "Node set that carries a joint, and the label of its node: SET=LABEL")
        ->required();
    app.add_option("--modes", options.numOfModes,
                   "Number of modes of the free part beside the static shapes of interfaces")
        ->check(CLI::Range(0, 1000))
        ->capture_default_str();
    try {
        app.parse(argc, argv);
        return writePart(options);
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
        std::fprintf(stderr, "velmora-ccx: %s\n", exception.what());
        return 1;
    }
}
