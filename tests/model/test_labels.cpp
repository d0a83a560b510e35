#include "tests/support/DerivativeChecker.h"
#include "tests/support/ModelFixture.h"

#include <array>
#include <cmath>
#include <numbers>

namespace velmora::test {
namespace {

/// Two bodies, measures, a parameter, a load and a motion: what is reached by labels and UUIDs.
class Labels : public ModelFixture {
  protected:
    Labels() {
        addRigidBody(data, "a", {{"OrientationPAI", "1,0,0, 0,1,0, 0,0,1"}});
        addRigidBody(data, "b");
        addBlock(data, "DataObject", "Parameter", "k", {{"InitialValue", "3"}});
        addBlock(data, "Measure", "Translational", "Height",
                 {{"BodyIDs", "b, 0"},
                  {"MeasureMode", "disp"},
                  {"MeasureCoordinate", "Z"},
                  {"MeasureLocation_Body1", "0.3, 0.2, 0.1"},
                  {"MeasureLocation_Body2", "0, 0, 1"}});
        addBlock(data, "Measure", "Rotational", "turn",
                 {{"BodyIDs", "a, 0"},
                  {"MeasureCoordinate", "Angle"},
                  {"MeasureVec", "1, 0, 0"},
                  {"MeasurePlaneVec1", "1, 0, 0"},
                  {"MeasurePlaneVec2", "0, 1, 0"}});
        addBlock(data, "Force", "GenericTorque", "load",
                 {{"BodyIDs", "a, 0"},
                  {"TorqueExpression", "parval[K] * 2"},
                  {"AxisType", "SpaceFixed"},
                  {"Axis", "0, 0, 1"}});
        addBlock(data, "Constraint", "TimeMotion", "drive",
                 {{"BodyIDs", "a, 0"},
                  {"Measure", "turn"},
                  {"MotionExpression", "simtime[]"},
                  {"ActivationPeriod", "0.5"},
                  {"PointOfApplication_Body1", "0, 0, 0"}});
        build();
    }

    /// The start, with body "a" turned about z.
    State turned(double angle) {
        State s(*model);
        model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
        const std::array p = {std::cos(angle / 2), 0.0, 0.0, std::sin(angle / 2)};
        std::ranges::copy(p, s.q.bodyData(0) + 3);
        return s;
    }
    void evaluate(State& s, double t) {
        model->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(t, &s.q, &s.qd, &s.qdd,
                                                                               &s.lambda);
    }
    double torque(State& s) {
        MBS_ModelPhysicalDofVector force(model.get());
        model->getExternalForces(0.0, &s.q, &s.qd, &s.qdd, &force);
        return force.bodyData(0)[6] / 2; // about z, at the unit rotation
    }
};

TEST_F(Labels, GiveValuesAndRowsInAnyCaseOfLetters) {
    std::mt19937 random(5);
    State s = randomState(*model, random);
    evaluate(s, 0.0);
    const std::string label = "hEIGHT", unknown = "depth";
    const double height = model->getMeasureValueByLabel(&label);
    EXPECT_NE(height, 0.0);
    EXPECT_EQ(model->getNumOfMeasures(), 2U);
    EXPECT_EQ(model->getMeasureValue(0), height);
    EXPECT_EQ(model->getMeasureValue(2), 0.0);
    EXPECT_EQ(model->getMeasureValueByLabel(&unknown), 0.0);

    std::string text = "old";
    model->getMeasureLabel(0, nullptr);
    model->getMeasureLabel(0, &text);
    EXPECT_EQ(text, "height");
    model->getMeasureLabel(2, &text);
    EXPECT_EQ(text, "");

    double values[] = {0.0, 0.0};
    std::vector<double*> block = {&values[0], &values[1]};
    model->getCurrentMeasureResultFileBlock(&s.q, &block);
    EXPECT_EQ(values[0], height);

    std::array<double, 7> row;
    for (const unsigned body : {0U, 1U}) {
        row.fill(77.0);
        model->getMeasure_q(&unknown, 0.0, &s.q, &s.qd, &s.qdd, &s.lambda, body, row.data());
        EXPECT_EQ(row[2], 77.0);
        model->getMeasure_q(&label, 0.0, &s.q, &s.qd, &s.qdd, &s.lambda, body, row.data());
        for (unsigned i = 0; i < 7; ++i) {
            double sides[2];
            for (const int side : {0, 1}) {
                State moved(s);
                moved.q.bodyData(body)[i] += (side == 0 ? -1 : 1) * 1e-6;
                evaluate(moved, 0.0);
                sides[side] = model->getMeasureValueByLabel(&label);
            }
            EXPECT_NEAR(row[i], (sides[1] - sides[0]) / 2e-6, 1e-8);
        }
    }
}

TEST_F(Labels, ParametersChangeBetweenEvaluations) {
    State s = turned(0.0);
    evaluate(s, 0.0);
    EXPECT_DOUBLE_EQ(torque(s), 6.0);
    IO_DataModelBlock block("DataObject", "k", "k", "");
    block.addKeyValue("InitialValue", "-4");
    model->modifyModelElement(&block);
    EXPECT_DOUBLE_EQ(torque(s), -8.0);

    IO_DataModelBlock other("DataObject", "m", "k", ""); // no such object
    other.addKeyValue("InitialValue", "7");
    model->modifyModelElement(&other);
    model->modifyModelElement(nullptr);
    model->getDataModelOfObject(&s.q, &block);
    EXPECT_DOUBLE_EQ(torque(s), -8.0);
    EXPECT_FALSE(model->isErrorOccured());

    block.replaceValue("InitialValue", "four");
    model->modifyModelElement(&block);
    EXPECT_DOUBLE_EQ(torque(s), -8.0);
    EXPECT_NE(takeMessages().find("Not able to convert < four> to double value!"), std::string::npos);
}

TEST_F(Labels, ResetTakesOutTurnsAndBeginsMotionsAnew) {
    const std::string label = "turn";
    State s = turned(0.0);
    for (double angle = 0.0; angle < 4.0 * std::numbers::pi; angle += 0.3) {
        s = turned(angle);
        evaluate(s, 0.0);
    }
    const double counted = model->getMeasureValueByLabel(&label);
    EXPECT_GT(counted, 12.0);
    model->resetModel();
    evaluate(s, 0.0);
    const double reset = model->getMeasureValueByLabel(&label);
    EXPECT_NEAR(std::remainder(counted - reset, std::numbers::pi), 0.0, 1e-12);
    EXPECT_LT(std::abs(reset), std::numbers::pi / 2);
    // A motion begins where its measure stands.
    EXPECT_NEAR(*s.lambda.equationsOfConstraint(0), 0.0, 1e-12);
    evaluate(s, 0.5); // and has come to its expression at the end of the start
    EXPECT_NEAR(*s.lambda.equationsOfConstraint(0), reset - 0.5, 1e-12);
}

} // namespace
} // namespace velmora::test
