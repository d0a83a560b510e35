#pragma once

#include <Eigen/Dense>

#include <string>
#include <vector>

namespace velmora::tools {

/// Elastic modes of unit modal mass: frequencies rise, no mode moves the body as a whole.
struct Modes {
    Eigen::VectorXd frequencies; ///< Hz
    Eigen::MatrixXd shapes;      ///< degrees of freedom x modes
    std::string error;           ///< empty unless the modes couldn't be computed
};

/// Makes shapes that are nearly orthonormal with the mass so to rounding; `weighted` = mass times shapes.
void orthonormalise(Eigen::MatrixXd& shapes, const Eigen::MatrixXd& weighted);

/// The lowest `count` elastic modes of a free body with these stiffness and mass matrices.
Modes computeFreeModes(const Eigen::MatrixXd& stiffness, const Eigen::MatrixXd& mass, int count);

/// Modes of the body reduced to static shapes, one per held degree of freedom, and the lowest `count` modes
/// with all these held (R. R. Craig, M. C. C. Bampton, "Coupling of substructures for dynamic analyses", AIAA
/// Journal 6, 1968); made orthogonal, and without the six rigid modes that are among them.
Modes computeHeldModes(const Eigen::MatrixXd& stiffness, const Eigen::MatrixXd& mass,
                       const std::vector<int>& held, int count);

} // namespace velmora::tools
