#include "velmora/global_matrix/MBS_GeneralBodyBodyMatrixMapperCSR3.h"

#include "velmora/matrix/MBM_MatrixMapper.h"
#include "velmora/model/BlockProducts.h"

namespace velmora {

namespace {

std::unique_ptr<MBM_MatrixMapper> makeMapper(const MBM_DenseMatrix* block, MBM_SparseMat_CSR3& sparse,
                                             unsigned row, unsigned col, bool isTransposed) {
    if (!block)
        return nullptr;
    if (block->isDiagonal())
        return std::make_unique<MBM_DenseMatMainDiag_2_CSR3_Mapper>(*block, sparse, row, col);
    return std::make_unique<MBM_Dense_2_CSR3_Mapper>(*block, sparse, row, col, isTransposed);
}

template <class Mappers>
void mapAll(Mappers& mappers, double scale) {
    for (const auto& mapper : mappers)
        if (mapper)
            mapper->mapValues(scale);
}

} // namespace

MBS_GeneralBodyBodyMatrixMapperCSR3::MBS_GeneralBodyBodyMatrixMapperCSR3(
    const MBS_GeneralBodyBodyMatrix& matrix, MBM_SparseMat_CSR3& sparse, unsigned rowPosition,
    unsigned colPosition) {
    const auto row = kindOffsets(matrix.rowDof), col = kindOffsets(matrix.colDof);
    for (unsigned k = 0; k < 9; ++k)
        mappers[k] = makeMapper(matrix.block[k / 3][k % 3].get(), sparse, rowPosition + row[k / 3],
                                colPosition + col[k % 3], false);
}

MBS_GeneralBodyBodyMatrixMapperCSR3::~MBS_GeneralBodyBodyMatrixMapperCSR3() = default;

void MBS_GeneralBodyBodyMatrixMapperCSR3::mapValues(double scale) {
    mapAll(mappers, scale);
}

MBS_ConstrainedJacobianMapperCSR3::MBS_ConstrainedJacobianMapperCSR3() = default;
MBS_ConstrainedJacobianMapperCSR3::~MBS_ConstrainedJacobianMapperCSR3() = default;

void MBS_ConstrainedJacobianMapperCSR3::mapValues(double scale) {
    mapAll(mappers, scale);
}

MBS_GeneralTransposedConstrainedJacobianMapperCSR3::MBS_GeneralTransposedConstrainedJacobianMapperCSR3(
    const MBS_General_CqT& cqT, MBM_SparseMat_CSR3& sparse, unsigned rowPosition, unsigned colPosition) {
    const auto offset = kindOffsets({cqT.transDof, cqT.rotDof, cqT.flexDof});
    mappers = {makeMapper(cqT.tPart.get(), sparse, rowPosition + offset[Trans], colPosition, false),
               makeMapper(cqT.rPart.get(), sparse, rowPosition + offset[Rot], colPosition, false),
               makeMapper(cqT.fPart.get(), sparse, rowPosition + offset[Flex], colPosition, false)};
}

MBS_GeneralNonTransposedConstrainedJacobianMapperCSR3::MBS_GeneralNonTransposedConstrainedJacobianMapperCSR3(
    const MBS_General_CqT& cqT, MBM_SparseMat_CSR3& sparse, unsigned rowPosition, unsigned colPosition) {
    const auto offset = kindOffsets({cqT.transDof, cqT.rotDof, cqT.flexDof});
    mappers = {makeMapper(cqT.tPart.get(), sparse, rowPosition, colPosition + offset[Trans], true),
               makeMapper(cqT.rPart.get(), sparse, rowPosition, colPosition + offset[Rot], true),
               makeMapper(cqT.fPart.get(), sparse, rowPosition, colPosition + offset[Flex], true)};
}

} // namespace velmora
