#pragma once

#include <array>

/// \file
/// Forward-mode derivatives: a value with its derivatives with respect to N variables. Every operation
/// applies its differential, so that a formula evaluated in Dual numbers gives the exact derivative of what
/// it computes in double (A. Griewank, A. Walther, "Evaluating Derivatives", chapter 3).

namespace velmora::contact {

template <int N>
struct Dual {
    double value;
    std::array<double, N> d;

    Dual() : Dual(0.0) {}
    Dual(double constant) : value(constant), d{} {} // NOLINT(google-explicit-constructor): constants mix in

    /// With d[i] = slope(i).
    template <class Slope>
    static Dual make(double value, const Slope& slope) {
        Dual x(value, Unset{});
        for (unsigned i = 0; i < N; ++i)
            x.d[i] = slope(i);
        return x;
    }
    /// The variable with that number.
    static Dual variable(double value, unsigned number) {
        return make(value, [=](unsigned i) { return i == number ? 1.0 : 0.0; });
    }

    Dual& operator+=(const Dual& y) {
        value += y.value;
        for (unsigned i = 0; i < N; ++i)
            d[i] += y.d[i];
        return *this;
    }

    friend Dual operator+(const Dual& x, const Dual& y) {
        return make(x.value + y.value, [&](unsigned i) { return x.d[i] + y.d[i]; });
    }
    friend Dual operator-(const Dual& x, const Dual& y) {
        return make(x.value - y.value, [&](unsigned i) { return x.d[i] - y.d[i]; });
    }
    friend Dual operator+(const Dual& x, double c) {
        return make(x.value + c, [&](unsigned i) { return x.d[i]; });
    }
    friend Dual operator-(const Dual& x, double c) { return x + -c; }
    friend Dual operator-(double c, const Dual& x) {
        return make(c - x.value, [&](unsigned i) { return -x.d[i]; });
    }
    friend Dual operator-(const Dual& x) { return 0.0 - x; }
    friend Dual operator*(const Dual& x, double c) {
        return make(x.value * c, [&](unsigned i) { return x.d[i] * c; });
    }
    friend Dual operator*(double c, const Dual& x) { return x * c; }
    friend Dual operator*(const Dual& x, const Dual& y) {
        return make(x.value * y.value, [&](unsigned i) { return y.value * x.d[i] + x.value * y.d[i]; });
    }

  private:
    struct Unset {};
    Dual(double v, Unset) : value(v) {} // NOLINT: make sets the derivatives
};

/// The value without derivatives.
inline double valueOf(double x) {
    return x;
}
template <int N>
double valueOf(const Dual<N>& x) {
    return x.value;
}

/// a0 b0 + a1 b1 + a2 b2 and a0 b0 - a1 b1 for any mixture; for Dual numbers in one pass, with values in the
/// order of the plain formula.
template <class S, class T>
[[gnu::always_inline]] inline auto sumOfProducts(const S& a0, const T& b0, const S& a1, const T& b1,
                                                 const S& a2, const T& b2) {
    return a0 * b0 + a1 * b1 + a2 * b2;
}
template <int N>
Dual<N> sumOfProducts(const Dual<N>& a0, const Dual<N>& b0, const Dual<N>& a1, const Dual<N>& b1,
                      const Dual<N>& a2, const Dual<N>& b2) {
    return Dual<N>::make(a0.value * b0.value + a1.value * b1.value + a2.value * b2.value, [&](unsigned i) {
        return a0.d[i] * b0.value + a0.value * b0.d[i] + a1.d[i] * b1.value + a1.value * b1.d[i] +
               a2.d[i] * b2.value + a2.value * b2.d[i];
    });
}
template <class S, class T>
[[gnu::always_inline]] inline auto differenceOfProducts(const S& a0, const T& b0, const S& a1, const T& b1) {
    return a0 * b0 - a1 * b1;
}
template <int N>
Dual<N> differenceOfProducts(const Dual<N>& a0, const Dual<N>& b0, const Dual<N>& a1, const Dual<N>& b1) {
    return Dual<N>::make(a0.value * b0.value - a1.value * b1.value, [&](unsigned i) {
        return a0.d[i] * b0.value + a0.value * b0.d[i] - a1.d[i] * b1.value - a1.value * b1.d[i];
    });
}

} // namespace velmora::contact
