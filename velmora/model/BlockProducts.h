#pragma once

#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"
#include "velmora/model/MBS_General_CqT.h"

#include <array>

namespace velmora {

/// y += B x. A null block is passed over. x and y are plain arrays of fitting length.
inline void addProduct(const MBM_DenseMatrix* B, const double* x, double* y) {
    if (!B)
        return;
    for (unsigned j = 0; j < B->cols; ++j) {
        const double* column = B->data + std::size_t{j} * B->rows;
        for (unsigned i = 0; i < B->rows; ++i)
            y[i] += column[i] * x[j];
    }
}

/// y += B' x. A null block is passed over.
inline void addTransposedProduct(const MBM_DenseMatrix* B, const double* x, double* y) {
    if (!B)
        return;
    for (unsigned j = 0; j < B->cols; ++j) {
        const double* column = B->data + std::size_t{j} * B->rows;
        double sum = 0.0;
        for (unsigned i = 0; i < B->rows; ++i)
            sum += column[i] * x[i];
        y[j] += sum;
    }
}

/// Start of each kind's part in an array over the coordinates of one body.
inline std::array<unsigned, 3> kindOffsets(const std::array<unsigned, 3>& dof) {
    return {0, dof[Trans], dof[Trans] + dof[Rot]};
}

/// y += M x over all nine places; x holds the column body's coordinates, y the row body's.
inline void addProduct(const MBS_GeneralBodyBodyMatrix& M, const double* x, double* y) {
    const auto rowStart = kindOffsets(M.rowDof), colStart = kindOffsets(M.colDof);
    for (unsigned r = 0; r < 3; ++r)
        for (unsigned c = 0; c < 3; ++c)
            addProduct(M.block[r][c].get(), x + colStart[c], y + rowStart[r]);
}

/// y += M' x over all nine places; x holds the row body's coordinates, y the column body's.
inline void addTransposedProduct(const MBS_GeneralBodyBodyMatrix& M, const double* x, double* y) {
    const auto rowStart = kindOffsets(M.rowDof), colStart = kindOffsets(M.colDof);
    for (unsigned c = 0; c < 3; ++c)
        for (unsigned r = 0; r < 3; ++r)
            addTransposedProduct(M.block[r][c].get(), x + rowStart[r], y + colStart[c]);
}

/// y += B x for a transposed constraint Jacobian: x over the equations, y over the body's coordinates.
inline void addProduct(const MBS_General_CqT& B, const double* x, double* y) {
    addProduct(B.tPart.get(), x, y);
    addProduct(B.rPart.get(), x, y + B.transDof);
    addProduct(B.fPart.get(), x, y + B.transDof + B.rotDof);
}

/// y += B' x: x over the body's coordinates, y over the equations.
inline void addTransposedProduct(const MBS_General_CqT& B, const double* x, double* y) {
    addTransposedProduct(B.tPart.get(), x, y);
    addTransposedProduct(B.rPart.get(), x + B.transDof, y);
    addTransposedProduct(B.fPart.get(), x + B.transDof + B.rotDof, y);
}

} // namespace velmora
