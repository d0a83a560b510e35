#pragma once

#include "driver/SmallMotions.h"

#include <Eigen/SparseCore>

#include <memory>
#include <vector>

namespace velmora::driver {

/// Equations of small motions x, as `SmallMotions` counts them, about a state, with coefficients frozen at
/// its instant:
///
///     M x'' + C x' + K x + Cq' mu = 0,   Cq x = 0
struct LinearEquations {
    using Matrix = Eigen::SparseMatrix<double>;
    Matrix M, C, K;                   ///< n x n
    Matrix Cq;                        ///< c x n; without the equations that repeat others
    Matrix CqRate, MRate;             ///< dCq/dt and dM/dt along the motion
    std::vector<unsigned> bodyOffset; ///< per body its first small motion, and n at the end
    double rate = 0.0;                ///< 1/s; how fast the state moves: 0 at rest without accelerations
    bool isByDifferences = false;     ///< entries of C and K that the kernel leaves out are differences
    double doubt = 0.0;               ///< 1/s^2; what differences leave open in K, over the masses
};

/// Makes the equations of small motions. With the columns of T along the motions that a body can make, and
/// K = dR/dq, D = dR/dqd of the residual R of the equations of motion,
///
///     dq = T x,   dqd = T x' + T' x,   dqdd = T x'' + 2 T' x' + T'' x   (dashes at T: along the motion)
///
///     M^ = T^t M T,   C^ = T^t (2 M T' + D T),   K^ = T^t (M T'' + D T' + K T),   Cq^ = Cq T
///
/// The matrices M, D, K and Cq are the kernel's. What their derivatives leave out shows when products with
/// random motions are compared with differences of residuals: then entries that differ are made so.
class Linearisation {
  public:
    /// The system isn't owned; its choice of equations left out counts.
    Linearisation(HHTSystem* system, PerturbationFrame frame);
    Linearisation(const Linearisation&) = delete;
    Linearisation& operator=(const Linearisation&) = delete;
    ~Linearisation();

    /// The state must hold accelerations and multipliers that fulfil the equations of motion. Leaves the
    /// kernel's caches at it. Throws std::domain_error if a residual nearby isn't finite.
    LinearEquations compute(const HHTState& state);

  private:
    class Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace velmora::driver
