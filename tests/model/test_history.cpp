#include "tests/support/DerivativeChecker.h"
#include "tests/support/ModelFixture.h"
#include "velmora/bodies/RotationAlgebra.h"

#include <cmath>
#include <limits>

namespace velmora::test {
namespace {

constexpr const char* unit = "1, 0, 0, 0, 1, 0, 0, 0, 1";

/// A model of everything whose answers depend on earlier states: angles and a gear that count turns, a motion
/// that starts anew, and directions between points that meet.
class Histories : public ModelFixture {
  protected:
    Histories() {
        addRigidBody(data, "a", {{"OrientationPAI", unit}});
        addRigidBody(data, "b", {{"OrientationPAI", unit}});
        addMeasure("spatial", "Rotational", "a, 0", "Angle", "disp");
        addMeasure("relative", "Rotational", "a, b", "Angle", "disp");
        addMeasure("rate", "Translational", "a, 0", "XYZ", "vel");
        addMeasure("rate between", "Translational", "a, b", "XYZ", "vel");
        addMeasure("x", "Translational", "a, 0", "X", "disp");
        addBlock(data, "Constraint", "Gear", "gear",
                 {{"BodyIDs", "a, b"},
                  {"LocationBody1", "1, 0, 0"},
                  {"LocationBody2", "0, 1, 0"},
                  {"VectorBody1", "0, 0, 1"},
                  {"VectorBody2", "0, 0, 1"},
                  {"Multiplier", "1, 2"}});
        addBlock(data, "Constraint", "TimeMotion", "motion",
                 {{"BodyIDs", "a, 0"},
                  {"PointOfApplication_Body1", "0, 0, 0"},
                  {"Measure", "x"},
                  {"MotionExpression", "simtime[]"},
                  {"ActivationPeriod", "9"}});
        addBlock(data, "Force", "GenericForce", "pull",
                 {{"BodyIDs", "a, 0"},
                  {"ForceExpression", "1"},
                  {"ForceDirectionType", "In-line-of-sight"},
                  {"ForceDirection", "0, 0, 0"},
                  {"PointOfApplication_Body1", "0.1, 0.2, 0.3"},
                  {"PointOfApplication_Body2", "0.1, 0.2, 0.3"}});
        first = make();
        second = make();
    }
    void addMeasure(const char* label, const char* type, const char* ids, const char* coordinate,
                    const char* mode) {
        addBlock(data, "Measure", type, label,
                 {{"BodyIDs", ids},
                  {"MeasureMode", mode},
                  {"MeasureCoordinate", coordinate},
                  {"MeasureLocation_Body1", "0.1, 0.2, 0.3"},
                  {"MeasureLocation_Body2", "0.1, 0.2, 0.3"},
                  {"MeasureVec", "1, 0, 0"},
                  {"MeasurePlaneVec1", "1, 0, 0"},
                  {"MeasurePlaneVec2", "0, 1, 0"}});
    }
    std::unique_ptr<MBS_Model> make() {
        build();
        EXPECT_FALSE(model->isErrorOccured()) << model->getErrorString();
        return std::move(model);
    }

    /// Bodies turned about z, both moved along y, with velocities.
    static State place(MBS_Model& of, double angle, double y) {
        State s(of);
        of.copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
        for (const unsigned b : {0U, 1U}) {
            const double half = (b == 0 ? angle : -2.0 * angle) / 2.0;
            Vec4{{std::cos(half), 0.0, 0.0, std::sin(half)}}.to(s.q.bodyData(b) + 3);
            s.q.bodyData(b)[1] += b == 0 ? y : 0.0;
            Vec3{{0.3, -0.7, 0.2}}.to(s.qd.bodyData(b));
        }
        return s;
    }
    /// Measures, constraint equations and forces.
    static std::vector<double> answer(MBS_Model& of, State s) {
        MBS_ModelConstraintDofVector c(&of);
        MBS_ModelPhysicalDofVector force(&of);
        of.updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(s.t, &s.q, &s.qd, &s.qdd, &c);
        of.getExternalForces(s.t, &s.q, &s.qd, &s.qdd, &force);
        std::vector<double> answers;
        for (unsigned i = 0; i < of.getNumOfMeasures(); ++i)
            answers.push_back(of.getMeasureValue(i));
        answers.insert(answers.end(), c.dofVector->data, c.dofVector->data + c.dofVector->size);
        answers.insert(answers.end(), force.dofVector->data, force.dofVector->data + force.dofVector->size);
        return answers;
    }

    std::unique_ptr<MBS_Model> first, second;
};

TEST_F(Histories, LetAnotherModelGoOn) {
    for (int i = 0; i <= 60; ++i) {
        answer(*first, place(*first, 0.2 * i, 0.1 * i));
        if (i == 30)
            first->resetModel(); // the motion starts from here
    }
    const State end = place(*first, 0.0, 0.0); // where points coincide
    const std::vector<double> expected = answer(*first, end);
    const std::vector<double> unknowing = answer(*second, end);
    unsigned numOfDifferences = 0;
    for (std::size_t i = 0; i < expected.size(); ++i)
        numOfDifferences += expected[i] != unknowing[i];
    EXPECT_GE(numOfDifferences, 7U); // 4 measures, gear, motion, force

    std::vector<double> numbers;
    MBS_History saved(&numbers);
    first->exchangeHistory(&saved);
    const auto takeBack = [&](const std::vector<double>& from) {
        MBS_History history{std::span<const double>(from)};
        second->exchangeHistory(&history);
        return history.isWhole();
    };
    EXPECT_TRUE(takeBack(numbers));
    EXPECT_EQ(answer(*second, end), expected);
    const State further = place(*first, 0.4, 0.0);
    EXPECT_EQ(answer(*second, further), answer(*first, further));

    std::vector<double> longer = numbers;
    longer.push_back(0.0);
    EXPECT_FALSE(takeBack(longer));
    longer.resize(numbers.size() - 1);
    EXPECT_FALSE(takeBack(longer));
}

TEST(History, RefusesWhatDoesNotFit) {
    const double infinity = std::numeric_limits<double>::infinity();
    const auto take = [](double number, auto value) {
        const std::vector<double> numbers = {number};
        MBS_History history{std::span<const double>(numbers)};
        history.exchange(value);
        return history.isWhole();
    };
    EXPECT_TRUE(take(1.0, false));
    EXPECT_TRUE(take(-7.0, 0));
    EXPECT_TRUE(take(0.0, std::vector<double>{3.0}));
    for (const double number : {0.5, 2.0, -1.0, infinity, std::nan("")})
        EXPECT_FALSE(take(number, false)) << number;
    for (const double number : {0.5, 3e9, -3e9, -infinity, std::nan("")})
        EXPECT_FALSE(take(number, 0)) << number;
    for (const double number : {-1.0, 1.0, 1e15, 1e300}) // as the length of a list that isn't there
        EXPECT_FALSE(take(number, std::vector<double>())) << number;
}

} // namespace
} // namespace velmora::test
