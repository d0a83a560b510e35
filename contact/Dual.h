#pragma once

#include <array>
#include <cmath>

/// \file
/// Forward-mode derivatives: a value with its derivatives with respect to N variables. Every operation
/// applies its differential, so that a formula evaluated in Dual numbers gives the exact derivative of what
/// it computes in double (A. Griewank, A. Walther, "Evaluating Derivatives", chapter 3).

namespace velmora::contact {

template <int N>
struct Dual {
    double value = 0;
    std::array<double, N> d{};

    Dual() = default;
    Dual(double constant) : value(constant) {} // NOLINT(google-explicit-constructor): constants mix in

    /// The variable with that number.
    static Dual variable(double value, int number) {
        Dual x(value);
        x.d[static_cast<unsigned>(number)] = 1;
        return x;
    }

    Dual& operator+=(const Dual& y) {
        value += y.value;
        for (int i = 0; i < N; ++i)
            d[i] += y.d[i];
        return *this;
    }
    Dual& operator-=(const Dual& y) {
        value -= y.value;
        for (int i = 0; i < N; ++i)
            d[i] -= y.d[i];
        return *this;
    }
    Dual& operator*=(double c) {
        value *= c;
        for (int i = 0; i < N; ++i)
            d[i] *= c;
        return *this;
    }

    friend Dual operator+(Dual x, const Dual& y) { return x += y; }
    friend Dual operator-(Dual x, const Dual& y) { return x -= y; }
    friend Dual operator-(Dual x) { return x *= -1.0; }
    friend Dual operator*(Dual x, double c) { return x *= c; }
    friend Dual operator*(double c, Dual x) { return x *= c; }
    friend Dual operator*(const Dual& x, const Dual& y) {
        return x.chain(x.value * y.value, y.value, y, x.value);
    }
    friend Dual operator/(const Dual& x, const Dual& y) {
        const double quotient = x.value / y.value;
        return x.chain(quotient, 1 / y.value, y, -quotient / y.value);
    }
    friend Dual sqrt(const Dual& x) {
        const double root = std::sqrt(x.value);
        return x.chain(root, 0.5 / root, x, 0);
    }

  private:
    /// result with the differential slopeX dx + slopeY dy, where *this is x
    Dual chain(double result, double slopeX, const Dual& y, double slopeY) const {
        Dual z(result);
        for (int i = 0; i < N; ++i)
            z.d[i] = slopeX * d[i] + slopeY * y.d[i];
        return z;
    }
};

/// The value without derivatives.
inline double valueOf(double x) {
    return x;
}
template <int N>
double valueOf(const Dual<N>& x) {
    return x.value;
}

} // namespace velmora::contact
