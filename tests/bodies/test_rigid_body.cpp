#include "tests/support/DerivativeChecker.h"
#include "tests/support/ModelFixture.h"
#include "velmora/bodies/MBS_RigidBody_EulerP_PAI.h"
#include "velmora/model/internal/MBS_InternalModel.h"

#include <gmock/gmock.h>

#include <cmath>

namespace velmora::test {
namespace {

class RigidBody : public ModelFixture {
  protected:
    const MBS_Body& body(unsigned i) { return *dynamic_cast<MBS_InternalModel&>(*model).getBodies()[i]; }
};

using Code = std::pair<unsigned, Expected>;

class RigidBodyDerivatives : public RigidBody, public testing::WithParamInterface<Code> {};

TEST_P(RigidBodyDerivatives, AgreeWithDifferences) {
    addRigidBody(data, "a");
    addRigidBody(data, "b", {{"Mass", "1e3"}, {"Inertia", "30, 10, 25"}});
    addRigidBody(data, "massless", {{"Mass", "0"}});
    addBlock(data, "Force", "Gravity", "g", {{"GravityAccVector", "0.3, -1, -9.81"}});
    // A massless body has no part in the position-level matrix.
    DerivativeChecker checker(build(), {{KinematicSolverMatrix, "body 2 trans", "body 2 trans"},
                                        {KinematicSolverMatrix, "body 2 rot", "body 2 rot"}});
    EXPECT_THAT(checker.check(GetParam().first, GetParam().second), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    AllCodes, RigidBodyDerivatives,
    testing::Values(Code{MassMatrix, Expected::NonZero}, Code{InertiaForce_q, Expected::NonZero},
                    Code{VelInertiaForce_q, Expected::NonZero}, Code{VelInertiaForce_qd, Expected::NonZero},
                    Code{InnerConstraintForce_q, Expected::NonZero}, Code{ElasticForce_q, Expected::Zero},
                    Code{DampingForce_qd, Expected::Zero}, Code{ExternalForce_q, Expected::Zero},
                    Code{ExternalForce_qd, Expected::Zero}, Code{ExternalConstraintForce_q, Expected::Zero},
                    Code{KinematicSolverMatrix, Expected::NonZero},
                    Code{ConstraintJacobianT, Expected::NonZero},
                    Code{ConstraintJacobianTDot, Expected::NonZero},
                    Code{ConstraintJacobian, Expected::NonZero},
                    Code{ConstraintJacobianDot, Expected::NonZero}),
    [](const auto& row) { return std::to_string(row.param.first); });

TEST_F(RigidBody, TransposedProductsAreThoseOfTheMatrices) {
    addRigidBody(data, "a");
    addRigidBody(data, "b", {{"Inertia", "3, 1, 2.5"}});
    DerivativeChecker checker(build());
    EXPECT_THAT(checker.checkTransposedProducts(), testing::IsEmpty());
}

// A checker that passes everything would be worth nothing: it must name a block that is wrongly zero.
TEST_F(RigidBody, CheckerNamesABlockThatIsWronglyZero) {
    addRigidBody(data, "a", {{"RegardVelocityInertiaForcesInsideJacobian", "no"}});
    DerivativeChecker checker(build());
    EXPECT_THAT(checker.check(VelInertiaForce_q, Expected::NonZero, 1),
                testing::Contains(
                    testing::StartsWith("code 103, rows body 0 rot, columns body 0 rot: analytic 0.0")));
    DerivativeChecker informed(build(), {{VelInertiaForce_q, "body 0 rot", "body 0 rot"}});
    EXPECT_THAT(informed.check(VelInertiaForce_q, Expected::Zero, 1), testing::IsEmpty());
}

TEST_F(RigidBody, InitialStateIsTheInput) {
    addRigidBody(data, "a");
    MBS_ModelPhysicalDofVector q(&build()), qd(model.get());
    model->copyInitialDataIntoPhysicalDofVector(&q, &qd);
    const double* x = q.bodyData(0);
    EXPECT_EQ((std::vector<double>{x[0], x[1], x[2]}), (std::vector<double>{0.1, -0.2, 0.3}));
    const Mat3 orientation{{0.36, 0.48, -0.8, -0.8, 0.6, 0, 0.48, 0.64, 0.6}};
    const Mat3 A0 = A(Vec4::from(x + 3));
    const Vec3 omega = G(Vec4::from(x + 3)) * Vec4::from(qd.bodyData(0) + 3);
    for (std::size_t k = 0; k < 9; ++k)
        EXPECT_NEAR(A0.data[k], orientation.data[k], 1e-15);
    for (std::size_t k = 0; k < 3; ++k)
        EXPECT_NEAR(omega.data[k], std::vector({1.2, 0.9, 2.4})[k], 1e-14);
}

// Kinetic energy, power balance and Euler's equations hold the blocks and the vector of one body together.
TEST_F(RigidBody, InertiaForcesAreThoseOfEuler) {
    addRigidBody(data, "a");
    State s = State(build());
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    model->updateMatricesForEquationOfMotion(0.0, &s.q, &s.qd, &s.qdd);
    const auto& c = *body(0).commons;
    const Vec3 I{{1.1, 2.3, 2.9}};
    MBS_ModelPhysicalDofVector momentum(model.get()), force(model.get());
    model->getAccInertiaForces(&s.qd, &momentum);
    double twiceEnergy = 0.0;
    for (unsigned i = 0; i < 7; ++i)
        twiceEnergy += momentum.dofVector->data[i] * s.qd.dofVector->data[i];
    const Vec3 v = Vec3::from(s.qd.bodyData(0));
    EXPECT_NEAR(twiceEnergy, 2.5 * dot(v, v) + dot(c.omegaBar, diagTimes(I, c.omegaBar)), 1e-13);
    model->getVelInertiaForces(&s.q, &s.qd, &force);
    // Gbar Q / 4 is the moment of -w x I w in the body frame.
    const Vec3 moment = 0.25 * (c.Gbar() * Vec4::from(force.bodyData(0) + 3));
    const Vec3 expected = cross(diagTimes(I, c.omegaBar), c.omegaBar);
    for (std::size_t k = 0; k < 3; ++k)
        EXPECT_NEAR(moment.data[k], expected.data[k], 1e-13);
}

TEST_F(RigidBody, MasslessBodyHasNoInertia) {
    addRigidBody(data, "m", {{"Mass", "0.0"}});
    State s = State(build());
    EXPECT_EQ(model->getNumOfZeroInertiaRigidBodies(), 1u);
    const std::vector<unsigned> types{MassMatrix, InnerConstraintForce_q}, zero{0, 0};
    const std::vector<double> weights{1.0, 1.0};
    const std::unique_ptr<MBS_GlobalModelMatrix> matrix(
        model->createModelRelatedMatrix(1, 1, &types, &zero, &zero, &weights, false));
    EXPECT_EQ(matrix->getPointerToSparseJacobian()->numNonZeros,
              4u); // the diagonal of the norm constraint alone
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    model->updateMatricesForEquationOfMotion(0.0, &s.q, &s.qd, &s.qdd);
    MBS_ModelPhysicalDofVector force(model.get());
    model->getVelInertiaForces(&s.q, &s.qd, &force);
    EXPECT_THAT(std::vector(force.dofVector->data, force.dofVector->data + 7), testing::Each(0.0));
}

// Two actors on one body, their points at the target: there the matrix is the exact derivative.
TEST_F(RigidBody, ActorsPullAsTheirMatrixSays) {
    addRigidBody(data, "a");
    build();
    auto& pulled = const_cast<MBS_Body&>(body(0));
    MBS_ActorPull actor;
    actor.weight = Mat3{{3, 0, 0, 0, 3, 0, 0, 0, 3}};
    actor.actingPoint = Vec3{{0.7, 0.2, -0.4}};
    actor.targetPoint = actor.actingPoint;
    MBS_ActorPull inactive = actor;
    inactive.isActive = false;
    pulled.actors = {&actor, &inactive};
    State s(*model);
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    DerivativeChecker checker(*model);
    const Table a = checker.analytic(KinematicSolverMatrix, s),
                d = checker.difference(KinematicSolverMatrix, s);
    double largestElement = 0.0;
    for (std::size_t k = 0; k < a.data.size(); ++k) {
        EXPECT_NEAR(a.data[k], d.data[k], 1e-8);
        largestElement = std::max(largestElement, std::abs(a.data[k]));
    }
    EXPECT_GT(largestElement, 1.5);
    inactive.scaleA_t = 7.0;
    pulled.actors = {&inactive};
    EXPECT_EQ(checker.analytic(KinematicSolverMatrix, s)(0, 0),
              7.0); // the first actor's scale, active or not
}

} // namespace
} // namespace velmora::test
