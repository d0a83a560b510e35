#include "driver/PoseCommand.h"

#include "driver/CommandSupport.h"
#include "driver/ConsistentStart.h"
#include "driver/LoadedModel.h"
#include "driver/ModelWriter.h"
#include "driver/PoseSolver.h"
#include "driver/Terminal.h"

#include <velmora/velmora.h>

#include <Eigen/Geometry>
#include <fmt/format.h>

#include <array>
#include <filesystem>
#include <fstream>

namespace velmora::driver {

namespace {

constexpr double reached = 1e-6; // distance from a target, in typical lengths

Eigen::Vector3d placeOf(const double* body) {
    return {body[0], body[1], body[2]};
}

Eigen::Quaterniond attitudeOf(const double* body) {
    return {body[3], body[4], body[5], body[6]};
}

/// An actor as the file has it.
struct Handle {
    std::string name;
    unsigned body = 0;
    bool isActive = true;
    Eigen::Vector3d target; ///< global frame
    Eigen::Vector3d local;  ///< acting point, in the frame of the body

    Eigen::Vector3d place(const MBS_ModelPhysicalDofVector& q) const {
        return placeOf(q.bodyData(body)) + attitudeOf(q.bodyData(body)) * local;
    }
    double distance(const MBS_ModelPhysicalDofVector& q) const { return (target - place(q)).norm(); }
};

/// All actors, with their points where the bodies are at q.
std::vector<Handle> listHandles(const IO_DataModel& dataModel, const MBS_ModelPhysicalDofVector& q) {
    std::vector<Handle> handles;
    const auto bodies = dataModel.getBlocksOfKind("Body");
    for (const IO_DataModelBlock* block : dataModel.getBlocksOfKind("Actor")) {
        IO_DataModelBlock probe(*block);
        Handle handle;
        handle.name = block->uuid;
        std::string id;
        Eigen::Vector3d acting;
        probe.getValue("BodyID4Actor", &id, IO_ValueCode::String);
        probe.getValue("ActingPointIRF", acting.data(), IO_ValueCode::DoubleVector3);
        probe.getValue("TargetPointIRF", handle.target.data(), IO_ValueCode::DoubleVector3);
        if (probe.isKeyInBlock("active"))
            probe.getValue("active", &handle.isActive);
        while (handle.body + 1 < bodies.size() && bodies[handle.body]->uuid != id)
            ++handle.body;
        const double* body = q.bodyData(handle.body);
        handle.local = attitudeOf(body).conjugate() * (acting - placeOf(body));
        handles.push_back(handle);
    }
    return handles;
}

int complain(const std::string& text, int exitCode) {
    printToStandardError(text + "\n", MessageKind::Error);
    return exitCode;
}

/// What `pose` can't work on; empty if nothing.
std::string findObstacle(const MBS_Model& model) {
    if (model.getNumOfActors() == 0)
        return "the model has no actor: there is nothing to move";
    if (model.getNumOfFlexBodies() > 0)
        return "the model has flexible bodies, which have no part in a pose";
    if (model.getNumOfZeroInertiaRigidBodies() > 0)
        return "the model has bodies without inertia, which have no part in a pose";
    return {};
}

/// The places of the acting points, a line for each step of the targets.
class PathFile {
  public:
    PathFile(std::string fileName, const std::vector<Handle>& pulled)
        : name(std::move(fileName)),
          stream(name, std::ios::binary),
          handles(pulled) {
        stream << "step";
        for (const Handle& handle : handles)
            for (const char* axis : {".x", ".y", ".z"})
                stream << ',' << toCsvField(handle.name + axis);
        stream << '\n';
    }
    void write(const MBS_ModelPhysicalDofVector& q) {
        stream << count++;
        for (const Handle& handle : handles)
            for (const double x : handle.place(q))
                stream << fmt::format(",{}", x);
        stream << '\n';
    }
    bool close() {
        stream.close();
        return stream.good();
    }
    std::string name;

  private:
    std::ofstream stream;
    const std::vector<Handle>& handles;
    unsigned count = 0;
};

void printSummary(const PoseSolver& solver, unsigned freedom, const std::vector<Handle>& handles,
                  const MBS_ModelPhysicalDofVector& q, const std::array<std::string, 2>& files) {
    fmt::print("Pose              found in {} steps of the targets, {} iterations\n",
               solver.getNumOfTargetSteps(), solver.getNumOfIterations());
    fmt::print("Freedom           {} degrees of freedom\n", freedom);
    for (const Handle& handle : handles)
        if (handle.isActive)
            fmt::print("{:<18}{:.3g} m from its target\n", "Actor <" + handle.name + ">", handle.distance(q));
    fmt::print("Results           {}\n                  {}\n", files[0], files[1]);
}

/// One line for each target that can't be reached.
std::string describeMisses(const std::vector<Handle>& handles, const MBS_ModelPhysicalDofVector& q,
                           double tolerance) {
    std::string text;
    for (const Handle& handle : handles)
        if (handle.isActive && !(handle.distance(q) <= tolerance))
            text +=
                fmt::format("velmora: The target of <{}> can't be reached: its point stays {:.6g} m away.\n",
                            handle.name, handle.distance(q));
    return text;
}

int drag(const LoadedModel& loaded, const Options& options, HHTSystem& system, unsigned freedom,
         MBS_ModelPhysicalDofVector& q) {
    const std::string base = loaded.output->getResultFileBase();
    const std::vector<Handle> handles = listHandles(*loaded.file->dataModel, q);
    const double tolerance = reached * system.measureTypicalLength(q);
    PathFile path(base + "_path.csv", handles);
    path.write(q);
    PoseSolver solver(&system);
    if (solver.run(q, [&] { path.write(q); }) != StepResult::Converged)
        return complain("velmora: " +
                            (solver.getProblem().empty() ? "A value isn't finite." : solver.getProblem()),
                        SolverFailed);
    if (!path.close())
        return complain(fmt::format("velmora: <{}> can't be written", path.name), WrongUsage);
    const std::string pose = base + "_pose.toml";
    const std::string remark = std::filesystem::path(options.modelFile).filename().string();
    const std::string problem =
        writeModelAt(*loaded.file, *loaded.model, q, pose, remark + " in the pose found by velmora pose");
    if (!problem.empty())
        return complain("velmora: " + problem, WrongUsage);
    if (!options.isQuiet)
        printSummary(solver, freedom, handles, q, {pose, path.name});
    const std::string misses = describeMisses(handles, q, tolerance);
    if (misses.empty())
        return Done;
    printToStandardError(misses, MessageKind::Error);
    return SolverFailed;
}

} // namespace

int findPose(const Options& options) {
    const LoadedModel loaded = loadModel(options, false);
    if (!loaded.model)
        return loaded.exitCode;
    const std::string obstacle = findObstacle(*loaded.model);
    if (!obstacle.empty())
        return complain(fmt::format("{}: error: {}", options.modelFile, obstacle), ModelHasErrors);
    if (!makeResultDirectory(loaded.output->directory))
        return WrongUsage;
    const EquationNames names(loaded.model.get(), loaded.file->dataModel.get());
    HHTSystem system(loaded.model.get());
    Redundancy redundancy(&system, &names);
    SimulationSettings settings = makeSettings(options, *loaded.file);
    settings.positionsOnly = true;
    ConsistentStart start(&system, &names, &redundancy, settings);
    HHTState state(loaded.model.get());
    if (start.run(state) != StepResult::Converged)
        return complain(fmt::format("{}: error: {}", options.modelFile, start.getProblem()), ModelHasErrors);
    warnOfRedundancy(start.getReport().redundantEquations, options.modelFile);
    return drag(loaded, options, system, start.getReport().degreesOfFreedom, state.q);
}

} // namespace velmora::driver
