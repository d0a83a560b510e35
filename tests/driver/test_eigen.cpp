#include "driver/EigenSolver.h"
#include "tests/driver/IntegratorFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <complex>
#include <numbers>

namespace velmora::driver {
namespace {

using Method = EigenSettings::Method;
using testing::DoubleNear;
using testing::Pointwise;

constexpr double gravity = 9.81;

/// Linearises at the consistent start, and finds modes.
EigenModes findModesAtStart(Input& input, const EigenSettings& settings = {},
                            PerturbationFrame frame = PerturbationFrame::Global) {
    const std::unique_ptr<MBS_Model> model = input.make();
    EXPECT_FALSE(model->isErrorOccured()) << model->getErrorString();
    HHTSystem system(model.get());
    const EquationNames names(model.get(), &input.data);
    Redundancy redundancy(&system, &names);
    HHTState state(model.get());
    EXPECT_EQ(ConsistentStart(&system, &names, &redundancy, {1.0}).run(state), StepResult::Converged);
    return findModes(Linearisation(&system, frame).compute(state), settings);
}

std::vector<double> getImaginaryParts(const EigenModes& found) {
    std::vector<double> parts;
    for (const EigenMode& mode : found.modes)
        parts.push_back(mode.value.imag());
    return parts;
}

auto areNear(const std::vector<double>& wanted, double relative) {
    return Pointwise(testing::Truly([relative](const auto& pair) {
                         return std::fabs(std::get<0>(pair) - std::get<1>(pair)) <=
                                relative * std::fabs(std::get<1>(pair));
                     }),
                     wanted);
}

/// A body whose centre of mass is at (0, 0, height), on a joint at the origin, with moments of inertia about
/// the centre.
void addOnJoint(Input& input, double height, const std::string& inertia, const std::string& omega,
                const std::string& flags, const std::string& velocity = "0, 0, 0") {
    input.addBody("body", 2.0, inertia, velocity, omega)->values[2] = "0, 0, " + toText(height);
    input.addJoint("joint", "body, 0", "0, 0, 0", flags);
    input.addGravity("0, 0, " + toText(-gravity));
}

TEST(Eigen, PhysicalPendulumSwingsHangingAndFallsStanding) {
    const double length = 0.7, rate = std::sqrt(2.0 * gravity * length / (0.3 + 2.0 * length * length));
    for (const double side : {-1.0, 1.0}) {
        Input input;
        addOnJoint(input, side * length, "0.3, 0.2, 0.1", "0, 0, 0", "dx dy dz ay az");
        const EigenModes found = findModesAtStart(input);
        EXPECT_EQ(found.degreesOfFreedom, 1);
        EXPECT_TRUE(found.isComplete);
        if (side < 0.0) {
            ASSERT_EQ(found.modes.size(), 1);
            EXPECT_NEAR(found.modes[0].value.imag(), rate, 1e-9 * rate);
            EXPECT_EQ(found.modes[0].value.real(), 0.0);
        } else {
            ASSERT_EQ(found.modes.size(), 2);
            EXPECT_NEAR(std::abs(found.modes[0].value.real()), rate, 1e-9 * rate);
            EXPECT_NEAR(found.modes[0].value.real(), -found.modes[1].value.real(), 1e-9 * rate);
        }
    }
}

// I f'' + m g l sin f = 0 about any motion: s^2 = -m g l cos f / I, with turning joints of changing
// directions.
TEST(Eigen, SwingingPendulumHasTheStiffnessOfItsAngle) {
    const double length = 0.7, inertia = 0.3 + 2.0 * length * length, spin = 5.0;
    for (const PerturbationFrame frame : {PerturbationFrame::Global, PerturbationFrame::Body})
        for (const Method method : {Method::Dense, Method::Sparse}) {
            Input input;
            input
                .addBody("body", 2.0, "0.3, 0.2, 0.1", "0, 0, " + toText(spin * 0.6 * length),
                         toText(spin) + ", 0, 0")
                ->values[2] = "0, " + toText(0.6 * length) + ", " + toText(-0.8 * length);
            input.data.getBlock("Body", 0)->values[4] =
                "0, " + toText(spin * 0.8 * length) + ", " + toText(spin * 0.6 * length);
            input.addJoint("joint", "body, 0", "0, 0, 0", "dx dy dz ay az");
            input.addGravity("0, 0, " + toText(-gravity));
            EigenSettings settings;
            settings.method = method;
            const double rate = std::sqrt(2.0 * gravity * length * 0.8 / inertia);
            EXPECT_THAT(getImaginaryParts(findModesAtStart(input, settings, frame)), areNear({rate}, 1e-7));
        }
}

// A sleeping top: a w^2 - I3 s w + m g l = 0 for turns of the axis, seen from the ground; its own turns take
// s from them.
TEST(Eigen, SleepingTopPrecessesAndNutates) {
    const double length = 0.3, I1 = 0.05 + 2.0 * length * length, I3 = 0.03, spin = 200.0;
    const double root = std::sqrt(I3 * I3 * spin * spin - 4.0 * I1 * 2.0 * gravity * length);
    const double slow = (I3 * spin - root) / (2.0 * I1), fast = (I3 * spin + root) / (2.0 * I1);
    for (const Method method : {Method::Dense, Method::Sparse}) {
        Input input;
        addOnJoint(input, length, "0.05, 0.05, 0.03", "0, 0, " + toText(spin), "dx dy dz");
        EigenSettings settings{2, 0.0, method};
        const EigenModes ground = findModesAtStart(input, settings);
        EXPECT_THAT(getImaginaryParts(ground), areNear({slow, fast}, 1e-7));
        for (const EigenMode& mode : ground.modes)
            EXPECT_LT(std::fabs(mode.value.real()), 1e-6);
        const EigenModes own = findModesAtStart(input, settings, PerturbationFrame::Body);
        EXPECT_THAT(getImaginaryParts(own), areNear({spin - fast, spin - slow}, 1e-7));
    }
}

} // namespace
} // namespace velmora::driver
