#pragma once

namespace velmora::small {

/// Kernels for sizes known at compile time over contiguous column-major operands; the compiler unrolls the
/// loops.

/// y = alpha A x + beta y. With beta exactly 0.0 the old y isn't read.
template <unsigned Rows, unsigned Cols>
void multiply(const double* A, const double* x, double* y, double alpha, double beta) {
    double sum[Rows];
    for (unsigned i = 0; i < Rows; ++i)
        sum[i] = A[i] * x[0];
    for (unsigned j = 1; j < Cols; ++j)
        for (unsigned i = 0; i < Rows; ++i)
            sum[i] += A[j * Rows + i] * x[j];
    if (alpha != 1.0)
        for (unsigned i = 0; i < Rows; ++i)
            sum[i] *= alpha;
    if (beta == 0.0)
        for (unsigned i = 0; i < Rows; ++i)
            y[i] = sum[i];
    else
        for (unsigned i = 0; i < Rows; ++i)
            y[i] = sum[i] + beta * y[i];
}

/// C = alpha A B with A Rows x Inner and B Inner x Cols; C shares no memory with A or B.
template <unsigned Rows, unsigned Inner, unsigned Cols>
void multiply(const double* A, const double* B, double* C, double alpha) {
    for (unsigned j = 0; j < Cols; ++j)
        multiply<Rows, Inner>(A, B + j * Inner, C + j * Rows, alpha, 0.0);
}

/// C = alpha A + beta B over N elements; with beta exactly 0.0 B isn't read. C may be A or B.
template <unsigned N>
void sum(const double* A, const double* B, double* C, double alpha, double beta) {
    if (beta == 0.0)
        for (unsigned i = 0; i < N; ++i)
            C[i] = alpha * A[i];
    else if (alpha == 1.0 && beta == 1.0)
        for (unsigned i = 0; i < N; ++i)
            C[i] = A[i] + B[i];
    else
        for (unsigned i = 0; i < N; ++i)
            C[i] = alpha * A[i] + beta * B[i];
}

/// C = alpha D B with the diagonal of the 3x3 D; C may be B.
inline void multiplyDiagonalLeft3(const double* D, const double* B, double* C, double alpha) {
    const double d[3] = {alpha * D[0], alpha * D[4], alpha * D[8]};
    for (unsigned j = 0; j < 3; ++j)
        for (unsigned i = 0; i < 3; ++i)
            C[3 * j + i] = d[i] * B[3 * j + i];
}

/// C = alpha A D with the diagonal of the 3x3 D; C may be A.
inline void multiplyDiagonalRight3(const double* A, const double* D, double* C, double alpha) {
    const double d[3] = {alpha * D[0], alpha * D[4], alpha * D[8]};
    for (unsigned j = 0; j < 3; ++j)
        for (unsigned i = 0; i < 3; ++i)
            C[3 * j + i] = A[3 * j + i] * d[j];
}

/// C = alpha A B for 3x3 matrices with 23 multiplications: J. D. Laderman, "A noncommutative algorithm for
/// multiplying 3 x 3 matrices using 23 multiplications", Bull. Amer. Math. Soc. 82 (1976). C may be A or B.
void multiplyLaderman(const double* A, const double* B, double* C, double alpha);

} // namespace velmora::small
