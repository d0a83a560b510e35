#include "velmora/global_matrix/MBS_ConstraintCell_Map_Procedure.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/global_matrix/MBS_ContributionCodes.h"
#include "velmora/global_matrix/MBS_GeneralBodyBodyMatrixMapperCSR3.h"
#include "velmora/model/MBS_ModelLookUp.h"

namespace velmora {

MBS_ConstraintCell_Map_Procedure::MBS_ConstraintCell_Map_Procedure(unsigned firstRow, unsigned firstCol,
                                                                   bool isTimeDerivative,
                                                                   const double* weight,
                                                                   const MBS_ModelObjectLists& model)
    : rowOffset(firstRow),
      colOffset(firstCol),
      scalingPointer(weight) {
    unsigned physical = 0, inner = 0;
    for (const auto& body : model.getBodies()) {
        const auto& cqT = isTimeDerivative ? body->cqTdT : body->cqT;
        entries.push_back({cqT.get(), physical, inner, nullptr});
        physical += body->getNumOfDof();
        inner += body->numInnerConstraintDof;
    }
}

MBS_ConstraintCell_Map_Procedure::~MBS_ConstraintCell_Map_Procedure() = default;

void MBS_ConstraintCell_Map_Procedure::refresh() {
    for (const Entry& entry : entries)
        entry.mapper->mapValues(*scalingPointer);
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

void MBS_PhysicalDOF_x_ConstraintDOF_Map_Procedure::initMappers(MBM_SparseMat_CSR3& sparse) {
    for (Entry& entry : entries)
        entry.mapper = std::make_unique<MBS_GeneralTransposedConstrainedJacobianMapperCSR3>(
            *entry.cqT, sparse, rowOffset + entry.physicalOffset, colOffset + entry.constraintOffset);
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

void MBS_ConstraintDOF_x_PhysicalDOF_Map_Procedure::initMappers(MBM_SparseMat_CSR3& sparse) {
    for (Entry& entry : entries)
        entry.mapper = std::make_unique<MBS_GeneralNonTransposedConstrainedJacobianMapperCSR3>(
            *entry.cqT, sparse, rowOffset + entry.constraintOffset, colOffset + entry.physicalOffset);
}

} // namespace velmora
