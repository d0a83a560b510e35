#include "tests/support/AllocationCounter.h"
#include "tests/support/DerivativeChecker.h"
#include "tests/support/ModelFixture.h"
#include "velmora/constraints/MBS_ExtConstraint.h"
#include "velmora/global_matrix/MBS_ContributionCodes.h"
#include "velmora/model/internal/MBS_InternalModel.h"

#include <gmock/gmock.h>

#include <cmath>

namespace velmora::test {
namespace {

constexpr double T = 0.5; // end of the start phase

/// A motion by one class of measure.
struct Case {
    const char* name;
    const char* bodyIDs;
    const char* type;
    const char* coordinate;
    std::vector<KnownDeviation> deviations = {};

    friend void PrintTo(const Case& c, std::ostream* out) { *out << c.name; }
};

std::vector<KnownDeviation> deviationsOf(const std::string& rows, bool withRates) {
    std::vector<KnownDeviation> all = {{ConstraintJacobianT, rows, "constraint 0"},
                                       {ConstraintJacobian, "constraint 0", rows}};
    if (withRates)
        all.insert(all.end(), {{ConstraintJacobianTDot, rows, "constraint 0"},
                               {ConstraintJacobianDot, "constraint 0", rows}});
    return all;
}

std::vector<KnownDeviation> join(std::vector<KnownDeviation> a, const std::vector<KnownDeviation>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// Rows of an angle are those of X dY - Y dX, and their rates those of X Y' - Y X'.
const auto spatialAngle = deviationsOf("body 0 rot", true);
const auto relativeAngle = join(spatialAngle, deviationsOf("body 1 rot", true));
// Rows of a difference in the frame of body 1 hold for Euler parameters of norm 1.
const auto relativeDifference = deviationsOf("body 0 rot", false);

class MotionFixture : public ModelFixture {
  protected:
    MotionFixture() {
        addRigidBody(data, "a");
        addRigidBody(data, "b",
                     {{"LocationCenterMass", "-0.4, 0.7, 0.2"},
                      {"OrientationPAI", "0, 1, 0, -0.6, 0, 0.8, 0.8, 0, 0.6"}});
    }
    void addMeasure(const char* label, const char* bodyIDs, const char* type, const char* coordinate,
                    const char* mode = "disp") {
        addBlock(data, "Measure", type, label,
                 {{"BodyIDs", bodyIDs},
                  {"MeasureMode", mode},
                  {"MeasureCoordinate", coordinate},
                  {"MeasureLocation_Body1", "0.7, -0.3, 0.4"},
                  {"MeasureLocation_Body2", "-0.2, 0.5, 0.9"},
                  {"MeasureVec", "0.6, 0, 0.8"},
                  {"MeasurePlaneVec1", "0, 1, 0"},
                  {"MeasurePlaneVec2", "0.8, 0, -0.6"}});
    }
    IO_DataModelBlock* addMotion(const char* bodyIDs, Keys more) {
        auto* block = addBlock(data, "Constraint", "TimeMotion", "motion",
                               {{"BodyIDs", bodyIDs},
                                {"PointOfApplication_Body1", "0.7, -0.3, 0.4"},
                                {"PointOfApplication_Body2", "-0.2, 0.5, 0.9"}});
        for (const auto& [key, value] : more)
            block->addKeyValue(key, value);
        return block;
    }
    MBS_ExtConstraint& motion() { return *dynamic_cast<MBS_InternalModel&>(*model).getConstraints().front(); }
    using TimeFunction = void (MBS_ExtConstraint::*)(double, const MBS_ModelPhysicalDofVector*,
                                                     const MBS_ModelPhysicalDofVector*,
                                                     const MBS_ModelPhysicalDofVector*,
                                                     MBS_ModelConstraintDofVector*);
    double at(double t, TimeFunction f, State& s) {
        MBS_ModelConstraintDofVector out(model.get());
        (motion().*f)(t, &s.q, &s.qd, &s.qdd, &out);
        return *out.equationsOfConstraint(0);
    }
    State startState() {
        State s(*model);
        model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
        model->updateMatricesForEquationOfMotion(0.0, &s.q, &s.qd, nullptr);
        model->updateMeasures(0.0, &s.q, &s.qd, nullptr);
        return s;
    }

    static constexpr TimeFunction C = &MBS_ExtConstraint::getAndUpdateConstraints;
    static constexpr TimeFunction C_t = &MBS_ExtConstraint::get_C_t;
    static constexpr TimeFunction C_tt = &MBS_ExtConstraint::get_C_t_order2;
};

class Motions : public MotionFixture, public testing::WithParamInterface<Case> {
  protected:
    Motions() {
        addMeasure("m", GetParam().bodyIDs, GetParam().type, GetParam().coordinate);
        addMotion(GetParam().bodyIDs,
                  {{"Measure", "M"}, {"MotionExpression", "sin(3*simtime[])"}, {"ActivationPeriod", "0.5"}});
        build();
    }
};

TEST_P(Motions, DerivativesAreThoseOfTheMeasure) {
    ASSERT_FALSE(model->isErrorOccured()) << model->getErrorString();
    DerivativeChecker checker(*model, GetParam().deviations);
    for (const unsigned code : {ExternalConstraintForce_q, ConstraintJacobianT, ConstraintJacobianTDot,
                                ConstraintJacobian, ConstraintJacobianDot})
        EXPECT_THAT(checker.check(code, Expected::NonZero), testing::IsEmpty());
    EXPECT_THAT(checker.checkTransposedProducts(), testing::IsEmpty());
    for (const auto& block : motion().cqTLe_qBlocks)
        for (unsigned r : {Trans, Rot})
            for (unsigned c : {Trans, Rot})
                EXPECT_TRUE(block->block[r][c]);
}

TEST_P(Motions, FollowTheFunctionAfterTheStartPhase) {
    State s = startState();
    for (const TimeFunction f : {C, C_t, C_tt})
        EXPECT_NEAR(at(0.0, f, s), 0.0, 1e-14);
    constexpr double step = 1e-5;
    for (const double t : {0.05, 0.2, 0.45, 0.8}) {
        const double rate = (at(t + step, C, s) - at(t - step, C, s)) / (2 * step);
        const double acceleration = (at(t + step, C_t, s) - at(t - step, C_t, s)) / (2 * step);
        EXPECT_NEAR(at(t, C_t, s), rate, 1e-7 * (1 + std::abs(rate)));
        EXPECT_NEAR(at(t, C_tt, s), acceleration, 1e-5 * (1 + std::abs(acceleration)));
    }
    const double m = at(T, C, s) + std::sin(3 * T);
    for (const double t : {T - 1e-9, T, T + 1e-9}) { // both sides of the end meet
        EXPECT_NEAR(at(t, C, s), m - std::sin(3 * t), 1e-8);
        EXPECT_NEAR(at(t, C_t, s), -3 * std::cos(3 * t), 1e-6);
        EXPECT_NEAR(at(t, C_tt, s), 9 * std::sin(3 * t), 1e-4); // the function's, by differences
    }
}

TEST_P(Motions, BeginAnewAtAReset) {
    State s = startState();
    s.q.bodyData(0)[0] += 0.3;
    s.q.bodyData(0)[5] += 0.2;
    model->updateMatricesForEquationOfMotion(0.0, &s.q, &s.qd, nullptr);
    model->updateMeasures(0.0, &s.q, &s.qd, nullptr);
    EXPECT_GT(std::abs(at(0.0, C, s)), 0.01);
    model->resetModel();
    EXPECT_EQ(at(0.0, C, s), 0.0);
}

TEST_P(Motions, AllocateNothing) {
    State s = startState();
    MBS_ModelConstraintDofVector out(model.get());
    std::fill_n(s.lambda.dofVector->data, s.lambda.getNumOfConstraints(), 0.5);
    std::fill_n(s.qdd.dofVector->data, s.qdd.getNumOfDof(), 0.5);
    const auto evaluate = [&](double t) {
        model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(t, &s.q, &s.qd, &s.qdd, &out);
        model->updateMatricesForJacobian(t, &s.q, &s.qd, &s.qdd, &s.lambda);
        model->get_C_t(t, &s.q, &s.qd, &s.qdd, &out);
        model->get_C_t_order2(t, &s.q, &s.qd, &s.qdd, &out);
    };
    const auto before = allocationCount();
    evaluate(0.2);
    evaluate(0.7);
    EXPECT_EQ(allocationCount(), before);
}

INSTANTIATE_TEST_SUITE_P(All, Motions,
                         testing::Values(Case{"XDisp", "a, 0", "Translational", "X"},
                                         Case{"ZDisp", "a, 0", "Translational", "Z"},
                                         Case{"Angle", "a, 0", "Rotational", "Angle", spatialAngle},
                                         Case{"Diff_x", "a, b", "Translational", "Y", relativeDifference},
                                         Case{"Diff_GlobalDistance", "a, b", "Translational", "XYZ"},
                                         Case{"Diff_Angle", "a, b", "Rotational", "Angle", relativeAngle}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(MotionFixture, StartPhaseIsOptional) {
    addMeasure("m", "a, 0", "Translational", "X"); // 0.9 at the start
    const Keys keys = {{"Measure", "m"}, {"MotionExpression", "0.4"}};
    addMotion("a, 0", keys);
    addMotion("a, 0", keys)->addKeyValue("ActivationPeriod", "0");
    build();
    State s = startState();
    EXPECT_NEAR(at(0.0, C, s), 0.0, 1e-15);
    EXPECT_NEAR(at(0.05, C, s), 0.9 - (0.9 - 0.5 * (21 / 32. - 35 / 64. + 15 / 128.)), 1e-14) << "T = 0.1";
    EXPECT_NEAR(at(0.1, C, s), 0.5, 1e-14);
    MBS_ModelConstraintDofVector out(model.get());
    dynamic_cast<MBS_InternalModel&>(*model).getConstraints()[1]->getAndUpdateConstraints(0.0, &s.q, &s.qd,
                                                                                          &s.qdd, &out);
    EXPECT_NEAR(*out.equationsOfConstraint(1), 0.5, 1e-14);
}

// The reaction of a displacement along x is a force -lambda along x at the measured point.
TEST_F(MotionFixture, ReactionActsAtTheMeasuredPoint) {
    addMeasure("m", "a, 0", "Translational", "X");
    addMotion("a, 0", {{"Measure", "m"}, {"MotionExpression", "0"}});
    build();
    State s = startState();
    *s.lambda.equationsOfConstraint(0) = 2.5;
    for (const auto& cqT : motion().cqTObjects)
        cqT->update(0.0, &s.q, &s.qd, &s.qdd);
    MBS_ExtConstraint::ResultData result;
    motion().getConstraintResultData(&s.q, &s.qd, &s.qdd, &s.lambda, result);
    const double expected[] = {0.7, -0.3, 0.4, -2.5, 0, 0, 0.7, -0.3, 0.4, 0, 0, 0};
    for (std::size_t i = 0; i < 12; ++i)
        EXPECT_NEAR(result[i / 3].data[i % 3], expected[i], 1e-13) << i;
}

TEST_F(MotionFixture, FaultyBlocksAreRefused) {
    addMeasure("x", "a, 0", "Translational", "X");
    addMeasure("onB", "b, 0", "Translational", "X");
    addMeasure("far", "a, 0", "Translational", "XYZ");
    addMeasure("speed", "a, 0", "Translational", "X", "vel");
    addMeasure("swapped", "b, a", "Translational", "X");
    struct Fault {
        const char *bodyIDs, *measure, *expression, *period, *message;
    };
    const Fault faults[] = {
        {"a, 0", "nothing", "0", "1", "Given Measure for Motion <nothing> does not exist!\n"},
        {"a, 0", "speed", "0", "1",
         "Given Measure for Motion must be of type Translational or Rotational!\n"},
        {"a, 0", "far", "0", "1", "Given Measure for Motion must be of type Translational or Rotational!\n"},
        {"a, 0", "swapped", "0", "1",
         "Given Measure for Motion must be of type Translational or Rotational!\n"},
        {"a, b", "x", "0", "1", "Given Measure for Motion must be of type Translational or Rotational!\n"},
        {"a, 0", "onB", "0", "1",
         "Given Measure for Motion must not depend on Bodies different from Constraint BodyIDs!\n"},
        {"a, b", "swapped", "0", "1",
         "Given Measure for Motion must depend on same Bodies and same order as Constraint BodyIDs!\n"},
        {"a, 0", "x", "meaval[onB]", "1",
         "Given Expression for Motion must not depend on Measures (only time)!\n"},
        {"a, 0", "x", "0", "-1", "Value for ActivationPeriod must not be negative!\n"},
    };
    std::string expected;
    for (const Fault& fault : faults) {
        addMotion(fault.bodyIDs, {{"Measure", fault.measure},
                                  {"MotionExpression", fault.expression},
                                  {"ActivationPeriod", fault.period}})
            ->lineNumber = 7;
        expected += std::string("\nIn Block <Constraint> prior to line number 7:\n") + fault.message;
    }
    build();
    EXPECT_EQ(model->getErrorString(), expected);
    EXPECT_EQ(model->getNumOfExternalConstraints(), 0u);
    takeMessages();
}

} // namespace
} // namespace velmora::test
