#include "velmora/matrix/MBM_SubMatrices.h"

#include "velmora/matrix/MBM_StructuredMatrices.h"

#include <cassert>
#include <cstdint>
#include <utility>

namespace velmora {

MBM_DenseSubMatrix::MBM_DenseSubMatrix(unsigned numOfRows, unsigned numOfCols, unsigned firstRow,
                                       unsigned firstCol, MBM_DenseMatrix& base)
    : MBM_DenseMatrix(numOfRows, numOfCols),
      baseMatrix(&base),
      leadingDimension(base.getLeadingDimension()) {
    if (errorCode != 0)
        return;
    if (std::uint64_t{rows} + firstRow > base.rows || std::uint64_t{cols} + firstCol > base.cols) {
        setError(12, "Dimensions of submatrix exceed surrounding base matrix");
        return;
    }
    rowOffset = firstRow;
    colOffset = firstCol;
    if (base.data)
        data = base.data + static_cast<std::size_t>(leadingDimension) * colOffset + rowOffset;
}

bool MBM_DenseSubMatrix::setValue(unsigned row, unsigned col, double value) {
    const std::size_t ld = leadingDimension;
    data[col * ld + row] = value;
    if (isSymmetric())
        data[row * ld + col] = value;
    else if (isSkewSymmetric())
        data[row * ld + col] = -value;
    return true;
}

MBM_GDSubM_of_GDM::MBM_GDSubM_of_GDM(unsigned numOfRows, unsigned numOfCols, unsigned firstRow,
                                     unsigned firstCol, MBM_DenseMatrix& base)
    : MBM_DenseSubMatrix(numOfRows, numOfCols, firstRow, firstCol, base) {}

MBM_SDSubM_of_SDM::MBM_SDSubM_of_SDM(unsigned numOfRows, unsigned numOfCols, unsigned firstRow,
                                     unsigned firstCol, MBM_DenseMatrix& base)
    : MBM_DenseSubMatrix(numOfRows, numOfCols, firstRow, firstCol, base) {
    assert(numOfRows == numOfCols && firstRow == firstCol);
}

void MBM_SDSubM_of_SDM::fillWithPattern(std::string pattern) {
    MBM_DenseMatrix::fillWithPattern(std::move(pattern));
    symmetrizeField(rows, leadingDimension, data, "Upper2Lower");
}

MBM_GDSubM_of_SDM::MBM_GDSubM_of_SDM(unsigned numOfRows, unsigned numOfCols, unsigned firstRow,
                                     unsigned firstCol, MBM_DenseMatrix& base)
    : MBM_DenseSubMatrix(numOfRows, numOfCols, firstRow, firstCol, base) {
    assert(numOfRows == numOfCols);
    if (errorCode != 0)
        return;
    const std::uint64_t n = rows;
    const bool hitsDiagonal = rowOffset > colOffset ? n + colOffset > rowOffset : n + rowOffset > colOffset;
    if (hitsDiagonal && rowOffset != colOffset)
        setError(13, "Dimensions of submatrix hit the main diagonal of the base matrix");
    if (hitsDiagonal)
        data = nullptr;
}

bool MBM_GDSubM_of_SDM::setValue(unsigned row, unsigned col, double value) {
    return baseMatrix->setValue(row + rowOffset, col + colOffset, value);
}

void MBM_GDSubM_of_SDM::fillWithPattern(std::string pattern) {
    MBM_DenseMatrix::fillWithPattern(std::move(pattern));
    mirrorIntoBase();
}

void MBM_GDSubM_of_SDM::mirrorIntoBase() {
    const std::size_t ld = leadingDimension;
    double* image = baseMatrix->data + rowOffset * ld + colOffset;
    for (unsigned j = 0; j < cols; ++j)
        for (unsigned i = 0; i < rows; ++i)
            image[i * ld + j] = data[j * ld + i];
}

} // namespace velmora
