#include "driver/Reactions.h"
#include "driver/StaticSolver.h"
#include "tests/driver/IntegratorFixture.h"

#include <gmock/gmock.h>

#include <numbers>

namespace velmora::driver {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr double g = 9.81;

/// A model with what the search for its equilibrium leaves.
struct Static {
    Input input;
    std::unique_ptr<MBS_Model> model;
    std::unique_ptr<EquationNames> names;
    std::unique_ptr<HHTSystem> system;
    std::unique_ptr<Redundancy> redundancy;
    std::unique_ptr<StaticSolver> solver;
    std::unique_ptr<HHTState> state;

    IO_DataModelBlock* add(const char* kind, const char* type, const std::string& uuid,
                           const std::vector<std::pair<std::string, std::string>>& keys) {
        IO_DataModelBlock* block = input.data.addBlock(kind, type, uuid, uuid, ".");
        for (const auto& [key, value] : keys)
            block->addKeyValue(key, value);
        return block;
    }
    /// At rest, at a place in the plane of x and y, turned about z.
    void addBody(const std::string& uuid, double mass, double x, double y, double angle = 0.0) {
        const std::string c = toText(std::cos(angle)), s = toText(std::sin(angle)),
                          S = toText(-std::sin(angle));
        input
            .addBody(uuid, mass, "0.01, 0.01, 0.01", "0, 0, 0", "0, 0, 0",
                     c + "," + s + ",0," + S + "," + c + ",0,0,0,1")
            ->replaceValue("LocationCenterMass", toText(x) + ", " + toText(y) + ", 0");
    }
    void addSpring(const std::string& uuid, const std::string& bodies, const std::string& point1,
                   const std::string& point2, const std::string& force) {
        add("Measure", "Translational", uuid + "-length",
            {{"BodyIDs", bodies},
             {"MeasureMode", "disp"},
             {"MeasureCoordinate", "XYZ"},
             {"MeasureLocation_Body1", point1},
             {"MeasureLocation_Body2", point2}});
        add("Force", "GenericForce", uuid,
            {{"BodyIDs", bodies},
             {"ForceExpression", force},
             {"PointOfApplication_Body1", point1},
             {"PointOfApplication_Body2", point2},
             {"ForceDirectionType", "In-line-of-sight"}});
    }
    StepResult solve(double time = 0.0, const SimulationSettings& settings = {}) {
        model = input.make();
        EXPECT_FALSE(model->isErrorOccured()) << model->getErrorString();
        names = std::make_unique<EquationNames>(model.get(), &input.data);
        system = std::make_unique<HHTSystem>(model.get());
        redundancy = std::make_unique<Redundancy>(system.get(), names.get());
        solver = std::make_unique<StaticSolver>(system.get(), names.get(), redundancy.get(), settings);
        state = std::make_unique<HHTState>(model.get());
        return solver->run(*state, time);
    }
    double angleOf(unsigned body) const {
        const double* p = state->q.bodyData(body) + 3;
        return 2.0 * std::atan2(p[3], p[0]);
    }
    std::vector<Reaction> reactions() { return computeReactions(*model, input.data, *names, *state); }
};

/// Where a falling function is 0.
double findRoot(double low, double high, const std::function<double(double)>& f) {
    for (unsigned i = 0; i < 200; ++i)
        (f(0.5 * (low + high)) > 0.0 ? low : high) = 0.5 * (low + high);
    return 0.5 * (low + high);
}

TEST(Static, PendulumOnATorsionSpring) {
    const double mass = 2.0, length = 0.7, stiffness = 5.0;
    Static pendulum;
    pendulum.addBody("arm", mass, length, 0.0);
    pendulum.input.addGravity("0, -9.81, 0");
    pendulum.input.addJoint("hinge", "arm, 0", "0, 0, 0", "dx dy dz ax ay");
    pendulum.add("Measure", "Rotational", "angle",
                 {{"BodyIDs", "arm, 0"},
                  {"MeasureCoordinate", "Angle"},
                  {"MeasureVec", "1, 0, 0"},
                  {"MeasurePlaneVec1", "1, 0, 0"},
                  {"MeasurePlaneVec2", "0, 1, 0"}});
    pendulum.add("Force", "GenericTorque", "spring",
                 {{"BodyIDs", "arm, 0"},
                  {"TorqueExpression", "-5 * meaval[angle]"},
                  {"AxisType", "SpaceFixed"},
                  {"Axis", "0, 0, 1"}});
    ASSERT_EQ(pendulum.solve(), StepResult::Converged) << pendulum.solver->getProblem();
    const double angle =
        -findRoot(0.0, 2.0, [&](double x) { return mass * g * length * std::cos(x) - stiffness * x; });
    EXPECT_NEAR(pendulum.angleOf(0), angle, 1e-10);
    const Reaction hinge = pendulum.reactions().at(0);
    EXPECT_NEAR(hinge.force[1], mass * g, 1e-10);
    EXPECT_NEAR(hinge.moment[2], 0.0, 1e-10);
    EXPECT_LT(std::hypot(hinge.point[0], hinge.point[1]), 1e-12);
}

// Chain of n equal links of weight w between two supports at the same height. The tension has the horizontal
// part H everywhere; its vertical part at the middle of link i is (n/2 - i - 1/2) w, which is the link's
// direction, as moments about its ends demand. H follows from the span.
TEST(Static, ChainOfFiftyLinksHangsInADiscreteCatenary) {
    const unsigned n = 50;
    const double length = 0.1, mass = 0.1, span = 3.0, weight = mass * g;
    Static chain;
    const double slope = std::acos(span / (n * length)); // half of the links go down straight, half up
    double x = 0.0, y = 0.0;
    for (unsigned i = 0; i < n; ++i) {
        const double angle = i < n / 2 ? -slope : slope, dx = length * std::cos(angle),
                     dy = length * std::sin(angle);
        const std::string uuid = "link" + std::to_string(i);
        const std::string before = i ? "link" + std::to_string(i - 1) : "0";
        chain.addBody(uuid, mass, x + 0.5 * dx, y + 0.5 * dy, angle);
        chain.input.addJoint("ball" + std::to_string(i), uuid + ", " + before,
                             toText(x) + ", " + toText(y) + ", 0", "dx dy dz");
        x += dx;
        y += dy;
    }
    chain.input.addJoint("end", "link49, 0", toText(x) + ", " + toText(y) + ", 0", "dx dy dz");
    chain.input.addGravity("0, -9.81, 0");
    ASSERT_EQ(chain.solve(), StepResult::Converged) << chain.solver->getProblem();
    const auto getAngle = [&](unsigned i, double H) { return -std::atan((0.5 * n - i - 0.5) * weight / H); };
    const double H = findRoot(1e-3, 1e3, [&](double tension) {
        double rest = span;
        for (unsigned i = 0; i < n; ++i)
            rest -= length * std::cos(getAngle(i, tension));
        return rest;
    });
    for (unsigned i = 0; i < n; ++i)
        EXPECT_NEAR(chain.angleOf(i), getAngle(i, H), 1e-9) << i;
    const auto reactions = chain.reactions();
    EXPECT_NEAR(reactions.front().force[0], -H, 1e-9);
    EXPECT_NEAR(reactions.front().force[1], 0.5 * n * weight, 1e-9);
    EXPECT_NEAR(reactions.back().force[0], H, 1e-9);
    EXPECT_LT(chain.solver->getReport().iterations, 20U);
}

TEST(Static, MassBetweenPreloadedSprings) {
    Static springs;
    springs.addBody("mass", 3.0, 0.1, -0.4, 0.2);
    const std::string centre = "0.1, -0.4, 0";
    // Free lengths of 0.5 and 0.7 over a distance of 2: both springs pull, the upper one with k = 4000.
    springs.addSpring("upper", "mass, 0", centre, "0, 0.5, 0", "-4000 * (meaval[upper-length] - 0.5)");
    springs.addSpring("lower", "mass, 0", centre, "0, -1.5, 0", "-1500 * (meaval[lower-length] - 0.7)");
    springs.input.addGravity("0, -9.81, 0");
    ASSERT_EQ(springs.solve(), StepResult::Converged) << springs.solver->getProblem();
    // 4000 (0.5 - y - 0.5) - 1500 (y + 1.5 - 0.7) = 3 g
    const double* q = springs.state->q.bodyData(0);
    EXPECT_NEAR(q[0], 0.0, 1e-9);
    EXPECT_NEAR(q[1], -(1500.0 * 0.8 + 3.0 * g) / 5500.0, 1e-9);
    EXPECT_NEAR(q[2], 0.0, 1e-9);
}

TEST(Static, BodyThatNothingHoldsIsNamed) {
    Static free;
    free.addBody("held", 1.0, 0.0, 0.0);
    free.addBody("stone", 2.0, 1.0, 0.0);
    free.input.addJoint("wall", "held, 0", "0, 0, 0", "dx dy dz ax ay az");
    free.input.addGravity("0, -9.81, 0");
    EXPECT_EQ(free.solve(), StepResult::NotConverged);
    EXPECT_FALSE(free.solver->isModelAtFault());
    EXPECT_THAT(free.solver->getProblem(),
                StartsWith("No equilibrium was found: body <stone> moves away without end. Largest forces "
                           "without balance: body <stone>, coordinate y (19.6)."));
}

TEST(Static, WheelThatAMotorTurnsHasNoEquilibrium) {
    Static wheel;
    wheel.addBody("wheel", 1.0, 0.0, 0.0);
    wheel.input.addJoint("hinge", "wheel, 0", "0, 0, 0", "dx dy dz ax ay");
    wheel.add("Force", "GenericTorque", "motor",
              {{"BodyIDs", "wheel, 0"},
               {"TorqueExpression", "3"},
               {"AxisType", "SpaceFixed"},
               {"Axis", "0, 0, 1"}});
    EXPECT_EQ(wheel.solve(), StepResult::NotConverged);
    EXPECT_THAT(wheel.solver->getProblem(), HasSubstr("body <wheel>, coordinate e"));
}

// Upright, the pendulum x'' = m g l / (I + m l^2) x stays where it is only as long as nothing else moves.
TEST(Static, UnstableBalanceIsKeptAtTheStartAndLeftLater) {
    Static upright;
    upright.addBody("arm", 2.0, 0.0, 0.3);
    upright.input.addJoint("hinge", "arm, 0", "0, 0, 0", "dx dy dz ax ay");
    upright.input.addGravity("0, -9.81, 0");
    ASSERT_EQ(upright.solve(), StepResult::Converged) << upright.solver->getProblem();
    EXPECT_EQ(upright.angleOf(0), 0.0);
    EXPECT_NEAR(upright.solver->getReport().growth, 2.0 * g * 0.3 / (0.01 + 2.0 * 0.09), 1e-6);

    Static onSpring;
    onSpring.addBody("cart", 1.0, 0.0, 0.0);
    onSpring.addBody("arm", 2.0, 0.0, 0.3);
    onSpring.input.addJoint("guide", "cart, 0", "0, 0, 0", "dx dz ax ay az");
    onSpring.input.addJoint("hinge", "arm, cart", "0, 0, 0", "dx dy dz ax ay");
    onSpring.addSpring("spring", "cart, 0", "0, 0, 0", "0, -1, 0", "500 * (1 - meaval[spring-length])");
    onSpring.input.addGravity("0, -9.81, 0");
    ASSERT_EQ(onSpring.solve(), StepResult::Converged) << onSpring.solver->getProblem();
    EXPECT_NEAR(onSpring.state->q.bodyData(0)[1], -3.0 * g / 500.0, 1e-10);
    EXPECT_NEAR(std::fabs(onSpring.angleOf(1)), std::numbers::pi, 1e-9);
    EXPECT_EQ(onSpring.solver->getReport().growth, 0.0);
}

TEST(Static, DoorOnTwoHinges) {
    Static door;
    door.addBody("door", 5.0, 1.0, 0.0);
    door.input.addJoint("hinge-a", "door, 0", "0, 0, 0", "dx dy dz ax ay");
    door.input.addJoint("hinge-b", "door, 0", "0, 0, 1", "dx dy dz ax ay");
    door.input.addGravity("0, -9.81, 0");
    ASSERT_EQ(door.solve(), StepResult::Converged) << door.solver->getProblem();
    EXPECT_EQ(door.solver->getReport().start.redundantEquations.size(), 5U);
    EXPECT_NEAR(door.angleOf(0), -0.5 * std::numbers::pi, 1e-9);
    const auto reactions = door.reactions();
    EXPECT_NEAR(reactions[0].force[1] + reactions[1].force[1], 5.0 * g, 1e-9);
    EXPECT_NEAR(reactions[0].moment[2] + reactions[1].moment[2], 0.0, 1e-9);
}

TEST(Static, StartInContradictionIsTheModelsFault) {
    Static gap;
    gap.addBody("a", 1.0, 0.0, 0.0);
    gap.addBody("b", 1.0, 1.0, 0.0);
    gap.input.addJoint("pin", "a, b", "0, 0, 0", "dx dy dz");
    SimulationSettings settings;
    settings.starts = {{"b", 1, 1, {3.0, 0.0, 0.0}, {1, 0, 0, 0}, {}, {0, 0, 0}, {0, 0, 0}, {}}};
    EXPECT_EQ(gap.solve(0.0, settings), StepResult::NotConverged);
    EXPECT_TRUE(gap.solver->isModelAtFault());
    EXPECT_THAT(gap.solver->getProblem(), StartsWith("The initial positions don't fulfil the constraints"));
}

TEST(Static, MotionsAndForcesAreTakenAtTheTime) {
    Static crane;
    crane.addBody("load", 2.0, 0.0, 0.0);
    crane.input.addJoint("guide", "load, 0", "0, 0, 0", "dx dz ax ay az");
    crane.add("Measure", "Translational", "height",
              {{"BodyIDs", "load, 0"},
               {"MeasureMode", "disp"},
               {"MeasureCoordinate", "Y"},
               {"MeasureLocation_Body1", "0, 0, 0"},
               {"MeasureLocation_Body2", "0, 0, 0"}});
    crane.add("Constraint", "TimeMotion", "hoist",
              {{"BodyIDs", "load, 0"},
               {"Measure", "height"},
               {"MotionExpression", "3 * simtime[]"},
               {"PointOfApplication_Body1", "0, 0, 0"}});
    crane.input.addGravity("0, -9.81, 0")->addKeyValue("ActivationTime", "8");
    ASSERT_EQ(crane.solve(4.0), StepResult::Converged) << crane.solver->getProblem();
    EXPECT_NEAR(crane.state->q.bodyData(0)[1], 12.0, 1e-12);
    EXPECT_NEAR(crane.reactions().at(1).force[1], 0.5 * 2.0 * g,
                1e-11); // half of the weight acts at half of the time
    EXPECT_EQ(crane.reactions().at(1).joint, "hoist");
}

TEST(Static, ChangesUntilTheTimeAreMade) {
    Static scale;
    scale.addBody("pan", 2.0, 0.0, 0.0);
    scale.input.addJoint("guide", "pan, 0", "0, 0, 0", "dx dz ax ay az");
    const auto* stiffness = scale.add("DataObject", "Parameter", "stiffness", {{"InitialValue", "100"}});
    scale.addSpring("spring", "pan, 0", "0, 0, 0", "0, -1, 0",
                    "parval[stiffness] * (1 - meaval[spring-length])");
    scale.input.addGravity("0, -9.81, 0");
    SimulationSettings settings;
    for (const auto& [time, value] : {std::pair{1.0, "200"}, {2.0, "400"}, {3.0, "800"}}) {
        settings.changes.push_back({time, std::make_shared<IO_DataModelBlock>(*stiffness)});
        settings.changes.back().block->replaceValue("InitialValue", value);
    }
    ASSERT_EQ(scale.solve(2.0, settings), StepResult::Converged) << scale.solver->getProblem();
    EXPECT_NEAR(scale.state->q.bodyData(0)[1], -2.0 * g / 400.0, 1e-11);
}

TEST(Static, FlexibleRodBendsUnderItsWeight) {
    // The rod of the flexible pendulum: 1 m, E 70e9, 0.004 x 0.02 m, 2700 kg/m^3.
    Static rod;
    rod.addBody("wall", 1.0, 0.0, 0.0);
    rod.addBody("tip", 1e-6, 1.0, 0.0);
    rod.add("Body", "MBS_FlexBody_Full", "rod",
            {{"Path2MtxFile", VELMORA_EXAMPLES "/pendulum_rod.mtx"},
             {"Is_Itf_active", "yes"},
             {"Is_QuadraticTermOF_Itt_active", "yes"},
             {"GlobalDampingFactor", "0.01"},
             {"LocationCenterMass", "0.5, 0, 0"},
             {"OrientationPAI", "1, 0, 0, 0, 1, 0, 0, 0, 1"},
             {"InitialVelocityVector", "0, 0, 0"},
             {"InitialOmegaVector", "0, 0, 0"}});
    rod.input.addJoint("clamp", "wall, 0", "0, 0, 0", "dx dy dz ax ay az");
    rod.add("Constraint", "FixRiBoFleBo", "weld",
            {{"BodyIDs", "wall, rod"}, {"Location", "0, 0, 0"}, {"InterfaceNode", "1"}});
    rod.add("Constraint", "FixRiBoFleBo", "tip-weld",
            {{"BodyIDs", "tip, rod"}, {"Location", "1, 0, 0"}, {"InterfaceNode", "9"}});
    rod.input.addGravity("0, 0, -0.0981");
    ASSERT_EQ(rod.solve(), StepResult::Converged) << rod.solver->getProblem();
    const double load = 2700.0 * 0.004 * 0.02 * 0.0981;
    const double stiffness = 70e9 * 0.004 * std::pow(0.02, 3) / 12.0;
    // Bernoulli's beam; shear and the modes that were left out are below the tolerance.
    EXPECT_NEAR(rod.state->q.bodyData(1)[2], -load / (8.0 * stiffness), 1e-2 * load / (8.0 * stiffness));
    const Reaction clamp = rod.reactions().at(0);
    EXPECT_NEAR(clamp.force[2], load + 0.0981 * (1.0 + 1e-6), 1e-8);
    EXPECT_NEAR(clamp.moment[1], -0.5 * load, 1e-6);
}

} // namespace
} // namespace velmora::driver
