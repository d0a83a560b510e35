#include "tests/support/DerivativeChecker.h"
#include "tests/support/FlexibleBody.h"
#include "velmora/bodies/MBS_Body.h"
#include "velmora/constraints/MBS_RiBo_FleBo_FixJoint.h"
#include "velmora/model/internal/MBS_InternalModel.h"

#include <gmock/gmock.h>

namespace velmora::test {
namespace {

// A rigid body "r", welded to node 3 of a flexible body "f" of three points.
class Weld : public ModelFixture {
  protected:
    explicit Weld(unsigned modes = 3) {
        points.numOfModes = modes;
        addFlexibleBody(data, "f", writeModalFile(points.file()));
        addRigidBody(data, "r");
    }
    IO_DataModelBlock* addWeld(const char* node = "3") {
        return addBlock(data, "Constraint", "FixRiBoFleBo", "w",
                        {{"BodyIDs", "r, f"}, {"Location", "0.7, -0.3, 1.1"}, {"InterfaceNode", node}});
    }
    MBS_ModelConstraintDofVector residual(State& s) {
        MBS_ModelConstraintDofVector all(model.get());
        model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(s.t, &s.q, &s.qd, &s.qdd,
                                                                               &all);
        return all;
    }
    MBS_ExtConstraint& weld() { return *dynamic_cast<MBS_InternalModel&>(*model).getConstraints()[0]; }

    PointBody points;
};

class WeldModes : public Weld, public testing::WithParamInterface<unsigned> {
  protected:
    WeldModes() : Weld(GetParam()) {}
};

// d(Cq' lambda)/dq is left out of the joint, and the rates of Cq take body 2 for rigid.
TEST_P(WeldModes, JacobianAgreesWithDifferences) {
    addWeld();
    const std::vector<std::string> kinds{"body 0 trans", "body 0 rot", "body 0 flex", "body 1 trans",
                                         "body 1 rot"};
    std::vector<KnownDeviation> deviations;
    for (const auto& row : kinds)
        for (const auto& col : kinds)
            deviations.push_back({ExternalConstraintForce_q, row, col});
    DerivativeChecker checker(build(), deviations);
    for (const unsigned code : {ConstraintJacobianT, ConstraintJacobian})
        EXPECT_THAT(checker.check(code, Expected::NonZero), testing::IsEmpty());
    EXPECT_THAT(checker.check(ExternalConstraintForce_q, Expected::Zero), testing::IsEmpty());
}

// What is a rate takes body 2 for rigid and undeformed, what isn't takes it as it is.
TEST_P(WeldModes, RateOfJacobianIsThatOfARigidBodyTwo) {
    addWeld();
    DerivativeChecker checker(build());
    std::mt19937 random{3};
    State s = randomState(*model, random), onlyBody1Moves(s), onlyBody2Moves(s);
    const unsigned M = points.numOfModes;
    std::fill_n(onlyBody1Moves.qd.bodyData(0), 7 + M, 0.0);
    std::fill_n(onlyBody2Moves.qd.bodyData(1), 7, 0.0);
    for (auto* v : {&onlyBody2Moves.q, &onlyBody2Moves.qd})
        std::fill_n(v->bodyData(0) + 7, M, 0.0);
    const Table rate = checker.analytic(ConstraintJacobianTDot, s);
    Table expected = checker.difference(ConstraintJacobianTDot, onlyBody1Moves);
    const Table second = checker.difference(ConstraintJacobianTDot, onlyBody2Moves);
    for (std::size_t i = 0; i < expected.data.size(); ++i)
        expected.data[i] += second.data[i];
    EXPECT_THAT(rate.data, testing::Pointwise(testing::DoubleNear(1e-7), expected.data));
    const Table exact = checker.difference(ConstraintJacobianTDot, s);
    EXPECT_THAT(rate.data, testing::Not(testing::Pointwise(testing::DoubleNear(1e-7), exact.data)));
}

INSTANTIATE_TEST_SUITE_P(Modes, WeldModes, testing::Values(1u, 3u, 4u, 20u));

TEST_F(Weld, IsFulfilledAtTheStartAndCarriesForceAtTheJointPoint) {
    addWeld();
    build();
    State s(*model);
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    std::fill_n(s.qdd.dofVector->data, s.qdd.getNumOfDof(), 0.0);
    const auto atStart = residual(s);
    for (unsigned i = 0; i < atStart.getNumOfConstraints(); ++i) {
        EXPECT_NEAR(atStart.dofVector->data[i], 0.0, 1e-15);
        s.lambda.dofVector->data[i] = 1.0 + i;
    }
    MBS_ExtConstraint::ResultData results;
    results.fill({{9.0, 9.0, 9.0}});
    weld().getConstraintResultData(&s.q, &s.qd, &s.qdd, &s.lambda, results);
    const Vec3 point{{0.7, -0.3, 1.1}}, zero;
    for (const unsigned k : {0u, 4u})
        EXPECT_NEAR(norm(results[k] - point), 0.0, 1e-15);
    EXPECT_EQ(results[1].data, (Vec3{{-3.0, -4.0, -5.0}}.data));
    EXPECT_EQ(results[5].data, (Vec3{{3.0, 4.0, 5.0}}.data));
    for (const unsigned k : {2u, 3u, 6u, 7u})
        EXPECT_EQ(results[k].data, zero.data);
}

// Node 3 is the second point. Its small rotation Theta turns the axis a by Theta x a.
TEST_F(Weld, OpensByTheMotionOfTheNode) {
    addWeld();
    build();
    State s(*model);
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    Vec3 shift, turn;
    for (unsigned j = 0; j < points.numOfModes; ++j) {
        s.q.bodyData(0)[7 + j] = 0.3 + j;
        const double amplitude = (0.3 + j) / (2.0 * M_PI * PointBody::frequency(j));
        shift += amplitude * Vec3{PointBody::shape(1, j)};
        turn += amplitude * Vec3{PointBody::turn(1, j)};
    }
    const Mat3& R = weld().constraintBodies[1]->rotationMatrix;
    shift = R * shift;
    turn = R * turn;
    const auto all = residual(s);
    EXPECT_THAT(std::vector<double>(all.equationsOfConstraint(0), all.equationsOfConstraint(0) + 6),
                testing::Pointwise(testing::DoubleNear(1e-14),
                                   {-shift(0), -shift(1), -shift(2), -turn(0), turn(1), -turn(2)}));
}

TEST_F(Weld, NamesANodeThatTheFileDoesNotHave) {
    addWeld("4");
    build();
    EXPECT_EQ(takeMessages(), "In Block <Constraint> prior to line number 0:\nERROR: InterfaceNode <4> not "
                              "found in mtx-file!\n\n");
    EXPECT_EQ(model->getNumOfExternalConstraints(), 0u);
}

TEST_F(Weld, AsksForItsKeysAndForARigidBodyFirst) {
    addBlock(data, "Constraint", "FixRiBoFleBo", "a", {{"BodyIDs", "r, f"}});
    addBlock(data, "Constraint", "FixRiBoFleBo", "b", {{"BodyIDs", "f, r"}});
    addBlock(data, "Constraint", "FixRiBoFleBo", "c", {{"BodyIDs", "r, 0"}});
    build();
    const std::string prefix = "In Block <Constraint> prior to line number 0:\n";
    const auto missing = [](const std::string& key) {
        return "ERROR: Key <" + key + "> not found in read list of keys! Please check your input file!\n";
    };
    EXPECT_EQ(takeMessages(), prefix + missing("Location") + missing("InterfaceNode") + "\n" + prefix +
                                  "ERROR: first body ID must be a rigid body!\n\n" + prefix +
                                  "ERROR: please provide valid body IDs!\n\n");
}

} // namespace
} // namespace velmora::test
