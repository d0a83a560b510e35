#pragma once

#include "driver/EigenProblem.h"

#include <vector>

namespace velmora::driver {

/// Eigenvalues near a point, with shapes in scaled coordinates.
struct SparseModes {
    std::vector<EigenMode> modes; ///< of pairs one; zeros of the limit among them
    bool isComplete = false;      ///< all finite eigenvalues are found
};

/// Finds eigenvalues near a target, at least as many as wanted beside those of size 0, if there are so many.
///
/// Shift-invert with one sparse factorisation and a block Krylov space: blocks find eigenvalues that are
/// equal, such as those of bending in two planes. Throws std::domain_error if no factorisation is possible or
/// too few eigenvalues converge.
SparseModes findSparseModes(const ScaledEquations& equations, const EigenSettings& settings,
                            double zeroLimit);

} // namespace velmora::driver
