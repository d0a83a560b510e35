#pragma once

#include "velmora/bodies/RotationAlgebra.h"

/// \file
/// Inertia terms of a rigid body with its reference point at the centre of mass and axes along the principal
/// axes, and their derivatives. Formulas after P. E. Nikravesh, "Computer-Aided Analysis of Mechanical
/// Systems", chapter 8.
///
/// Notation: p, dp, a = Euler parameters, their rates and accelerations; I = (I1, I2, I3); w = Gbar(p) dp;
/// n = I w. With Gbar(x)' v = 2 S(v) x and Gbar(x) y = -Gbar(y) x, dw/dp = -Gbar(dp) and dw/d(dp) = Gbar(p).

namespace velmora::rigid {

/// tilde(w) I - tilde(n): the derivative of w x I w with respect to w.
inline Mat3 gyroscopicMatrix(const Vec3& I, const Vec3& w, const Vec3& n) {
    Mat3 m = skew(w);
    for (int j = 0; j < 3; ++j)
        for (int i = 0; i < 3; ++i)
            m(i, j) *= I(j);
    return m - skew(n);
}

/// (1) M = Gbar' I Gbar, symmetric.
inline Mat4 massBlock(const Vec3& I, const Vec4& p) {
    const Mat34 G = Gbar(p);
    return transposeTimes(G, diagTimes(I, G));
}

/// (2) d(Gbar' I Gbar a)/dp = 2 S(I Gbar a) - Gbar' I Gbar(a).
inline Mat4 inertiaForce_q(const Vec3& I, const Vec4& p, const Vec4& a) {
    const Mat34 IG = diagTimes(I, Gbar(p));
    return 2.0 * S(IG * a) - transposeTimes(IG, Gbar(a));
}

/// (3) Qvv = -Gbar' (w x n).
inline Vec4 velInertiaForce(const Vec4& p, const Vec3& w, const Vec3& n) {
    return transposeTimes(Gbar(p), cross(n, w));
}

/// (4) dQvv/dp = Gbar' (tilde(w) I - tilde(n)) Gbar(dp) - 2 S(w x n).
inline Mat4 velInertiaForce_q(const Vec4& p, const Vec4& dp, const Mat3& gyroscopic, const Vec3& wxn) {
    return transposeTimes(Gbar(p), gyroscopic * Gbar(dp)) - 2.0 * S(wxn);
}

/// (5) dQvv/d(dp) = -Gbar' (tilde(w) I - tilde(n)) Gbar.
inline Mat4 velInertiaForce_qd(const Vec4& p, const Mat3& gyroscopic) {
    const Mat34 G = Gbar(p);
    return -transposeTimes(G, gyroscopic * G);
}

} // namespace velmora::rigid
