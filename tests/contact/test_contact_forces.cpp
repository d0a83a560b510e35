#include "tests/contact/ContactCase.h"
#include "tests/support/AllocationCounter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace velmora::test {
namespace {

using testing::DoubleNear;
using testing::Pointwise;

void expectNear(const V3& actual, const V3& expected, double tolerance) {
    EXPECT_THAT(actual, Pointwise(DoubleNear(tolerance), expected));
}

class ContactForces : public testing::Test {
  protected:
    ScratchFolder folder;
    ContactCase c;

    void SetUp() override {
        c.path1 = folder.write("small.obj", boxObj({0.5, 0.5, 0.5}));
        c.path2 = folder.write("large.obj", boxObj({2, 2, 1}, 3));
    }
};

/// A block with sides of 1, depth d in a large one, upright and tilted a little. Columns of the large one
/// carry k d; those of the small one narrow at its walls, so that they carry a frustum.
TEST_F(ContactForces, blockCarriesPressureTimesAreaAndRightsItself) {
    const double d = 0.004, k = c.stiffness(), top = 1 - 2 * d, frustum = d * (1 + top + top * top) / 3;
    for (const auto& [task, volume] :
         {std::pair{0, (d + frustum) / 2}, std::pair{1, frustum}, std::pair{2, d}}) {
        c.task = task;
        const auto contact = c.create();
        ASSERT_TRUE(contact);
        Answer a = evaluate(contact.get(), at(0.3, 0.2, 1.5 - d), at(0, 0, 0));
        EXPECT_TRUE(a.isInContact);
        expectNear(a.force, {0, 0, k * volume}, 1e-9 * k);
        expectNear(a.torque1, {0, 0, 0}, 1e-9 * k);
        expectNear(a.torque2, {-0.2 * k * volume, 0.3 * k * volume, 0}, 1e-9 * k);
        expectNear(a.point, {0.3, 0.2, 1 - d / 2}, d / 2 + 1e-12);

        const double angle = 1e-3; // moment of the linear pressure, and the force at the shifted foot
        a = evaluate(contact.get(), turned(0.3, 0.2, 1.5 - d, angle, {0, 1, 0}), at(0, 0, 0));
        EXPECT_NEAR(a.torque1[1] / (-k * angle * (1.0 / 12 - d / 2)), 1, 0.04) << task;
    }
}

TEST_F(ContactForces, nothingActsApartAndBeyondTheDepthLimit) {
    c.task = 2;
    const auto contact = c.create();
    ASSERT_TRUE(contact);
    for (const double z : {1.5001, 5.0, std::nan("")}) {
        const Answer a = evaluate(contact.get(), at(0, 0, z), at(0, 0, 0));
        EXPECT_EQ(a.force, V3{});
        EXPECT_EQ(a.point, V3{});
        EXPECT_FALSE(a.isInContact);
    }
    expectNear(evaluate(contact.get(), at(0, 0, 1.401), at(0, 0, 0)).force, {0, 0, 0.099 * c.stiffness()},
               1e-3);
    expectNear(evaluate(contact.get(), at(0, 0, 1.399), at(0, 0, 0)).force, {0, 0, 0}, 1e-3);
}

/// A thin plate is touched from one side: the columns of its other side don't reach through, and those of its
/// walls end where they meet those of the side, at any fineness of the mesh.
TEST_F(ContactForces, columnsEndInTheMiddleOfTheBody) {
    c.task = 1;
    c.maxPenetration = 1e9;
    const double d = 0.004, top = 1 - 2 * d, frustum = d * (1 + top + top * top) / 3;
    for (const auto& [half, n] : {std::pair{0.01, 2}, std::pair{0.01, 8}, std::pair{0.4, 12}}) {
        c.path1 = folder.write("plate.obj", boxObj({0.5, 0.5, half}, n));
        const auto contact = c.create();
        ASSERT_TRUE(contact);
        EXPECT_FALSE(evaluate(contact.get(), at(0, 0, 1.001 + half), at(0, 0, 0)).isInContact);
        const double force = evaluate(contact.get(), at(0, 0, 1 - d + half), at(0, 0, 0)).force[2];
        EXPECT_NEAR(force / (frustum * c.stiffness()), 1, 5e-4) << half << " " << n;
    }
}

/// Ball of radius R, depth d in a plane. Columns of the plane carry the volume of the cap; columns of the
/// ball are radial, F = 2 pi k R^2 (R ln(R / (R - d)) - d).
TEST_F(ContactForces, ballConvergesToTheClosedFormula) {
    const double R = 0.5, d = 0.05, h = R - d;
    for (const int task : {1, 2}) {
        double lastError = 0;
        for (const int n : {8, 16, 32}) {
            c.path1 = folder.write("ball.obj", ballObj(R, n));
            c.task = task;
            const auto contact = c.create();
            ASSERT_TRUE(contact);
            const double radial = R * (R * R - h * h) - 2 * (R * R * R - h * h * h) / 3;
            const double exact = c.stiffness() * M_PI * (task == 1 ? radial : d * d * (R - d / 3));
            const Answer a =
                evaluate(contact.get(), turned(0.1, 0.2, 1 + R - d, 0.3, {0.6, 0, 0.8}), at(0, 0, 0));
            const double error = std::abs(a.force[2] / exact - 1);
            if (n > 8) {
                EXPECT_LT(error, lastError / 3) << task << " " << n;
            }
            lastError = error;
        }
        EXPECT_LT(lastError, 0.01);
    }
}

/// The frames of surfaces are placed in the global frame at the initial state, where body 1 stands turned by
/// 90 degrees about z: a surface file for the place of the graphics frame gives the same contact.
TEST_F(ContactForces, surfaceFramesStandInTheGlobalFrameAtTheInitialState) {
    c.path1 = folder.write("bar.obj", boxObj({0.5, 0.1, 0.5}));
    c.position1 = {5, 0, 0};
    c.orientation1 = {0, 1, 0, -1, 0, 0, 0, 0, 1};
    c.graphics1 = {5.5, 0, 0};
    const auto contact = c.create();
    ASSERT_TRUE(contact);
    // Back at the initial orientation the bar lies along x again, from 0 to 1 before its body.
    const double d = 0.01, area = 1 * 0.2;
    const Answer a = evaluate(contact.get(), turned(-0.5, 0, 1.5 - d, M_PI / 2, {0, 0, 1}), at(0, 0, 0));
    EXPECT_NEAR(a.force[2], c.stiffness() * area * d, 0.06 * c.stiffness() * area * d);
    EXPECT_NEAR(a.point[0], 0, 1e-9);
    EXPECT_NEAR(a.torque1[1] / a.force[2], -0.5, 1e-9);
}

TEST_F(ContactForces, bodiesExchangeMomentum) {
    c.compression = c.expansion = 1e3;
    c.friction = 0.4;
    c.path2 = folder.write("ball.obj", ballObj(0.6, 6));
    std::mt19937 random(1);
    std::uniform_real_distribution<double> any(-1, 1);
    for (const int task : {0, 1, 2}) {
        c.task = task;
        const auto contact = c.create();
        ASSERT_TRUE(contact);
        const V7 q1 = turned(0.3, 0.3, 0.95, 0.7, {0.6, 0.8, 0}), q2 = turned(0, 0.1, 0, 1.2, {0, 0.6, 0.8});
        V7 qd1, qd2;
        for (unsigned i = 0; i < 7; ++i) {
            qd1[i] = 0.1 * any(random);
            qd2[i] = 0.1 * any(random);
        }
        const Answer a = evaluate(contact.get(), q1, q2, qd1, qd2);
        ASSERT_GT(a.force[2], 1e3) << task;
        const V3 lever = cross({q1[0] - q2[0], q1[1] - q2[1], q1[2] - q2[2]}, a.force);
        for (unsigned i = 0; i < 3; ++i)
            EXPECT_NEAR(a.torque1[i] + lever[i] + a.torque2[i], 0, 1e-9 * a.force[2]);
    }
}

/// Work of the elastic forces on closed paths of both bodies, by the trapezoidal rule, which is exact but for
/// kinks on a smooth closed path.
TEST_F(ContactForces, elasticForcesHaveAPotential) {
    c.path2 = folder.write("ball.obj", ballObj(0.6, 4));
    for (const int task : {0, 1, 2}) {
        c.task = task;
        const auto contact = c.create();
        ASSERT_TRUE(contact);
        constexpr int numSteps = 600;
        double work = 0, turnover = 0;
        for (int i = 0; i < numSteps; ++i) {
            const double s = 2 * M_PI * i / numSteps;
            const V3 axis{0.6, 0.8, 0};
            const double angle = 0.5 + 0.15 * std::sin(s), angleRate = 0.15 * std::cos(s);
            const V3 velocity{-0.3 * std::sin(s), 0.2 * std::cos(s), 0.05 * std::cos(s)};
            const Answer a = evaluate(
                contact.get(),
                turned(0.1 + 0.3 * std::cos(s), 0.2 * std::sin(s), 1.08 + 0.05 * std::sin(s), angle, axis),
                at(0, 0, 0));
            double power = 0;
            for (unsigned k = 0; k < 3; ++k)
                power += a.force[k] * velocity[k] + a.torque1[k] * axis[k] * angleRate;
            work += power / numSteps;
            turnover += std::abs(power) / numSteps;
        }
        ASSERT_GT(turnover, 100) << task;
        EXPECT_NEAR(work / turnover, 0, 3e-4) << task;
    }
}

/// A block slides and sinks on a flat surface: the laws in closed form, for each way of transition.
TEST_F(ContactForces, dampingAndFrictionFollowTheLaw) {
    c.task = 2;
    c.compression = 2e3;
    c.expansion = 1e3;
    c.friction = 0.3;
    c.transitionDepth = 0.04;
    const double d = 0.01, k = c.stiffness();
    const std::array<double, 3> shares{1, 0.25, 0.25 * 0.25 * 2.5};
    for (const int mode : {0, 1, 2}) {
        c.mode = mode;
        const auto contact = c.create();
        ASSERT_TRUE(contact);
        for (const double speed : {0.05, -0.05, -1e4}) {
            const double damping =
                (speed > 0 ? c.compression : c.expansion) * shares[static_cast<unsigned>(mode)];
            const double pressure = std::max(0.0, k * d + damping * speed), sliding = 0.02;
            const V7 velocity{sliding, 0, -speed};
            const Answer a = evaluate(contact.get(), at(0, 0, 1.5 - d), at(0, 0, 0), velocity);
            const double factor = sliding / std::hypot(sliding, c.regularization);
            expectNear(a.force, {-c.friction * pressure * factor, 0, pressure}, 1e-8 * k);
        }
    }
}

TEST_F(ContactForces, evaluationAllocatesNothing) {
    const auto contact = c.create();
    const V7 q1 = at(0, 0, 1.49), q2 = at(0, 0, 0), rest{};
    const unsigned long before = allocationCount();
    evaluate(contact.get(), q1, q2);
    PCM_Contact_UpdateContactForceJacobian(contact.get(), q1.data(), q2.data(), rest.data(), rest.data());
    EXPECT_EQ(allocationCount(), before);
    EXPECT_TRUE(PCM_Contact_IsInContact(contact.get()));
}

} // namespace
} // namespace velmora::test
