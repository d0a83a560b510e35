#include "driver/CheckCommand.h"

#include "driver/LoadedModel.h"
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

void printDegreesOfFreedom(const MBS_Model& model) {
    fmt::print("\n{:<44}{:>8}\n", "Physical degrees of freedom", model.getNumOfPhysicalDof());
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

/// UUID of the body with this inner equation; its number if blocks and bodies don't correspond.
std::string getBodyOfInnerEquation(const LoadedModel& loaded, unsigned equation) {
    const MBS_Model& model = *loaded.model;
    unsigned body = 0;
    while (body + 1 < model.getNumOfBodies() && equation >= model.getNumOfInnerConstraintDofOfBody(body))
        equation -= model.getNumOfInnerConstraintDofOfBody(body++);
    const IO_DataModel& dataModel = *loaded.file->dataModel;
    if (dataModel.getNumOfBlocks("Body") != model.getNumOfBodies())
        return fmt::format("number {}", body + 1);
    return dataModel.getBlock("Body", body)->uuid;
}

void printResidual(const char* name, const WorstEquation& worst, const std::string& place) {
    fmt::print("{:<44}{:>12.3e}{}\n", name, worst.residual, worst.residual == 0.0 ? "" : "  " + place);
}

/// False if a residual isn't finite.
bool printInitialResiduals(const LoadedModel& loaded) {
    MBS_Model& model = *loaded.model;
    if (model.getNumOfBodies() == 0)
        return true;
    MBS_ModelPhysicalDofVector q(&model), qd(&model), qdd(&model);
    MBS_ModelConstraintDofVector residual(&model);
    std::fill_n(qdd.dofVector->data, qdd.getNumOfDof(), 0.0);
    model.copyInitialDataIntoPhysicalDofVector(&q, &qd);
    model.updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(0.0, &q, &qd, &qdd, &residual);
    const WorstEquation inner(residual.innerConstraints.get());
    const WorstEquation external(residual.externalConstraints.get());
    fmt::print("\n");
    printResidual("Largest residual of inner constraints", inner,
                  "body <" + getBodyOfInnerEquation(loaded, inner.index) + ">");
    if (model.getNumOfExternalConstraintDof() > 0)
        printResidual("Largest residual of external constraints", external,
                      "constraint <" + residual.constraintDofIDs[external.index] + ">");
    return std::isfinite(inner.residual) && std::isfinite(external.residual);
}

} // namespace

int checkModel(const Options& options) {
    const LoadedModel loaded = loadModel(options, false);
    if (!loaded.model)
        return loaded.exitCode;
    printContents(*loaded.file->dataModel);
    printDegreesOfFreedom(*loaded.model);
    if (printInitialResiduals(loaded))
        return Done;
    std::fflush(stdout);
    printToStandardError(
        fmt::format("{}: error: the residuals at the start aren't finite\n", options.modelFile),
        MessageKind::Error);
    return ModelHasErrors;
}

} // namespace velmora::driver
