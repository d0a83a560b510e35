#pragma once

#include "tools/modal/Invariants.h"

#include <string>
#include <vector>

namespace velmora::tools {

/// What a modal file says of a body, in kg, m, s, N; origin in the centre of mass.
struct ModalBody {
    std::vector<unsigned> nodeLabels;
    Eigen::Matrix3Xd nodePositions; ///< per node
    Eigen::MatrixXd nodeShapes;     ///< 6 rows per node (translations, rotations), one column per mode
    Eigen::VectorXd frequencies;    ///< Hz, of modes with unit modal mass
    Invariants invariants;
};

/// The text of the file: every number with 17 significant digits, so that it is read back as it was.
std::string formatModalFile(const ModalBody& body);

/// Writes the file. The error, or nothing.
std::string writeModalFile(const ModalBody& body, const std::string& path);

} // namespace velmora::tools
