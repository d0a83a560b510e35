#include "tools/modal/Invariants.h"

#include <array>

namespace velmora::tools {

namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

/// Per axis the rows of a field of vectors: points x columns.
std::array<MatrixXd, 3> byAxis(const MatrixXd& field) {
    std::array<MatrixXd, 3> rows;
    const Index points = field.rows() / 3;
    for (Index a = 0; a < 3; ++a) {
        rows[static_cast<std::size_t>(a)].resize(points, field.cols());
        for (Index p = 0; p < points; ++p)
            rows[static_cast<std::size_t>(a)].row(p) = field.row(3 * p + a);
    }
    return rows;
}

/// Integrals of the products u_a v_b of two fields of vectors, for all axes a, b and columns.
struct Products {
    Products(const MassField& field, const MatrixXd& u, const MatrixXd& v) {
        const auto U = byAxis(u), V = byAxis(v);
        for (std::size_t b = 0; b < 3; ++b) {
            const MatrixXd weighted = field.masses * V[b];
            for (std::size_t a = 0; a < 3; ++a)
                of[a][b] = U[a].transpose() * weighted;
        }
    }
    const MatrixXd& operator()(Index a, Index b) const {
        return of[static_cast<std::size_t>(a)][static_cast<std::size_t>(b)];
    }
    /// Integral of u . v
    MatrixXd scalar() const { return of[0][0] + of[1][1] + of[2][2]; }
    /// Integral of component c of u x v
    MatrixXd cross(Index c) const {
        return (*this)((c + 1) % 3, (c + 2) % 3) - (*this)((c + 2) % 3, (c + 1) % 3);
    }
    /// Integral of element (r, c) of tilde(u) tilde(v) = v u' - (u . v) 1
    MatrixXd tildes(Index r, Index c) const {
        return r == c ? MatrixXd((*this)(c, r) - scalar()) : (*this)(c, r);
    }

    std::array<std::array<MatrixXd, 3>, 3> of;
};

MatrixXd asField(const MassField& field) {
    return Eigen::Map<const MatrixXd>(field.positions.data(), 3 * field.positions.cols(), 1);
}

} // namespace

Eigen::Vector3d centerOfMass(const MassField& field) {
    const VectorXd weights = field.masses * VectorXd::Ones(field.masses.cols());
    return field.positions * weights / weights.sum();
}

void moveToCenterOfMass(MassField& field) {
    field.positions.colwise() -= centerOfMass(field);
}

Invariants computeInvariants(const MassField& field, const MatrixXd& shapes) {
    const Index M = shapes.cols();
    const VectorXd weights = field.masses * VectorXd::Ones(field.masses.cols());
    const MatrixXd s = asField(field);
    const Products ofShapes(field, shapes, shapes), mixed(field, s, shapes), ofPositions(field, s, s);
    Invariants result;
    result.mass = weights.sum();
    result.centerOfMass = field.positions * weights / result.mass;
    result.modalMass = ofShapes.scalar();
    result.momentum.resize(3, M);
    result.moment.resize(3, M);
    result.rotation.resize(3 * M, M);
    result.linearInertia.resize(M, 9);
    result.squareInertia.resize(3 * M * M, 3);
    const auto rows = byAxis(shapes);
    for (Index a = 0; a < 3; ++a) {
        result.momentum.row(a) = weights.transpose() * rows[static_cast<std::size_t>(a)];
        result.moment.row(a) = mixed.cross(a).row(0);
        const MatrixXd rotation = ofShapes.cross(a);
        for (Index j = 0; j < M; ++j)
            result.rotation.row(3 * j + a) = rotation.row(j);
        for (Index b = 0; b < 3; ++b) {
            result.inertia(a, b) = -ofPositions.tildes(a, b)(0, 0);
            result.linearInertia.col(3 * a + b) = mixed.tildes(a, b).row(0).transpose();
            const MatrixXd square = ofShapes.tildes(a, b);
            for (Index j = 0; j < M; ++j)
                for (Index k = 0; k < M; ++k)
                    result.squareInertia(3 * (j * M + k) + a, b) = square(j, k);
        }
    }
    return result;
}

} // namespace velmora::tools
