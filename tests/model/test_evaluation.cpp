#include "tests/support/DerivativeChecker.h"
#include "tests/support/ModelFixture.h"

#include <gmock/gmock.h>

namespace velmora::test {
namespace {

class Evaluation : public ModelFixture {
  protected:
    Evaluation() {
        addRigidBody(data, "a", {{"OrientationPAI", "0.36, 0.48, -0.8, -0.8, 0.6, 0, 0.481, 0.64, 0.6"}});
        addRigidBody(data, "b", {{"OrientationPAI", "-1, 0, 0, 0, -1, 0, 0, 0, 1"}});
    }
};

TEST_F(Evaluation, ResidualIsExactlyZeroAtTheStart) {
    State s(build());
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    MBS_ModelConstraintDofVector c(model.get());
    model->getAndUpdateConstraints(0.0, &s.q, &s.qd, nullptr, &c);
    EXPECT_EQ(c.dofVector->data[0], 0.0);
    EXPECT_EQ(c.dofVector->data[1], 0.0);
    s.q.bodyData(1)[4] += 0.1;
    model->getAndUpdateConstraints(0.0, &s.q, &s.qd, nullptr, &c);
    EXPECT_NEAR(c.dofVector->data[1], 0.01, 1e-15); // e1 is 0 at the start
}

// The rate of the constraint along the motion, and the rate of that rate.
TEST_F(Evaluation, ConstraintsAtVelocityAndAccelerationLevelAgreeWithTheirRates) {
    std::mt19937 random{3};
    State s = randomState(build(), random);
    const auto residualAt = [&](double h) {
        MBS_ModelPhysicalDofVector q(s.q);
        for (unsigned i = 0; i < q.getNumOfDof(); ++i)
            q.dofVector->data[i] += h * s.qd.dofVector->data[i];
        MBS_ModelConstraintDofVector c(model.get());
        model->getAndUpdateConstraints(0.0, &q, &s.qd, nullptr, &c);
        return c.dofVector->data[1];
    };
    MBS_ModelConstraintDofVector c(model.get());
    model->getCqdT_Mult_Qd(&s.q, &s.qd, nullptr, &c);
    constexpr double h = 1e-3; // the residual is quadratic
    EXPECT_NEAR(c.dofVector->data[1], (residualAt(h) - 2 * residualAt(0.0) + residualAt(-h)) / (h * h), 1e-8);
    model->get_C_t(0.0, &s.q, &s.qd, nullptr, &c);
    EXPECT_EQ(c.dofVector->data[1], 0.0);
}

TEST_F(Evaluation, StateBlockHoldsPositionAndRotation) {
    State s(build());
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    std::vector<double> first(12), second(12);
    std::vector<double*> blocks{first.data(), second.data()};
    model->getCurrentStateResultFileBlock(&s.q, &blocks);
    EXPECT_THAT(second, testing::Pointwise(testing::DoubleNear(1e-15),
                                           {0.1, -0.2, 0.3, -1.0, 0.0, 0.0, 0.0, -1.0, 0.0, 0.0, 0.0, 1.0}));
}

// A model without objects, and the root alone, answer everything with nothing.
TEST_F(Evaluation, EmptyModelAnswersEverything) {
    IO_DataModel nothing("nothing");
    const std::unique_ptr<MBS_Model> empty(MBS_Model::makeModel(&nothing, &output));
    MBS_Model root(nullptr, &output);
    for (MBS_Model* m : {empty.get(), &root}) {
        State s(*m);
        m->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(0.0, &s.q, &s.qd, &s.qdd,
                                                                           &s.lambda);
        m->updateMatricesForJacobian(0.0, &s.q, &s.qd, &s.qdd, &s.lambda);
        m->getConstraintForces(&s.lambda, &s.qdd);
        m->getExternalForces(0.0, &s.q, &s.qd, &s.qdd, &s.qdd);
        m->updateForKinematicSolverAndComputeBbar(&s.q, &s.qdd, &s.lambda);
        m->resetModel();
        const std::string label = "none";
        std::string text = "old";
        m->getMeasureLabel(0, &text);
        EXPECT_EQ(text, "");
        EXPECT_EQ(m->getMeasureValueByLabel(&label), 0.0);
        EXPECT_TRUE(m->isFinalStateReached());
        EXPECT_EQ(m->getNumOfConstraintDofOfConstraint(0) + m->getNumOfBodies() + m->getNumOfMeasures(), 0u);
    }
    EXPECT_EQ(root.getClassName(), "MBS_Item");
    std::string name = "old";
    root.getModelName(&name);
    EXPECT_EQ(name, "");
}

} // namespace
} // namespace velmora::test
