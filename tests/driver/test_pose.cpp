#include "driver/ConsistentStart.h"
#include "driver/LoadedModel.h"
#include "driver/PoseSolver.h"

#include <velmora/velmora.h>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace velmora::driver {
namespace {

/// A model in a pose that fulfils its joints.
struct Posed {
    explicit Posed(const std::string& example) : loaded(loadModel(optionsFor(example), false)) {}
    static Options optionsFor(const std::string& example) {
        Options options;
        options.modelFile = std::string(VELMORA_EXAMPLES "/").append(example);
        return options;
    }

    LoadedModel loaded;
    MBS_Model* model = loaded.model.get();
    EquationNames names{model, loaded.file->dataModel.get()};
    HHTSystem system{model};
    Redundancy redundancy{&system, &names};
    HHTState state{model};

    void start() {
        SimulationSettings settings;
        settings.positionsOnly = true;
        ConsistentStart begin(&system, &names, &redundancy, settings);
        ASSERT_EQ(begin.run(state), StepResult::Converged) << begin.getProblem();
    }
    void moveTarget(const std::string& actor, const std::array<double, 3>& place) {
        IO_DataModelBlock block("Actor", actor, actor, "");
        block.addKeyValue("TargetPointIRF", fmt::format("{}, {}, {}", place[0], place[1], place[2]));
        model->modifyModelElement(&block);
    }
    /// Size of what still pulls on the bodies, in N for a pull of 1 N per m.
    double solve() {
        PoseSolver solver(&system);
        EXPECT_EQ(solver.run(state.q, [] {}), StepResult::Converged) << solver.getProblem();
        MBS_ModelPhysicalDofVector pull(model);
        MBS_ModelConstraintDofVector residual(model);
        model->updateForKinematicSolverAndComputeBbar(&state.q, &pull, &residual);
        const double* C = residual.dofVector->data;
        for (unsigned i = 0; i < residual.getNumOfConstraints(); ++i)
            EXPECT_NEAR(C[i], 0.0, 1e-9);
        double sum = 0.0;
        for (unsigned i = 0; i < 3; ++i)
            sum += std::fabs(pull.bodyData(model->getNumOfBodies() - 1)[i]);
        return sum;
    }
};

TEST(Pose, SixLinkArmReachesItsTargetsFromRandomPoses) {
    Posed arm("robot_arm.toml");
    arm.start();
    arm.solve(); // from the straight arm, a singular pose
    std::mt19937 random{5};
    std::uniform_real_distribution<double> draw(-1.0, 1.0);
    for (int n = 0; n < 10; ++n) {
        const std::array<double, 3> hand{0.5 + 0.2 * draw(random), 0.6 + 0.2 * draw(random),
                                         0.3 + 0.2 * draw(random)};
        arm.moveTarget("hand", hand); // wherever it comes to: a pose to start from
        arm.moveTarget("wrist", {hand[0] + 0.06 * draw(random), hand[1], hand[2] + 0.08});
        arm.solve();
        arm.moveTarget("hand", {0.5, 0.6, 0.2});
        arm.moveTarget("wrist", {0.5, 0.6, 0.3});
        EXPECT_LT(arm.solve(), 1e-4) << n; // 100 N per m
    }
}

// The grip can't leave its coupler curve: of what pulls, nothing acts along it.
TEST(Pose, FourBarComesAsNearAsItsCouplerCurveFromRandomPoses) {
    Posed bars("posed_four_bar.toml");
    bars.start();
    std::mt19937 random{2};
    std::uniform_real_distribution<double> draw(-1.0, 1.0);
    std::vector<double> distances;
    for (int n = 0; n < 10; ++n) {
        bars.moveTarget("grip", {0.25 + 0.1 * draw(random), 0.35 + 0.1 * draw(random), 0.0});
        bars.solve();
        const double* q = bars.state.q.bodyData(1);
        const std::array<double, 3> reached{q[0], q[1], 0.0}; // on the curve
        bars.moveTarget("grip", {0.25, 0.35, 0.0});
        bars.solve();
        distances.push_back(std::hypot(q[0] - 0.25, q[1] - 0.35));
        bars.moveTarget("grip", reached); // and back
        bars.solve();
        EXPECT_LT(std::hypot(q[0] - reached[0], q[1] - reached[1]), 1e-6) << n;
    }
    EXPECT_LT(*std::ranges::max_element(distances), 1e-6); // where the example has it
}

} // namespace
} // namespace velmora::driver
