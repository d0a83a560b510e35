#include "velmora/global_matrix/MBS_GlobalModelMatrix.h"

#include "velmora/global_matrix/MBS_ConstraintCell_Map_Procedure.h"
#include "velmora/global_matrix/MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure.h"
#include "velmora/global_matrix/MBS_ScatterPlan.h"
#include "velmora/matrix/MBM_SparseMat_CSR3.h"
#include "velmora/model/MBS_Model.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <algorithm>

namespace velmora {

namespace {

MBS_CellKind kindOf(unsigned code) {
    if (code >= MassMatrix && code <= KinematicSolverMatrix)
        return PhysicalByPhysical;
    if (code == ConstraintJacobianT || code == ConstraintJacobianTDot)
        return PhysicalByConstraint;
    if (code == ConstraintJacobian || code == ConstraintJacobianDot)
        return ConstraintByPhysical;
    return EmptyCell;
}

unsigned numConstraintDof(const MBS_Model& model) {
    return model.getNumOfInnerConstraintDof() + model.getNumOfExternalConstraintDof();
}

unsigned rowSize(unsigned kind, const MBS_Model& model) {
    return kind == ConstraintByPhysical ? numConstraintDof(model) : model.getNumOfPhysicalDof();
}

unsigned colSize(unsigned kind, const MBS_Model& model) {
    return kind == PhysicalByConstraint ? numConstraintDof(model) : model.getNumOfPhysicalDof();
}

// Zero-based start of each block row or column, then the total. The first contribution in a block decides.
std::vector<unsigned> offsetsOf(unsigned numBlocks, const std::vector<unsigned>& blockOfContribution,
                                const std::vector<unsigned>& sizeOfContribution) {
    std::vector<unsigned> offsets{0};
    for (unsigned b = 0; b < numBlocks; ++b) {
        const auto first = std::ranges::find(blockOfContribution, b) - blockOfContribution.begin();
        offsets.push_back(offsets.back() + sizeOfContribution[static_cast<std::size_t>(first)]);
    }
    return offsets;
}

// The first block below `numBlocks` that no contribution names, or numBlocks.
unsigned firstUnused(unsigned numBlocks, const std::vector<unsigned>& used) {
    for (unsigned b = 0; b < numBlocks; ++b)
        if (std::ranges::find(used, b) == used.end())
            return b;
    return numBlocks;
}

} // namespace

MBS_GlobalModelMatrix::MBS_GlobalModelMatrix(MBS_ModelObjectLists* owner, unsigned numRows, unsigned numCols,
                                             const std::vector<unsigned>* types,
                                             const std::vector<unsigned>* rows,
                                             const std::vector<unsigned>* cols,
                                             const std::vector<double>* weights, bool modifiedHHT)
    : numBlockRows(numRows),
      numBlockCols(numCols),
      isModifiedHHT(modifiedHHT),
      model(owner),
      plan(std::make_shared<MBS_ScatterPlan>()) {
    if (!checkInputDataAndStoreInMembers(*types, *rows, *cols, *weights)) {
        sparseMatrix = std::make_shared<MBM_SparseMat_CSR3>(0, 0, 0, nullptr, nullptr);
        return;
    }
    defineGlobalRowAndColOffset();
    constructAllMapProcedures();
    createSparseMatrix();
    initAllMappers();
}

MBS_GlobalModelMatrix::MBS_GlobalModelMatrix(const MBS_GlobalModelMatrix&) = default;
MBS_GlobalModelMatrix& MBS_GlobalModelMatrix::operator=(const MBS_GlobalModelMatrix&) = default;
MBS_GlobalModelMatrix::~MBS_GlobalModelMatrix() = default;

std::string MBS_GlobalModelMatrix::findInputError(const std::vector<unsigned>& types,
                                                  const std::vector<unsigned>& rows,
                                                  const std::vector<unsigned>& cols,
                                                  const std::vector<double>& weights) const {
    if (rows.size() != types.size() || cols.size() != types.size() || weights.size() != types.size())
        return "lists of types, rows, columns and weights differ in length";
    for (std::size_t k = 0; k < types.size(); ++k) {
        const std::string which = "contribution " + std::to_string(k);
        if (kindOf(types[k]) == EmptyCell)
            return which + " has the unknown type " + std::to_string(types[k]);
        if (rows[k] >= numBlockRows || cols[k] >= numBlockCols)
            return which + " lies outside the grid of blocks";
        for (std::size_t j = 0; j < k; ++j) {
            if (rows[j] == rows[k] &&
                rowSize(kindOf(types[j]), model->getModel()) != rowSize(kindOf(types[k]), model->getModel()))
                return which + " has another row size than its block row";
            if (cols[j] == cols[k] &&
                colSize(kindOf(types[j]), model->getModel()) != colSize(kindOf(types[k]), model->getModel()))
                return which + " has another column size than its block column";
            if (rows[j] != rows[k] || cols[j] != cols[k])
                continue;
            if (kindOf(types[j]) != kindOf(types[k]))
                return which + " is of another kind than its cell";
            if (kindOf(types[k]) != PhysicalByPhysical)
                return which + " is the second one in a constraint cell";
        }
    }
    if (firstUnused(numBlockRows, rows) < numBlockRows)
        return "block row " + std::to_string(firstUnused(numBlockRows, rows)) + " has no contribution";
    if (firstUnused(numBlockCols, cols) < numBlockCols)
        return "block column " + std::to_string(firstUnused(numBlockCols, cols)) + " has no contribution";
    return {};
}

bool MBS_GlobalModelMatrix::checkInputDataAndStoreInMembers(const std::vector<unsigned>& types,
                                                            const std::vector<unsigned>& rows,
                                                            const std::vector<unsigned>& cols,
                                                            const std::vector<double>& weights) {
    scalingValues = std::make_shared<std::vector<double>>();
    const std::string error = findInputError(types, rows, cols, weights);
    if (!error.empty()) {
        model->reportError("ERROR: Model related matrix not valid: " + error + "!\n");
        return false;
    }
    contributionTypes = types;
    contributionRows = rows;
    contributionCols = cols;
    *scalingValues = weights;
    cellKinds.assign(std::size_t{numBlockRows} * numBlockCols, EmptyCell);
    cellContributionLists.resize(cellKinds.size());
    for (unsigned k = 0; k < types.size(); ++k) {
        const std::size_t cell = std::size_t{rows[k]} * numBlockCols + cols[k];
        cellKinds[cell] = kindOf(types[k]);
        cellContributionLists[cell].push_back(k);
    }
    return true;
}

void MBS_GlobalModelMatrix::defineGlobalRowAndColOffset() {
    std::vector<unsigned> rowSizes, colSizes;
    for (const unsigned type : contributionTypes) {
        rowSizes.push_back(rowSize(kindOf(type), model->getModel()));
        colSizes.push_back(colSize(kindOf(type), model->getModel()));
    }
    rowOffsets = offsetsOf(numBlockRows, contributionRows, rowSizes);
    colOffsets = offsetsOf(numBlockCols, contributionCols, colSizes);
}

void MBS_GlobalModelMatrix::constructAllMapProcedures() {
    for (std::size_t cell = 0; cell < cellKinds.size(); ++cell) {
        const unsigned row = rowOffsets[cell / numBlockCols], col = colOffsets[cell % numBlockCols];
        std::vector<unsigned> types;
        std::vector<const double*> weights;
        for (const unsigned k : cellContributionLists[cell]) {
            types.push_back(contributionTypes[k]);
            weights.push_back(&(*scalingValues)[k]);
        }
        if (cellKinds[cell] == PhysicalByPhysical)
            physicalProcedures.push_back(std::make_shared<MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure>(
                *model, row, col, types, weights, isModifiedHHT));
        if (cellKinds[cell] == PhysicalByConstraint)
            constraintProcedures.push_back(std::make_shared<MBS_PhysicalDOF_x_ConstraintDOF_Map_Procedure>(
                row, col, types[0], weights[0], *model));
        if (cellKinds[cell] == ConstraintByPhysical)
            constraintProcedures.push_back(std::make_shared<MBS_ConstraintDOF_x_PhysicalDOF_Map_Procedure>(
                row, col, types[0], weights[0], *model));
    }
}

void MBS_GlobalModelMatrix::createSparseMatrix() {
    std::vector<unsigned> rows, cols;
    for (const auto& procedure : physicalProcedures)
        procedure->addPattern(rows, cols);
    for (const auto& procedure : constraintProcedures)
        procedure->addPattern(rows, cols);
    sparseMatrix = std::make_shared<MBM_SparseMat_CSR3>(rowOffsets.back(), colOffsets.back(), rows.size(),
                                                        rows.data(), cols.data());
    if (sparseMatrix->errorCode == 0 || model->getModel().getNumOfBodies() == 0)
        return;
    model->reportError("ERROR: Model related matrix not valid: " + sparseMatrix->getErrorString() + "!\n");
    physicalProcedures.clear();
    constraintProcedures.clear();
}

void MBS_GlobalModelMatrix::initAllMappers() {
    for (const auto& procedure : physicalProcedures)
        procedure->initMappers(*sparseMatrix, *plan);
    for (const auto& procedure : constraintProcedures)
        procedure->initMappers(*sparseMatrix, *plan);
    plan->sort();
}

void MBS_GlobalModelMatrix::update() {
    plan->run(isModifiedHHT ? MBS_ScatterPlan::Cells::Constraints : MBS_ScatterPlan::Cells::All, nullptr);
}

void MBS_GlobalModelMatrix::updateForModifiedHHT(MBM_GeneralDenseMatrix** T) {
    plan->run(isModifiedHHT ? MBS_ScatterPlan::Cells::All : MBS_ScatterPlan::Cells::Constraints, T);
}

bool MBS_GlobalModelMatrix::setScalingValue_i(unsigned index, double value) {
    if (index >= scalingValues->size())
        return false;
    (*scalingValues)[index] = value;
    return true;
}

bool MBS_GlobalModelMatrix::setScalingValues(const std::vector<double>& values) {
    if (values.size() != scalingValues->size())
        return false;
    std::ranges::copy(values, scalingValues->begin());
    return true;
}

} // namespace velmora
