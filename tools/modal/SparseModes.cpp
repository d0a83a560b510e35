#include "tools/modal/SparseModes.h"

#include "tools/modal/Invariants.h"

#include <cmath>

namespace velmora::tools {

namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;
using Sparse = Eigen::SparseMatrix<double>;

constexpr int mostIterations = 200;
constexpr double convergence = 1e-12; // of eigenvalues
constexpr double shiftShare =
    1e-8; // of the mean stiffness by mass: small beside the lowest elastic eigenvalue

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

/// The stiffness of a free body, which rigid motions are kept out of.
class ElasticSolver {
  public:
    ElasticSolver(const SolidModel& model, const Sparse& massMatrix)
        : M(massMatrix),
          R(rigidMotions(model, massMatrix)) {
        const double shift = shiftShare * model.stiffness.diagonal().sum() / M.diagonal().sum();
        factor.compute(model.stiffness + shift * M);
    }
    bool isSound() const { return factor.info() == Eigen::Success; }
    /// Displacements under loads, each balanced by the inertia of the body.
    MatrixXd solve(const MatrixXd& loads) const {
        MatrixXd u = factor.solve(loads - M * (R * (R.transpose() * loads)));
        u -= R * (R.transpose() * (M * u));
        return u;
    }

  private:
    const Sparse& M;
    MatrixXd R;
    Eigen::SimplicialLLT<Sparse> factor;
};

/// Eigenvalues, and modes within the space of these columns.
struct Ritz {
    Ritz(const MatrixXd& V, const Sparse& K, const Sparse& M)
        : solver(V.transpose() * (K * V), V.transpose() * (M * V)),
          shapes(V * solver.eigenvectors()) {}
    Eigen::GeneralizedSelfAdjointEigenSolver<MatrixXd> solver;
    MatrixXd shapes;
};

/// Subspace iteration (K.-J. Bathe, "Finite Element Procedures", chapter 11).
MatrixXd lowestModes(const SolidModel& model, const Sparse& M, const ElasticSolver& elastic, Index count) {
    const Index size = std::min(count + 8, M.rows() - 6);
    std::srand(1); // Eigen's numbers, the same at each run
    MatrixXd X = elastic.solve(MatrixXd::Random(M.rows(), size));
    VectorXd before = VectorXd::Zero(count);
    for (int n = 0; n < mostIterations; ++n) {
        const Ritz ritz(X, model.stiffness, M);
        const VectorXd values = ritz.solver.eigenvalues().head(count);
        if (((values - before).array().abs() <= convergence * values.array()).all())
            return ritz.shapes.leftCols(count);
        before = values;
        X = elastic.solve(M * ritz.shapes);
    }
    return X.leftCols(count);
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
        modes.error =
            "the stiffness matrix isn't that of a free body, or the mass matrix isn't positive definite";
        return modes;
    }
    const auto attachments = static_cast<Index>(6 * interfaces.size());
    MatrixXd basis(M.rows(), count + attachments);
    if (count > 0)
        basis.leftCols(count) = lowestModes(model, M, elastic, count);
    for (std::size_t i = 0; i < interfaces.size(); ++i)
        basis.middleCols(count + 6 * static_cast<Index>(i), 6) =
            elastic.solve(interfaces[i].motion.transpose());
    for (Index j = 0; j < basis.cols(); ++j)
        basis.col(j) /= std::sqrt(basis.col(j).dot(M * basis.col(j)));
    const Ritz ritz(basis, model.stiffness, M);
    if (ritz.solver.info() != Eigen::Success || !(ritz.solver.eigenvalues()(0) > 0.0)) {
        modes.error = "modes and static shapes of the interfaces depend on one another: ask for fewer modes";
        return modes;
    }
    modes.frequencies = ritz.solver.eigenvalues().cwiseSqrt() / (2.0 * M_PI);
    modes.shapes = ritz.shapes;
    orthonormalise(modes.shapes, M * modes.shapes);
    return modes;
}

} // namespace velmora::tools
