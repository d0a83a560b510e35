#include "tests/support/DerivativeChecker.h"
#include "tests/support/ModelFixture.h"
#include "velmora/bodies/MBS_Body.h"
#include "velmora/bodies/MBS_RotationMath.h"
#include "velmora/bodies/RotationAlgebra.h"
#include "velmora/constraints/MBS_ExtConstraint.h"
#include "velmora/global_matrix/MBS_ConstraintCell_Map_Procedure.h"
#include "velmora/model/MBS_Math.h"
#include "velmora/model/internal/MBS_InternalModel.h"

#include <gmock/gmock.h>

#include <numbers>

namespace velmora::test {
namespace {

constexpr double pi = std::numbers::pi;

using Result = MBS_ExtConstraint::ResultData;

class Joints : public ModelFixture {
  protected:
    void addFix(const char* uuid, const char* ids, std::initializer_list<const char*> flags,
                const char* location = "0.3, -0.1, 0.7") {
        auto* block =
            addBlock(data, "Constraint", "Generic", uuid, {{"BodyIDs", ids}, {"Location", location}});
        for (const char* flag : flags)
            block->addKeyValue(flag, "yes");
    }
    const std::vector<std::unique_ptr<MBS_ExtConstraint>>& constraints() {
        return dynamic_cast<MBS_InternalModel&>(*model).getConstraints();
    }
    Result resultOf(std::size_t k, State& s) {
        Result result;
        constraints()[k]->getConstraintResultData(&s.q, &s.qd, &s.qdd, &s.lambda, result);
        return result;
    }
    void evaluate(State& s) {
        MBS_ModelConstraintDofVector residual(model.get());
        model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(0.0, &s.q, &s.qd, &s.qdd,
                                                                               &residual);
    }
};

/// State with Euler parameters of norm 1 and rates along the sphere, so that angular velocities have a
/// meaning.
State randomMotion(MBS_Model& model, std::mt19937& random) {
    State s = randomState(model, random);
    for (unsigned b = 0; b < model.getNumOfBodies(); ++b) {
        Vec4 e = Vec4::from(s.q.bodyData(b) + 3), eDot = Vec4::from(s.qd.bodyData(b) + 3);
        e *= 1.0 / norm(e);
        (eDot - dot(e, eDot) * e).to(s.qd.bodyData(b) + 3);
        e.to(s.q.bodyData(b) + 3);
    }
    return s;
}

// Forces and moments of the result files do the work of -Cq' lambda in any motion, and those on the two
// bodies of a joint are in balance.
TEST_F(Joints, ReactionsBalanceAndDoTheWorkOfTheMultipliers) {
    addRigidBody(data, "a");
    addRigidBody(data, "b", {{"OrientationPAI", "0, 0.6, 0.8, 1, 0, 0, 0, 0.8, -0.6"}});
    const auto all = {"dxFixed", "axFixed", "dyFixed", "ayFixed", "dzFixed", "azFixed"};
    addFix("pair", "a, b", all);
    addFix("ground", "b, 0", all);
    build();
    std::mt19937 random{3};
    for (int n = 0; n < 3; ++n) {
        State s = randomMotion(*model, random);
        evaluate(s);
        double power = 0.0;
        for (std::size_t k = 0; k < constraints().size(); ++k) {
            const Result r = resultOf(k, s);
            const unsigned bodies[2] = {constraints()[k]->constraintBodies[0]->bodyIndex, 1u};
            const unsigned numOfBodies = constraints()[k]->isSingleBodyConstraint() ? 1 : 2;
            for (unsigned j = 0; j < numOfBodies; ++j) {
                const Vec4 e = Vec4::from(s.q.bodyData(bodies[j]) + 3);
                const Vec3 omega = G(e) * Vec4::from(s.qd.bodyData(bodies[j]) + 3);
                const Vec3 arm = r[4 * j] - Vec3::from(s.q.bodyData(bodies[j]));
                const Vec3 velocity = Vec3::from(s.qd.bodyData(bodies[j])) + cross(omega, arm);
                power += dot(r[4 * j + 1], velocity) + dot(r[4 * j + 3], omega);
                EXPECT_EQ(r[4 * j].data, r[4 * j + 2].data);
            }
            EXPECT_EQ(constraints()[k]->location.data, r[4 * (numOfBodies - 1)].data);
            if (numOfBodies == 1)
                continue;
            EXPECT_NEAR(norm(r[1] + r[5]), 0.0, 1e-14);
            EXPECT_NEAR(norm(r[3] + r[7] + cross(r[0], r[1]) + cross(r[4], r[5])), 0.0, 1e-13);
        }
        MBS_ModelPhysicalDofVector forces(model.get());
        std::fill_n(s.lambda.innerConstraints->data, 2, 0.0);
        model->getConstraintForces(&s.lambda, &forces);
        double expected = 0.0;
        for (unsigned i = 0; i < forces.getNumOfDof(); ++i)
            expected -= forces.dofVector->data[i] * s.qd.dofVector->data[i];
        EXPECT_NEAR(power, expected, 1e-12 * std::max(1.0, std::abs(expected)));
    }
}

// A slender rod of length 1 on a hinge at its end, let go from horizontal: the support carries a quarter of
// the weight at once, and the rod turns with 3 g / 2.
TEST_F(Joints, ReleasedRodObeysNewtonAndEuler) {
    const double g = 9.81;
    addRigidBody(data, "rod",
                 {{"Mass", "1"},
                  {"Inertia", "0.001, 0.0833333333333333333, 0.0833333333333333333"},
                  {"LocationCenterMass", "0.5, 0, 0"},
                  {"OrientationPAI", "1, 0, 0, 0, 1, 0, 0, 0, 1"},
                  {"InitialVelocityVector", "0, 0, 0"},
                  {"InitialOmegaVector", "0, 0, 0"}});
    addFix("hinge", "rod, 0", {"dxFixed", "dyFixed", "dzFixed", "axFixed", "ayFixed"}, "0, 0, 0");
    addBlock(data, "Force", "Gravity", "g", {{"GravityAccVector", "0, -9.81, 0"}});
    State s(build());
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    const double qdd[7] = {0.0, -0.75 * g, 0.0, 0.0, 0.0, 0.0, -0.75 * g}; // d2e/dt2 = alpha / 2
    std::copy_n(qdd, 7, s.qdd.dofVector->data);
    std::fill_n(s.lambda.dofVector->data, 6, 0.0);
    constexpr unsigned dy = 2; // dx, ax, dy, ay, dz
    *s.lambda.equationsOfConstraint(dy) = -0.25 * g;
    evaluate(s);

    MBS_ModelPhysicalDofVector inertia(model.get()), joint(model.get()), weight(model.get());
    model->getAccInertiaForces(&s.qdd, &inertia);
    model->getConstraintForces(&s.lambda, &joint);
    model->getExternalForces(0.0, &s.q, &s.qd, &s.qdd, &weight);
    for (unsigned i = 0; i < 7; ++i)
        EXPECT_NEAR(inertia.dofVector->data[i] + joint.dofVector->data[i] - weight.dofVector->data[i], 0.0,
                    1e-14);
    const Result r = resultOf(dy, s);
    EXPECT_NEAR(norm(r[1] - Vec3{{0.0, 0.25 * g, 0.0}}), 0.0, 1e-14);
    EXPECT_NEAR(norm(r[0]) + norm(r[3]), 0.0, 1e-14);
}

// Bodies that move as one keep all equations; a body that turns about the free axis of a hinge too.
TEST_F(Joints, ResidualsVanishInPermittedMotions) {
    addRigidBody(data, "a");
    addRigidBody(data, "b", {{"LocationCenterMass", "-0.4, 0.5, 0.2"}});
    addFix("weld", "a, b", {"dxFixed", "axFixed", "dyFixed", "ayFixed", "dzFixed", "azFixed"});
    addFix("hinge", "a, 0", {"dxFixed", "axFixed", "dyFixed", "ayFixed", "dzFixed"}, "0.3, -0.1, 0.7");
    State s(build());
    const Vec3 pivot{{0.3, -0.1, 0.7}};
    const Vec4 turn{{std::cos(0.4), 0.0, 0.0, std::sin(0.4)}}; // about z by 0.8
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    for (unsigned b = 0; b < 2; ++b) {
        const Vec3 r = Vec3::from(s.q.bodyData(b));
        const Mat3 turned = A(turn) * A(Vec4::from(s.q.bodyData(b) + 3));
        (pivot + A(turn) * (r - pivot)).to(s.q.bodyData(b));
        MBS_RotationMath::rotationMatrixToEulerParameters(3, turned.data.data(), s.q.bodyData(b) + 3);
    }
    MBS_ModelConstraintDofVector residual(model.get());
    model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(0.0, &s.q, &s.qd, &s.qdd,
                                                                           &residual);
    for (unsigned k = 0; k < residual.getNumOfConstraints(); ++k)
        EXPECT_NEAR(residual.dofVector->data[k], 0.0, 1e-15) << k;
}

// The products of MBS_Math with transposed Jacobians against the model's own.
TEST_F(Joints, ProductsWithJacobians) {
    addRigidBody(data, "a");
    addRigidBody(data, "b");
    addFix("pair", "b, a", {"dxFixed", "azFixed"});
    build();
    std::mt19937 random{4};
    State s = randomState(*model, random);
    const Table Cq = DerivativeChecker(*model).analytic(ConstraintJacobian, s);
    const double weight = 1.0;
    const MBS_PhysicalDOF_x_ConstraintDOF_Map_Procedure map(0, 0, ConstraintJacobianT, &weight,
                                                            dynamic_cast<MBS_InternalModel&>(*model));
    MBS_ModelConstraintDofVector y(model.get());
    MBS_Math::Cq_mult_PhysDofVec(&map, &s.qd, &y);
    for (unsigned i = 0; i < Cq.rows; ++i) {
        double expected = 0.0;
        for (unsigned j = 0; j < Cq.cols; ++j)
            expected += Cq(i, j) * s.qd.dofVector->data[j];
        EXPECT_NEAR(y.dofVector->data[i], expected, 1e-14);
    }
    MBS_General_CqT& rotationOfB = *constraints()[1]->cqTObjects[0]; // has no translational part
    MBM_DenseStandAloneVector product(1);
    MBS_Math::matScaling(&rotationOfB, -2.0);
    MBS_Math::CqTTmultDenseVec(&rotationOfB, s.qd.bodyDof[1].get(), &product);
    double expected = 0.0;
    for (unsigned j = 10; j < 14; ++j)
        expected -= 2.0 * Cq(3, j) * s.qd.dofVector->data[j];
    EXPECT_NEAR(product.data[0], expected, 1e-14);
    MBS_Math::matScaling(&rotationOfB, 0.0);
    EXPECT_EQ(rotationOfB.rPart->data[2], 0.0);
}

struct Start {
    const char* name;
    const char* orientation; ///< of the second body
};

class Gears : public Joints, public testing::WithParamInterface<Start> {
  protected:
    void SetUp() override {
        addRigidBody(data, "a", {{"OrientationPAI", "1, 0, 0, 0, 1, 0, 0, 0, 1"}});
        addRigidBody(data, "b", {{"OrientationPAI", GetParam().orientation}});
        addBlock(data, "Constraint", "Gear", "gear",
                 {{"BodyIDs", "a, b"},
                  {"LocationBody1", "1, 0, 0.5"},
                  {"LocationBody2", "0, 2, 0"},
                  {"VectorBody1", "0, 0, 1"},
                  {"VectorBody2", "0.6, 0, -0.8"},
                  {"Multiplier", "1, 2"}});
        build();
    }
    /// The bodies turned by angles from the start, about unit axes.
    void turn(State& s, double angleA, double angleB, const Vec3& axisB = {{0.6, 0.0, -0.8}}) {
        const std::pair<Vec3, double> turns[2] = {{{{0, 0, 1}}, angleA}, {axisB, angleB}};
        model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
        for (unsigned b = 0; b < 2; ++b) {
            const auto& [n, angle] = turns[b];
            const double c = std::cos(angle / 2), d = std::sin(angle / 2);
            // e = (c, d n) times the start, by the product of Euler parameters
            const Vec4 p = Vec4::from(s.q.bodyData(b) + 3);
            const Vec3 v{{p(1), p(2), p(3)}};
            const Vec3 w = c * v + (d * p(0)) * n + d * cross(n, v);
            Vec4{{c * p(0) - d * dot(n, v), w(0), w(1), w(2)}}.to(s.q.bodyData(b) + 3);
        }
    }
    double residual(State& s) {
        MBS_ModelConstraintDofVector c(model.get());
        model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(0.0, &s.q, &s.qd, &s.qdd, &c);
        return *c.equationsOfConstraint(0);
    }
};

// C = (angle 1 - 2 angle 2) / 2 over ten turns of the first body and back.
TEST_P(Gears, CountTurnsForwardsAndBack) {
    State s(*model);
    const double step = 0.11;
    const int numOfSteps = static_cast<int>(20 * pi / step);
    for (int n = 0; n <= 2 * numOfSteps; ++n) {
        const double angle = step * (n <= numOfSteps ? n : 2 * numOfSteps - n);
        turn(s, angle, angle / 2);
        ASSERT_NEAR(residual(s), 0.0, 1e-12) << angle;
    }
    for (int n = 0; n <= numOfSteps; ++n) { // the second held
        turn(s, step * n, 0.0);
        ASSERT_NEAR(residual(s), step * n / 2, 1e-12);
    }
}

// Each of the four conversions from matrix to Euler parameters, at a norm other than 1.
TEST_P(Gears, DerivativesInEachConversionCase) {
    DerivativeChecker checker(*model);
    const Vec3 axes[4] = {{{1, 0, 0}}, {{1, 0, 0}}, {{0, 1, 0}}, {{0, 0, 1}}};
    std::mt19937 random{8};
    for (unsigned k = 0; k < 4; ++k) {
        State s = randomState(*model, random);
        turn(s, 0.7, k == 0 ? 0.4 : 2.9, axes[k]);
        for (unsigned i = 0; i < 4; ++i) // away from the special axis, and from norm 1
            s.q.bodyData(1)[3 + i] += 0.04 * (i + 1.0);
        const Mat3 M = A(Vec4::from(s.q.bodyData(1) + 3)) *
                       transpose(constraints()[0]->constraintBodies[1]->rotationMatrix);
        unsigned caseIndex = 0;
        Vec4 p;
        MBS_RotationMath::rotationMatrixToEulerParametersWithCase(3, M.data.data(), p.data.data(),
                                                                  &caseIndex);
        ASSERT_EQ(caseIndex, k + 1);
        for (const unsigned code : {ConstraintJacobian, ConstraintJacobianDot}) {
            const Table exact = checker.analytic(code, s), difference = checker.difference(code, s);
            for (unsigned j = 0; j < exact.cols; ++j)
                EXPECT_NEAR(exact(2, j), difference(2, j), 1e-7) << code << " case " << k + 1;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Starts, Gears,
                         testing::Values(Start{"Unit", "1, 0, 0, 0, 1, 0, 0, 0, 1"},
                                         Start{"Turned", "0.36, 0.48, -0.8, -0.8, 0.6, 0, 0.48, 0.64, 0.6"}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(Joints, GearSaysWhatIsMissing) {
    addRigidBody(data, "a");
    addRigidBody(data, "b");
    addBlock(data, "Constraint", "Gear", "gear",
             {{"BodyIDs", "a, b"},
              {"LocationBody1", "1, 0, 0.5"},
              {"LocationBody2", "0, 2, 0"},
              {"VectorBody1", "0, 0, 1"},
              {"Multiplier", "1, 2, 3"}});
    EXPECT_EQ(build().getNumOfExternalConstraints(), 0u);
    EXPECT_EQ(model->getErrorString(),
              "\nIn Block <Constraint> prior to line number 0:\n"
              "ERROR: Key <VectorBody2> not found in read list of keys! Please check your input file!\n"
              "ERROR: In definition of key <Multiplier>: \nWrong number of arguments in (double 2 parameters "
              "required)!\nPlease check <1, 2, 3> for typos! Delimiter: <, >\n");
    takeMessages();
}

// Joint frame of the state block: the joint's place and axes move with the first body.
TEST_F(Joints, StateBlockShowsTheJointFrame) {
    addRigidBody(data, "a");
    addRigidBody(data, "b");
    addFix("hinge", "a, b", {"dxFixed"});
    addBlock(data, "Constraint", "Gear", "gear",
             {{"BodyIDs", "b, a"},
              {"Location", "0.3, -0.1, 0.7"},
              {"ConstraintOrientation", "0, 2, 0, -3, 1, 0, 0, 0, 4"},
              {"LocationBody1", "1, 0, 0.5"},
              {"LocationBody2", "0, 2, 0"},
              {"VectorBody1", "0, 0, 1"},
              {"VectorBody2", "0, 0, 1"},
              {"Multiplier", "1, 2"}});
    State s(build());
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    s.q.bodyData(1)[0] += 10.0;
    std::vector<double> block(12, -1.0);
    std::vector<double*> blocks{block.data()};
    model->getCurrentConstraintStateResultFileBlock(&s.q, &blocks);
    EXPECT_THAT(block, testing::Pointwise(testing::DoubleNear(4e-15),
                                          {10.3, -0.1, 0.7, 0., 1., 0., -1., 0., 0., 0., 0., 1.}));
}

} // namespace
} // namespace velmora::test
