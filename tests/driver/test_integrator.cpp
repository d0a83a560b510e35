#include "tests/driver/IntegratorFixture.h"
#include "tests/support/AllocationCounter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <random>
#include <set>

namespace velmora::driver {
namespace {

using testing::HasSubstr;

struct TestRun {
    RunOutcome outcome;
    std::vector<double> times;
    std::unique_ptr<ProbeModel> model;

    TestRun(Input& input, const SimulationSettings& settings, ProbeModel::Force force = {})
        : model(std::make_unique<ProbeModel>(input.make().release(), std::move(force))) {
        Simulation simulation(model.get(), &input.data, nullptr, settings,
                              {.progress = [this](double t, double) { times.push_back(t); }});
        outcome = simulation.run();
    }
    const double* q() const { return model->lastQ.bodyData(0); }
    const double* qd() const { return model->lastQd.bodyData(0); }
};

struct FreeFall : testing::TestWithParam<bool> {};

TEST_P(FreeFall, IsExactAndEndsExactly) {
    Input input;
    input.addBody("stone", 2.0, "1, 1, 1", "1, 0, 3", "0, 0, 0");
    input.addGravity("0, 0, -10");
    const double endTime = 1.234567;
    const TestRun run(input, {endTime, 0.1, GetParam(), 1e-6, -0.1});
    ASSERT_TRUE(run.outcome.succeeded) << run.outcome.diagnostic;
    EXPECT_EQ(run.outcome.timeReached, endTime);
    EXPECT_EQ(run.times.back(), endTime);
    EXPECT_NEAR(run.q()[0], endTime, 1e-14);
    EXPECT_NEAR(run.q()[2], 3.0 * endTime - 5.0 * endTime * endTime, 1e-13);
    EXPECT_NEAR(run.qd()[2], 3.0 - 10.0 * endTime, 1e-13);
    EXPECT_NEAR(run.outcome.energyStart, 10.0, 1e-14);
    EXPECT_LT(run.outcome.maxEnergyDrift, 1e-14);
    EXPECT_FALSE(run.outcome.isAngularMomentumConserved);
    if (GetParam()) {
        EXPECT_EQ(run.outcome.steps, 13u); // the last one is shortened
    }
}

INSTANTIATE_TEST_SUITE_P(FixedAndVariable, FreeFall, testing::Bool());

TEST(Simulation, FixedStepThatDividesTheEndTimeLeavesNoSliver) {
    Input input;
    input.addBody("stone", 1.0, "1, 1, 1", "1, 0, 0", "0, 0, 0");
    const TestRun run(input, {1.0, 0.1, true});
    ASSERT_TRUE(run.outcome.succeeded);
    EXPECT_EQ(run.outcome.steps, 10u);
    EXPECT_EQ(run.outcome.smallestStep, 0.1);
}

TEST(Simulation, FreeFlightTakesNoStepLongerThanAllowed) {
    Input input;
    input.addBody("stone", 1.0, "1, 1, 1", "1, 0, 0", "0, 0, 0");
    SimulationSettings settings{1.0, 1e-3};
    EXPECT_GT(TestRun(input, settings).outcome.largestStep, 0.02);
    settings.longestStep = 0.02;
    EXPECT_EQ(TestRun(input, settings).outcome.largestStep, 0.02);
}

// A hinge about y holds by equations that share an axis at each quarter turn, which steps meet almost
// exactly. The rotor is out of balance, so that both have to bear a moment.
TEST(Simulation, MultipliersComeBackFromSingularPositions) {
    Input input;
    input.addBody("rotor", 0.3, "1e-4, 2e-4, 1e-4", "0, 0, 0", "0, 0, 0");
    input.addJoint("hinge", "rotor, 0", "-0.1, -0.2, 0", "dx dy dz ax az");
    const auto add = [&](const char* kind, const char* type, const char* label,
                         std::initializer_list<std::pair<const char*, const char*>> keys) {
        IO_DataModelBlock* block = input.data.addBlock(kind, type, label, label, ".");
        block->addKeyValue("BodyIDs", "rotor, 0");
        for (const auto& [key, value] : keys)
            block->addKeyValue(key, value);
    };
    add("Measure", "Rotational", "angle",
        {{"MeasureCoordinate", "Angle"},
         {"MeasureVec", "0, 0, 1"},
         {"MeasurePlaneVec1", "0, 0, 1"},
         {"MeasurePlaneVec2", "1, 0, 0"}});
    add("Constraint", "TimeMotion", "motor",
        {{"Measure", "angle"},
         {"MotionExpression", "4 * pi * simtime[]"},
         {"ActivationPeriod", "0.25"},
         {"PointOfApplication_Body1", "-0.1, -0.2, 0"}});
    const auto model = input.make();
    double largest = 0.0;
    const Simulation* running = nullptr;
    SimulationSettings settings{2.0, 1e-4};
    settings.longestStep = 2e-3;
    Simulation simulation(model.get(), &input.data, nullptr, settings, {.progress = [&](double, double) {
                              const auto& lambda = *running->getState().lambda.dofVector;
                              for (unsigned i = 0; i < lambda.size; ++i)
                                  largest = std::max(largest, std::fabs(lambda.data[i]));
                          }});
    running = &simulation;
    const RunOutcome outcome = simulation.run();
    EXPECT_TRUE(outcome.succeeded) << outcome.diagnostic;
    EXPECT_LT(largest, 1e4); // in most steps below 20
}

TEST(Simulation, RampOfGravityTakesFewerStepsWithErrorControl) {
    const double T = 0.1, endTime = 2.0, rest = endTime - T;
    // z'' = -5 (1 - cos(pi t / T)) up to T, then -10
    const double pi = std::acos(-1.0);
    const double z = -5.0 * T * T * (0.5 - 2.0 / (pi * pi)) - 5.0 * T * rest - 5.0 * rest * rest;
    Input input;
    input.addBody("stone", 2.0, "1, 1, 1", "0, 0, 0", "0, 0, 0");
    input.addGravity("0, 0, -10")->addKeyValue("ActivationTime", toText(T));
    const TestRun run(input, {endTime, 1e-3, false, 1e-7});
    ASSERT_TRUE(run.outcome.succeeded) << run.outcome.diagnostic;
    const double velocity = -5.0 * T - 10.0 * rest, error = std::fabs(run.q()[2] - z);
    EXPECT_LT(error, 2e-4);
    EXPECT_NEAR(run.qd()[2], velocity, 2e-4);
    EXPECT_NEAR(run.outcome.workOfForces / (velocity * velocity), 1.0, 1e-5);
    EXPECT_LT(run.outcome.maxEnergyDrift, 1e-5);
    // Equal steps of twice the number don't reach this.
    const TestRun equal(input, {endTime, 0.5 * endTime / static_cast<double>(run.outcome.steps), true});
    EXPECT_GT(std::fabs(equal.q()[2] - z), error);
}

TEST(Simulation, VariableStepsFollowTheTolerance) {
    const TorqueFreeTop top;
    Input input;
    top.addTo(input);
    for (const double tolerance : {1e-4, 1e-6, 1e-8}) {
        const TestRun run(input, {12.0, 1e-3, false, tolerance});
        ASSERT_TRUE(run.outcome.succeeded) << run.outcome.diagnostic;
        const auto steps = static_cast<double>(run.outcome.steps);
        EXPECT_LT(largestDifference(toRotationMatrix(run.q() + 3), top.attitude(12.0)),
                  6.0 * steps * tolerance);
        EXPECT_NEAR(steps, 2.7 * std::pow(tolerance, -1.0 / 3.0), 0.3 * steps); // an error of third order
        EXPECT_LT(run.outcome.rejectedSteps, run.outcome.steps / 20);
        EXPECT_LT(run.outcome.newtonIterations, 4 * run.outcome.steps);
        EXPECT_LT(run.outcome.factorisations + run.outcome.refactorisations, run.outcome.steps);
        EXPECT_LT(run.outcome.maxEnergyDrift, 2.0 * steps * tolerance);
    }
}

// Whatever the tolerance, nothing but the motion tells how fast the wheel turns.
TEST(Simulation, WhatTimeDrivesIsFollowedAsAccurately) {
    Input input;
    input.addBody("wheel", 1.0, "1, 1, 1", "0, 0, 0", "0, 0, 0");
    input.addJoint("hinge", "wheel, 0", "0, 0, 0", "dx dy dz ax ay");
    IO_DataModelBlock* angle = input.data.addBlock("Measure", "Rotational", "angle", "angle", ".");
    angle->addKeyValue("BodyIDs", "wheel, 0");
    angle->addKeyValue("MeasureCoordinate", "Angle");
    angle->addKeyValue("MeasureVec", "1, 0, 0");
    angle->addKeyValue("MeasurePlaneVec1", "1, 0, 0");
    angle->addKeyValue("MeasurePlaneVec2", "0, 1, 0");
    IO_DataModelBlock* motor = input.data.addBlock("Constraint", "TimeMotion", "motor", "motor", ".");
    motor->addKeyValue("BodyIDs", "wheel, 0");
    motor->addKeyValue("Measure", "angle");
    motor->addKeyValue("MotionExpression", "1 - cos(8 * simtime[])");
    motor->addKeyValue("ActivationPeriod", "0");
    motor->addKeyValue("PointOfApplication_Body1", "0, 0, 0");
    const double endTime = 2.0;
    for (const double tolerance : {1e-5, 1e-6, 1e-7}) {
        const TestRun run(input, {endTime, 1e-3, false, tolerance});
        ASSERT_TRUE(run.outcome.succeeded) << run.outcome.diagnostic;
        // |de/dt| is half the angular velocity.
        const double* de = run.qd() + 3;
        const double speed = 2.0 * std::sqrt(de[0] * de[0] + de[1] * de[1] + de[2] * de[2] + de[3] * de[3]);
        EXPECT_NEAR(speed, std::fabs(8.0 * std::sin(8.0 * endTime)), 10.0 * std::pow(tolerance, 2.0 / 3.0))
            << tolerance;
    }
}

TEST(Simulation, EnergyAndMomentumOfTheFreeTopDriftWithTheSquareOfTheStep) {
    Input input;
    TorqueFreeTop().addTo(input);
    const TestRun coarse(input, {10.0, 0.02, true}), fine(input, {10.0, 0.01, true});
    ASSERT_TRUE(fine.outcome.isAngularMomentumConserved);
    EXPECT_NEAR(fine.outcome.angularMomentumStart[2], std::sqrt(4.09), 1e-12);
    EXPECT_NEAR(fine.outcome.energyStart, 1.015, 1e-12);
    EXPECT_LT(fine.outcome.maxEnergyDrift, 1e-3);
    EXPECT_LT(fine.outcome.maxAngularMomentumDrift, 1e-3);
    EXPECT_NEAR(coarse.outcome.maxEnergyDrift / fine.outcome.maxEnergyDrift, 4.0, 0.4);
    EXPECT_NEAR(coarse.outcome.maxAngularMomentumDrift / fine.outcome.maxAngularMomentumDrift, 4.0, 0.4);
    EXPECT_LT(fine.outcome.kernelSeconds, fine.outcome.wallSeconds);
}

TEST(Simulation, OutputTimesAreMetExactly) {
    Input input;
    TorqueFreeTop().addTo(input);
    IO_DataModelBlock block("Results", "results", "results", ".");
    block.addKeyValue("WriteStateResultFile", "yes");
    block.addKeyValue("OutputTimeBegin", "0");
    block.addKeyValue("OutputTimeStepSize", "0.3");
    block.addKeyValue("SimulationTimeEnd", "1");
    const auto model = input.make();
    const std::unique_ptr<MBS_ResultFileManager> results(model->createResultFileManager(&block));
    Simulation simulation(model.get(), &input.data, results.get(), {1.0, 0.01});
    ASSERT_TRUE(simulation.run().succeeded);
    results->closeAllResultFiles();
    std::ifstream file(input.output.getResultFileBase() + ".srf");
    std::vector<double> times;
    double number;
    for (std::string line; std::getline(file, line);)
        if (line.size() == 18 && std::sscanf(line.c_str(), "%lf", &number) == 1)
            times.push_back(number);
    EXPECT_THAT(times, testing::Pointwise(testing::DoubleNear(1e-12), {0.0, 0.3, 0.6, 0.9, 1.0}));
}

TEST(Simulation, OutputThatRoundingPutsBeforeTheEndLeavesNoSliver) {
    Input input;
    TorqueFreeTop().addTo(input);
    IO_DataModelBlock block("Results", "results", "results", ".");
    block.addKeyValue("WriteStateResultFile", "yes");
    block.addKeyValue("OutputTimeBegin", "0");
    block.addKeyValue("OutputTimeStepSize", "0.1"); // ten of them sum up to 1 - 1.1e-16
    block.addKeyValue("SimulationTimeEnd", "1");
    const auto model = input.make();
    const std::unique_ptr<MBS_ResultFileManager> results(model->createResultFileManager(&block));
    double shortest = 1.0;
    const auto watch = [&](double, double step) { shortest = std::min(shortest, step); };
    ASSERT_TRUE(Simulation(model.get(), &input.data, results.get(), {1.0, 0.01}, {.progress = watch})
                    .run()
                    .succeeded);
    EXPECT_GT(shortest, 1e-6);
}

TEST(Simulation, AllocatesNothingInTheTimeLoop) {
    Input input;
    TorqueFreeTop().addTo(input);
    const auto model = input.make();
    unsigned long atStart = 0, atEnd = 0, step = 0;
    Simulation simulation(model.get(), &input.data, nullptr, {5.0, 1e-3}, {.progress = [&](double, double) {
                              (++step == 5 ? atStart : atEnd) = test::allocationCount();
                          }});
    ASSERT_TRUE(simulation.run().succeeded);
    ASSERT_GT(step, 50u);
    EXPECT_EQ(atEnd, atStart);
}

TEST(SimulationFailure, MasslessBodyIsNamed) {
    Input input;
    input.addBody("stone", 1.0, "1, 1, 1", "0, 0, 0", "0, 0, 0");
    input.addBody("ghost", 0.0, "1, 1, 1", "0, 0, 0", "0, 0, 0");
    const TestRun run(input, {1.0});
    EXPECT_FALSE(run.outcome.succeeded);
    EXPECT_THAT(run.outcome.diagnostic,
                HasSubstr("The system of equations is singular: body <ghost>, coordinate "));
    EXPECT_THAT(run.outcome.diagnostic, HasSubstr("The mass of body <ghost> is 0"));
}

TEST(SimulationFailure, ValueThatIsNotFiniteIsNamedWithTheForcesThere) {
    Input input;
    input.addBody("stone", 1.0, "1, 1, 1", "1, 0, 0", "0, 0, 0");
    input.addBody("leaf", 1.0, "1, 1, 1", "1, 0, 0", "0, 0, 0");
    input.addGravity("0, 0, -10");
    const auto breakAtHalfTime = [](double t, const auto&, const auto&, auto& force) {
        if (t > 0.5)
            force.bodyData(1)[4] = std::numeric_limits<double>::quiet_NaN();
    };
    const TestRun run(input, {1.0, 0.01}, breakAtHalfTime);
    EXPECT_FALSE(run.outcome.succeeded);
    EXPECT_NEAR(run.outcome.timeReached, 0.5, 1e-6); // halved up to the break
    EXPECT_THAT(run.outcome.diagnostic,
                HasSubstr("The residual of body <leaf>, coordinate e1 is not finite (nan). Forces that act "
                          "there: <gravity> (Gravity)."));
}

TEST(SimulationFailure, NewtonIterationThatSticksNamesItsEquation) {
    Input input;
    input.addBody("stone", 1.0, "1, 1, 1", "1, 0, 0", "0, 0, 0");
    const auto unknownStiffness = [](double, const auto& q, const auto&, auto& force) {
        force.bodyData(0)[1] -= 1e9 * (q.bodyData(0)[1] - 1e-3);
    };
    const TestRun run(input, {1.0, 0.01, true}, unknownStiffness);
    EXPECT_FALSE(run.outcome.succeeded);
    EXPECT_THAT(run.outcome.diagnostic,
                HasSubstr("Time 0.01, step 0.01: The Newton iteration doesn't converge. Largest residuals: "
                          "body <stone>, coordinate y ("));
}

TEST(Simulation, StepShrinksUntilTheNewtonIterationConverges) {
    Input input;
    input.addBody("stone", 1.0, "1, 1, 1", "1, 0, 0", "0, 0, 0");
    const auto unknownStiffness = [](double, const auto& q, const auto&, auto& force) {
        force.bodyData(0)[1] -= 1e6 * (q.bodyData(0)[1] - 1e-5);
    };
    const TestRun run(input, {0.01, 0.001}, unknownStiffness);
    EXPECT_TRUE(run.outcome.succeeded) << run.outcome.diagnostic;
    EXPECT_NEAR(run.q()[1], 1e-5 * (1.0 - std::cos(10.0)), 2e-6);
}

TEST(SimulationFailure, SettingsAreChecked) {
    const double infinite = std::numeric_limits<double>::infinity();
    const SimulationSettings wrong[] = {{0.0},
                                        {infinite},
                                        {1.0, 0.0},
                                        {1.0, 0.1, false, -1.0},
                                        {1.0, 0.1, false, 1e-6, 0.1},
                                        {1.0, 0.1, false, 1e-6, 0.0},
                                        {1.0, 0.1, false, 1e-6, -0.34}};
    for (const SimulationSettings& settings : wrong) {
        Input input;
        input.addBody("stone", 1.0, "1, 1, 1", "1, 0, 0", "0, 0, 0");
        const TestRun run(input, settings);
        EXPECT_FALSE(run.outcome.succeeded);
        EXPECT_FALSE(run.outcome.diagnostic.empty());
    }
    Input empty;
    EXPECT_THAT(TestRun(empty, {1.0}).outcome.diagnostic, HasSubstr("no bodies"));
}

TEST(SparseSolver, KeepsPivotsWhileTheyServeAndNamesTheSingularEquation) {
    const unsigned rows[] = {1, 1, 2, 2, 3}, cols[] = {1, 2, 1, 2, 3};
    MBM_SparseMat_CSR3 matrix(3, 3, 5, rows, cols);
    const auto residual = [&](std::array<double, 5> values) {
        std::copy(values.begin(), values.end(), matrix.values);
        std::array<double, 3> x = {1.0, 2.0, 3.0};
        return x;
    };
    SparseSolver solver(&matrix);
    std::array<double, 3> x = residual({4.0, 1.0, 2.0, 3.0, 5.0});
    ASSERT_TRUE(solver.factorise());
    solver.solve(x.data(), x.data());
    EXPECT_NEAR(4.0 * x[0] + x[1], 1.0, 1e-15);
    EXPECT_NEAR(2.0 * x[0] + 3.0 * x[1], 2.0, 1e-15); // not the transpose
    x = residual({1e-14, 1.0, 1.0, 1e-14, 5.0});      // the old pivots would lose all digits
    ASSERT_TRUE(solver.factorise());
    solver.solve(x.data(), x.data());
    EXPECT_NEAR(x[0], 2.0, 1e-12);
    EXPECT_NEAR(x[1], 1.0, 1e-12);
    EXPECT_EQ(solver.getNumOfFactorisations(), 2u);
    residual({1.0, 1.0, 2.0, 3.0, 0.0});
    EXPECT_FALSE(solver.factorise());
    EXPECT_EQ(solver.getSingularEquation(), 2u);
    solver.leaveOut({0});
    EXPECT_FALSE(solver.factorise());
    EXPECT_EQ(solver.getSingularEquation(), 2u);
    x = residual({0.0, 1.0, 2.0, 4.0, 5.0});
    ASSERT_TRUE(solver.factorise());
    solver.solve(x.data(), x.data());
    EXPECT_EQ(x, (std::array<double, 3>{0.0, 0.5, 0.6}));
    solver.leaveOut({0, 2});
    ASSERT_TRUE(solver.factorise());
    x = {1.0, 2.0, 3.0};
    solver.solve(x.data(), x.data());
    EXPECT_EQ(x, (std::array<double, 3>{0.0, 0.5, 0.0}));
}

TEST(SparseSolver, SolvesRandomMatricesThatNeedPivotsAndFillIn) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    for (const unsigned n : {2u, 7u, 40u, 150u}) {
        std::vector<unsigned> rows, cols;
        for (unsigned i = 0; i < n; ++i)
            for (const unsigned j :
                 std::set{i, (i + 1) % n, i * i % n, static_cast<unsigned>(random() % n)}) {
                rows.push_back(i + 1);
                cols.push_back(j + 1);
            }
        MBM_SparseMat_CSR3 matrix(n, n, rows.size(), rows.data(), cols.data());
        ASSERT_EQ(matrix.errorCode, 0);
        SparseSolver solver(&matrix);
        for (int refresh = 0; refresh < 3; ++refresh) {
            std::vector<double> b(n), x(n);
            std::ranges::generate(b, [&] { return value(random); });
            const unsigned numOfValues = matrix.rowIndex[n] - 1;
            for (unsigned k = 0; k < numOfValues; ++k)
                matrix.values[k] = refresh == 0 ? value(random) : matrix.values[k] + 0.1 * value(random);
            ASSERT_TRUE(solver.factorise());
            solver.solve(b.data(), x.data());
            for (unsigned i = 0; i < n; ++i) {
                double sum = 0.0;
                for (unsigned k = matrix.rowIndex[i] - 1; k < matrix.rowIndex[i + 1] - 1; ++k)
                    sum += matrix.values[k] * x[matrix.colIndices[k] - 1];
                EXPECT_NEAR(sum, b[i], 1e-8) << n; // pivots may be a thousandth of the largest
            }
        }
    }
}

} // namespace
} // namespace velmora::driver
