#include "velmora/bodies/MBS_RotationMath.h"
#include "velmora/bodies/RotationAlgebra.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numbers>
#include <random>

namespace velmora {
namespace {

std::mt19937 generator{7};

template <class M>
M randomMat() {
    std::uniform_real_distribution<double> number(-1.0, 1.0);
    M m;
    for (double& x : m.data)
        x = number(generator);
    return m;
}

// Central differences; exact up to rounding for the quadratic functions here.
template <int R>
Mat<R, 4> differenceByE(const std::function<Mat<R, 1>(const Vec4&)>& f, const Vec4& e) {
    constexpr double h = 1e-3;
    Mat<R, 4> d;
    for (int j = 0; j < 4; ++j) {
        Vec4 plus = e, minus = e;
        plus(j) += h;
        minus(j) -= h;
        const auto column = (0.5 / h) * (f(plus) - f(minus));
        for (int i = 0; i < R; ++i)
            d(i, j) = column(i);
    }
    return d;
}

template <int R, int C>
void expectNear(const Mat<R, C>& a, const Mat<R, C>& b, double bound = 1e-12) {
    for (std::size_t k = 0; k < a.data.size(); ++k)
        EXPECT_NEAR(a.data[k], b.data[k], bound) << "element " << k;
}

TEST(RotationAlgebra, DerivativesAgreeWithDifferencesAtAnyNorm) {
    for (int n = 0; n < 20; ++n) {
        const Vec4 e = randomMat<Vec4>(), x = randomMat<Vec4>();
        const Vec3 u = randomMat<Vec3>(), a = randomMat<Vec3>();
        expectNear(J(e, u), differenceByE<3>([&](const Vec4& y) { return A(y) * u; }, e));
        expectNear(K(e, u), differenceByE<3>([&](const Vec4& y) { return transposeTimes(A(y), u); }, e));
        expectNear(2.0 * S(u),
                   differenceByE<4>([&](const Vec4& y) { return transposeTimes(Gbar(y), u); }, e));
        expectNear(H(u), differenceByE<4>([&](const Vec4& y) { return transposeTimes(G(y), u); }, e));
        expectNear(E(a, u), differenceByE<4>([&](const Vec4& y) { return transposeTimes(J(y, u), a); }, e));
        expectNear(rateOfA(e, x) * u, J(e, u) * x);
        expectNear(skew(a) * u, cross(a, u));
        expectNear(Gbar(x) * e, -(Gbar(e) * x));
    }
}

// A is orthogonal for |e| = 1 only, and then maps the body-frame rate to the global one.
TEST(RotationAlgebra, AngularVelocityIsThatOfTheRotationMatrix) {
    const Vec4 raw = randomMat<Vec4>();
    const Vec4 e = (1.0 / norm(raw)) * raw;
    Vec4 de = randomMat<Vec4>();
    de -= dot(e, de) * e;
    const Vec3 u = randomMat<Vec3>();
    const Vec3 omegaBar = Gbar(e) * de, omega = G(e) * de;
    expectNear(J(e, u) * de, A(e) * cross(omegaBar, u));
    expectNear(omega, A(e) * omegaBar);
    expectNear(transposeTimes(A(e), A(e)), Mat3{{1, 0, 0, 0, 1, 0, 0, 0, 1}});
}

struct Turn {
    Vec3 axis;
    double angle;
    unsigned expectedCase;
};

class RotationToParameters : public testing::TestWithParam<Turn> {};

TEST_P(RotationToParameters, GivesBackTheMatrix) {
    const auto& [axis, angle, expectedCase] = GetParam();
    const Vec3 n = (std::sin(angle / 2) / norm(axis)) * axis;
    const Mat3 matrix = A({{std::cos(angle / 2), n(0), n(1), n(2)}});
    Vec4 p;
    unsigned caseIndex = 0;
    MBS_RotationMath::rotationMatrixToEulerParametersWithCase(3, matrix.data.data(), p.data.data(),
                                                              &caseIndex);
    EXPECT_EQ(caseIndex, expectedCase);
    EXPECT_NEAR(norm(p), 1.0, 1e-15);
    expectNear(A(p), matrix, 1e-15);
}

constexpr double pi = std::numbers::pi;
INSTANTIATE_TEST_SUITE_P(AllCases, RotationToParameters,
                         testing::Values(Turn{{{1, 0, 0}}, 0.0, 1}, Turn{{{1, 2, 3}}, 0.7, 1},
                                         Turn{{{1, 0, 0}}, pi, 2}, Turn{{{0, 1, 0}}, pi, 3},
                                         Turn{{{0, 0, 1}}, pi, 4}, Turn{{{3, 1, 1}}, 3.0, 2},
                                         Turn{{{1, 3, -1}}, 3.0, 3}, Turn{{{-1, 1, 3}}, -3.0, 4}));

TEST(RotationMath, RatesBelongToTheAngularVelocityAndKeepTheNorm) {
    for (const double length : {1.0, 0.9, 1.1}) {
        Vec4 p = randomMat<Vec4>();
        p *= length / norm(p);
        const Vec3 omegaBar = randomMat<Vec3>();
        const Vec4 dp = MBS_RotationMath::omegaBarToEulerRates(omegaBar, p);
        expectNear(Gbar(p) * dp, omegaBar);
        EXPECT_NEAR(dot(p, dp), 0.0, 1e-15);
    }
}

} // namespace
} // namespace velmora
