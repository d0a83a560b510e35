#include "driver/EigenSolver.h"
#include "tests/driver/IntegratorFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <complex>
#include <numbers>

namespace velmora::driver {
namespace {

using Method = EigenSettings::Method;
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

/// Masses of 2 kg in a row along x between two walls, with a spring and a damper before and behind each.
struct Chain {
    Input input;
    unsigned size;
    double rate; // sqrt(stiffness / mass)

    Chain(unsigned numOfMasses, double stiffness, double damping)
        : size(numOfMasses),
          rate(std::sqrt(stiffness / 2.0)) {
        for (unsigned i = 0; i < size; ++i) {
            const std::string name = getName(i), place = toText(i) + ", 0, 0";
            input.addBody(name, 2.0, "1, 1, 1", "0, 0, 0", "0, 0, 0")->values[2] = place;
            input.addJoint("guide" + name, name + ", 0", place, "dy dz ax ay az");
            addMeasure("x" + name, name, "disp", place);
            if (damping > 0.0)
                addMeasure("v" + name, name, "vel", place);
        }
        for (unsigned i = 0; i <= size; ++i)
            addForce(i, stiffness, damping);
    }
    static std::string getName(unsigned i) { return "m" + std::to_string(i); }
    void addMeasure(const std::string& label, const std::string& body, const std::string& mode,
                    const std::string& place) {
        IO_DataModelBlock* block = input.data.addBlock("Measure", "Translational", label, label, ".");
        block->addKeyValue("BodyIDs", body + ", 0");
        block->addKeyValue("MeasureCoordinate", "X");
        block->addKeyValue("MeasureMode", mode);
        block->addKeyValue("UseInitialValueAsOffset", "yes");
        block->addKeyValue("MeasureLocation_Body1", place);
        block->addKeyValue("MeasureLocation_Body2", "0, 0, 0");
    }
    /// The spring before mass i, behind mass i - 1.
    void addForce(unsigned i, double stiffness, double damping) {
        const std::string before = i > 0 ? getName(i - 1) : getName(i), behind = i < size ? getName(i) : "0";
        const bool isPair = i > 0 && i < size;
        const std::string sign = isPair ? "" : "-";
        const auto stretch = [&](const std::string& kind) {
            return isPair ? "(meaval[" + kind + behind + "] - meaval[" + kind + before + "])"
                          : "meaval[" + kind + before + "]";
        };
        std::string law = sign + toText(stiffness) + " * " + stretch("x");
        if (damping > 0.0)
            law += (isPair ? " + " : " - ") + toText(damping) + " * " + stretch("v");
        addLoad(input, "spring" + std::to_string(i), before + ", " + (isPair ? behind : "0"), law, "0, 0, 0",
                "1, 0, 0");
    }
    static void addLoad(Input& to, const std::string& label, const std::string& bodies,
                        const std::string& law, const std::string& point, const std::string& direction) {
        IO_DataModelBlock* block = to.data.addBlock("Force", "GenericForce", label, label, ".");
        block->addKeyValue("BodyIDs", bodies);
        block->addKeyValue("ForceExpression", law);
        block->addKeyValue("PointOfApplication_Body1", point);
        block->addKeyValue("PointOfApplication_Body2", point);
        block->addKeyValue("ForceDirectionType", "SpaceFixed");
        block->addKeyValue("ForceDirection", direction);
    }
    double getRate(unsigned mode) const {
        return 2.0 * rate * std::sin(0.5 * mode * std::numbers::pi / (size + 1));
    }
};

TEST(Eigen, ChainOfDampedMassesHasTheShapesOfSines) {
    const double damping = 0.6, stiffness = 50.0;
    for (const Method method : {Method::Dense, Method::Sparse}) {
        Chain chain(6, stiffness, damping);
        const EigenModes found = findModesAtStart(chain.input, {20, 0.0, method});
        ASSERT_EQ(found.modes.size(), 6);
        EXPECT_TRUE(found.isComplete);
        for (unsigned j = 1; j <= 6; ++j) {
            const EigenMode& mode = found.modes[j - 1];
            const double rate = chain.getRate(j), loss = damping / stiffness * rate / 2.0;
            EXPECT_NEAR(mode.value.real(), -loss * rate, 1e-8 * rate);
            EXPECT_NEAR(mode.value.imag(), rate * std::sqrt(1.0 - loss * loss), 1e-8 * rate);
            const auto getSine = [&](unsigned mass) {
                return std::sin(j * (mass + 1) * std::numbers::pi / 7);
            };
            for (unsigned mass = 0; mass < 6; ++mass)
                EXPECT_LT(std::abs(mode.shape[6 * mass] / mode.shape[0] - getSine(mass) / getSine(0)), 1e-7);
        }
    }
}

TEST(Eigen, LongChainIsSolvedNearItsLowestModesAndNearATarget) {
    Chain chain(120, 50.0, 0.0);
    const EigenModes lowest = findModesAtStart(chain.input, {3, 0.0});
    EXPECT_THAT(getImaginaryParts(lowest),
                areNear({chain.getRate(1), chain.getRate(2), chain.getRate(3)}, 1e-8));
    EXPECT_FALSE(lowest.isComplete);
    EXPECT_EQ(lowest.degreesOfFreedom, 120);
    const double target = (0.45 * chain.getRate(70) + 0.55 * chain.getRate(71)) / (2.0 * std::numbers::pi);
    EXPECT_THAT(getImaginaryParts(findModesAtStart(chain.input, {2, target})),
                areNear({chain.getRate(70), chain.getRate(71)}, 1e-8));
}

TEST(Eigen, OverdampedMassCreepsAtTwoRates) {
    Chain chain(1, 4.0, 10.0); // two springs and two dampers
    const EigenModes found = findModesAtStart(chain.input);
    ASSERT_EQ(found.modes.size(), 2);
    EXPECT_NEAR(found.modes[0].value.real(), -5.0 + std::sqrt(21.0), 1e-8);
    EXPECT_NEAR(found.modes[1].value.real(), -5.0 - std::sqrt(21.0), 1e-8);
    EXPECT_EQ(found.modes[0].value.imag(), 0.0);
}

// A constant force at the centre of mass stands for gravity; the kernel has no derivative of it.
TEST(Eigen, TermsWithoutDerivativeAreDifferencesOfForces) {
    Input input;
    input.addBody("body", 2.0, "0.3, 0.2, 0.1", "0, 0, 0", "0, 0, 0")->values[2] = "0, 0.1, -0.7";
    input.addJoint("joint", "body, 0", "0, 0.1, 0", "dx dy dz ay az");
    Chain::addLoad(input, "weight", "body, 0", "19.62", "0, 0.1, -0.7", "0, 0, -1");
    EXPECT_THAT(getImaginaryParts(findModesAtStart(input)),
                areNear({std::sqrt(19.62 * 0.7 / (0.3 + 2.0 * 0.49))}, 1e-8));
}

// Bernoulli's beam of 1 m: E 70e9, section 0.0004 x 0.02 m, 2700 kg/m^3; 32 elements.
TEST(Eigen, WeldedBeamVibratesAsACantilever) {
    Input input;
    input.addBody("wall", 1.0, "1, 1, 1", "0, 0, 0", "0, 0, 0");
    IO_DataModelBlock* beam = input.data.addBlock("Body", "MBS_FlexBody_Full", "beam", "beam", ".");
    for (const auto& [key, value] :
         {std::pair("Path2MtxFile", VELMORA_EXAMPLES "/../tests/driver/cantilever.mtx"),
          {"Is_Itf_active", "yes"},
          {"Is_QuadraticTermOF_Itt_active", "yes"},
          {"GlobalDampingFactor", "0"},
          {"LocationCenterMass", "0.5, 0, 0"},
          {"OrientationPAI", "1, 0, 0, 0, 1, 0, 0, 0, 1"},
          {"InitialVelocityVector", "0, 0, 0"},
          {"InitialOmegaVector", "0, 0, 0"}})
        beam->addKeyValue(key, value);
    input.addJoint("clamp", "wall, 0", "0, 0, 0", "dx dy dz ax ay az");
    IO_DataModelBlock* weld = input.data.addBlock("Constraint", "FixRiBoFleBo", "weld", "weld", ".");
    weld->addKeyValue("BodyIDs", "wall, beam");
    weld->addKeyValue("Location", "0, 0, 0");
    weld->addKeyValue("InterfaceNode", "1");
    const double unit = std::sqrt(70e9 * 0.0004 * 0.0004 / 12.0 / 2700.0);
    for (const Method method : {Method::Dense, Method::Sparse}) {
        const EigenModes found = findModesAtStart(input, {2, 0.0, method});
        EXPECT_EQ(found.numOfZeros, 0);
        EXPECT_THAT(
            getImaginaryParts(found),
            areNear({std::pow(1.87510406871196, 2) * unit, std::pow(4.69409113297418, 2) * unit}, 1e-6));
    }
}

} // namespace
} // namespace velmora::driver
