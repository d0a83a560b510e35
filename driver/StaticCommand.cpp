#include "driver/StaticCommand.h"

#include "driver/CommandSupport.h"
#include "driver/LoadedModel.h"
#include "driver/ModelWriter.h"
#include "driver/Reactions.h"
#include "driver/StaticSolver.h"
#include "driver/Terminal.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <span>

namespace velmora::driver {

namespace {

constexpr std::size_t numOfPrintedRows = 20; // of a table; files hold all

/// Rows of texts and numbers, for the terminal and for a file.
struct Table {
    std::vector<std::string> names; ///< of the columns, with units
    std::size_t numOfTexts = 0;     ///< columns of texts, before those of numbers
    std::vector<std::pair<std::vector<std::string>, std::vector<double>>> rows;
};

int complain(const std::string& text, int exitCode) {
    printToStandardError(text + "\n", MessageKind::Error);
    return exitCode;
}

bool writeTable(const Table& table, const std::string& fileName) {
    std::ofstream stream(fileName, std::ios::binary);
    stream << fmt::format("{}\n", fmt::join(table.names, ","));
    for (const auto& [texts, numbers] : table.rows) {
        for (const std::string& text : texts)
            stream << toCsvField(text) << ",";
        stream << fmt::format("{}\n", fmt::join(numbers, ","));
    }
    stream.close();
    return stream.good();
}

void printTable(const Table& table, const std::string& fileName) {
    std::vector<std::size_t> widths(table.numOfTexts);
    const std::span rows(table.rows.data(), std::min(table.rows.size(), numOfPrintedRows));
    for (std::size_t i = 0; i < table.numOfTexts; ++i) {
        widths[i] = table.names[i].size();
        for (const auto& [texts, numbers] : rows)
            widths[i] = std::max(widths[i], texts[i].size());
    }
    fmt::print("\n");
    for (std::size_t i = 0; i < table.names.size(); ++i)
        i < table.numOfTexts ? fmt::print("{:<{}}  ", table.names[i], widths[i])
                             : fmt::print("{:>13}", table.names[i]);
    fmt::print("\n");
    for (const auto& [texts, numbers] : rows) {
        for (std::size_t i = 0; i < table.numOfTexts; ++i)
            fmt::print("{:<{}}  ", texts[i], widths[i]);
        for (const double number : numbers)
            fmt::print("{:>13.6g}", number);
        fmt::print("\n");
    }
    if (rows.size() < table.rows.size())
        fmt::print("and {} more in {}\n", table.rows.size() - rows.size(), fileName);
}

Table listPositions(const IO_DataModel& dataModel, const MBS_ModelPhysicalDofVector& q) {
    Table table{{"body", "x [m]", "y [m]", "z [m]", "e0", "e1", "e2", "e3"}, 1, {}};
    const auto bodies = dataModel.getBlocksOfKind("Body");
    for (unsigned body = 0; body < bodies.size(); ++body)
        table.rows.push_back({{bodies[body]->uuid}, {q.bodyData(body), q.bodyData(body) + 7}});
    return table;
}

Table listReactions(const std::vector<Reaction>& reactions) {
    Table table{{"joint", "on body", "x [m]", "y [m]", "z [m]", "Fx [N]", "Fy [N]", "Fz [N]", "Mx [Nm]",
                 "My [Nm]", "Mz [Nm]"},
                2,
                {}};
    for (const Reaction& reaction : reactions) {
        std::vector<double> numbers;
        for (const auto& vector : {reaction.point, reaction.force, reaction.moment})
            numbers.insert(numbers.end(), vector.begin(), vector.end());
        table.rows.emplace_back(std::vector<std::string>{reaction.joint, reaction.body}, std::move(numbers));
    }
    return table;
}

std::string describe(const StartReport::Largest& largest, const char* unit) {
    return fmt::format("{:.3g} {}{}", largest.size, unit,
                       largest.body.empty() ? "" : fmt::format(" ({})", largest.body));
}

void printSummary(const StaticReport& report, double time, const std::vector<std::string>& files) {
    const auto print = [](const char* name, const std::string& value) {
        fmt::print("{:<18}{}\n", name, value);
    };
    print("Equilibrium",
          fmt::format("found in {} steps ({} rejected), with forces and motions of time {:.9g} s",
                      report.iterations + 1, report.rejectedSteps, time));
    print("Freedom", fmt::format("{} degrees of freedom, {} redundant equations",
                                 report.start.degreesOfFreedom, report.start.redundantEquations.size()));
    print("Moved", fmt::format("at most {} and {}", describe(report.translation, "m"),
                               describe(report.rotation, "rad")));
    print("Balance", fmt::format("largest force {:.6g} N, {:.3g} N without balance", report.largestForce,
                                 report.unbalanced));
    print("Stability", report.growth > 0.0
                           ? fmt::format("unstable: a small movement away grows e-fold in {:.3g} s",
                                         1.0 / std::sqrt(report.growth))
                           : "no small movement away grows");
    for (const std::string& file : files)
        print(file == files.front() ? "Results" : "", file);
}

/// Writes all files and prints what the caller wants to see.
int report(const LoadedModel& loaded, const Options& options, const StaticReport& found,
           const EquationNames& names, const HHTState& state) {
    const std::string base = loaded.output->getResultFileBase();
    const std::vector<std::string> files{base + "_static.toml", base + "_positions.csv",
                                         base + "_reactions.csv"};
    const std::string problem =
        writeModelAt(*loaded.file, *loaded.model, state.q, files[0],
                     fmt::format("{} at rest, found by velmora static",
                                 std::filesystem::path(options.modelFile).filename().string()));
    if (!problem.empty())
        return complain("velmora: " + problem, WrongUsage);
    const Table positions = listPositions(*loaded.file->dataModel, state.q);
    const Table reactions =
        listReactions(computeReactions(*loaded.model, *loaded.file->dataModel, names, state));
    for (const auto& [table, name] : {std::pair(&positions, files[1]), {&reactions, files[2]}})
        if (!writeTable(*table, name))
            return complain(fmt::format("velmora: <{}> can't be written", name), WrongUsage);
    if (options.isQuiet)
        return Done;
    printSummary(found, state.time, files);
    printTable(positions, files[1]);
    if (!reactions.rows.empty())
        printTable(reactions, files[2]);
    return Done;
}

} // namespace

int findEquilibrium(const Options& options) {
    const LoadedModel loaded = loadModel(options, false);
    if (!loaded.model)
        return loaded.exitCode;
    if (loaded.model->getNumOfBodies() == 0)
        return complain(
            fmt::format("{}: error: the model has no body: there is nothing to balance", options.modelFile),
            ModelHasErrors);
    if (!makeResultDirectory(loaded.output->directory))
        return WrongUsage;
    const EquationNames names(loaded.model.get(), loaded.file->dataModel.get());
    HHTSystem system(loaded.model.get());
    Redundancy redundancy(&system, &names);
    StaticSolver solver(&system, &names, &redundancy, makeSettings(options, *loaded.file));
    HHTState state(loaded.model.get());
    const StepResult result = solver.run(state, options.time);
    if (solver.isModelAtFault())
        return complain(fmt::format("{}: error: {}", options.modelFile, solver.getProblem()), ModelHasErrors);
    warnOfRedundancy(solver.getReport().start.redundantEquations, options.modelFile);
    if (result != StepResult::Converged)
        return complain("velmora: " + solver.getProblem(), SolverFailed);
    return report(loaded, options, solver.getReport(), names, state);
}

} // namespace velmora::driver
