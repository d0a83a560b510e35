#include "tests/support/DerivativeChecker.h"
#include "tests/support/FlexibleBody.h"
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
    void clearModalCoordinates(State& s) const {
        for (auto* v : {&s.q, &s.qd})
            std::fill_n(v->bodyData(0) + 7, points.numOfModes, 0.0);
    }

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

TEST_P(WeldModes, RateOfJacobianIsExactForAnUndeformedBody) {
    addWeld();
    DerivativeChecker checker(build());
    std::mt19937 random{3};
    for (const bool isDeformed : {false, true}) {
        State s = randomState(*model, random);
        if (!isDeformed)
            clearModalCoordinates(s);
        const Table a = checker.analytic(ConstraintJacobianTDot, s),
                    d = checker.difference(ConstraintJacobianTDot, s);
        double largest = 0.0;
        for (std::size_t i = 0; i < a.data.size(); ++i)
            largest = std::max(largest, std::abs(a.data[i] - d.data[i]));
        EXPECT_EQ(largest < 1e-7, !isDeformed) << largest;
    }
}

INSTANTIATE_TEST_SUITE_P(Modes, WeldModes, testing::Values(1u, 3u, 4u, 20u));

TEST_F(Weld, IsFulfilledAtTheStartAndCarriesForceAtTheJointPoint) {
    addWeld();
    build();
    State s(*model);
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    std::fill_n(s.qdd.dofVector->data, s.qdd.getNumOfDof(), 0.0);
    MBS_ModelConstraintDofVector residual(model.get());
    model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(0.0, &s.q, &s.qd, &s.qdd,
                                                                           &residual);
    for (unsigned i = 0; i < residual.getNumOfConstraints(); ++i) {
        EXPECT_NEAR(residual.dofVector->data[i], 0.0, 1e-15);
        s.lambda.dofVector->data[i] = 1.0 + i;
    }
    auto& weld = *dynamic_cast<MBS_InternalModel&>(*model).getConstraints()[0];
    MBS_ExtConstraint::ResultData results;
    results.fill({{9.0, 9.0, 9.0}});
    weld.getConstraintResultData(&s.q, &s.qd, &s.qdd, &s.lambda, results);
    const Vec3 point{{0.7, -0.3, 1.1}}, zero;
    for (const unsigned k : {0u, 4u})
        EXPECT_NEAR(norm(results[k] - point), 0.0, 1e-15);
    EXPECT_EQ(results[1].data, (Vec3{{-3.0, -4.0, -5.0}}.data));
    EXPECT_EQ(results[5].data, (Vec3{{3.0, 4.0, 5.0}}.data));
    for (const unsigned k : {2u, 3u, 6u, 7u})
        EXPECT_EQ(results[k].data, zero.data);
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
