#include "driver/DerivativeCheck.h"
#include "driver/KnownDeviations.h"
#include "driver/LoadedModel.h"
#include "tests/driver/IntegratorFixture.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace velmora::driver {
namespace {

std::vector<std::string> faultsOf(const std::vector<DerivativeRow>& rows) {
    std::vector<std::string> faults;
    for (const DerivativeRow& row : rows)
        if (row.verdict == "DIFFERS")
            faults.push_back(row.block + "; " + row.entry);
    return faults;
}

TEST(DerivativeCheck, FindsNothingInExamples) {
    for (const auto& entry : std::filesystem::directory_iterator(VELMORA_EXAMPLES)) {
        if (entry.path().extension() != ".toml")
            continue;
        Options options;
        options.modelFile = entry.path().string();
        const LoadedModel loaded = loadModel(options, false);
        ASSERT_TRUE(loaded.model) << entry.path();
        const auto rows = checkDerivatives(*loaded.model, *loaded.file->dataModel);
        EXPECT_GE(rows.size(), 12U);
        EXPECT_THAT(faultsOf(rows), testing::IsEmpty()) << entry.path();
    }
}

TEST(DerivativeCheck, NamesWhatDiffers) {
    Input input;
    input.addBody("one", 1.0, "1, 2, 3", "0,0,0", "0,0,0");
    input.addBody("two", 2.0, "1, 2, 3", "0,0,0", "0,0,0");
    // A spring and a damper that the matrix knows nothing of.
    ProbeModel model(input.make().release(), [](double, const auto& q, const auto& qd, auto& force) {
        force.bodyData(1)[2] -= 50.0 * q.bodyData(0)[4] + 0.5 * qd.bodyData(1)[1];
    });
    EXPECT_THAT(faultsOf(checkDerivatives(model, input.data)),
                testing::ElementsAre("  rows of body <two> trans, columns of body <one> rot; body <two>, "
                                     "coordinate z; body <one>, coordinate e1",
                                     "  rows of body <two> trans, columns of body <two> trans; body <two>, "
                                     "coordinate z; body <two>, coordinate y"));
}

TEST(DerivativeCheck, ExcusesTheMotionDrivenByAnAngleAlone) {
    Options options;
    options.modelFile = std::string(VELMORA_EXAMPLES) + "/driven_slider_crank.toml";
    const LoadedModel loaded = loadModel(options, false);
    const EquationNames names(loaded.model.get(), loaded.file->dataModel.get());
    const KnownDeviations deviations(*loaded.file->dataModel, names);
    const EquationNames::Place crank{EquationNames::Place::Coordinate, 0, 3};
    for (unsigned joint = 0; joint < loaded.model->getNumOfExternalConstraints(); ++joint) {
        const bool isMotor = names.getConstraintBlock(joint)->uuid == "motor";
        const EquationNames::Place row{EquationNames::Place::Constraint, joint, 0};
        for (const unsigned code : {ConstraintJacobian, ConstraintJacobianT})
            EXPECT_EQ(deviations.findReason(code, row, crank).empty(), !isMotor) << joint;
    }
    EXPECT_EQ(deviations.findReason(InertiaForce_q, crank, crank), "");
}

TEST(DerivativeCheck, AllowsForRoundingAlone) {
    EXPECT_LT(getRelativeError({1.0, 1.0 + 1e-6, 1.0, 1.0}), 1.0);
    EXPECT_GT(getRelativeError({1.0, 1.0 + 4e-6, 1.0, 1.0}), 1.0);
    EXPECT_LT(getRelativeError({0.0, 1e-9, 0.0, 1.0}), 1.0); // cancelled terms of size 1
    EXPECT_GT(getRelativeError({0.0, 1e-8, 0.0, 1.0}), 1.0);
    EXPECT_FALSE(getRelativeError({0.0, std::nan(""), 1.0, 1.0}) <= 1.0);
}

} // namespace
} // namespace velmora::driver
