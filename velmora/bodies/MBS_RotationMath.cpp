#include "velmora/bodies/MBS_RotationMath.h"

#include "velmora/bodies/RotationAlgebra.h"

#include <cmath>

namespace velmora {

// R. A. Spurrier, "Comment on singularity-free extraction of a quaternion from a direction-cosine matrix"
// (1978): the case is chosen so that the number under the root stays well away from zero.
void MBS_RotationMath::rotationMatrixToEulerParametersWithCase(unsigned ld, const double* matrix, double* p,
                                                               unsigned* caseIndex) {
    const auto a = [&](unsigned i, unsigned j) { return matrix[(j - 1) * ld + (i - 1)]; };
    const double a11 = a(1, 1), a22 = a(2, 2), a33 = a(3, 3);
    const double d1 = a(3, 2) - a(2, 3), d2 = a(1, 3) - a(3, 1), d3 = a(2, 1) - a(1, 2);
    const double s12 = a(1, 2) + a(2, 1), s13 = a(1, 3) + a(3, 1), s23 = a(2, 3) + a(3, 2);
    const auto store = [&](unsigned which, double e0, double e1, double e2, double e3) {
        *caseIndex = which;
        p[0] = e0;
        p[1] = e1;
        p[2] = e2;
        p[3] = e3;
    };
    if (a22 >= -a33 && a11 >= -a22 && a11 >= -a33) {
        const double s = std::sqrt(1 + a11 + a22 + a33);
        store(1, s / 2, d1 / (2 * s), d2 / (2 * s), d3 / (2 * s));
    } else if (-a33 >= a22 && a11 >= a22 && a11 >= a33) {
        const double s = std::sqrt(1 + a11 - a22 - a33);
        store(2, d1 / (2 * s), s / 2, s12 / (2 * s), s13 / (2 * s));
    } else if (a22 >= a33 && a22 >= a11 && -a33 >= a11) {
        const double s = std::sqrt(1 - a11 + a22 - a33);
        store(3, d2 / (2 * s), s12 / (2 * s), s / 2, s23 / (2 * s));
    } else {
        const double s = std::sqrt(1 - a11 - a22 + a33);
        store(4, d3 / (2 * s), s13 / (2 * s), s23 / (2 * s), s / 2);
    }
}

void MBS_RotationMath::rotationMatrixToEulerParameters(unsigned ld, const double* matrix, double* p) {
    unsigned caseIndex = 0;
    rotationMatrixToEulerParametersWithCase(ld, matrix, p, &caseIndex);
}

// Gbar(p) Gbar(p)' = 4 |p|^2 I and Gbar(p) p = 0, so that Gbar' / (4 |p|^2) inverts the map.
Vec4 MBS_RotationMath::omegaBarToEulerRates(const Vec3& omegaBar, const Vec4& p) {
    return (0.25 / dot(p, p)) * transposeTimes(Gbar(p), omegaBar);
}

} // namespace velmora
