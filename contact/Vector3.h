#pragma once

#include "contact/Dual.h"

#include <array>
#include <cmath>

/// \file
/// Vectors and matrices of three over double or Dual numbers, and the rotation by Euler parameters. Operators
/// are inlined in any case: a vector of derivatives that is handed over in memory costs more than the sum.

namespace velmora::contact {

template <class T>
using Vector3 = std::array<T, 3>;
using Vec3 = Vector3<double>;

/// Columns: the first is the first axis.
template <class T>
using Matrix3 = std::array<Vector3<T>, 3>;
using Mat3 = Matrix3<double>;

// Sums and products of a double with a Dual are of type Dual.
template <class S, class T>
using Product = decltype(S() * T());
template <class S, class T>
using Sum = decltype(S() + T());

template <class S, class T>
[[gnu::always_inline]] inline Vector3<Sum<S, T>> operator+(const Vector3<S>& a, const Vector3<T>& b) {
    return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
template <class S, class T>
[[gnu::always_inline]] inline Vector3<Sum<S, T>> operator-(const Vector3<S>& a, const Vector3<T>& b) {
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
template <class S, class T>
[[gnu::always_inline]] inline Vector3<Product<S, T>> operator*(const Vector3<S>& a, const T& s) {
    return {a[0] * s, a[1] * s, a[2] * s};
}
template <class T>
[[gnu::always_inline]] inline Vector3<T>& operator+=(Vector3<T>& a, const Vector3<T>& b) {
    for (unsigned i = 0; i < 3; ++i)
        a[i] += b[i];
    return a;
}
template <class S, class T>
[[gnu::always_inline]] inline Product<S, T> dot(const Vector3<S>& a, const Vector3<T>& b) {
    return sumOfProducts(a[0], b[0], a[1], b[1], a[2], b[2]);
}
template <class S, class T>
[[gnu::always_inline]] inline Vector3<Product<S, T>> cross(const Vector3<S>& a, const Vector3<T>& b) {
    return {differenceOfProducts(a[1], b[2], a[2], b[1]), differenceOfProducts(a[2], b[0], a[0], b[2]),
            differenceOfProducts(a[0], b[1], a[1], b[0])};
}
inline double norm(const Vec3& a) {
    return std::sqrt(dot(a, a));
}

template <class S, class T>
Vector3<Product<S, T>> operator*(const Matrix3<S>& m, const Vector3<T>& u) {
    const auto row = [&](unsigned i) { return sumOfProducts(m[0][i], u[0], m[1][i], u[1], m[2][i], u[2]); };
    return {row(0), row(1), row(2)};
}
/// m' u
template <class S, class T>
Vector3<Product<S, T>> transposedTimes(const Matrix3<S>& m, const Vector3<T>& u) {
    return {dot(m[0], u), dot(m[1], u), dot(m[2], u)};
}

/// A(e), body frame to global frame; e0 is the scalar part. Nothing is normalised.
template <class T>
Matrix3<T> rotationOf(const T* e) {
    const T a = e[0] * 2.0, b = e[1] * 2.0, c = e[2] * 2.0, d = e[3] * 2.0;
    const T bb = b * e[1], cc = c * e[2], dd = d * e[3], ab = a * e[1], ac = a * e[2], ad = a * e[3];
    const T bc = b * e[2], bd = b * e[3], cd = c * e[3];
    return {{{1.0 - cc - dd, bc + ad, bd - ac},
             {bc - ad, 1.0 - bb - dd, cd + ab},
             {bd + ac, cd - ab, 1.0 - bb - cc}}};
}

/// Angular velocity in the global frame, G(e) de/dt.
template <class T>
Vector3<T> angularVelocityOf(const T* e, const T* rate) {
    const Vector3<T> v{e[1], e[2], e[3]}, dv{rate[1], rate[2], rate[3]};
    return (dv * e[0] - v * rate[0] + cross(v, dv)) * 2.0;
}

} // namespace velmora::contact
