#pragma once

#include <array>
#include <cmath>
#include <cstddef>

namespace velmora {

/// Small matrix of a size known at compile time, on the stack, column-major: element (i, j) at data[j*R + i].
/// All operations are inlined loops over constants, which the compiler unrolls.
template <int R, int C>
struct Mat {
    std::array<double, static_cast<std::size_t>(R* C)> data{};

    double& operator()(int i, int j) { return data[static_cast<std::size_t>(j * R + i)]; }
    double operator()(int i, int j) const { return data[static_cast<std::size_t>(j * R + i)]; }
    double& operator()(int i) { return data[static_cast<std::size_t>(i)]; }
    double operator()(int i) const { return data[static_cast<std::size_t>(i)]; }

    /// Copies R*C consecutive doubles, column after column.
    static Mat from(const double* source) {
        Mat m;
        for (std::size_t k = 0; k < m.data.size(); ++k)
            m.data[k] = source[k];
        return m;
    }
    void to(double* target) const {
        for (std::size_t k = 0; k < data.size(); ++k)
            target[k] = data[k];
    }
    void addTo(double* target) const {
        for (std::size_t k = 0; k < data.size(); ++k)
            target[k] += data[k];
    }

    Mat& operator+=(const Mat& b) {
        for (std::size_t k = 0; k < data.size(); ++k)
            data[k] += b.data[k];
        return *this;
    }
    Mat& operator-=(const Mat& b) {
        for (std::size_t k = 0; k < data.size(); ++k)
            data[k] -= b.data[k];
        return *this;
    }
    Mat& operator*=(double s) {
        for (double& x : data)
            x *= s;
        return *this;
    }
};

using Vec3 = Mat<3, 1>;
using Vec4 = Mat<4, 1>;
using Mat3 = Mat<3, 3>;
using Mat4 = Mat<4, 4>;
using Mat34 = Mat<3, 4>;
using Mat43 = Mat<4, 3>;

template <int R, int C>
inline Mat<R, C> operator+(Mat<R, C> a, const Mat<R, C>& b) {
    return a += b;
}
template <int R, int C>
inline Mat<R, C> operator-(Mat<R, C> a, const Mat<R, C>& b) {
    return a -= b;
}
template <int R, int C>
inline Mat<R, C> operator-(Mat<R, C> a) {
    return a *= -1.0;
}
template <int R, int C>
inline Mat<R, C> operator*(double s, Mat<R, C> a) {
    return a *= s;
}

/// Matrix product.
template <int R, int K, int C>
inline Mat<R, C> operator*(const Mat<R, K>& a, const Mat<K, C>& b) {
    Mat<R, C> c;
    for (int j = 0; j < C; ++j)
        for (int i = 0; i < R; ++i) {
            double sum = a(i, 0) * b(0, j);
            for (int k = 1; k < K; ++k)
                sum += a(i, k) * b(k, j);
            c(i, j) = sum;
        }
    return c;
}

template <int R, int C>
inline Mat<C, R> transpose(const Mat<R, C>& a) {
    Mat<C, R> t;
    for (int j = 0; j < C; ++j)
        for (int i = 0; i < R; ++i)
            t(j, i) = a(i, j);
    return t;
}

/// Transpose of a times b, with no transposed copy.
template <int K, int R, int C>
inline Mat<R, C> transposeTimes(const Mat<K, R>& a, const Mat<K, C>& b) {
    Mat<R, C> c;
    for (int j = 0; j < C; ++j)
        for (int i = 0; i < R; ++i) {
            double sum = a(0, i) * b(0, j);
            for (int k = 1; k < K; ++k)
                sum += a(k, i) * b(k, j);
            c(i, j) = sum;
        }
    return c;
}

template <int R>
inline double dot(const Mat<R, 1>& a, const Mat<R, 1>& b) {
    double sum = a(0) * b(0);
    for (int i = 1; i < R; ++i)
        sum += a(i) * b(i);
    return sum;
}

template <int R>
inline double norm(const Mat<R, 1>& a) {
    return std::sqrt(dot(a, a));
}

inline Vec3 cross(const Vec3& a, const Vec3& b) {
    return {{a(1) * b(2) - a(2) * b(1), a(2) * b(0) - a(0) * b(2), a(0) * b(1) - a(1) * b(0)}};
}

/// Rows of the diagonal matrix diag(d) times a.
template <int R, int C>
inline Mat<R, C> diagTimes(const Mat<R, 1>& d, Mat<R, C> a) {
    for (int j = 0; j < C; ++j)
        for (int i = 0; i < R; ++i)
            a(i, j) *= d(i);
    return a;
}

} // namespace velmora
