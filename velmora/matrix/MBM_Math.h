#pragma once

#include "velmora/platform/Export.h"

namespace velmora {

class MBM_DenseMatrix;
class MBM_DenseVector;

/// Dense products and sums. op(X) is X, or its transpose where the flag says so.
///
/// Shapes of 3 and 4, which rule in multibody systems, run in unrolled kernels if the leading dimension of
/// every operand equals its rows; all else goes to BLAS. Operands must exist and fit: no dimension is tested.
/// A result must not share memory with an input, but for the in-place sums C = A or C = B without transposes
/// and for 3x3 products. Every write into a block of a symmetric matrix is mirrored in its base. Nothing is
/// allocated.
class VELMORA_EXPORT MBM_Math {
  public:
    /// y = alpha op(A) x + beta y. With beta exactly 0.0 the old y isn't read.
    static void matVecMult(const MBM_DenseMatrix& A, const MBM_DenseVector& x, MBM_DenseVector& y,
                           bool transpose, double alpha, double beta);

    /// C = alpha op(A) op(B). The old C isn't read.
    static void matMatMult(const MBM_DenseMatrix& A, const MBM_DenseMatrix& B, MBM_DenseMatrix& C,
                           bool transposeA, bool transposeB, double alpha);

    /// C = alpha op(A) + beta op(B). An operand with weight exactly 0.0 may go unread.
    static void matMatSum(const MBM_DenseMatrix& A, const MBM_DenseMatrix& B, MBM_DenseMatrix& C,
                          bool transposeA, bool transposeB, double alpha, double beta);

    /// y = alpha x + beta y.
    static void vecVecSumScaled(const MBM_DenseVector& x, MBM_DenseVector& y, double alpha, double beta);

    /// B = alpha op(A).
    static void matCopyScaled(const MBM_DenseMatrix& A, MBM_DenseMatrix& B, double alpha, bool transpose);

    /// B = A'.
    static void matTranspose(const MBM_DenseMatrix& A, MBM_DenseMatrix& B);

    /// M = alpha M.
    static void matInPlaceScaling(MBM_DenseMatrix& M, double alpha);

    /// Each of n numbers times 2 pi: Hz to rad/s.
    static void vecScaleBy2Pi(unsigned n, double* values);
};

} // namespace velmora
