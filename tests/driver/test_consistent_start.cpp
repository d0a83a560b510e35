#include "tests/driver/IntegratorFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velmora::driver {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr double mass = 2.0, inertia = 0.5;

/// A body with its centre of mass at (1, 0, 0) that turns about the z axis through the origin.
struct Pendulum {
    Input input;
    std::unique_ptr<ProbeModel> model;
    SimulationSettings settings{0.5};

    explicit Pendulum(bool hasSecondHinge = false) {
        input.addBody("arm", mass, "0.5, 0.5, 0.5", "0, 0, 0", "0, 0, 0")->values[2] =
            "1, 0, 0"; // the centre of mass
        input.addGravity("0, -10, 0");
        input.addJoint("hinge-a", "arm, 0", "0, 0, 0", "dx dy dz ax ay");
        if (hasSecondHinge)
            input.addJoint("hinge-b", "arm, 0", "0, 0, 1", "dx dy dz ax ay");
        model = std::make_unique<ProbeModel>(input.make().release(), ProbeModel::Force());
    }
    RunOutcome run() { return Simulation(model.get(), &input.data, nullptr, settings).run(); }
};

TEST(ConsistentStart, MovesAsLittleAsTheMassesLetIt) {
    Pendulum pendulum;
    const double shift = 1e-4, speed = 3.0, share = mass / (mass + inertia);
    pendulum.model->disturbStart = [&](auto& q, auto& qd) {
        q.bodyData(0)[1] += shift;
        qd.bodyData(0)[1] += speed;
    };
    pendulum.settings.startCorrectionLimit = 1.0;
    HHTSystem system(pendulum.model.get());
    HHTIntegrator integrator(&system, pendulum.settings);
    ASSERT_EQ(startConsistently(system, integrator, pendulum.input.data, pendulum.settings),
              StepResult::Converged);
    // An angle x costs m (x - shift)^2 + I x^2 in positions, and alike in velocities.
    const HHTState& state = integrator.getState();
    const double *p = state.q.bodyData(0) + 3, *pd = state.qd.bodyData(0) + 3;
    EXPECT_NEAR(2.0 * std::atan2(p[3], p[0]), share * shift, 3.0 * shift * shift);
    EXPECT_NEAR(multiplyGbar(p, pd)[2], share * speed, 3.0 * shift * speed);
    EXPECT_LT(std::fabs(state.q.bodyData(0)[1] - std::sin(2.0 * std::atan2(p[3], p[0]))), 1e-14);
    const double spin = multiplyGbar(p, pd)[2], pull = -10.0 * mass / (mass + inertia);
    EXPECT_NEAR(state.qdd.bodyData(0)[0], -spin * spin - p[3] * 2.0 * pull, 1e-3);
    EXPECT_NEAR(state.qdd.bodyData(0)[1], pull, 1e-2);
}

TEST(ConsistentStart, TellsHowFarItMovedAndRefusesBeyondTheLimit) {
    Pendulum pendulum;
    double shift = 5e-4;
    pendulum.model->disturbStart = [&](auto& q, auto&) { q.bodyData(0)[1] += shift; };
    const RunOutcome near = pendulum.run();
    ASSERT_TRUE(near.succeeded) << near.diagnostic;
    EXPECT_NEAR(near.start.rotation.size, 0.8 * shift, 1e-6);
    EXPECT_NEAR(near.start.translation.size, 0.2 * shift, 1e-6);
    EXPECT_EQ(near.start.rotation.body, "body <arm>");
    EXPECT_EQ(near.start.degreesOfFreedom, 1U);
    EXPECT_NEAR(near.start.acceleration.size, 8.0, 1e-2);
    shift = 0.1;
    const RunOutcome far = pendulum.run();
    EXPECT_TRUE(far.isModelAtFault);
    EXPECT_THAT(far.diagnostic,
                StartsWith("The initial positions don't fulfil the constraints: bodies must be moved"));
    EXPECT_THAT(far.diagnostic, HasSubstr("Farthest off is dyFixed of hinge-a (arm, ground)."));
    pendulum.model->disturbStart = [](auto&, auto& qd) { qd.bodyData(0)[1] = 1.0; };
    EXPECT_THAT(pendulum.run().diagnostic, StartsWith("The initial velocities don't fulfil the constraints"));
}

TEST(ConsistentStart, LeavesRedundantEquationsOutOrRefusesThem) {
    Pendulum single, twice(true);
    const RunOutcome one = single.run(), two = twice.run();
    ASSERT_TRUE(two.succeeded) << two.diagnostic;
    EXPECT_THAT(two.start.redundantEquations,
                ElementsAre("dxFixed of hinge-b (arm, ground) repeats hinge-a",
                            "axFixed of hinge-b (arm, ground) repeats hinge-a",
                            "dyFixed of hinge-b (arm, ground) repeats hinge-a",
                            "ayFixed of hinge-b (arm, ground) repeats hinge-a",
                            "dzFixed of hinge-b (arm, ground) repeats hinge-a"));
    EXPECT_EQ(two.start.degreesOfFreedom, 1U);
    EXPECT_EQ(two.steps, one.steps);
    EXPECT_NEAR(twice.model->lastQ.bodyData(0)[1], single.model->lastQ.bodyData(0)[1], 1e-12);
    twice.settings.refuseRedundant = true;
    const RunOutcome refused = twice.run();
    EXPECT_TRUE(refused.isModelAtFault);
    EXPECT_THAT(refused.diagnostic, StartsWith("5 constraint equations are redundant: dxFixed of hinge-b"));
}

TEST(ConsistentStart, NamesWhatContradictsTheOtherEquations) {
    Pendulum twice(true);
    twice.model->disturbResidual = [](double, double* residuals) { residuals[10] += 1e-3; };
    const RunOutcome outcome = twice.run();
    EXPECT_TRUE(outcome.isModelAtFault);
    EXPECT_THAT(outcome.diagnostic,
                StartsWith("The constraints contradict each other: positions that fulfil all other equations "
                           "don't fulfil dzFixed of hinge-b (arm, ground), which is off by 0.00"));
    Pendulum single; // no scalar product of unit vectors is -2
    single.model->disturbResidual = [](double, double* residuals) { residuals[2] += 2.0; };
    single.settings.startCorrectionLimit = 100.0;
    EXPECT_THAT(single.run().diagnostic,
                HasSubstr("Farthest off at the start is axFixed of hinge-a (arm, ground)"));
}

/// Adds a beam along x between two held bodies.
void addHeldBeam(Input& input) {
    for (const bool isLeft : {true, false}) {
        const std::string name = isLeft ? "left" : "right", place = isLeft ? "-1, 0, 0" : "1, 0, 0";
        input.addBody(name, 1.0, "1, 1, 1", "0, 0, 0", "0, 0, 0")->values[2] = place;
        input.addJoint("hold " + name, name + ", 0", place, "dx dy dz ax ay az");
        IO_DataModelBlock* weld = input.data.addBlock("Constraint", "FixRiBoFleBo", name, name, ".");
        weld->addKeyValue("BodyIDs", name + ", beam");
        weld->addKeyValue("Location", place);
        weld->addKeyValue("InterfaceNode", isLeft ? "1" : "9");
    }
    IO_DataModelBlock* beam = input.data.addBlock("Body", "MBS_FlexBody_Full", "beam", "beam", ".");
    for (const auto& [key, value] : {std::pair("Path2MtxFile", VELMORA_EXAMPLES "/rotating_beam.mtx"),
                                     {"Is_Itf_active", "yes"},
                                     {"Is_QuadraticTermOF_Itt_active", "yes"},
                                     {"GlobalDampingFactor", "0.01"},
                                     {"LocationCenterMass", "0, 0, 0"},
                                     {"OrientationPAI", "1,0,0, 0,1,0, 0,0,1"},
                                     {"InitialVelocityVector", "0, 0, 0"},
                                     {"InitialOmegaVector", "0, 0, 0"},
                                     {"BodyName", "beam"},
                                     {"RegardVelocityInertiaForcesInsideJacobian", "yes"}})
        beam->addKeyValue(key, value);
}

TEST(ConsistentStart, CountsHowFarModesMoveABody) {
    Input input;
    addHeldBeam(input);
    ProbeModel model(input.make().release(), ProbeModel::Force());
    ASSERT_EQ(model.getNumOfBodies(), 3U);
    // Mode 10 stretches the beam, which its welds don't allow. Kinetic energy makes 1/omega^2 its mass.
    constexpr double beamMass = 2.16, omega = 2.0 * 3.141592653589793 * 1403.61466;
    const double coordinatePerMetre = omega * std::sqrt(beamMass);
    constexpr unsigned mode = 16;
    double stretch = 1e-4; // root mean square
    model.disturbStart = [&](auto& q, auto& qd) {
        q.bodyData(2)[mode] = stretch * coordinatePerMetre;
        qd.bodyData(2)[mode] = 10.0 * coordinatePerMetre;
    };
    SimulationSettings settings{1e-3};
    settings.startCorrectionLimit = 1.0;
    const RunOutcome near = Simulation(&model, &input.data, nullptr, settings).run();
    ASSERT_TRUE(near.succeeded) << near.diagnostic;
    EXPECT_NEAR(near.start.translation.size, stretch, 1e-6 * stretch);
    EXPECT_EQ(near.start.translation.body, "body <beam>");
    EXPECT_NEAR(near.start.velocity.size, 10.0, 1e-5);
    EXPECT_EQ(EquationNames(&model, &input.data).getName(14 + mode), "body <beam>, coordinate eta10");
    settings.startCorrectionLimit = 1e-3;
    stretch = 3e-3;
    EXPECT_THAT(Simulation(&model, &input.data, nullptr, settings).run().diagnostic,
                HasSubstr("bodies must be moved by up to 0.003 m (body <beam>)"));
}

/// Turns the arm out of its plane by a driven scalar product, which can't exceed 1.
TEST(SingularPosition, IsNamedWithItsTime) {
    Pendulum pendulum;
    pendulum.settings.endTime = 2.0;
    pendulum.model->disturbResidual = [](double t, double* residuals) { residuals[2] += t * t; };
    const RunOutcome outcome = pendulum.run();
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_FALSE(outcome.isModelAtFault);
    EXPECT_NEAR(outcome.timeReached, 1.0, 0.01);
    EXPECT_THAT(outcome.diagnostic, StartsWith("Time "));
    EXPECT_THAT(outcome.diagnostic,
                HasSubstr("The mechanism has come to a singular position, or very near to "
                          "one, where "));
    EXPECT_THAT(outcome.diagnostic, HasSubstr("of hinge-a (arm, ground) repeats hinge-a"));
}

TEST(SingularPosition, LeftOutEquationsThatStopRepeatingAreNamed) {
    Pendulum twice(true);
    twice.model->disturbResidual = [](double t, double* residuals) {
        residuals[10] += std::max(0.0, 1e-3 * (t - 0.1));
    };
    const RunOutcome outcome = twice.run();
    EXPECT_GT(outcome.timeReached, 0.1);
    EXPECT_THAT(outcome.diagnostic,
                HasSubstr("dzFixed of hinge-b (arm, ground) was left out, since it repeated"));
}

/// A row of four-bar windows with links of 1 m, all in one line at 0.7197 s, where rounding comes out of the
/// solver magnified a million times.
TEST(SingularPosition, IsPassedWithFixedSteps) {
    Input input;
    const auto at = [](double x, double y) { return toText(x) + ", " + toText(y) + ", 0"; };
    constexpr unsigned windows = 10;
    for (unsigned j = 0; j < 2 * windows + 1; ++j) {
        const bool isRod = j % 2 == 0;
        input
            .addBody("link" + std::to_string(j), 1.0, "0.01, 0.01, 0.08333333333333333",
                     isRod ? "0.5, 0, 0" : "1, 0, 0", isRod ? "0, 0, -1" : "0, 0, 0")
            ->values[2] = at(0.5 * j, isRod ? 0.5 : 1.0);
    }
    for (unsigned j = 0; j < 2 * windows + 1; ++j) {
        const std::string link = "link" + std::to_string(j), next = "link" + std::to_string(j + 1);
        if (j % 2 == 0)
            input.addJoint("foot" + link, link + ", 0", at(0.5 * j, 0.0), "dx dy dz ax ay");
        if (j < 2 * windows)
            input.addJoint("top" + link, link + ", " + next, at(0.5 * (j + j % 2), 1.0),
                           j % 2 == 0 ? "dx dy dz ax ay" : "dx dy");
    }
    input.addGravity("0, -9.81, 0");
    const auto model = input.make();
    const RunOutcome outcome = Simulation(model.get(), &input.data, nullptr, {0.8, 1e-3, true}).run();
    EXPECT_TRUE(outcome.succeeded) << outcome.diagnostic;
    EXPECT_LT(outcome.maxEnergyDrift, 2e-5);
}

} // namespace
} // namespace velmora::driver
