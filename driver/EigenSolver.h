#pragma once

#include "driver/Linearisation.h"

#include <Eigen/Core>

#include <complex>
#include <vector>

namespace velmora::driver {

/// Motion x(t) = Re(shape exp(value t)).
struct EigenMode {
    std::complex<double> value; ///< 1/s; of a pair the one with positive imaginary part
    Eigen::VectorXcd shape;     ///< small motions, see `SmallMotions`
};

/// What is wanted of the eigenvalues.
struct EigenSettings {
    enum class Method { Automatic, Dense, Sparse };
    unsigned numOfModes = 20;
    double target = 0.0; ///< Hz; modes of sizes near it are wanted
    Method method = Method::Automatic;
};

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

/// Equations in coordinates in which all masses on the diagonal are 1 and the rows of Cq have length 1.
struct ScaledEquations {
    using Matrix = LinearEquations::Matrix;
    explicit ScaledEquations(const LinearEquations& equations);

    Matrix M, C, K, Cq, CqRate, MRate;
    Eigen::VectorXd scale;            ///< small motion per coordinate
    std::vector<unsigned> bodyOffset; ///< as in `LinearEquations`
    double reference = 0.0;           ///< 1/s; about the size of the largest eigenvalues
    bool isMoving = false;            ///< the constraints change
    Matrix getInverseMass() const;
};

} // namespace velmora::driver
