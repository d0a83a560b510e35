#include "velmora/bodies/MBS_FlexBody_Full_W_Matrices.h"

#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/platform/blas.h"

#include <algorithm>

namespace velmora {

namespace {

/// The pairs (a, b) of axes in the order in which the blocks X_ab stand.
struct AxisPair {
    int a, b;
};
constexpr AxisPair axisPairs[6] = {{0, 0}, {1, 1}, {2, 2}, {0, 1}, {0, 2}, {1, 2}};

/// F = sum over k of c_k times the k-th M x M block of the matrix.
void weightedSumOfBlocks(const MBM_GeneralDenseMatrix& blocks, const double* c, double* F) {
    const int elements = static_cast<int>(blocks.rows * blocks.rows);
    const int count = static_cast<int>(blocks.cols / blocks.rows);
    blas::dgemv('N', elements, count, 1.0, blocks.data, elements, c, 0.0, F);
}

} // namespace

void MBS_FlexBody_Full_Wrf_Matrix::update(const double* eta, const double* etaDot) {
    sumOfCj = sumOfCjDot = Mat3{};
    for (std::size_t j = 0; j < C->size(); ++j) {
        sumOfCj += eta[j] * (*C)[j];
        sumOfCjDot += etaDot[j] * (*C)[j];
    }
}

void MBS_FlexBody_Full_Wrf_Matrix::setRows(const Vec3& v, ModalRows& D) const {
    for (unsigned j = 0; j < D.numOfModes(); ++j)
        D.setColumn(j, (*C)[j] * v);
}

MBS_FlexBody_Full_Wtf_Matrix::MBS_FlexBody_Full_Wtf_Matrix(const MBM_GeneralDenseMatrix& invariants,
                                                           const MBM_GeneralDenseMatrix& transposed)
    : TofEta(invariants.rows),
      TofEtaDot(invariants.rows),
      TofEtaDotDot(invariants.rows),
      E(&invariants),
      ETransposed(&transposed) {}

void MBS_FlexBody_Full_Wtf_Matrix::update(const double* eta, const double* etaDot) {
    setT(eta, TofEta);
    setT(etaDot, TofEtaDot);
}

void MBS_FlexBody_Full_Wtf_Matrix::updateForAcceleration(const double* etaDotDot) {
    setT(etaDotDot, TofEtaDotDot);
}

void MBS_FlexBody_Full_Wtf_Matrix::setT(const double* x, ModalRows& T) const {
    const int M = static_cast<int>(E->rows);
    blas::dgemv('T', M, 3 * M, 1.0, E->data, M, x, 0.0, T.row(0)); // rows stand side by side
}

void MBS_FlexBody_Full_Wtf_Matrix::setFlexBlock(double s, const Vec3& v, double* F) const {
    weightedSumOfBlocks(*ETransposed, (s * v).data.data(), F);
}

MBS_FlexBody_Full_Wff_Matrix::MBS_FlexBody_Full_Wff_Matrix(const MBM_GeneralDenseMatrix& pairSums)
    : M(pairSums.rows),
      X(&pairSums),
      pairsTimesEta(pairSums.cols, 0.0),
      pairsTimesEtaDot(pairSums.cols, 0.0) {}

void MBS_FlexBody_Full_Wff_Matrix::update(const double* eta, const double* etaDot) {
    const int n = static_cast<int>(M);
    blas::dgemv('T', n, 6 * n, 1.0, X->data, n, eta, 0.0, pairsTimesEta.data());
    const double* Xeta = pairsTimesEta.data();
    for (const auto& [a, b] : axisPairs) {
        sOfEta(a, b) = sOfEta(b, a) = 0.5 * blas::ddot(n, eta, Xeta);
        sOfEtaDot(a, b) = sOfEtaDot(b, a) = blas::ddot(n, etaDot, Xeta);
        Xeta += M;
    }
}

void MBS_FlexBody_Full_Wff_Matrix::updateForAcceleration(const double* etaDot) {
    const int n = static_cast<int>(M);
    blas::dgemv('T', n, 6 * n, 1.0, X->data, n, etaDot, 0.0, pairsTimesEtaDot.data());
}

void MBS_FlexBody_Full_Wff_Matrix::setRatesOfRows(const Vec3& v, ModalRows& D) const {
    std::fill_n(D.row(0), std::size_t{3} * M, 0.0);
    addRows(v, pairsTimesEtaDot, D);
}

void MBS_FlexBody_Full_Wff_Matrix::addRows(const Vec3& v, const std::vector<double>& pairs,
                                           ModalRows& D) const {
    const double* p = pairs.data();
    for (unsigned j = 0; j < M; ++j, ++p) {
        const double x00 = p[0], x11 = p[M], x22 = p[2 * M], x01 = p[3 * M], x02 = p[4 * M], x12 = p[5 * M];
        D.row(0)[j] += x00 * v(0) + x01 * v(1) + x02 * v(2);
        D.row(1)[j] += x01 * v(0) + x11 * v(1) + x12 * v(2);
        D.row(2)[j] += x02 * v(0) + x12 * v(1) + x22 * v(2);
    }
}

// Half of v_a v_b X_ab over all nine pairs: a pair off the diagonal counts twice.
void MBS_FlexBody_Full_Wff_Matrix::setFlexBlock(const Vec3& v, double* F) const {
    double weights[6];
    std::ranges::transform(axisPairs, weights, [&](const AxisPair& pair) {
        return (pair.a == pair.b ? 0.5 : 1.0) * v(pair.a) * v(pair.b);
    });
    weightedSumOfBlocks(*X, weights, F);
}

} // namespace velmora
