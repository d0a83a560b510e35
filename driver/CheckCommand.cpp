#include "driver/CheckCommand.h"

#include "driver/DerivativeCheck.h"
#include "driver/LoadedModel.h"
#include "driver/Redundancy.h"
#include "driver/Terminal.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

namespace velmora::driver {

namespace {

void printContents(const IO_DataModel& dataModel) {
    std::map<std::pair<std::string, std::string>, unsigned> counts;
    for (const auto& block : dataModel.blocks)
        ++counts[{block->kind, block->type}];
    fmt::print("{:<12}{:<32}{:>8}\n", "Kind", "Type", "Blocks");
    for (const auto& [name, count] : counts)
        fmt::print("{:<12}{:<32}{:>8}\n", name.first, name.second, count);
}

void printEquations(const MBS_Model& model) {
    fmt::print("\n{:<44}{:>8}\n", "Coordinates of bodies", model.getNumOfPhysicalDof());
    fmt::print("{:<44}{:>8}\n", "Equations of inner constraints", model.getNumOfInnerConstraintDof());
    fmt::print("{:<44}{:>8}\n", "Equations of external constraints", model.getNumOfExternalConstraintDof());
}

/// Largest absolute value of some equations; a value that isn't finite counts as the largest.
struct WorstEquation {
    double residual = 0.0;
    unsigned index = 0;

    explicit WorstEquation(const MBM_DenseSubVector* residuals) {
        for (unsigned i = 0; residuals && i < residuals->size; ++i) {
            if (!(std::fabs(residuals->data[i]) > residual) && !std::isnan(residuals->data[i]))
                continue;
            residual = std::fabs(residuals->data[i]);
            index = i;
            if (std::isnan(residual))
                return;
        }
    }
};

void printResidual(const char* name, const WorstEquation& worst, const std::string& place) {
    fmt::print("{:<44}{:>12.3e}{}\n", name, worst.residual, worst.residual == 0.0 ? "" : "  " + place);
}

void printRedundancy(const HHTSystem& system, const Redundancy& redundancy) {
    fmt::print("{:<44}{:>8}\n", "Redundant equations", redundancy.getNumOfDependentEquations());
    fmt::print("{:<44}{:>8}\n", "Degrees of freedom", system.getNumOfPhysicalDof() - redundancy.getRank());
    for (const std::string& text : redundancy.describe())
        fmt::print("    {}\n", text);
}

/// False if a residual at the start isn't finite.
bool printInitialState(const LoadedModel& loaded) {
    MBS_Model& model = *loaded.model;
    if (model.getNumOfBodies() == 0)
        return true;
    const EquationNames names(&model, loaded.file->dataModel.get());
    HHTSystem system(&model);
    HHTState state(&model);
    copyInitialState(model, loaded.file->starts, state.q, state.qd);
    system.evaluate(state);
    const MBS_ModelConstraintDofVector& residual = system.constraintResidual;
    const WorstEquation inner(residual.innerConstraints.get()), external(residual.externalConstraints.get());
    const bool isFinite = std::isfinite(inner.residual) && std::isfinite(external.residual);
    if (isFinite) {
        Redundancy redundancy(&system, &names);
        system.refreshJacobian(state);
        redundancy.leaveOutDependentEquations();
        printRedundancy(system, redundancy);
    }
    fmt::print("\n");
    printResidual("Largest residual of inner constraints", inner,
                  names.getBodyName(names.locate(system.getNumOfPhysicalDof() + inner.index).owner));
    if (model.getNumOfExternalConstraintDof() > 0)
        printResidual("Largest residual of external constraints", external,
                      names.getShortName(residual.getNumOfInternalConstraints() + external.index));
    return isFinite;
}

/// False if a derivative differs that isn't meant to.
bool printDerivatives(const LoadedModel& loaded) {
    bool isSound = true;
    fmt::print("\n{:<60}{:>14}{:>14}  {}\n", "Derivative", "analytic", "difference", "verdict; place");
    for (const DerivativeRow& row : checkDerivatives(*loaded.model, *loaded.file->dataModel)) {
        fmt::print("{:<60}{:>14.6g}{:>14.6g}  {}{}\n", row.block, row.analytic, row.difference, row.verdict,
                   row.entry.empty() ? "" : "; " + row.entry);
        isSound = isSound && row.verdict != "DIFFERS";
    }
    return isSound;
}

} // namespace

int checkModel(const Options& options) {
    const LoadedModel loaded = loadModel(options, false);
    if (!loaded.model)
        return loaded.exitCode;
    printContents(*loaded.file->dataModel);
    printEquations(*loaded.model);
    if (printInitialState(loaded)) {
        const bool isSound =
            !options.checksDerivatives || loaded.model->getNumOfBodies() == 0 || printDerivatives(loaded);
        return isSound ? Done : ModelHasErrors;
    }
    std::fflush(stdout);
    printToStandardError(
        fmt::format("{}: error: the residuals at the start aren't finite\n", options.modelFile),
        MessageKind::Error);
    return ModelHasErrors;
}

} // namespace velmora::driver
