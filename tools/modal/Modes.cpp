#include "tools/modal/Modes.h"

#include <fmt/format.h>

#include <cmath>

namespace velmora::tools {

namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

constexpr Index numOfRigidModes = 6;
constexpr double rigidShare = 1e-6; // of the lowest elastic eigenvalue: above it a mode isn't rigid

/// Elastic modes of the matrices from the first that isn't rigid on, at most `count`.
Modes withoutRigidModes(const MatrixXd& stiffness, const MatrixXd& mass, Index count) {
    Modes modes;
    const Eigen::GeneralizedSelfAdjointEigenSolver<MatrixXd> solver(stiffness, mass);
    const VectorXd& values = solver.eigenvalues();
    if (solver.info() != Eigen::Success)
        modes.error = "the mass matrix isn't positive definite";
    else if (values.size() <= numOfRigidModes || count <= 0)
        modes.error = "no elastic mode is left";
    else if (!(std::abs(values(numOfRigidModes - 1)) < rigidShare * values(numOfRigidModes)))
        modes.error = "the model doesn't move freely: it has fewer than six rigid modes";
    if (!modes.error.empty())
        return modes;
    const Index M = std::min(count, values.size() - numOfRigidModes);
    modes.frequencies = values.segment(numOfRigidModes, M).cwiseSqrt() / (2.0 * M_PI);
    modes.shapes = solver.eigenvectors().middleCols(numOfRigidModes, M);
    return modes;
}

std::vector<int> allBut(const std::vector<int>& held, Index size) {
    std::vector<bool> isHeld(static_cast<std::size_t>(size), false);
    for (const int i : held)
        isHeld[static_cast<std::size_t>(i)] = true;
    std::vector<int> rest;
    for (int i = 0; i < size; ++i)
        if (!isHeld[static_cast<std::size_t>(i)])
            rest.push_back(i);
    return rest;
}

} // namespace

void orthonormalise(MatrixXd& shapes, const MatrixXd& weighted) {
    const Eigen::LLT<MatrixXd> factor(shapes.transpose() * weighted);
    shapes = MatrixXd(factor.matrixU().solve<Eigen::OnTheRight>(shapes));
}

Modes computeFreeModes(const MatrixXd& stiffness, const MatrixXd& mass, int count) {
    return withoutRigidModes(stiffness, mass, count);
}

Modes computeHeldModes(const MatrixXd& stiffness, const MatrixXd& mass, const std::vector<int>& held,
                       int count) {
    Modes modes;
    const std::vector<int> inner = allBut(held, stiffness.rows());
    const MatrixXd Kii = stiffness(inner, inner), Mii = mass(inner, inner);
    const Eigen::LLT<MatrixXd> factor(Kii);
    const Eigen::GeneralizedSelfAdjointEigenSolver<MatrixXd> solver(Kii, Mii);
    if (factor.info() != Eigen::Success || solver.info() != Eigen::Success) {
        modes.error = "the model moves although its interface is held";
        return modes;
    }
    const auto numHeld = static_cast<Index>(held.size());
    const Index numInner = std::min<Index>(count, Kii.rows());
    MatrixXd T = MatrixXd::Zero(stiffness.rows(), numHeld + numInner);
    T(held, Eigen::seqN(0, numHeld)).setIdentity();
    T(inner, Eigen::seqN(0, numHeld)) = -factor.solve(stiffness(inner, held));
    T(inner, Eigen::seqN(numHeld, numInner)) = solver.eigenvectors().leftCols(numInner);
    modes = withoutRigidModes(T.transpose() * stiffness * T, T.transpose() * mass * T, T.cols());
    if (modes.error.empty()) {
        modes.shapes = T * modes.shapes;
        orthonormalise(modes.shapes, mass * modes.shapes);
    }
    return modes;
}

} // namespace velmora::tools
