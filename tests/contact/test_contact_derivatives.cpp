#include "tests/contact/ContactCase.h"

#include <gtest/gtest.h>

#include <random>

namespace velmora::test {
namespace {

/// q1, q2, qd1, qd2
using State = std::array<V7, 4>;
using V9 = std::array<double, 9>;

/// Force and both torques in one.
V9 vectorsAt(void* contact, const State& s) {
    const Answer a = evaluate(contact, s[0], s[1], s[2], s[3]);
    return {a.force[0],   a.force[1],   a.force[2],   a.torque1[0], a.torque1[1],
            a.torque1[2], a.torque2[0], a.torque2[1], a.torque2[2]};
}

V9 centralDifference(void* contact, const State& state, unsigned variable, double step) {
    State up = state, down = state;
    up[variable / 7][variable % 7] += step;
    down[variable / 7][variable % 7] -= step;
    V9 d = vectorsAt(contact, up);
    const V9 low = vectorsAt(contact, down);
    for (unsigned i = 0; i < 9; ++i)
        d[i] = (d[i] - low[i]) / (2 * step);
    return d;
}

V9 exactDerivative(void* contact, unsigned variable) {
    const int body = static_cast<int>(variable / 7 % 2) + 1, kind = static_cast<int>(variable / 14) + 1;
    V9 d{};
    const double* blocks[] = {PCM_Contact_GetContactForce_Jac(contact, body, kind),
                              PCM_Contact_GetContactTorque_E_Jac(contact, body, kind),
                              PCM_Contact_GetContactTorque_F_Jac(contact, body, kind)};
    for (unsigned i = 0; i < 9; ++i)
        d[i] = blocks[i / 3][3 * (variable % 7) + i % 3];
    return d;
}

double largest(const V9& x) {
    double size = 0;
    for (const double value : x)
        size = std::max(size, std::abs(value));
    return size;
}

double distance(const V9& x, const V9& y) {
    V9 z{};
    for (unsigned i = 0; i < 9; ++i)
        z[i] = x[i] - y[i];
    return largest(z);
}

class ContactDerivatives : public testing::TestWithParam<int> {
  protected:
    ScratchFolder folder;
    ContactCase c;
    std::mt19937 random{7};

    void SetUp() override {
        c.path1 = folder.write("ball.obj", ballObj(0.5, 5));
        c.path2 = folder.write("box.obj", boxObj({0.6, 0.5, 0.5}, 2));
        c.task = GetParam();
        c.maxPenetration = 0.3;
        c.compression = 4e3;
        c.expansion = 2e3;
        c.mode = GetParam() == 1 ? 1 : 2; // both slopes of the damping
        c.transitionDepth = 0.05;
        c.friction = 0.4;
    }

    double draw(double size) { return std::uniform_real_distribution<double>(-size, size)(random); }

    /// Bodies on top of each other, in rough alignment; Euler parameters are off norm 1 by some percent.
    State drawState() {
        State s{};
        for (unsigned i = 0; i < 7; ++i)
            for (unsigned k = 0; k < 4; ++k)
                s[k][i] = draw(k < 2 ? 0.15 : 0.2);
        s[0][2] += 0.85;
        s[0][3] += 1;
        s[1][3] += 1;
        return s;
    }
};

/// Kinks, where a velocity of approach changes its sign or a corner passes an edge, are kept out of the
/// differences by their own doing: on a smooth stretch two step sizes agree to second order, and their
/// extrapolation is exact to fourth; where they don't agree, the variable is left out. Few may be.
TEST_P(ContactDerivatives, agreeWithDifferencesOfTheForces) {
    const auto contact = c.create();
    ASSERT_TRUE(contact);
    int numCompared = 0, numLeftOut = 0;
    for (int trial = 0; trial < 8; ++trial) {
        const State s = drawState();
        const V9 vectors = vectorsAt(contact.get(), s);
        if (!PCM_Contact_IsInContact(contact.get()))
            continue;
        PCM_Contact_UpdateContactForceJacobian(contact.get(), s[0].data(), s[1].data(), s[2].data(),
                                               s[3].data());
        std::array<V9, 28> exact;
        for (unsigned n = 0; n < 28; ++n)
            exact[n] = exactDerivative(contact.get(), n);
        const Answer again = answerOf(contact.get());
        EXPECT_NEAR(again.force[2], vectors[2], 1e-9 * std::abs(vectors[2]));
        for (unsigned n = 0; n < 28; ++n) {
            const double step = 1e-5;
            const V9 coarse = centralDifference(contact.get(), s, n, step);
            V9 fine = centralDifference(contact.get(), s, n, step / 2);
            const double size = largest(fine) + largest(vectors) * 1e-2;
            if (distance(coarse, fine) > 1e-6 * size) {
                ++numLeftOut;
                continue;
            }
            for (unsigned i = 0; i < 9; ++i)
                fine[i] += (fine[i] - coarse[i]) / 3;
            EXPECT_LT(distance(fine, exact[n]), 4e-6 * size) << "variable " << n << " of trial " << trial;
            EXPECT_GT(largest(exact[n]), 0) << "variable " << n << " of trial " << trial;
            ++numCompared;
        }
    }
    EXPECT_GT(numCompared, 100);
    EXPECT_LT(numLeftOut, numCompared / 10);
}

TEST_P(ContactDerivatives, vanishApart) {
    const auto contact = c.create();
    State s = drawState();
    for (const double z : {0.85, 3.0}) {
        s[0][2] = z;
        PCM_Contact_UpdateContactForceJacobian(contact.get(), s[0].data(), s[1].data(), s[2].data(),
                                               s[3].data());
    }
    EXPECT_FALSE(PCM_Contact_IsInContact(contact.get()));
    for (unsigned n = 0; n < 28; ++n)
        EXPECT_EQ(largest(exactDerivative(contact.get(), n)), 0);
}

/// A box flat on a wider one with its edges in the planes between the other's columns: rounding alone decides
/// which of the lines meet.
TEST_P(ContactDerivatives, standRoundingWhereEdgesCoincide) {
    c.path1 = folder.write("small.obj", boxObj({0.3, 0.3, 0.3}, 3));
    c.path2 = folder.write("wide.obj", boxObj({0.5, 0.5, 0.5}, 5));
    c.compression = c.expansion = 0;
    const auto contact = c.create();
    const double angle = 0.5;
    const V3 up{0, -std::sin(angle), std::cos(angle)};
    const State s{turned(0, 0.79 * up[1], 0.79 * up[2], angle, {1, 0, 0}), turned(0, 0, 0, angle, {1, 0, 0}),
                  V7{}, V7{}};
    PCM_Contact_UpdateContactForceJacobian(contact.get(), s[0].data(), s[1].data(), s[2].data(), s[3].data());
    double stiffness = 0;
    for (unsigned i = 0; i < 9; ++i)
        stiffness -= up[i / 3] * up[i % 3] * exactDerivative(contact.get(), i / 3)[i % 3];
    // Depth 0.01; the columns of the small box narrow at its walls, by that much on each side.
    const double width = GetParam() == 2 ? 0.6 : 0.58;
    EXPECT_NEAR(stiffness, c.stiffness() * width * width, 0.05 * stiffness);
    for (unsigned n = 0; n < 28; ++n)
        EXPECT_LT(largest(exactDerivative(contact.get(), n)), 4 * stiffness) << "variable " << n;
}

INSTANTIATE_TEST_SUITE_P(Tasks, ContactDerivatives, testing::Values(0, 1, 2));

} // namespace
} // namespace velmora::test
