#pragma once

#include "velmora/matrix/FixedSize.h"

namespace velmora {

/// Conversions between rotation matrices, Euler parameters and angular velocities.
class MBS_RotationMath {
  public:
    /// Euler parameters p[4] of the 3x3 matrix at `matrix` with leading dimension ld.
    static void rotationMatrixToEulerParameters(unsigned ld, const double* matrix, double* p);
    /// The same; `caseIndex` tells which of the four cases applied: 1 divides by e0, 2 by e1, 3 by e2, 4 by
    /// e3.
    static void rotationMatrixToEulerParametersWithCase(unsigned ld, const double* matrix, double* p,
                                                        unsigned* caseIndex);
    /// dp/dt from an angular velocity in the body frame: Gbar(p) dp = omegaBar and p'dp = 0, for a p of any
    /// norm.
    static Vec4 omegaBarToEulerRates(const Vec3& omegaBar, const Vec4& p);
};

} // namespace velmora
