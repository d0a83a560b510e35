#include "tools/modal/SparseModes.h"

#include "tools/modal/Invariants.h"

#include <fmt/format.h>

#include <cmath>

namespace velmora::tools {

namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;
using Sparse = Eigen::SparseMatrix<double>;

constexpr int mostIterations = 200;
constexpr double convergence = 1e-12; // of eigenvalues
constexpr double roundOff = 1e-14;    // of the mean stiffness by mass: below it they are zeros
constexpr double looseness = 1e-8;    // of the largest stiffness: what a rigid motion may meet

/// Masses for each direction.
Sparse tripled(const Sparse& masses) {
    std::vector<Eigen::Triplet<double>> entries;
    for (Index k = 0; k < masses.outerSize(); ++k)
        for (Sparse::InnerIterator m(masses, k); m; ++m)
            for (Index d = 0; d < 3; ++d)
                entries.emplace_back(3 * m.row() + d, 3 * m.col() + d, m.value());
    Sparse result(3 * masses.rows(), 3 * masses.cols());
    result.setFromTriplets(entries.begin(), entries.end());
    return result;
}

/// The six motions of the body as a whole, orthonormal with the mass.
MatrixXd rigidMotions(const SolidModel& model, const Sparse& M) {
    const Eigen::Vector3d center = centerOfMass({model.positions, model.masses});
    MatrixXd R = MatrixXd::Zero(3 * model.positions.cols(), 6);
    for (Index p = 0; p < model.positions.cols(); ++p)
        for (Index axis = 0; axis < 3; ++axis) {
            R(3 * p + axis, axis) = 1.0;
            const Eigen::Vector3d arm = model.positions.col(p) - center;
            R.block<3, 1>(3 * p, 3 + axis) = Eigen::Vector3d::Unit(axis).cross(arm);
        }
    const Eigen::LLT<MatrixXd> factor(R.transpose() * (M * R));
    return factor.matrixU().solve<Eigen::OnTheRight>(R);
}

/// What rounding leaves of an eigenvalue of zero.
double zeroEigenvalue(const SolidModel& model, const Sparse& M) {
    return roundOff * model.stiffness.diagonal().sum() / M.diagonal().sum();
}

/// Index of the largest entry.
Index largest(const VectorXd& values) {
    Index place = 0;
    values.maxCoeff(&place);
    return place;
}

/// Six springs at three points far from one another that hold the body statically determinate: loads that
/// inertia balances leave them without force, whatever their stiffness is.
Sparse supports(const SolidModel& model) {
    const auto& points = model.positions;
    const Index a = largest((points.colwise() - points.rowwise().mean()).colwise().squaredNorm());
    const Eigen::Matrix3Xd fromA = points.colwise() - points.col(a);
    const Index b = largest(fromA.colwise().squaredNorm());
    const Eigen::Vector3d along = fromA.col(b).normalized();
    const Eigen::Matrix3Xd fromLine = fromA - along * (along.transpose() * fromA);
    const Index c = largest(fromLine.colwise().squaredNorm());
    const Eigen::Vector3d normal = along.cross(fromLine.col(c).normalized());
    const double spring = model.stiffness.diagonal().mean();
    std::vector<Eigen::Triplet<double>> entries;
    const auto add = [&](Index point, const Eigen::Matrix3d& directions) {
        for (Index i = 0; i < 3; ++i)
            for (Index j = 0; j < 3; ++j)
                entries.emplace_back(3 * point + i, 3 * point + j, spring * directions(i, j));
    };
    add(a, Eigen::Matrix3d::Identity());
    add(b, Eigen::Matrix3d::Identity() - along * along.transpose());
    add(c, normal * normal.transpose());
    Sparse result(3 * points.cols(), 3 * points.cols());
    result.setFromTriplets(entries.begin(), entries.end());
    return result;
}

/// The stiffness of a free body, which rigid motions are kept out of.
class ElasticSolver {
  public:
    ElasticSolver(const SolidModel& model, const Sparse& massMatrix)
        : M(massMatrix),
          R(rigidMotions(model, massMatrix)),
          factor(model.stiffness + supports(model)) {
        const double most = model.stiffness.diagonal().maxCoeff() * R.cwiseAbs().maxCoeff();
        isFree = factor.info() == Eigen::Success &&
                 (model.stiffness * R).cwiseAbs().maxCoeff() < looseness * most &&
                 lowestEigenvalue() > zeroEigenvalue(model, M);
    }
    /// Whether the body is free, and one: nothing moves without stiffness but the whole.
    bool isSound() const { return isFree; }
    /// Displacements under loads, each balanced by the inertia of the body.
    MatrixXd solve(const MatrixXd& loads) const {
        MatrixXd u = factor.solve(loads - M * (R * (R.transpose() * loads)));
        u -= R * (R.transpose() * (M * u));
        return u;
    }

  private:
    /// A bound from above by inverse iteration, enough to tell zero.
    double lowestEigenvalue() const {
        VectorXd load = VectorXd::LinSpaced(M.rows(), 1.0, 2.0).array().sin(), u;
        for (int n = 0; n < 3; ++n) {
            u = solve(load);
            u /= std::sqrt(u.dot(M * u));
            load = M * u;
        }
        return 1.0 / u.dot(M * VectorXd(solve(load)));
    }

    const Sparse& M;
    MatrixXd R;
    Eigen::SimplicialLLT<Sparse> factor;
    bool isFree = false;
};

/// Eigenvalues and modes within the space of the displacements u under these loads, of unit modal mass. The
/// stiffness is u' loads: u' K u would lose as many digits as the stiffest mode is above the lowest.
struct Ritz {
    Ritz(const MatrixXd& loads, const ElasticSolver& elastic, const Sparse& M) {
        MatrixXd u = elastic.solve(loads);
        const VectorXd sizes = (u.cwiseProduct(M * u)).colwise().sum().cwiseSqrt();
        u = MatrixXd(u * sizes.cwiseInverse().asDiagonal());
        const MatrixXd K = u.transpose() * loads * sizes.cwiseInverse().asDiagonal();
        solver.compute(0.5 * (K + K.transpose()), u.transpose() * (M * u));
        shapes = u * solver.eigenvectors();
    }
    bool isSound() const { return solver.info() == Eigen::Success && shapes.allFinite(); }

    Eigen::GeneralizedSelfAdjointEigenSolver<MatrixXd> solver;
    MatrixXd shapes;
};

/// The lowest modes by subspace iteration (K.-J. Bathe, "Finite Element Procedures", chapter 11); no columns
/// if it doesn't converge.
MatrixXd lowestModes(const Sparse& M, const ElasticSolver& elastic, Index count) {
    const Index size = std::min(count + 8, M.rows() - 6);
    std::srand(1); // Eigen's numbers, the same at each run
    MatrixXd loads = MatrixXd::Random(M.rows(), size);
    VectorXd before = VectorXd::Zero(count);
    for (int n = 0; n < mostIterations; ++n) {
        const Ritz ritz(loads, elastic, M);
        if (!ritz.isSound())
            break;
        const VectorXd values = ritz.solver.eigenvalues().head(count);
        if (((values - before).array().abs() <= convergence * values.array()).all())
            return ritz.shapes.leftCols(count);
        before = values;
        loads = M * ritz.shapes;
    }
    return {};
}

} // namespace

Interface::Interface(const SolidModel& model, const std::vector<Index>& points)
    : center(Eigen::Vector3d::Zero()),
      motion(MatrixXd::Zero(6, 3 * model.positions.cols())) {
    for (const Index p : points)
        center += model.positions.col(p) / static_cast<double>(points.size());
    Eigen::Matrix3d spread = Eigen::Matrix3d::Zero();
    for (const Index p : points) {
        const Eigen::Vector3d r = model.positions.col(p) - center;
        spread += r.squaredNorm() * Eigen::Matrix3d::Identity() - r * r.transpose();
    }
    const Eigen::Matrix3d inverse = spread.inverse();
    for (const Index p : points) {
        const Eigen::Vector3d r = model.positions.col(p) - center;
        for (Index axis = 0; axis < 3; ++axis) {
            motion(axis, 3 * p + axis) = 1.0 / static_cast<double>(points.size());
            motion.block<3, 1>(3, 3 * p + axis) = inverse * r.cross(Eigen::Vector3d::Unit(axis));
        }
    }
}

bool Interface::isSurface() const {
    return motion.allFinite() && motion.cwiseAbs().maxCoeff() < 1e12;
}

Modes computeSparseModes(const SolidModel& model, const std::vector<Interface>& interfaces, int count) {
    Modes modes;
    const Sparse M = tripled(model.masses);
    const ElasticSolver elastic(model, M);
    if (!elastic.isSound()) {
        modes.error = "the stiffness matrix isn't that of one free body";
        return modes;
    }
    const auto attachments = static_cast<Index>(6 * interfaces.size());
    MatrixXd loads(M.rows(), count + attachments);
    if (count > 0) {
        const MatrixXd lowest = lowestModes(M, elastic, count);
        if (lowest.cols() == 0) {
            modes.error = fmt::format("the lowest {} modes can't be found", count);
            return modes;
        }
        loads.leftCols(count) = M * lowest;
    }
    for (std::size_t i = 0; i < interfaces.size(); ++i)
        loads.middleCols(count + 6 * static_cast<Index>(i), 6) = interfaces[i].motion.transpose();
    const Ritz ritz(loads, elastic, M);
    const VectorXd& values = ritz.solver.eigenvalues();
    if (!ritz.isSound() || !(values(0) > zeroEigenvalue(model, M))) {
        modes.error = "modes and static shapes of the interfaces depend on one another: ask for fewer modes";
        return modes;
    }
    modes.frequencies = values.cwiseSqrt() / (2.0 * M_PI);
    modes.shapes = ritz.shapes;
    orthonormalise(modes.shapes, M * modes.shapes);
    return modes;
}

} // namespace velmora::tools
