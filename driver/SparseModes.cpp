#include "driver/SparseModes.h"

#include <Eigen/Dense>
#include <Eigen/SparseLU>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <stdexcept>

// Notation: y = (x, x' / r) with the size r of the shift, W as in `EigenSolver`, a the multipliers of W x
//
// (1)  (A - p B) y = B g for the shift p, with x' = p x + g1, g = (g1, g2 / r):
//      | p^2 M + p C + K   Cq'   (C - dM/dt) M^-1 Cq' + dCq/dt' | | x  |   | -M g2 - (C + p M) g1 |
//      | Cq                0     0                              | | mu | = | 0                    |
//      | dCq/dt            0     Cq M^-1 Cq'                    | | a  |   | 0                    |
// (2)  Op g = y has the eigenvalues 1 / (s - p); those of s at infinity belong to 0
// (3)  Krylov space V of Op by blocks, H = V^h Op V: s = p + 1 / theta for H u = theta u, shape V u
//      (Saad, "Numerical Methods for Large Eigenvalue Problems", 2011, chapters 6 and 8)

namespace velmora::driver {

namespace {

using Complex = std::complex<double>;
using Eigen::MatrixXcd, Eigen::VectorXcd;
using SparseComplex = Eigen::SparseMatrix<Complex>;
using Real = ScaledEquations::Matrix;

constexpr Eigen::Index blockSize = 3;
constexpr unsigned numOfPurges = 2;  // of what belongs to eigenvalues at infinity
constexpr double shiftShare = 1e-3;  // of the reference, where modes of the smallest size are wanted
constexpr double shiftAngle = 1.1;   // rad; beside both axes, where eigenvalues use to be
constexpr double offsetShare = 1e-3; // of a target, by which the shift misses it
constexpr double tolerance = 1e-10;  // of residuals, over theta
constexpr double negligible = 1e-12; // what is left of a column that says nothing new
constexpr double sameValue = 1e-8;
constexpr Eigen::Index vectorsPerMode = 12;
constexpr Eigen::Index smallestLimit = 150;
constexpr double growthBetweenTests = 1.4;

class ShiftInvert {
  public:
    ShiftInvert(const ScaledEquations& scaled, Complex shift);
    MatrixXcd apply(const MatrixXcd& g) const; // (1)
    Eigen::Index getSize() const { return 2 * equations.M.rows(); }
    Complex getShift() const { return p; }

  private:
    const ScaledEquations& equations;
    Complex p;
    double r;
    SparseComplex matrix, dampingAndMass;
    Eigen::SparseLU<SparseComplex> factors;
};

void addBlock(std::vector<Eigen::Triplet<Complex>>& entries, const SparseComplex& block, Eigen::Index row,
              Eigen::Index column) {
    for (int j = 0; j < block.outerSize(); ++j)
        for (SparseComplex::InnerIterator entry(block, j); entry; ++entry)
            entries.emplace_back(row + entry.row(), column + entry.col(), entry.value());
}

ShiftInvert::ShiftInvert(const ScaledEquations& scaled, Complex shift)
    : equations(scaled),
      p(shift),
      r(std::abs(shift)) {
    const Eigen::Index n = equations.M.rows(), c = equations.Cq.rows();
    const Eigen::Index size = n + (equations.isMoving ? 2 : 1) * c;
    const SparseComplex M = equations.M.cast<Complex>(), C = equations.C.cast<Complex>();
    const SparseComplex K = equations.K.cast<Complex>(), Cq = equations.Cq.cast<Complex>();
    dampingAndMass = C + p * M;
    std::vector<Eigen::Triplet<Complex>> entries;
    addBlock(entries, SparseComplex(p * dampingAndMass) + K, 0, 0);
    addBlock(entries, Cq, n, 0);
    addBlock(entries, SparseComplex(Cq.transpose()), 0, n);
    if (equations.isMoving) {
        const Real massless = equations.getInverseMass() * Real(equations.Cq.transpose());
        const Real toMotion =
            Real((equations.C - equations.MRate) * massless) + Real(equations.CqRate.transpose());
        addBlock(entries, toMotion.cast<Complex>(), 0, n + c);
        addBlock(entries, equations.CqRate.cast<Complex>(), n + c, 0);
        addBlock(entries, Real(equations.Cq * massless).cast<Complex>(), n + c, n + c);
    }
    matrix.resize(size, size);
    matrix.setFromTriplets(entries.begin(), entries.end());
    factors.compute(matrix);
    if (factors.info() != Eigen::Success)
        throw std::domain_error(
            "the equations have no pivot: a motion that the constraints leave moves no mass");
}

MatrixXcd ShiftInvert::apply(const MatrixXcd& g) const {
    const Eigen::Index n = equations.M.rows();
    const MatrixXcd g1 = g.topRows(n), g2 = r * g.bottomRows(n);
    MatrixXcd right = MatrixXcd::Zero(matrix.rows(), g.cols());
    right.topRows(n) = -(equations.M.cast<Complex>() * g2) - dampingAndMass * g1;
    const MatrixXcd x = factors.solve(right).topRows(n);
    MatrixXcd y(g.rows(), g.cols());
    y << x, (p * x + g1) / r;
    return y;
}

/// Orthonormal vectors and what the operator makes of them.
class KrylovSpace {
  public:
    explicit KrylovSpace(const ShiftInvert& shiftInvert);
    /// False if the space can't grow.
    bool grow();
    Eigen::Index getSize() const { return V.cols(); }
    /// Converged eigenvalues without the small ones, those nearest to the shift first; all before the first
    /// that hasn't converged.
    std::vector<EigenMode> findConverged() const;

  private:
    void append(MatrixXcd block);
    const ShiftInvert& op;
    MatrixXcd V, OpV, H;
};

KrylovSpace::KrylovSpace(const ShiftInvert& shiftInvert) : op(shiftInvert) {
    std::minstd_rand generator;
    std::uniform_real_distribution<double> number(-1.0, 1.0);
    MatrixXcd block = MatrixXcd::NullaryExpr(op.getSize(), std::min(blockSize, op.getSize()),
                                             [&] { return Complex(number(generator), number(generator)); });
    for (unsigned i = 0; i < numOfPurges; ++i) {
        block = op.apply(block);
        block.colwise().normalize();
    }
    V.resize(op.getSize(), 0);
    OpV.resize(op.getSize(), 0);
    append(block);
}

void KrylovSpace::append(MatrixXcd block) {
    const Eigen::Index before = V.cols();
    for (Eigen::Index j = 0; j < block.cols() && V.cols() < op.getSize(); ++j) {
        VectorXcd v = block.col(j);
        const double length = v.norm();
        for (unsigned pass = 0; pass < 2; ++pass)
            v -= V * (V.adjoint() * v);
        if (!(v.norm() > negligible * length))
            continue;
        V.conservativeResize(Eigen::NoChange, V.cols() + 1);
        V.rightCols(1) = v.normalized();
    }
    const Eigen::Index added = V.cols() - before;
    if (added == 0)
        return;
    OpV.conservativeResize(Eigen::NoChange, V.cols());
    OpV.rightCols(added) = op.apply(V.rightCols(added));
    H.conservativeResize(V.cols(), V.cols());
    H.rightCols(added) = V.adjoint() * OpV.rightCols(added);
    H.bottomLeftCorner(added, before) = V.rightCols(added).adjoint() * OpV.leftCols(before);
}

bool KrylovSpace::grow() {
    const Eigen::Index before = V.cols();
    append(OpV.rightCols(std::min(blockSize, before)));
    return V.cols() > before;
}

std::vector<EigenMode> KrylovSpace::findConverged() const { // (3)
    const Eigen::ComplexEigenSolver<MatrixXcd> solver(H);
    std::vector<Eigen::Index> order(static_cast<std::size_t>(H.rows()));
    for (std::size_t i = 0; i < order.size(); ++i)
        order[i] = static_cast<Eigen::Index>(i);
    const auto& thetas = solver.eigenvalues();
    std::ranges::sort(order, std::greater(), [&](Eigen::Index i) { return std::abs(thetas[i]); });
    const double largest = std::abs(thetas[order.front()]);
    std::vector<EigenMode> modes;
    for (const Eigen::Index i : order) {
        const Complex theta = thetas[i];
        if (std::abs(theta) <= negligible * largest)
            break;
        const VectorXcd u = solver.eigenvectors().col(i).normalized();
        const VectorXcd vector = V * u;
        if ((OpV * u - theta * vector).norm() > tolerance * std::abs(theta))
            break;
        modes.push_back({op.getShift() + 1.0 / theta, vector.head(op.getSize() / 2)});
    }
    return modes;
}

/// Of each pair the one with positive imaginary part, also where only the other one was found.
std::vector<EigenMode> unitePairs(const std::vector<EigenMode>& found, double zeroLimit) {
    std::vector<EigenMode> modes;
    std::vector<bool> isUsed(found.size(), false);
    for (std::size_t i = 0; i < found.size(); ++i) {
        if (isUsed[i])
            continue;
        EigenMode mode = found[i];
        const double size = std::abs(mode.value);
        const bool isReal = std::fabs(mode.value.imag()) <= sameValue * size || size <= zeroLimit;
        if (!isReal) {
            for (std::size_t k = i + 1; k < found.size(); ++k)
                if (!isUsed[k] && std::abs(found[k].value - std::conj(mode.value)) <= sameValue * size) {
                    isUsed[k] = true;
                    break;
                }
            if (mode.value.imag() < 0.0)
                mode = {std::conj(mode.value), mode.shape.conjugate()};
        } else
            mode.value.imag(0.0);
        modes.push_back(std::move(mode));
    }
    return modes;
}

/// Size up to which no eigenvalue can be missing; where a target was given, no limit.
double measureReach(const ShiftInvert& op, const std::vector<EigenMode>& found, double target) {
    if (target > 0.0)
        return std::numeric_limits<double>::infinity();
    return found.empty() ? 0.0 : std::abs(found.back().value - op.getShift()) - std::abs(op.getShift());
}

Complex chooseShift(const ScaledEquations& equations, double target) {
    if (target > 0.0)
        return 2.0 * std::numbers::pi * target * Complex(offsetShare, 1.0);
    const double size = equations.reference > 0.0 ? shiftShare * equations.reference : 1.0;
    return std::polar(size, shiftAngle);
}

} // namespace

SparseModes findSparseModes(const ScaledEquations& equations, const EigenSettings& settings,
                            double zeroLimit) {
    const ShiftInvert op(equations, chooseShift(equations, settings.target));
    KrylovSpace space(op);
    const auto wanted = static_cast<Eigen::Index>(settings.numOfModes);
    const Eigen::Index limit = std::min(op.getSize(), smallestLimit + vectorsPerMode * wanted);
    const Eigen::Index numOfFinite = 2 * (equations.M.rows() - equations.Cq.rows());
    auto nextTest = static_cast<double>(std::min(limit, 3 * wanted));
    SparseModes result;
    for (bool isGrowing = true; isGrowing;) {
        isGrowing = space.getSize() < limit && space.grow();
        if (isGrowing && static_cast<double>(space.getSize()) < nextTest)
            continue;
        nextTest *= growthBetweenTests;
        const std::vector<EigenMode> found = space.findConverged();
        result.modes = unitePairs(found, zeroLimit);
        result.isComplete = static_cast<Eigen::Index>(found.size()) >= numOfFinite;
        const double reach = measureReach(op, found, settings.target);
        const auto numOfModes = std::ranges::count_if(result.modes, [&](const EigenMode& mode) {
            return std::abs(mode.value) > zeroLimit && std::abs(mode.value) <= reach;
        });
        if (result.isComplete || numOfModes >= wanted)
            return result;
    }
    if (space.getSize() >= limit && limit < op.getSize())
        throw std::domain_error("too few eigenvalues converge near the target; ask for fewer or another one");
    return result;
}

} // namespace velmora::driver
