#pragma once

#include "driver/EigenProblem.h"

#include <vector>

namespace velmora::driver {

/// Eigenvalues of the motion that the constraints leave, the nearest to the target.
struct EigenModes {
    std::vector<EigenMode> modes;  ///< in rising order of size; without those of size 0
    unsigned numOfZeros = 0;       ///< eigenvalues of size 0 among those found: motions that nothing holds
    double zeroLimit = 0.0;        ///< 1/s; below it an eigenvalue can't be told from 0
    unsigned degreesOfFreedom = 0; ///< half the number of finite eigenvalues
    bool isComplete = false;       ///< no eigenvalues but these
};

/// Beyond so many small motions the sparse method is the faster one.
constexpr unsigned largestDenseSize = 300;

/// Solves (s^2 M + s C + K) x + Cq' mu = 0, Cq x = 0 for s. With constraints that change along the motion x =
/// N z, the columns of N spanning what the constraints leave at each time, N' M dN/dt = 0, and
///
///     N'MN z'' + N'CN z' + (N'KN + N'(C - dM/dt)dN/dt - dN/dt'M dN/dt) z = 0
///
/// The multipliers' infinite eigenvalues don't come up. Throws std::domain_error, with the reason, if there
/// is no such solution.
EigenModes findModes(const LinearEquations& equations, const EigenSettings& settings);

} // namespace velmora::driver
