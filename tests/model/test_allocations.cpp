#include "tests/support/AllocationCounter.h"
#include "tests/support/DerivativeChecker.h"
#include "tests/support/FlexibleBody.h"
#include "velmora/constraints/MBS_ExtConstraint.h"
#include "velmora/model/internal/MBS_InternalModel.h"

namespace velmora::test {
namespace {

class Allocations : public ModelFixture {};

TEST_F(Allocations, EvaluationMakesNone) {
    for (const char* uuid : {"a", "b", "c"})
        addRigidBody(data, uuid);
    addBlock(data, "Force", "Gravity", "g", {{"GravityAccVector", "0, 0, -9.81"}, {"ActivationTime", "1"}});
    addBlock(data, "Constraint", "Generic", "weld",
             {{"BodyIDs", "a, b"},
              {"dxFixed", "yes"},
              {"axFixed", "yes"},
              {"dyFixed", "yes"},
              {"ayFixed", "yes"},
              {"dzFixed", "yes"},
              {"azFixed", "yes"}});
    addBlock(data, "Constraint", "Generic", "support",
             {{"BodyIDs", "a, 0"}, {"dxFixed", "yes"}, {"axFixed", "yes"}});
    addBlock(data, "Constraint", "Gear", "gear",
             {{"BodyIDs", "b, c"},
              {"LocationBody1", "0, 0, 0"},
              {"LocationBody2", "0, 0, 0"},
              {"VectorBody1", "0, 0, 1"},
              {"VectorBody2", "0, 0, 1"},
              {"Multiplier", "1, 2"}});
    addFlexibleBody(data, "f", writeModalFile(PointBody().file()));
    addBlock(data, "Constraint", "FixRiBoFleBo", "flexible weld",
             {{"BodyIDs", "c, f"}, {"Location", "1, 0, 0"}, {"InterfaceNode", "7"}});
    build();
    std::mt19937 random{11};
    State s = randomState(*model, random);
    MBS_ModelPhysicalDofVector f(model.get());
    MBS_ModelConstraintDofVector c(model.get());
    const std::vector<unsigned> types{101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 201, 301, 202},
        rows{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2}, cols{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1};
    const std::vector<double> weights(types.size(), 0.5);
    const std::unique_ptr<MBS_GlobalModelMatrix> matrix(
        model->createModelRelatedMatrix(3, 2, &types, &rows, &cols, &weights, false));
    std::vector<double> state(12);
    std::vector<double*> blocks(4, state.data());
    MBS_ExtConstraint::ResultData reaction;

    const unsigned long before = allocationCount();
    for (int n = 0; n < 2; ++n) {
        model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(0.1, &s.q, &s.qd, &s.qdd, &c);
        model->getAccInertiaForces(&s.qdd, &f);
        model->getVelInertiaForces(&s.q, &s.qd, &f);
        model->getElasticForces(&s.q, &f);
        model->getDampingForces(&s.qd, &f);
        model->getConstraintForces(&s.lambda, &f);
        model->getExternalForces(0.1, &s.q, &s.qd, &s.qdd, &f);
        model->updateMatricesForJacobian(0.1, &s.q, &s.qd, &s.qdd, &s.lambda);
        model->getMqddDqTimesW(&s.qd, &f);
        model->getVelInertiaForcesDqTimesW(&s.qd, &f);
        model->getExternalForcesDqTimesW(&s.qd, &f);
        model->getConstraintForceDqTimesW(&s.qd, &f);
        model->getCqdT_Mult_Qd(&s.q, &s.qd, &s.qdd, &c);
        model->get_C_t(0.1, &s.q, &s.qd, &s.qdd, &c);
        model->updateForKinematicSolverAndComputeBbar(&s.q, &f, &c);
        model->getCurrentStateResultFileBlock(&s.q, &blocks);
        model->getCurrentConstraintStateResultFileBlock(&s.q, &blocks);
        for (const auto& constraint : dynamic_cast<MBS_InternalModel&>(*model).getConstraints())
            constraint->getConstraintResultData(&s.q, &s.qd, &s.qdd, &s.lambda, reaction);
        matrix->setScalingValues(weights);
        matrix->update();
    }
    EXPECT_EQ(allocationCount(), before);
    const auto guard = std::make_unique<double>(1.0); // the counter counts
    EXPECT_GT(allocationCount(), before);
}

} // namespace
} // namespace velmora::test
