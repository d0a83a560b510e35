#pragma once

#include "tools/modal/Modes.h"

#include <Eigen/Sparse>

namespace velmora::tools {

/// A body of points with three translations each, in the order x, y, z of the first point, of the second, ...
struct SolidModel {
    std::vector<unsigned> labels;          ///< per point
    Eigen::Matrix3Xd positions;            ///< per point, m
    Eigen::SparseMatrix<double> stiffness; ///< 3 n x 3 n, symmetric, of a free body
    Eigen::SparseMatrix<double> masses;    ///< n x n, symmetric: the same along all three axes
};

/// A surface that carries a joint: it moves by the mean of its points, and turns by the rotation that fits
/// their motion best. Load and motion are dual: a force spreads evenly, a moment in proportion to the
/// distance from the centre.
struct Interface {
    Interface(const SolidModel& model, const std::vector<Eigen::Index>& points);
    bool isSurface() const; ///< false for points in a line, which don't say how it turns

    Eigen::Vector3d center;
    Eigen::MatrixXd motion; ///< 6 x 3 n: displacement and turn of the centre; its transpose spreads loads
};

/// Elastic modes of unit modal mass, from the lowest `count` modes of the free body and its static shapes
/// under six loads at each interface that inertia balances (R. H. MacNeal, "A hybrid method of component mode
/// synthesis", Computers and Structures 1, 1971): loads there deform the reduced body as they do the whole
/// one.
Modes computeSparseModes(const SolidModel& model, const std::vector<Interface>& interfaces, int count);

} // namespace velmora::tools
