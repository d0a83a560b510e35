#include "driver/EigenSolver.h"

#include "driver/SparseModes.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>

// Notation: all in scaled coordinates; W = -M^-1 Cq' (Cq M^-1 Cq')^-1 dCq/dt, so that dN/dt = W N
//
// (1)  Cq' P = Q R;   N: the columns of Q beyond the rank
// (2)  with N'MN = L L':   K~ = L^-1 K_N L^-T, C~ alike
// (3)  C~ = 0 and K~ symmetric: s = sqrt(-k) for each eigenvalue k of K~
// (4)  else s of | 0       r I |   with r the reference rate, on (z, z' / r)
//                | -K~/r   -C~ |

namespace velmora::driver {

namespace {

using Eigen::MatrixXd, Eigen::VectorXd;
using Complex = std::complex<double>;

constexpr double rankTolerance = 1e-9;
constexpr double rounding = 1e-12; // of matrices that should be symmetric or zero
constexpr double zeroShare = 2e-7; // of the reference: double eigenvalues lose half of the digits
constexpr double realShare = 1e-9; // imaginary part of a real eigenvalue, over its size

/// Shape in scaled coordinates and eigenvalue.
using Modes = std::vector<EigenMode>;

struct ReducedEquations {
    MatrixXd N, C, K; // with the mass matrix 1; N L^-T in the place of N
};

ReducedEquations reduce(const ScaledEquations& full) {
    const MatrixXd Cq = full.Cq, M = full.M;
    const Eigen::Index n = M.rows();
    MatrixXd N = MatrixXd::Identity(n, n);
    if (Cq.rows() > 0) { // (1)
        Eigen::ColPivHouseholderQR<MatrixXd> qr(Cq.transpose());
        qr.setThreshold(rankTolerance);
        const Eigen::Index rank = qr.rank();
        N = MatrixXd(qr.householderQ()).rightCols(n - rank);
    }
    MatrixXd K = N.transpose() * (full.K * N);
    if (full.isMoving) {
        const MatrixXd massless = full.getInverseMass() * Cq.transpose();
        const MatrixXd W = -massless * MatrixXd(Cq * massless).ldlt().solve(MatrixXd(full.CqRate));
        const MatrixXd NRate = W * N;
        K += N.transpose() * ((full.C - full.MRate) * NRate) - NRate.transpose() * (full.M * NRate);
    }
    const Eigen::LLT<MatrixXd> llt(N.transpose() * M * N);
    if (llt.info() != Eigen::Success)
        throw std::domain_error("a motion that the constraints leave moves no mass");
    const auto divide = [&](MatrixXd matrix) -> MatrixXd { // (2)
        llt.matrixL().solveInPlace(matrix);
        MatrixXd transposed = matrix.transpose();
        llt.matrixL().solveInPlace(transposed);
        return transposed.transpose();
    };
    ReducedEquations result{N, divide(N.transpose() * (full.C * N)), divide(K)};
    const MatrixXd Lt = llt.matrixU();
    result.N = Lt.triangularView<Eigen::Upper>().solve<Eigen::OnTheRight>(N);
    return result;
}

Modes solveSymmetric(const ReducedEquations& reduced) { // (3)
    const Eigen::SelfAdjointEigenSolver<MatrixXd> solver(0.5 * (reduced.K + reduced.K.transpose()));
    Modes modes;
    for (Eigen::Index i = 0; i < reduced.K.rows(); ++i) {
        const double k = solver.eigenvalues()[i];
        const Eigen::VectorXcd shape = (reduced.N * solver.eigenvectors().col(i)).cast<Complex>();
        if (k > 0.0) {
            modes.push_back({{0.0, std::sqrt(k)}, shape});
            continue;
        }
        modes.push_back({{std::sqrt(-k), 0.0}, shape});
        modes.push_back({{-std::sqrt(-k), 0.0}, shape});
    }
    return modes;
}

Modes solveGeneral(const ReducedEquations& reduced, double reference) { // (4)
    const Eigen::Index m = reduced.K.rows();
    MatrixXd A = MatrixXd::Zero(2 * m, 2 * m);
    A.topRightCorner(m, m).diagonal().setConstant(reference);
    A.bottomLeftCorner(m, m) = -reduced.K / reference;
    A.bottomRightCorner(m, m) = -reduced.C;
    const Eigen::EigenSolver<MatrixXd> solver(A);
    if (solver.info() != Eigen::Success)
        throw std::domain_error("the search for eigenvalues doesn't converge");
    const Eigen::MatrixXcd vectors = solver.eigenvectors();
    Modes modes;
    for (Eigen::Index i = 0; i < 2 * m; ++i)
        if (const Complex s = solver.eigenvalues()[i]; s.imag() >= 0.0)
            modes.push_back({s, reduced.N.cast<Complex>() * vectors.col(i).head(m)});
    return modes;
}

Modes solveDense(const ScaledEquations& equations) {
    const ReducedEquations reduced = reduce(equations);
    if (reduced.K.rows() == 0)
        return {};
    const double reference = equations.reference > 0.0 ? equations.reference : 1.0;
    const MatrixXd skew = reduced.K - reduced.K.transpose();
    const bool isSymmetric = skew.cwiseAbs().maxCoeff() <= rounding * reference * reference &&
                             reduced.C.cwiseAbs().maxCoeff() <= rounding * reference;
    return isSymmetric ? solveSymmetric(reduced) : solveGeneral(reduced, reference);
}

/// Takes zeros out, then all that is further from the target than what is wanted.
void select(EigenModes& found, const EigenSettings& settings) {
    std::erase_if(found.modes, [&](const EigenMode& mode) {
        if (std::abs(mode.value) > found.zeroLimit)
            return false;
        found.numOfZeros += mode.value.imag() != 0.0 ? 2 : 1;
        return true;
    });
    for (EigenMode& mode : found.modes)
        if (std::fabs(mode.value.imag()) <= realShare * std::abs(mode.value))
            mode.value.imag(0.0);
    const double target = 2.0 * std::numbers::pi * settings.target;
    const auto distance = [&](const EigenMode& mode) { return std::fabs(std::abs(mode.value) - target); };
    std::ranges::stable_sort(found.modes, {}, distance);
    if (found.modes.size() > settings.numOfModes) {
        found.modes.resize(settings.numOfModes);
        found.isComplete = false;
    }
    std::ranges::stable_sort(found.modes, {}, [](const EigenMode& mode) { return std::abs(mode.value); });
}

} // namespace

EigenModes findModes(const LinearEquations& equations, const EigenSettings& settings) {
    using Method = EigenSettings::Method;
    const ScaledEquations scaled(equations);
    const auto n = static_cast<unsigned>(scaled.M.rows());
    const bool isDense =
        settings.method == Method::Dense || (settings.method == Method::Automatic && n <= largestDenseSize);
    EigenModes result;
    result.degreesOfFreedom = n - static_cast<unsigned>(scaled.Cq.rows());
    result.zeroLimit = std::max(zeroShare * scaled.reference, std::sqrt(equations.doubt));
    if (isDense) {
        result.modes = solveDense(scaled);
        result.isComplete = true;
    } else {
        SparseModes sparse = findSparseModes(scaled, settings, result.zeroLimit);
        result.modes = std::move(sparse.modes);
        result.isComplete = sparse.isComplete;
    }
    for (EigenMode& mode : result.modes)
        mode.shape = scaled.scale.cast<Complex>().cwiseProduct(mode.shape);
    select(result, settings);
    return result;
}

} // namespace velmora::driver
