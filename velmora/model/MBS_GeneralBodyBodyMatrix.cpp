#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"

#include "velmora/matrix/MBM_StructuredMatrices.h"

#include <algorithm>

namespace velmora {

MBS_GeneralBodyBodyMatrix::MBS_GeneralBodyBodyMatrix(unsigned rowTrans, unsigned rowRot, unsigned rowFlex,
                                                     unsigned colTrans, unsigned colRot, unsigned colFlex)
    : rowDof{rowTrans, rowRot, rowFlex},
      colDof{colTrans, colRot, colFlex} {
    for (unsigned r = 0; r < 3; ++r)
        for (unsigned c = 0; c < 3; ++c) {
            if (rowDof[r] == 0 || colDof[c] == 0)
                continue;
            block[r][c] = std::make_unique<MBM_GeneralDenseMatrix>(rowDof[r], colDof[c], 0.0);
            if (block[r][c]->errorCode != 0) {
                errorString = "Error: No allocation of memory possible, not in Excel";
                return;
            }
        }
}

MBS_GeneralBodyBodyMatrix::~MBS_GeneralBodyBodyMatrix() = default;

void MBS_GeneralBodyBodyMatrix::setBlockMatrix(unsigned r, unsigned c, const std::string& matrixClassName,
                                               unsigned rows, unsigned cols, double value) {
    if (matrixClassName == "MBM_GeneralDenseMatrix")
        block[r][c] = std::make_unique<MBM_GeneralDenseMatrix>(rows, cols, value);
    else if (matrixClassName == "MBM_SymmetricDenseMatrix")
        block[r][c] = std::make_unique<MBM_SymmetricDenseMatrix>(rows, value);
    else if (matrixClassName == "MBM_DiagonalDenseMatrix")
        block[r][c] = std::make_unique<MBM_DiagonalDenseMatrix>(rows, value);
    else
        block[r][c] = std::make_unique<MBM_SkewSymmetricDenseMatrix>(rows, value);
}

void MBS_GeneralBodyBodyMatrix::keepOnly(std::initializer_list<std::array<unsigned, 2>> blocksToKeep) {
    for (unsigned r = 0; r < 3; ++r)
        for (unsigned c = 0; c < 3; ++c)
            if (std::find(blocksToKeep.begin(), blocksToKeep.end(), std::array{r, c}) == blocksToKeep.end())
                deleteBlock(r, c);
}

void MBS_BodyBodyMatrixInstance::setToZero() {
    for (auto& row : block)
        for (auto& b : row)
            if (b)
                std::fill_n(b->data, std::size_t{b->rows} * b->cols, 0.0);
}

} // namespace velmora
