#pragma once

/// The dense and sparse kernels of the vendor library that the system calls, under the vendor's names, with
/// 32-bit integers and column-major storage. The build option VELMORA_BLAS chooses what stands behind them.
///
/// Transposition codes are 'N' and 'T'; op(X) is X or its transpose. Leading dimensions count doubles. Sizes
/// of 0 are allowed. No function allocates, but for `mkl_dcsrcoo`.
namespace velmora::blas {

/// C = alpha op(A) op(B) + beta C; op(A) is m x k, op(B) k x n, C m x n. With beta 0.0 C isn't read.
void dgemm(char transA, char transB, int m, int n, int k, double alpha, const double* A, int lda,
           const double* B, int ldb, double beta, double* C, int ldc);

/// y = alpha op(A) x + beta y with unit strides; A is m x n. With beta 0.0 y isn't read.
void dgemv(char trans, int m, int n, double alpha, const double* A, int lda, const double* x, double beta,
           double* y);

/// x = alpha x.
void dscal(int n, double alpha, double* x);

/// y = alpha x + beta y.
void daxpby(int n, double alpha, const double* x, double beta, double* y);

/// x . y
double ddot(int n, const double* x, const double* y);

/// Euclidean norm of x.
double dnrm2(int n, const double* x);

/// B = alpha op(A); A is rows x cols. No shared memory.
void mkl_domatcopy(char trans, int rows, int cols, double alpha, const double* A, int lda, double* B,
                   int ldb);

/// A = alpha A; A is rows x cols.
void mkl_dimatcopy(int rows, int cols, double alpha, double* A, int lda);

/// C = alpha op(A) + beta op(B); C is rows x cols and may be an operand that isn't transposed.
void mkl_domatadd(char transA, char transB, int rows, int cols, double alpha, const double* A, int lda,
                  double beta, const double* B, int ldb, double* C, int ldc);

/// c = a + b; c may be a or b.
void vdAdd(int n, const double* a, const double* b, double* c);

/// c = a - b; c may be a or b.
void vdSub(int n, const double* a, const double* b, double* c);

/// Coordinates (rowNumbers, colNumbers, coordinateValues), one-based, in any order, to three-array compressed
/// rows, one-based, with rising columns in each of n rows: the vendor's job (2, 1, 1, 0, numNonZeros, 0).
/// `values` and `colIndices` take numNonZeros entries, `rowIndex` n + 1. Allocates scratch for the longest
/// row.
void mkl_dcsrcoo(int n, int numNonZeros, double* values, int* colIndices, int* rowIndex,
                 const double* coordinateValues, const int* rowNumbers, const int* colNumbers);

} // namespace velmora::blas
