#include "velmora/global_matrix/MBS_ConstraintCell_Map_Procedure.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/constraints/MBS_ConstraintGroup.h"
#include "velmora/constraints/MBS_ExtConstraint.h"
#include "velmora/global_matrix/MBS_ContributionCodes.h"
#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/matrix/MBM_SparseMat_CSR3.h"
#include "velmora/model/BlockProducts.h"
#include "velmora/model/MBS_Math.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <algorithm>

namespace velmora {

MBS_ConstraintCell_Map_Procedure::MBS_ConstraintCell_Map_Procedure(unsigned firstRow, unsigned firstCol,
                                                                   bool isTimeDerivative,
                                                                   const double* weight,
                                                                   const MBS_ModelObjectLists& model)
    : rowOffset(firstRow),
      colOffset(firstCol),
      scalingPointer(weight) {
    if (isTimeDerivative)
        for (const auto& group : model.getConstraintGroups())
            group->keepRates();
    unsigned physical = 0, equation = 0;
    std::vector<unsigned> physicalOffsets;
    for (const auto& body : model.getBodies()) {
        const auto& cqT = isTimeDerivative ? body->cqTdT : body->cqT;
        entries.push_back({cqT.get(), physical, equation});
        physicalOffsets.push_back(physical);
        physical += body->getNumOfDof();
        equation += body->numInnerConstraintDof;
    }
    for (const auto& constraint : model.getConstraints()) {
        const auto& objects = isTimeDerivative ? constraint->cqTdTObjects : constraint->cqTObjects;
        for (std::size_t k = 0; k < objects.size(); ++k)
            if (objects[k])
                entries.push_back({objects[k].get(), physicalOffsets[constraint->cqTBodies[k]], equation});
        equation += constraint->numOfConstraintDof;
    }
}

MBS_ConstraintCell_Map_Procedure::~MBS_ConstraintCell_Map_Procedure() = default;

void MBS_ConstraintCell_Map_Procedure::initMappers(MBM_SparseMat_CSR3& sparse, MBS_ScatterPlan& plan) const {
    for (const Part& part : collectParts(sparse))
        if (isTransposed())
            plan.add(
                sparse,
                {rowOffset + part.equation, colOffset + part.dof, part.cols, part.rows, part.shape, true},
                {{part.data, scalingPointer, 0, false, true}});
        else
            plan.add(
                sparse,
                {rowOffset + part.dof, colOffset + part.equation, part.rows, part.cols, part.shape, true},
                {{part.data, scalingPointer, 0, false}});
}

std::vector<MBS_ConstraintCell_Map_Procedure::Part>
MBS_ConstraintCell_Map_Procedure::collectParts(const MBM_SparseMat_CSR3& sparse) const {
    constexpr std::size_t lookBack = 12; // parts of three equations between two bodies
    std::vector<Part> parts;
    const auto add = [&](const MBM_DenseMatrix* matrix, const Entry& entry, unsigned kindOffset) {
        if (!matrix)
            return;
        const Part part{entry.physicalOffset + kindOffset,
                        entry.constraintOffset,
                        matrix->rows,
                        matrix->cols,
                        matrix->isDiagonal() ? MBS_BlockShape::Diagonal : MBS_BlockShape::General,
                        matrix->data};
        const auto begin = parts.end() - static_cast<std::ptrdiff_t>(std::min(lookBack, parts.size()));
        const auto found = std::find_if(
            begin, parts.end(), [&](const Part& earlier) { return isContinuation(sparse, earlier, part); });
        if (found == parts.end())
            parts.push_back(part);
        else
            found->cols += part.cols;
    };
    for (const Entry& entry : entries) {
        add(entry.cqT->tPart.get(), entry, 0);
        add(entry.cqT->rPart.get(), entry, entry.cqT->transDof);
        add(entry.cqT->fPart.get(), entry, entry.cqT->transDof + entry.cqT->rotDof);
    }
    return parts;
}

// Where equations stand in the rows, these must be equally far apart among the sparse values.
bool MBS_ConstraintCell_Map_Procedure::isContinuation(const MBM_SparseMat_CSR3& sparse, const Part& part,
                                                      const Part& next) const {
    if (next.dof != part.dof || next.rows != part.rows || next.equation != part.equation + part.cols ||
        next.data != part.data + std::size_t{part.rows} * part.cols ||
        part.shape != MBS_BlockShape::General || next.shape != MBS_BlockShape::General)
        return false;
    if (!isTransposed() || part.cols == 1)
        return true;
    const auto place = [&](unsigned equation) {
        return sparse.lowerBound(rowOffset + equation, colOffset + part.dof);
    };
    return place(next.equation) - place(next.equation - 1) == place(part.equation + 1) - place(part.equation);
}

// Objects of one constraint stand side by side.
void MBS_ConstraintCell_Map_Procedure::multiplyCq(const double* coordinates, double* equations) const {
    const Entry* last = nullptr;
    for (const Entry& entry : entries) {
        double* result = equations + entry.constraintOffset;
        if (!last || last->constraintOffset != entry.constraintOffset)
            std::fill_n(result, entry.cqT->constraintDof, 0.0);
        addTransposedProduct(*entry.cqT, coordinates + entry.physicalOffset, result);
        last = &entry;
    }
}

MBS_PhysicalDOF_x_ConstraintDOF_Map_Procedure::MBS_PhysicalDOF_x_ConstraintDOF_Map_Procedure(
    unsigned firstRow, unsigned firstCol, unsigned type, const double* weight,
    const MBS_ModelObjectLists& model)
    : MBS_ConstraintCell_Map_Procedure(firstRow, firstCol, type == ConstraintJacobianTDot, weight, model) {}

void MBS_PhysicalDOF_x_ConstraintDOF_Map_Procedure::addPattern(std::vector<unsigned>& rows,
                                                               std::vector<unsigned>& cols) const {
    for (const Entry& entry : entries)
        entry.cqT->addPatternOfCqT(rows, cols, rowOffset + entry.physicalOffset,
                                   colOffset + entry.constraintOffset);
}

MBS_ConstraintDOF_x_PhysicalDOF_Map_Procedure::MBS_ConstraintDOF_x_PhysicalDOF_Map_Procedure(
    unsigned firstRow, unsigned firstCol, unsigned type, const double* weight,
    const MBS_ModelObjectLists& model)
    : MBS_ConstraintCell_Map_Procedure(firstRow, firstCol, type == ConstraintJacobianDot, weight, model) {}

void MBS_ConstraintDOF_x_PhysicalDOF_Map_Procedure::addPattern(std::vector<unsigned>& rows,
                                                               std::vector<unsigned>& cols) const {
    for (const Entry& entry : entries)
        entry.cqT->addPatternOfCq(rows, cols, rowOffset + entry.constraintOffset,
                                  colOffset + entry.physicalOffset);
}

// Declared in `model`, which knows no maps.
void MBS_Math::Cq_mult_PhysDofVec(const MBS_PhysicalDOF_x_ConstraintDOF_Map_Procedure* map, const P* x,
                                  C* y) {
    if (y->dofVector)
        map->multiplyCq(x->dofVector->data, y->dofVector->data);
}

} // namespace velmora
