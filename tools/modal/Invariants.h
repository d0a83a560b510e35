#pragma once

#include <Eigen/Dense>
#include <Eigen/Sparse>

namespace velmora::tools {

/// How the mass of a body lies at points of it: kinetic energy = 1/2 sum over i, j of masses(i, j) v_i . v_j.
/// A cloud of point masses has a diagonal matrix, the consistent mass matrix of solid elements couples
/// neighbours.
struct MassField {
    Eigen::Matrix3Xd positions;         ///< per point, m
    Eigen::SparseMatrix<double> masses; ///< points x points, symmetric, kg
};

/// The nine inertia invariants of a body whose points move by u = Phi q, in the order and the shapes of a
/// modal file (A. A. Shabana, "Dynamics of Multibody Systems", chapter 5). s = position, phi_j = shape j at a
/// point; integrals over the mass.
struct Invariants {
    double mass = 0.0;             ///< 1
    Eigen::Vector3d centerOfMass;  ///< 2
    Eigen::Matrix3Xd momentum;     ///< 3: column j = integral of phi_j
    Eigen::Matrix3Xd moment;       ///< 4: column j = integral of s x phi_j
    Eigen::MatrixXd rotation;      ///< 5: rows 3 j to 3 j + 2 of column k = integral of phi_j x phi_k
    Eigen::MatrixXd modalMass;     ///< 6: integral of phi_j . phi_k
    Eigen::Matrix3d inertia;       ///< 7: integral of -tilde(s) tilde(s)
    Eigen::MatrixXd linearInertia; ///< 8: row j = integral of tilde(s) tilde(phi_j), row after row
    Eigen::MatrixXd squareInertia; ///< 9: rows 3 (j M + k) on = integral of tilde(phi_j) tilde(phi_k)
};

/// Shapes: 3 rows per point, one column per mode.
Invariants computeInvariants(const MassField& field, const Eigen::MatrixXd& shapes);

/// Moves the origin into the centre of mass.
void moveToCenterOfMass(MassField& field);
/// Of all points together.
Eigen::Vector3d centerOfMass(const MassField& field);

} // namespace velmora::tools
