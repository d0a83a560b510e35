#include "tests/driver/IntegratorFixture.h"

#include <gtest/gtest.h>

namespace velmora::driver {
namespace {

struct Errors {
    double omega, attitude, acceleration, multiplier;
};

/// Errors at the end time after equal steps, or after steps in the ratios 4:5:6 that keep their mean.
Errors integrateTop(double alpha, unsigned numOfSteps, double endTime, bool isVarying) {
    const TorqueFreeTop top;
    Input input;
    top.addTo(input);
    const auto model = input.make();
    SimulationSettings settings{endTime, endTime / numOfSteps, true, 1e-6, alpha};
    HHTSystem system(model.get());
    HHTIntegrator integrator(&system, settings);
    EXPECT_EQ(startConsistently(system, integrator, input.data, settings), StepResult::Converged);
    double t = 0.0;
    for (unsigned i = 0; i < numOfSteps; ++i) {
        const double h = settings.step * (isVarying ? 1.0 + 0.2 * (static_cast<int>(i % 3) - 1) : 1.0);
        t += h;
        EXPECT_EQ(integrator.tryStep(t, h), StepResult::Converged);
        EXPECT_EQ(integrator.accept(), StepResult::Converged);
    }
    const HHTState& state = integrator.getState();
    const double *p = state.q.bodyData(0) + 3, *pd = state.qd.bodyData(0) + 3,
                 *pdd = state.qdd.bodyData(0) + 3;
    return {largestDifference(multiplyGbar(p, pd), top.omega(t)),
            largestDifference(toRotationMatrix(p), top.attitude(t)),
            largestDifference(multiplyGbar(p, pdd), top.omegaDot(t)),
            std::fabs(state.lambda.dofVector->data[0])};
}

class TorqueFreeOrder : public testing::TestWithParam<std::tuple<double, bool>> {};

TEST_P(TorqueFreeOrder, PositionsVelocitiesAccelerationsAreOfSecondOrder) {
    const auto [alpha, isVarying] = GetParam();
    const double endTime = 6.0; // just before and into the turn-over
    const Errors coarse = integrateTop(alpha, 600, endTime, isVarying);
    const Errors fine = integrateTop(alpha, 1200, endTime, isVarying);
    EXPECT_LT(fine.attitude, 1e-3);
    EXPECT_NEAR(coarse.omega / fine.omega, 4.0, 0.25);
    EXPECT_NEAR(coarse.attitude / fine.attitude, 4.0, 0.25);
    EXPECT_NEAR(coarse.acceleration / fine.acceleration, 4.0, 0.25);
    EXPECT_LT(fine.multiplier, 1e-8); // none is needed; rounding of C over h^2 is left
}

TEST(TorqueFreeStart, FirstStepIsOfThirdOrderInVelocities) {
    const Errors coarse = integrateTop(-0.3, 1, 0.04, false), fine = integrateTop(-0.3, 1, 0.02, false);
    EXPECT_NEAR(coarse.omega / fine.omega, 8.0, 0.5);
}

TEST(TorqueFreeStep, LocalErrorDoesNotCountOscillationsAcrossConstraints) {
    Input input;
    TorqueFreeTop().addTo(input);
    const auto model = input.make();
    HHTSystem system(model.get());
    const auto getErrorWithAcross = [&](double across) {
        const SimulationSettings settings{1.0, 0.01};
        HHTIntegrator integrator(&system, settings);
        EXPECT_EQ(startConsistently(system, integrator, input.data, settings), StepResult::Converged);
        HHTState& state = integrator.getState();
        for (unsigned i = 3; i < 7; ++i)
            state.a.bodyData(0)[i] += across * state.q.bodyData(0)[i];
        EXPECT_EQ(integrator.tryStep(0.01, 0.01), StepResult::Converged);
        return integrator.getLocalError();
    };
    EXPECT_NEAR(getErrorWithAcross(0.0), 0.0043, 0.0002);
    EXPECT_LT(getErrorWithAcross(1.0), 0.02); // h^2 / 12 / tolerance = 8 without the filter
}

INSTANTIATE_TEST_SUITE_P(Alphas, TorqueFreeOrder,
                         testing::Combine(testing::Values(0.0, -0.05, -0.3), testing::Bool()));

} // namespace
} // namespace velmora::driver
