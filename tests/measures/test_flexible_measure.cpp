#include "tests/support/DerivativeChecker.h"
#include "tests/support/FlexibleBody.h"
#include "velmora/measures/MBS_Measure.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <gmock/gmock.h>

namespace velmora::test {
namespace {

class FlexibleMeasure : public ModelFixture {
  protected:
    FlexibleMeasure() {
        addRigidBody(data, "r");
        addFlexibleBody(data, "f", writeModalFile(PointBody().file()));
    }
    IO_DataModelBlock* addMeasure(const std::string& coordinate, const std::string& shapes, Keys more = {}) {
        IO_DataModelBlock* block = addBlock(data, "Measure", "FlexTranslational", "m",
                                            {{"BodyIDs", "f, 0"},
                                             {"MeasureMode", "disp"},
                                             {"MeasureCoordinate", coordinate},
                                             {"MeasureLocation_Body1", "0.7, -0.3, 0.4"},
                                             {"MeasureLocation_Body2", "-0.2, 0.5, 0.9"},
                                             {"ModeShapeFile", writeModalFile(shapes, "shapes")}});
        for (const auto& [key, value] : more) {
            if (!block->isKeyInBlock(key))
                block->addKeyValue(key, value);
            block->replaceValue(key, value);
        }
        return block;
    }
    double value(State& s) {
        model->updateMatricesForEquationOfMotion(s.t, &s.q, &s.qd, &s.qdd);
        model->updateMeasures(s.t, &s.q, &s.qd, &s.qdd);
        return dynamic_cast<MBS_ModelLookUp&>(*model).getMeasureByLabel("m")->measureValue;
    }
};

const char* const shapes = "3 2\n0.1 0.4\n-0.7 0.3\n0.5 1.1\n";

class Coordinates : public FlexibleMeasure, public testing::WithParamInterface<unsigned> {};

TEST_P(Coordinates, RowsAgreeWithDifferencesAndEndInTheShapes) {
    const unsigned c = GetParam();
    addMeasure(std::string(1, "XYZ"[c]), shapes);
    build();
    std::mt19937 random{5};
    State s = randomState(*model, random);
    const double length = value(s);
    for (unsigned body = 0; body < 2; ++body) {
        const unsigned n = s.q.bodyDof[body]->size;
        std::vector<double> row(n, 77.0), differences(n);
        auto& measure = *dynamic_cast<MBS_ModelLookUp&>(*model).getMeasureByLabel("m");
        measure.getMeasure_q(s.t, &s.q, &s.qd, &s.qdd, &s.lambda, body, row);
        const double h = 1e-5;
        for (unsigned k = 0; k < n; ++k) {
            double& x = s.q.bodyData(body)[k];
            const double kept = x;
            x = kept + h;
            const double above = value(s);
            x = kept - h;
            differences[k] = (above - value(s)) / (2.0 * h);
            x = kept;
        }
        EXPECT_THAT(row, testing::Pointwise(testing::DoubleNear(1e-9), differences)) << body;
        measure.getMeasure_qd(s.t, &s.q, &s.qd, &s.qdd, &s.lambda, body, row);
        EXPECT_THAT(row, testing::Each(0.0));
    }
    s.q.bodyData(1)[8] += 1.0;
    EXPECT_NEAR(value(s) - length, (std::array{0.4, 0.3, 1.1}[c]), 1e-14);
}

INSTANTIATE_TEST_SUITE_P(XYZ, Coordinates, testing::Range(0u, 3u));

TEST_F(FlexibleMeasure, StartsAtTheDistanceOfItsPointsOrAtZero) {
    IO_DataModelBlock* block = addMeasure("Y", shapes, {{"UseInitialValueAsOffset", "no"}});
    for (const bool isFromStart : {false, true}) {
        block->replaceValue("UseInitialValueAsOffset", isFromStart ? "yes" : "no");
        build();
        State s(*model);
        model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
        EXPECT_NEAR(value(s), isFromStart ? 0.0 : -0.8, 1e-14);
    }
}

struct BadMeasure {
    const char* key;
    const char* value;
    const char* text;
};

class BadMeasures : public FlexibleMeasure, public testing::WithParamInterface<BadMeasure> {};

TEST_P(BadMeasures, AreRefusedWithTheirText) {
    const auto& [key, value, text] = GetParam();
    const bool isFile = std::string(key) == "Shapes";
    addMeasure("X", isFile ? value : shapes, isFile ? Keys{} : Keys{{key, value}});
    build();
    EXPECT_THAT(takeMessages(), testing::HasSubstr(text));
    EXPECT_EQ(model->getNumOfMeasures(), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    All, BadMeasures,
    testing::Values(BadMeasure{"MeasureCoordinate", "XYZ", "MeasureCoordinate <XYZ> not valid!\n"},
                    BadMeasure{"BodyIDs", "r, 0", "ERROR: BodyIDs <r> not valid!\n"},
                    BadMeasure{"MeasureMode", "vel", "ERROR: MeasureMode <vel> not valid!\n"},
                    BadMeasure{"ModeShapeFile", "nowhere", "Matrix reading from file: could not open file"},
                    BadMeasure{"Shapes", "3 3 1 2 3 4 5 6 7 8 9", "> not valid!\n"},
                    BadMeasure{"Shapes", "2 2 1 2 3 4", "> not valid!\n"},
                    BadMeasure{"Shapes", "3 x",
                               "Matrix reading from file: dimensions in the file are not valid"}));

} // namespace
} // namespace velmora::test
