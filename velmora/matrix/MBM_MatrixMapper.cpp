#include "velmora/matrix/MBM_MatrixMapper.h"

#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/matrix/MBM_SparseMat_CSR3.h"

namespace velmora {

MBM_MatrixMapper::MBM_MatrixMapper(const MBM_DenseMatrix& block, MBM_SparseMat_CSR3& sparse,
                                   unsigned firstRow, unsigned firstCol)
    : source(&block),
      sourceData(block.data),
      sourceLeadingDimension(block.getLeadingDimension()),
      sourceRows(block.rows),
      target(&sparse),
      rowOffset(firstRow),
      colOffset(firstCol) {}

MBM_Dense_2_CSR3_Mapper::MBM_Dense_2_CSR3_Mapper(const MBM_DenseMatrix& block, MBM_SparseMat_CSR3& sparse,
                                                 unsigned firstRow, unsigned firstCol, bool transposed)
    : MBM_MatrixMapper(block, sparse, firstRow, firstCol) {
    sourceCols = block.cols;
    isTransposed = transposed;
    entryPointers.resize(isTransposed ? sourceCols : sourceRows);
    for (unsigned i = 0; i < entryPointers.size(); ++i)
        entryPointers[i] = sparse.values + sparse.lowerBound(rowOffset + i, colOffset);
}

void MBM_Dense_2_CSR3_Mapper::mapValues(double scale) {
    const double* column = sourceData;
    for (unsigned j = 0; j < sourceCols; ++j, column += sourceLeadingDimension) {
        if (isTransposed)
            for (unsigned i = 0; i < sourceRows; ++i)
                entryPointers[j][i] = column[i] * scale;
        else
            for (unsigned i = 0; i < sourceRows; ++i)
                entryPointers[i][j] = column[i] * scale;
    }
}

MBM_DenseMatMainDiag_2_CSR3_Mapper::MBM_DenseMatMainDiag_2_CSR3_Mapper(const MBM_DenseMatrix& block,
                                                                       MBM_SparseMat_CSR3& sparse,
                                                                       unsigned firstRow, unsigned firstCol)
    : MBM_MatrixMapper(block, sparse, firstRow, firstCol) {
    entryPointers.resize(sourceRows);
    for (unsigned i = 0; i < sourceRows; ++i)
        entryPointers[i] = sparse.values + sparse.lowerBound(rowOffset + i, colOffset + i);
}

void MBM_DenseMatMainDiag_2_CSR3_Mapper::mapValues(double scale) {
    const std::size_t stride = std::size_t{sourceLeadingDimension} + 1;
    for (unsigned i = 0; i < sourceRows; ++i)
        *entryPointers[i] = sourceData[i * stride] * scale;
}

} // namespace velmora
