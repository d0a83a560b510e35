#include "tests/measures/MeasureBench.h"

#include <cmath>
#include <numbers>

namespace velmora::test {

namespace {

constexpr double pi = std::numbers::pi;

} // namespace

TEST_F(MeasureBench, AnglesFollowTenTurnsBothWays) {
    const KeyList keys = {
        {"MeasureVec", "1, 0, 0"}, {"MeasurePlaneVec1", "1, 0, 0"}, {"MeasurePlaneVec2", "0, 1, 0"}};
    const auto spatial = make("Rotational ground - Angle", keys);
    const auto relative = make("Rotational body - Angle", keys);
    State s(*model);
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    const Vec4 start = Vec4::from(s.q.bodyData(0) + 3);
    const auto turnTo = [&](double angle) { // about the global z axis, from the initial orientation
        const double c = std::cos(angle / 2), z = std::sin(angle / 2);
        Vec4{{c * start(0) - z * start(3), c * start(1) - z * start(2), c * start(2) + z * start(1),
              c * start(3) + z * start(0)}}
            .to(s.q.bodyData(0) + 3);
        update(*spatial, s);
        update(*relative, s);
    };
    double angle = 0.0;
    for (const double step : {0.3, -0.3})
        for (int i = 0; i < (step > 0 ? 210 : 420); ++i) {
            turnTo(angle += step);
            EXPECT_NEAR(spatial->measureValue, angle, 1e-12);
            EXPECT_NEAR(relative->measureValue, angle, 1e-12);
        }

    // After a reset the next update counts nothing, though it stands across a jump.
    for (const auto& [measure, jump] : {std::pair(spatial.get(), pi / 2), std::pair(relative.get(), pi)}) {
        turnTo(jump - 0.1);
        measure->resetCount();
        EXPECT_NEAR(measure->measureValue, jump - 0.1, 1e-12);
        for (const double beyond : {0.1, 0.3}) {
            turnTo(jump + beyond);
            EXPECT_NEAR(measure->measureValue, beyond - jump, 1e-12);
        }
        turnTo(jump - 0.1);
        EXPECT_NEAR(measure->measureValue, -jump - 0.1, 1e-12) << "counted again";
    }
}

TEST_F(MeasureBench, CoincidentPointsHaveNoDirection) {
    const KeyList keys = {{"MeasureLocation_Body1", "0.1, 0.2, 0.3"},
                          {"MeasureLocation_Body2", "0.1, 0.2, 0.3"}};
    State s(*model);
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    for (const std::string start : {"Translational ground ", "Translational body "}) {
        const auto distance = make(start + "disp XYZ", keys), rate = make(start + "vel XYZ", keys);
        s.q.bodyData(0)[1] += 0.5;
        EXPECT_NEAR(valueAt(*distance, s), 0.5, 1e-14);
        const double rateAlongY = valueAt(*rate, s);
        EXPECT_GT(std::abs(rateAlongY), 0.1);
        s.q.bodyData(0)[1] -= 0.5;
        EXPECT_NEAR(valueAt(*distance, s), 0.0, 1e-14);
        EXPECT_NEAR(valueAt(*rate, s), rateAlongY, 1e-12) << "the direction holds on";
        std::array<double, 7> row;
        row.fill(1.0);
        distance->getMeasure_q(s.t, &s.q, &s.qd, &s.qdd, &s.lambda, 0, row);
        EXPECT_EQ(row, (std::array<double, 7>{}));
    }
}

TEST_F(MeasureBench, InitialValuesMayBeOffsets) {
    State s(*model);
    model->copyInitialDataIntoPhysicalDofVector(&s.q, &s.qd);
    struct Start {
        const char* choice;
        double without, with; // at the first update
    };
    // The offset of Diff_x is taken in global components: its value starts at c . (A1' - 1) d.
    for (const auto& [choice, without, with] : {Start{"Translational ground disp Y", -0.8, 0.0},
                                                Start{"Translational ground disp XYZ", std::sqrt(1.7), 0.0},
                                                Start{"Translational body disp XYZ", std::sqrt(1.7), 0.0},
                                                Start{"Translational body disp X", -0.34, 0.56},
                                                Start{"Rotational ground - Angle", std::atan(0.75), 0.0},
                                                Start{"Rotational body - Angle", std::atan(0.75), 0.0}}) {
        for (const std::string offset : {"no", "yes"}) {
            const auto measure = make(choice, {{"MeasureLocation_Body1", "0.7, -0.3, 0.4"},
                                               {"MeasureLocation_Body2", "-0.2, 0.5, 0.9"},
                                               {"MeasureVec", "0.8, 0.6, 0"},
                                               {"MeasurePlaneVec1", "1, 0, 0"},
                                               {"MeasurePlaneVec2", "0, 1, 0"},
                                               {"UseInitialValueAsOffset", offset}});
            const double atConstruction = measure->measureValue;
            const double first = valueAt(*measure, s);
            EXPECT_NEAR(first, offset == "yes" ? with : without, 1e-12) << choice;
            EXPECT_NEAR(atConstruction, first, 1e-12) << choice;
        }
    }
}

TEST_F(MeasureBench, FaultyBlocksAreRefused) {
    struct Fault {
        const char* choice;
        KeyList keys;
        const char* message;
    };
    const Fault faults[] = {
        {"Rotational ground - LocalAngleVel",
         {{"BodyIDs", "nobody, 0"}, {"Component", "0"}},
         "ERROR: Body not found using bodyID: nobody!\n"},
        {"Translational body vel XYZ",
         {{"BodyIDs", "one, nobody"}},
         "In Block <Measure> prior to line number 0:\nERROR: Body2 not found using bodyID: nobody!\n"},
        {"EP ground - -",
         {{"EulerParameterIndex", "4"}, {"IsStateMeasure", "yes"}},
         "In Block <Measure> prior to line number 0:\nERROR: EulerParameterIndex <4> not valid!\n"},
        {"Rotational ground - LocalAngleVel",
         {{"Component", "3"}},
         "In Block <Measure> prior to line number 0:\nERROR: Component <3> not valid!\n"},
        {"Translational body disp X",
         {{"MeasureCoordinate", "Q"}},
         "In Block <Measure> prior to line number 0:\nMeasureCoordinate <Q> not valid!\n"},
        {"Translational body vel X",
         {{"MeasureCoordinate", "Q"}},
         "In Block <Measure> prior to line number 0:\nERROR: MeasureCoordinate <Q> not valid!\n"},
    };
    for (const Fault& fault : faults) {
        EXPECT_EQ(make(fault.choice, fault.keys)->getErrorString(), fault.message);
        EXPECT_THAT(takeMessages(), testing::HasSubstr(fault.message));
    }
    for (const char* choice :
         {"Translational ground disp X", "Translational ground vel XYZ", "Translational ground acc Z",
          "Rotational ground - Angle", "Rotational ground - AngleVel", "EP ground - -",
          "Translational body disp XYZ", "Translational body vel Z", "Rotational body - Angle",
          "Rotational body - AngleVel"}) {
        EXPECT_NE(make(choice, {})->getErrorString(), "") << choice << " needs its keys";
        takeMessages();
    }
}

} // namespace velmora::test
