#include "velmora/matrix/MBM_Math.h"

#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/matrix/MBM_Vector.h"
#include "velmora/matrix/SmallKernels.h"
#include "velmora/platform/blas.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace velmora {

namespace {

char code(bool transpose) {
    return transpose ? 'T' : 'N';
}

int leadingDimension(const MBM_DenseMatrix& M) {
    return static_cast<int>(M.getLeadingDimension());
}

bool hasShape(const MBM_DenseMatrix& M, unsigned rows, unsigned cols) {
    return M.rows == rows && M.cols == cols;
}

bool isContiguous(const MBM_DenseMatrix& M) {
    return M.getLeadingDimension() == M.rows;
}

bool areContiguous(const MBM_DenseMatrix& A, const MBM_DenseMatrix& B, const MBM_DenseMatrix& C) {
    return isContiguous(A) && isContiguous(B) && isContiguous(C);
}

void diagonalMatVecMult(const MBM_DenseMatrix& A, const double* x, double* y, double alpha, double beta) {
    const std::size_t stride = std::size_t{A.getLeadingDimension()} + 1;
    for (unsigned i = 0; i < A.rows; ++i) {
        const double product = alpha * A.data[i * stride] * x[i];
        y[i] = beta == 0.0 ? product : product + beta * y[i];
    }
}

/// False, with nothing done, if there is no kernel for the shape.
bool smallMatVecMult(const MBM_DenseMatrix& A, const double* x, double* y, double alpha, double beta) {
    if ((A.rows != 3 && A.rows != 4) || (A.cols != 1 && A.cols != 3 && A.cols != 4) || !isContiguous(A))
        return false;
    switch (10 * A.rows + A.cols) {
    case 44:
        small::multiply<4, 4>(A.data, x, y, alpha, beta);
        break;
    case 43:
        small::multiply<4, 3>(A.data, x, y, alpha, beta);
        break;
    case 41:
        small::multiply<4, 1>(A.data, x, y, alpha, beta);
        break;
    case 34:
        small::multiply<3, 4>(A.data, x, y, alpha, beta);
        break;
    case 33:
        small::multiply<3, 3>(A.data, x, y, alpha, beta);
        break;
    default:
        small::multiply<3, 1>(A.data, x, y, alpha, beta);
    }
    return true;
}

/// False, with nothing done, if there is no kernel for the shapes.
bool smallMatMatMult(const MBM_DenseMatrix& A, const MBM_DenseMatrix& B, MBM_DenseMatrix& C, double alpha) {
    if (hasShape(A, 4, 3) && hasShape(B, 3, 4) && areContiguous(A, B, C)) {
        small::multiply<4, 3, 4>(A.data, B.data, C.data, alpha);
        return true;
    }
    if (!hasShape(A, 3, 3) || !hasShape(B, 3, 3) || !areContiguous(A, B, C))
        return false;
    if (A.isDiagonal())
        small::multiplyDiagonalLeft3(A.data, B.data, C.data, alpha);
    else if (B.isDiagonal())
        small::multiplyDiagonalRight3(A.data, B.data, C.data, alpha);
    else
        small::multiplyLaderman(A.data, B.data, C.data, alpha);
    return true;
}

/// Sums of vectors over contiguous storage; false, with nothing done, for other weights.
bool contiguousSum(const MBM_DenseMatrix& A, const MBM_DenseMatrix& B, MBM_DenseMatrix& C, double alpha,
                   double beta) {
    const std::uint64_t count = std::uint64_t{A.rows} * A.cols;
    if (count > static_cast<std::uint64_t>(std::numeric_limits<int>::max()) || !areContiguous(A, B, C))
        return false;
    const int n = static_cast<int>(count);
    if (alpha == 1.0 && beta == 1.0)
        blas::vdAdd(n, A.data, B.data, C.data);
    else if (alpha == 1.0 && beta == -1.0)
        blas::vdSub(n, A.data, B.data, C.data);
    else if (alpha == -1.0 && beta == 1.0)
        blas::vdSub(n, B.data, A.data, C.data);
    else
        return false;
    return true;
}

} // namespace

void MBM_Math::matVecMult(const MBM_DenseMatrix& A, const MBM_DenseVector& x, MBM_DenseVector& y,
                          bool transpose, double alpha, double beta) {
    if (A.rows == A.cols && A.isDiagonal())
        diagonalMatVecMult(A, x.data, y.data, alpha, beta);
    else if (transpose || !smallMatVecMult(A, x.data, y.data, alpha, beta))
        blas::dgemv(code(transpose), static_cast<int>(A.rows), static_cast<int>(A.cols), alpha, A.data,
                    leadingDimension(A), x.data, beta, y.data);
}

void MBM_Math::matMatMult(const MBM_DenseMatrix& A, const MBM_DenseMatrix& B, MBM_DenseMatrix& C,
                          bool transposeA, bool transposeB, double alpha) {
    if (transposeA || transposeB || !smallMatMatMult(A, B, C, alpha)) {
        const int m = static_cast<int>(transposeA ? A.cols : A.rows);
        const int n = static_cast<int>(transposeB ? B.rows : B.cols);
        const int k = static_cast<int>(transposeA ? A.rows : A.cols);
        blas::dgemm(code(transposeA), code(transposeB), m, n, k, alpha, A.data, leadingDimension(A), B.data,
                    leadingDimension(B), 0.0, C.data, leadingDimension(C));
    }
    C.mirrorIntoBase();
}

void MBM_Math::matMatSum(const MBM_DenseMatrix& A, const MBM_DenseMatrix& B, MBM_DenseMatrix& C,
                         bool transposeA, bool transposeB, double alpha, double beta) {
    const bool plain = !transposeA && !transposeB;
    if (plain && hasShape(A, 3, 3) && areContiguous(A, B, C))
        small::sum<9>(A.data, B.data, C.data, alpha, beta);
    else if (plain && hasShape(A, 4, 4) && areContiguous(A, B, C))
        small::sum<16>(A.data, B.data, C.data, alpha, beta);
    else if (alpha == 0.0)
        matCopyScaled(B, C, beta, transposeB);
    else if (beta == 0.0)
        matCopyScaled(A, C, alpha, transposeA);
    else if (!plain || !contiguousSum(A, B, C, alpha, beta))
        blas::mkl_domatadd(code(transposeA), code(transposeB), static_cast<int>(C.rows),
                           static_cast<int>(C.cols), alpha, A.data, leadingDimension(A), beta, B.data,
                           leadingDimension(B), C.data, leadingDimension(C));
    C.mirrorIntoBase();
}

void MBM_Math::vecVecSumScaled(const MBM_DenseVector& x, MBM_DenseVector& y, double alpha, double beta) {
    const int n = static_cast<int>(y.size);
    if (alpha == 1.0 && beta == 1.0)
        blas::vdAdd(n, x.data, y.data, y.data);
    else if (alpha == 0.0 && beta == 0.0)
        std::fill_n(y.data, n, 0.0);
    else if (alpha == 0.0)
        blas::dscal(n, beta, y.data);
    else
        blas::daxpby(n, alpha, x.data, beta, y.data);
}

void MBM_Math::matCopyScaled(const MBM_DenseMatrix& A, MBM_DenseMatrix& B, double alpha, bool transpose) {
    blas::mkl_domatcopy(code(transpose), static_cast<int>(A.rows), static_cast<int>(A.cols), alpha, A.data,
                        leadingDimension(A), B.data, leadingDimension(B));
    B.mirrorIntoBase();
}

void MBM_Math::matTranspose(const MBM_DenseMatrix& A, MBM_DenseMatrix& B) {
    matCopyScaled(A, B, 1.0, true);
}

void MBM_Math::matInPlaceScaling(MBM_DenseMatrix& M, double alpha) {
    if (alpha == 1.0)
        return;
    blas::mkl_dimatcopy(static_cast<int>(M.rows), static_cast<int>(M.cols), alpha, M.data,
                        leadingDimension(M));
    M.mirrorIntoBase();
}

void MBM_Math::vecScaleBy2Pi(unsigned n, double* values) {
    constexpr double twoPi = 6.283185307179586;
    blas::dscal(static_cast<int>(n), twoPi, values);
}

} // namespace velmora
