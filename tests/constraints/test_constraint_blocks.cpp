#include "tests/support/DerivativeChecker.h"
#include "tests/support/ModelFixture.h"
#include "velmora/bodies/MBS_Body.h"
#include "velmora/constraints/MBS_ExtConstraint.h"
#include "velmora/global_matrix/MBS_ContributionCodes.h"
#include "velmora/global_matrix/MBS_GlobalModelMatrix.h"
#include "velmora/model/BlockProducts.h"
#include "velmora/model/internal/MBS_InternalModel.h"

#include <gmock/gmock.h>

namespace velmora::test {
namespace {

/// Constraints between the bodies "a" and "b", which start turned and away from the origin unless the model
/// says otherwise.
struct Case {
    const char* name;
    const char* type;
    const char* bodyIDs;
    const char* flag; ///< of a generic constraint; empty: all six
    const char* orientationOfA = "0.36, 0.48, -0.8, -0.8, 0.6, 0, 0.48, 0.64, 0.6";
    const char* orientationOfB = "0, 0.6, 0.8, 1, 0, 0, 0, 0.8, -0.6";
    std::vector<KnownDeviation> deviations = {};
    Expected constraintForce_q = Expected::NonZero;
};

const char* const unit = "1, 0, 0, 0, 1, 0, 0, 0, 1";

// A gear has no second derivatives for bodies with a turned start.
const KnownDeviation gearA{ExternalConstraintForce_q, "body 0 rot", "body 0 rot"};
const KnownDeviation gearB{ExternalConstraintForce_q, "body 1 rot", "body 1 rot"};

class Constraints : public ModelFixture, public testing::WithParamInterface<Case> {
  protected:
    void SetUp() override {
        const Case& row = GetParam();
        addRigidBody(data, "a", {{"OrientationPAI", row.orientationOfA}});
        addRigidBody(data, "b",
                     {{"OrientationPAI", row.orientationOfB}, {"LocationCenterMass", "-0.4, 0.5, 0.2"}});
        auto* block = addBlock(data, "Constraint", row.type, "joint",
                               {{"BodyIDs", row.bodyIDs},
                                {"Location", "0.3, -0.1, 0.7"},
                                {"ConstraintOrientation", "0.8, 0.6, 0.1, -0.5, 1, 0.2, 0.3, 0.1, 1"},
                                {"LocationBody1", "1, 0, 0.5"},
                                {"LocationBody2", "0, 2, 0"},
                                {"VectorBody1", "0.6, 0, 0.8"},
                                {"VectorBody2", "0, 0.28, -0.96"},
                                {"Multiplier", "1.5, -0.7"}});
        for (const char* flag : {"dxFixed", "axFixed", "dyFixed", "ayFixed", "dzFixed", "azFixed"})
            block->addKeyValue(flag, *row.flag == '\0' || row.flag == std::string(flag) ? "yes" : "no");
        build();
        ASSERT_FALSE(model->isErrorOccured()) << model->getErrorString();
    }

    const std::vector<std::unique_ptr<MBS_ExtConstraint>>& constraints() {
        return dynamic_cast<MBS_InternalModel&>(*model).getConstraints();
    }
};

TEST_P(Constraints, DerivativesAreThoseOfTheResidual) {
    DerivativeChecker checker(*model, GetParam().deviations);
    EXPECT_THAT(checker.check(ExternalConstraintForce_q, GetParam().constraintForce_q), testing::IsEmpty());
    for (const unsigned code :
         {ConstraintJacobianT, ConstraintJacobianTDot, ConstraintJacobian, ConstraintJacobianDot})
        EXPECT_THAT(checker.check(code, Expected::NonZero), testing::IsEmpty());
    EXPECT_THAT(checker.checkTransposedProducts(), testing::IsEmpty());
}

// At the input configuration nothing is violated, up to rounding.
TEST_P(Constraints, HoldAtTheStart) {
    State s(*model);
    MBS_ModelConstraintDofVector residual(model.get());
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(0.0, &s.q, &s.qd, &s.qd,
                                                                           &residual);
    for (unsigned k = 0; k < residual.getNumOfConstraints(); ++k)
        EXPECT_NEAR(residual.dofVector->data[k], 0.0, 1e-15);
    EXPECT_EQ(model->getNumOfExternalConstraints(), *GetParam().flag ? 1u : 6u);
    EXPECT_EQ(model->getNumOfAllDofInModel(), 16u + model->getNumOfExternalConstraints());
    EXPECT_EQ(model->getConstraintID(0), "joint");
}

// (dCq/dt) qd against the matrix; the entries of the joint alone.
TEST_P(Constraints, VelocityTermIsTheMatrixTimesVelocity) {
    std::mt19937 random{5};
    State s = randomState(*model, random);
    DerivativeChecker checker(*model);
    const Table rate = checker.analytic(ConstraintJacobianDot, s);
    MBS_ModelConstraintDofVector out(model.get());
    model->getCqdT_Mult_Qd(&s.q, &s.qd, &s.qdd, &out);
    for (unsigned i = 0; i < rate.rows; ++i) {
        double expected = 0.0;
        for (unsigned j = 0; j < rate.cols; ++j)
            expected += rate(i, j) * s.qd.dofVector->data[j];
        EXPECT_NEAR(out.dofVector->data[i], expected, 1e-13);
    }
    model->get_C_t(0.0, &s.q, &s.qd, &s.qdd, &out);
    EXPECT_EQ(*out.equationsOfConstraint(0), 0.0);
}

std::vector<const MBM_DenseMatrix*> columnsOf(const MBS_ExtConstraint& constraint) {
    std::vector<const MBM_DenseMatrix*> all;
    for (const auto* objects : {&constraint.cqTObjects, &constraint.cqTdTObjects})
        for (const auto& object : *objects)
            all.insert(all.end(), {object->tPart.get(), object->rPart.get(), object->fPart.get()});
    std::erase(all, nullptr);
    return all;
}

std::vector<double> elementsOf(const std::vector<const MBM_DenseMatrix*>& matrices) {
    std::vector<double> elements;
    for (const MBM_DenseMatrix* m : matrices)
        elements.insert(elements.end(), m->data, m->data + m->rows * m->cols);
    return elements;
}

/// Every part of B is there where its mirror image in A is, with the same elements.
void expectTransposed(const MBS_GeneralBodyBodyMatrix& A, const MBS_GeneralBodyBodyMatrix& B) {
    for (unsigned r = 0; r < 3; ++r)
        for (unsigned c = 0; c < 3; ++c) {
            const MBM_DenseMatrix *a = A.block[r][c].get(), *b = B.block[c][r].get();
            ASSERT_EQ(a == nullptr, b == nullptr) << r << c;
            for (unsigned j = 0; a && j < a->cols; ++j)
                for (unsigned i = 0; i < a->rows; ++i)
                    EXPECT_EQ(a->getValue(i, j), b->getValue(j, i)) << r << c;
        }
}

// What is computed in one go equals what the blocks compute one by one: the columns bit by bit, and of
// d(Cq' lambda)/dq, which may be summed over a joint, its product with a vector.
TEST_P(Constraints, BlocksAloneGiveTheSame) {
    std::mt19937 random{6};
    State s = randomState(*model, random);
    MBS_ModelConstraintDofVector residual(model.get()), alone(model.get());
    MBS_ModelPhysicalDofVector together(model.get()), sum(model.get());
    model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(0.1, &s.q, &s.qd, &s.qdd,
                                                                           &residual);
    model->updateMatricesForJacobian(0.1, &s.q, &s.qd, &s.qdd, &s.lambda);
    // Whoever reads the CqTdT objects finds the last state in them, even if he comes late.
    const std::vector<unsigned> types{ConstraintJacobianTDot}, places{0};
    const std::vector<double> weights{1.0};
    const std::unique_ptr<MBS_GlobalModelMatrix> reader(
        model->createModelRelatedMatrix(1, 1, &types, &places, &places, &weights, false));
    model->getConstraintForceDqTimesW(&s.qdd, &together);
    std::fill_n(sum.dofVector->data, sum.getNumOfDof(), 0.0);
    for (const auto& body : dynamic_cast<MBS_InternalModel&>(*model).getBodies())
        addTransposedProduct(*body->cqLi_q, s.qdd.bodyData(body->bodyIndex), sum.bodyData(body->bodyIndex));
    for (const auto& constraint : constraints()) {
        const auto columns = columnsOf(*constraint);
        const std::vector<double> before = elementsOf(columns);
        for (const MBM_DenseMatrix* m : columns)
            std::fill_n(m->data, m->rows * m->cols, 0.0);
        constraint->MBS_ExtConstraint::updateForJacobian(0.1, &s.q, &s.qd, &s.qdd, &s.lambda);
        for (const auto& cqT : constraint->cqTObjects)
            cqT->update(0.1, &s.q, &s.qd, &s.qdd);
        EXPECT_EQ(elementsOf(columns), before) << constraint->getClassName();
        constraint->getAndUpdateConstraints(0.1, &s.q, &s.qd, &s.qdd, &alone);
        EXPECT_EQ(*alone.equationsOfConstraint(constraint->constraintIndex),
                  *residual.equationsOfConstraint(constraint->constraintIndex));
        if (constraint->cqTLe_qBlocks.size() == 4)
            expectTransposed(*constraint->cqTLe_qBlocks[1], *constraint->cqTLe_qBlocks[2]);
        for (std::size_t k = 0; k < constraint->cqTLe_qBlocks.size(); ++k)
            addTransposedProduct(*constraint->cqTLe_qBlocks[k],
                                 s.qdd.bodyData(constraint->cqTLe_qRowBodies[k]),
                                 sum.bodyData(constraint->cqTLe_qColBodies[k]));
    }
    for (unsigned i = 0; i < sum.getNumOfDof(); ++i)
        EXPECT_NEAR(sum.dofVector->data[i], together.dofVector->data[i], 1e-13) << i;
}

INSTANTIATE_TEST_SUITE_P(
    All, Constraints,
    testing::Values(
        Case{"GroundDx", "Generic", "a, 0", "dxFixed"}, Case{"GroundDz", "Generic", "a, 0", "dzFixed"},
        Case{"GroundAx", "Generic", "b, 0", "axFixed"}, Case{"GroundAy", "Generic", "a, 0", "ayFixed"},
        Case{"GroundAz", "Generic", "a, 0", "azFixed"}, Case{"GroundAll", "Generic", "a, 0", ""},
        Case{"PairDx", "Generic", "a, b", "dxFixed"}, Case{"PairDy", "Generic", "b, a", "dyFixed"},
        Case{"PairAx", "Generic", "b, a", "axFixed"}, Case{"PairAy", "Generic", "a, b", "ayFixed"},
        Case{"PairAz", "Generic", "a, b", "azFixed"}, Case{"PairAll", "Generic", "a, b", ""},
        Case{"SwappedAll", "Generic", "b, a", ""}, Case{"GearUnit", "Gear", "a, b", "none", unit, unit},
        Case{"GearTurnedA", "Gear", "a, b", "none", Case{}.orientationOfA, unit, {gearA}},
        Case{"GearTurnedB", "Gear", "b, a", "none", unit, Case{}.orientationOfB, {gearB}},
        Case{"GearTurned",
             "Gear",
             "a, b",
             "none",
             Case{}.orientationOfA,
             Case{}.orientationOfB,
             {gearA, gearB},
             Expected::Zero}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace velmora::test
