#pragma once

#include "velmora/matrix/FixedSize.h"

/// \file
/// The algebra of Euler parameters e = (e0, e1, e2, e3), e0 the scalar part, that all derivative blocks are
/// written in; literals stand column after column. Every function holds for an e of any norm: A is taken as
/// the quadratic form below, and nothing is normalised. Identities as in P. E. Nikravesh, "Computer-Aided
/// Analysis of Mechanical Systems", chapter 6.

namespace velmora {

/// Rotation matrix of e: body frame to global frame (a rotation for |e| = 1).
inline Mat3 A(const Vec4& e) {
    const double e1e1 = 2 * e(1) * e(1), e2e2 = 2 * e(2) * e(2), e3e3 = 2 * e(3) * e(3);
    const double e0e1 = 2 * e(0) * e(1), e0e2 = 2 * e(0) * e(2), e0e3 = 2 * e(0) * e(3);
    const double e1e2 = 2 * e(1) * e(2), e1e3 = 2 * e(1) * e(3), e2e3 = 2 * e(2) * e(3);
    // clang-format off
    return {{1 - (e2e2 + e3e3), e1e2 + e0e3,       e1e3 - e0e2,
             e1e2 - e0e3,       1 - (e1e1 + e3e3), e2e3 + e0e1,
             e1e3 + e0e2,       e2e3 - e0e1,       1 - (e1e1 + e2e2)}};
    // clang-format on
}

/// 2 [-e1 e0 e3 -e2; -e2 -e3 e0 e1; -e3 e2 -e1 e0]: omega in the body frame = Gbar(e) de/dt.
/// Gbar(x) y = -Gbar(y) x.
inline Mat34 Gbar(const Vec4& x) {
    const double a = 2 * x(0), b = 2 * x(1), c = 2 * x(2), d = 2 * x(3);
    // clang-format off
    return {{-b, -c, -d,
              a, -d,  c,
              d,  a, -b,
             -c,  b,  a}};
    // clang-format on
}

/// 2 [-e1 e0 -e3 e2; -e2 e3 e0 -e1; -e3 -e2 e1 e0]: omega in the global frame = G(e) de/dt.
inline Mat34 G(const Vec4& x) {
    const double a = 2 * x(0), b = 2 * x(1), c = 2 * x(2), d = 2 * x(3);
    // clang-format off
    return {{-b, -c, -d,
              a,  d, -c,
             -d,  a,  b,
              c, -b,  a}};
    // clang-format on
}

/// Cross-product matrix: skew(n) v = n x v.
inline Mat3 skew(const Vec3& n) {
    // clang-format off
    return {{   0,  n(2), -n(1),
            -n(2),     0,  n(0),
             n(1), -n(0),     0}};
    // clang-format on
}

/// Half the derivative of Gbar(e)' v with respect to e at constant v: Gbar(x)' v = 2 S(v) x. Skew-symmetric.
inline Mat4 S(const Vec3& v) {
    const double x = v(0), y = v(1), z = v(2);
    // clang-format off
    return {{ 0,  x,  y,  z,
             -x,  0, -z,  y,
             -y,  z,  0, -x,
             -z, -y,  x,  0}};
    // clang-format on
}

/// Derivative of G(e)' w with respect to e at constant w. Skew-symmetric.
inline Mat4 H(const Vec3& w) {
    const double x = 2 * w(0), y = 2 * w(1), z = 2 * w(2);
    // clang-format off
    return {{ 0,  x,  y,  z,
             -x,  0,  z, -y,
             -y, -z,  0,  x,
             -z,  y, -x,  0}};
    // clang-format on
}

/// Derivative of A(e) u with respect to e at e = x, constant u; linear in x and in u. J(e, u) e' = J(e', u)
/// e.
inline Mat34 J(const Vec4& x, const Vec3& u) {
    const double x0 = 2 * x(0), x1 = 2 * x(1), x2 = 2 * x(2), x3 = 2 * x(3);
    // clang-format off
    return {{x2 * u(2) - x3 * u(1),                 x3 * u(0) - x1 * u(2),                 x1 * u(1) - x2 * u(0),
             x2 * u(1) + x3 * u(2),                 x2 * u(0) - x0 * u(2) - 2 * x1 * u(1), x3 * u(0) + x0 * u(1) - 2 * x1 * u(2),
             x1 * u(1) + x0 * u(2) - 2 * x2 * u(0), x1 * u(0) + x3 * u(2),                 x3 * u(1) - x0 * u(0) - 2 * x2 * u(2),
             x1 * u(2) - x0 * u(1) - 2 * x3 * u(0), x0 * u(0) + x2 * u(2) - 2 * x3 * u(1), x1 * u(0) + x2 * u(1)}};
    // clang-format on
}

/// Rate of A(e) for the rate x of e: bilinear, and rateOfA(e, x) u = J(e, u) x.
inline Mat3 rateOfA(const Vec4& e, const Vec4& x) {
    const auto product = [&](int i, int j) { return 2 * (e(i) * x(j) + e(j) * x(i)); };
    const double r11 = product(1, 1), r22 = product(2, 2), r33 = product(3, 3);
    const double r01 = product(0, 1), r02 = product(0, 2), r03 = product(0, 3);
    const double r12 = product(1, 2), r13 = product(1, 3), r23 = product(2, 3);
    // clang-format off
    return {{-(r22 + r33), r12 + r03,    r13 - r02,
             r12 - r03,    -(r11 + r33), r23 + r01,
             r13 + r02,    r23 - r01,    -(r11 + r22)}};
    // clang-format on
}

/// Derivative of A(e)' s with respect to e at e = x, constant s. The transpose turns the sign of e0.
inline Mat34 K(const Vec4& x, const Vec3& s) {
    Mat34 k = J({{-x(0), x(1), x(2), x(3)}}, s);
    for (int i = 0; i < 3; ++i)
        k(i, 0) = -k(i, 0);
    return k;
}

/// Hessian of a' A(e) l with respect to e: symmetric, and constant since A is quadratic.
inline Mat4 E(const Vec3& a, const Vec3& l) {
    const double c00 = 2 * a(0) * l(0), c11 = 2 * a(1) * l(1), c22 = 2 * a(2) * l(2);
    const double E01 = 2 * (a(2) * l(1) - a(1) * l(2)), E12 = 2 * (a(1) * l(0) + a(0) * l(1));
    const double E02 = 2 * (a(0) * l(2) - a(2) * l(0)), E13 = 2 * (a(2) * l(0) + a(0) * l(2));
    const double E03 = 2 * (a(1) * l(0) - a(0) * l(1)), E23 = 2 * (a(2) * l(1) + a(1) * l(2));
    // clang-format off
    return {{0,   E01,              E02,              E03,
             E01, -2 * (c11 + c22), E12,              E13,
             E02, E12,              -2 * (c00 + c22), E23,
             E03, E13,              E23,              -2 * (c00 + c11)}};
    // clang-format on
}

/// e0^2 + e1^2 + e2^2 + e3^2 - 1, always summed in this order, so that the difference of two values at one e
/// is exactly zero.
inline double normResidual(const double* e) {
    return (((-1.0 + e[0] * e[0]) + e[1] * e[1]) + e[2] * e[2]) + e[3] * e[3];
}

} // namespace velmora
