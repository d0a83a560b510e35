#include "velmora/platform/blas.h"

#if defined(VELMORA_BLAS_MKL)
#include <mkl_cblas.h>
#else
#include <cblas.h>
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <utility>
#include <vector>

namespace velmora::blas {

namespace {

CBLAS_TRANSPOSE code(char trans) {
    return trans == 'T' ? CblasTrans : CblasNoTrans;
}

/// BLAS refuses a leading dimension of 0 even where there is no element.
int leading(int ld) {
    return std::max(1, ld);
}

/// Element (i, j) of op(X) for storage with the leading dimension ld.
std::ptrdiff_t place(bool transposed, std::ptrdiff_t ld, int i, int j) {
    return transposed ? i * ld + j : j * ld + i;
}

/// Elements of a matrix up to which BLAS works in the calling thread. OpenBLAS shares out larger products,
/// and where other work keeps a core busy it then waits for that core, a thousand times longer than the
/// product takes.
constexpr int largestPiece = 8192;
constexpr int rowsOfPiece = 256; // at least, where the matrix has as many

} // namespace

void dgemm(char transA, char transB, int m, int n, int k, double alpha, const double* A, int lda,
           const double* B, int ldb, double beta, double* C, int ldc) {
    cblas_dgemm(CblasColMajor, code(transA), code(transB), m, n, k, alpha, A, leading(lda), B, leading(ldb),
                beta, C, leading(ldc));
}

void dgemv(char trans, int m, int n, double alpha, const double* A, int lda, const double* x, double beta,
           double* y) {
    if (std::int64_t{m} * n <= largestPiece) {
        cblas_dgemv(CblasColMajor, code(trans), m, n, alpha, A, leading(lda), x, 1, beta, y, 1);
        return;
    }
    const bool transposed = trans == 'T';
    const int rows = std::min(m, std::max(rowsOfPiece, largestPiece / n));
    const int cols = std::clamp(largestPiece / rows, 1, n);
    for (int i = 0; i < m; i += rows)
        for (int j = 0; j < n; j += cols) {
            const double share = (transposed ? i : j) == 0 ? beta : 1.0;
            cblas_dgemv(CblasColMajor, code(trans), std::min(rows, m - i), std::min(cols, n - j), alpha,
                        A + place(false, lda, i, j), leading(lda), x + (transposed ? i : j), 1, share,
                        y + (transposed ? j : i), 1);
        }
}

void dscal(int n, double alpha, double* x) {
    cblas_dscal(n, alpha, x, 1);
}

void daxpby(int n, double alpha, const double* x, double beta, double* y) {
    cblas_daxpby(n, alpha, x, 1, beta, y, 1);
}

double ddot(int n, const double* x, const double* y) {
    return cblas_ddot(n, x, 1, y, 1);
}

double dnrm2(int n, const double* x) {
    return cblas_dnrm2(n, x, 1);
}

// Transposed copies, matrix sums and vector sums are bound by memory and mostly tiny: plain loops serve them
// as well as a library, and read the same whichever library stands behind the rest.

void mkl_domatcopy(char trans, int rows, int cols, double alpha, const double* A, int lda, double* B,
                   int ldb) {
    const bool transposed = trans == 'T';
    for (int j = 0; j < cols; ++j)
        for (int i = 0; i < rows; ++i)
            B[place(transposed, ldb, i, j)] = alpha * A[place(false, lda, i, j)];
}

void mkl_dimatcopy(int rows, int cols, double alpha, double* A, int lda) {
    mkl_domatcopy('N', rows, cols, alpha, A, lda, A, lda);
}

void mkl_domatadd(char transA, char transB, int rows, int cols, double alpha, const double* A, int lda,
                  double beta, const double* B, int ldb, double* C, int ldc) {
    const bool transposedA = transA == 'T';
    const bool transposedB = transB == 'T';
    for (int j = 0; j < cols; ++j)
        for (int i = 0; i < rows; ++i)
            C[place(false, ldc, i, j)] =
                alpha * A[place(transposedA, lda, i, j)] + beta * B[place(transposedB, ldb, i, j)];
}

void vdAdd(int n, const double* a, const double* b, double* c) {
    for (int i = 0; i < n; ++i)
        c[i] = a[i] + b[i];
}

void vdSub(int n, const double* a, const double* b, double* c) {
    for (int i = 0; i < n; ++i)
        c[i] = a[i] - b[i];
}

void mkl_dcsrcoo(int n, int numNonZeros, double* values, int* colIndices, int* rowIndex,
                 const double* coordinateValues, const int* rowNumbers, const int* colNumbers) {
    // Counting sort by rows. While entries are placed, rowIndex[i] is the next free place of row i; at the
    // end it has become the start of row i + 1.
    std::fill_n(rowIndex, static_cast<std::size_t>(n) + 1, 0);
    int longest = 0;
    for (int k = 0; k < numNonZeros; ++k)
        longest = std::max(longest, ++rowIndex[rowNumbers[k] - 1]);
    for (int i = 0, start = 0; i <= n; ++i)
        start += std::exchange(rowIndex[i], start);
    for (int k = 0; k < numNonZeros; ++k) {
        const int next = rowIndex[rowNumbers[k] - 1]++;
        colIndices[next] = colNumbers[k];
        values[next] = coordinateValues[k];
    }
    std::vector<std::pair<int, double>> row;
    row.reserve(static_cast<std::size_t>(longest));
    for (int i = 0, start = 0; i < n; start = rowIndex[i], ++i) {
        row.clear();
        for (int k = start; k < rowIndex[i]; ++k)
            row.emplace_back(colIndices[k], values[k]);
        std::sort(row.begin(), row.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        for (int k = start; k < rowIndex[i]; ++k)
            std::tie(colIndices[k], values[k]) = row[static_cast<std::size_t>(k - start)];
    }
    std::copy_backward(rowIndex, rowIndex + n, rowIndex + n + 1);
    rowIndex[0] = 0;
    std::for_each(rowIndex, rowIndex + n + 1, [](int& position) { ++position; });
}

} // namespace velmora::blas
