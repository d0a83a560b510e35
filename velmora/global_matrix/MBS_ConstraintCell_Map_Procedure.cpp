#include "velmora/global_matrix/MBS_ConstraintCell_Map_Procedure.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/constraints/MBS_ExtConstraint.h"
#include "velmora/global_matrix/MBS_ContributionCodes.h"
#include "velmora/matrix/MBM_DenseMatrix.h"
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

void MBS_ConstraintCell_Map_Procedure::initMappers(MBM_SparseMat_CSR3& sparse) {
    for (const Entry& entry : entries) {
        addPart(sparse, entry, entry.cqT->tPart.get(), 0);
        addPart(sparse, entry, entry.cqT->rPart.get(), entry.cqT->transDof);
        addPart(sparse, entry, entry.cqT->fPart.get(), entry.cqT->transDof + entry.cqT->rotDof);
    }
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

void MBS_ConstraintCell_Map_Procedure::addPart(MBM_SparseMat_CSR3& sparse, const Entry& entry,
                                               const MBM_DenseMatrix* part, unsigned kindOffset) {
    if (!part)
        return;
    const unsigned dof = entry.physicalOffset + kindOffset, equation = entry.constraintOffset;
    const auto shape = part->isDiagonal() ? MBS_BlockShape::Diagonal : MBS_BlockShape::General;
    plan.add(sparse,
             {rowOffset + (isTransposed() ? equation : dof), colOffset + (isTransposed() ? dof : equation),
              part->rows, part->cols, shape, isTransposed()},
             {{part->data, scalingPointer, 0, false}});
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
