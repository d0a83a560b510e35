#include "driver/LoadedModel.h"
#include "driver/ModelWriter.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace velmora::driver {
namespace {

namespace fs = std::filesystem;

std::string readText(const fs::path& name) {
    std::ifstream stream(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string getBody(const std::string& uuid) {
    return "[[Body]] # Körper\ntype = 'Rigid_EulerParameter_PAI'\nuuid = '" + uuid +
           "'\nMass = 2\nInertia = [1, 1, 1]\nLocationCenterMass = [0, 0, 0]\n"
           "OrientationPAI = [1, 0, 0, 0, 1, 0, 0, 0, 1]\nInitialVelocityVector = [0, 0, 3]\n"
           "InitialOmegaVector = [0, 0, 0]\n";
}

const std::string spline = "[[DataObject]] # ü\ntype = 'Spline_1D'\nuuid = 'road'\n"
                           "PathToSplineData = 'tables/ö.txt' # left alone\nNumberOfHeaderLines = 0\n"
                           "ColumnXData = 0\nColumnYData = 1\n";

class ModelWriter : public testing::Test {
  protected:
    ModelWriter() {
        folder = fs::absolute(std::string("writer_") +
                              testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(folder);
        fs::create_directories(folder / "tables");
        fs::create_directories(folder / "out");
        std::ofstream(folder / "tables" / "ö.txt") << "0 1\n1 2\n2 4\n3 5\n";
    }
    ~ModelWriter() override { fs::remove_all(folder); }

    LoadedModel load(const std::string& name) const {
        Options options;
        options.modelFile = (folder / name).string();
        return loadModel(options, false);
    }
    /// What is said of a file that holds one body and this start.
    std::string findProblem(const std::string& keys) const {
        std::ofstream(folder / "start.toml") << "[[Start]]\n" << keys << getBody("stone");
        testing::internal::CaptureStderr();
        const LoadedModel loaded = load("start.toml");
        testing::internal::GetCapturedStderr();
        EXPECT_EQ(loaded.exitCode, loaded.file->findings.empty() ? Done : ModelHasErrors);
        return loaded.file->findings.empty() ? "" : format(loaded.file->findings[0], "m");
    }

    fs::path folder;
};

TEST_F(ModelWriter, KeepsTheTextAndMovesBodiesAndNamesOfFiles) {
    const std::string oldStart =
        "[[Start]]\nuuid = 'b'\nPosition = [\n  7, 8, 9 ]\nEulerParameters = [1, 0, 0, 0]\n";
    std::ofstream(folder / "m.toml") << getBody("a") << oldStart << "# kept\n" << spline << getBody("b");
    const LoadedModel loaded = load("m.toml");
    ASSERT_TRUE(loaded.model);
    MBS_ModelPhysicalDofVector q(loaded.model.get()), qd(loaded.model.get());
    copyInitialState(*loaded.model, loaded.file->starts, q, qd);
    EXPECT_EQ(q.bodyData(1)[2], 9.0);
    EXPECT_EQ(qd.bodyData(1)[2], 0.0);
    EXPECT_EQ(qd.bodyData(0)[2], 3.0);
    for (unsigned i = 0; i < 3; ++i)
        q.bodyData(0)[i] = (i + 0.1) / 3.0;
    const double turn[] = {0.6, 0.0, -0.8, 0.0};
    std::ranges::copy(turn, q.bodyData(0) + 3);
    const auto write = [&](const fs::path& name) {
        return writeModelAt(*loaded.file, *loaded.model, q, (folder / name).string(), "moved");
    };
    ASSERT_EQ(write("out/m.toml"), "");
    std::string movedSpline = spline;
    movedSpline.replace(movedSpline.find("'tables/ö.txt'"), sizeof "'tables/ö.txt'" - 1, "'../tables/ö.txt'");
    EXPECT_THAT(readText(folder / "out/m.toml"),
                testing::StartsWith("# moved\n" + getBody("a") + "# kept\n" + movedSpline + getBody("b") +
                                    "\n[[Start]]\nuuid = 'a'\n"));
    const LoadedModel moved = load("out/m.toml");
    ASSERT_TRUE(moved.model);
    MBS_ModelPhysicalDofVector q2(moved.model.get());
    copyInitialState(*moved.model, moved.file->starts, q2, qd);
    for (unsigned i = 0; i < q.getNumOfDof(); ++i) {
        EXPECT_EQ(q2.dofVector->data[i], q.dofVector->data[i]) << i;
        EXPECT_EQ(qd.dofVector->data[i], 0.0) << i;
    }
    EXPECT_THAT(write("m.toml"), testing::EndsWith("is the model itself, which is not written over"));
    EXPECT_THAT(write("none/m.toml"), testing::HasSubstr("none"));
    EXPECT_THAT(write("out"), testing::EndsWith("out> can't be written"));
}

TEST_F(ModelWriter, FaultyStartsAreNamed) {
    const std::string place = "Position = [0, 0, 0]\n", turn = "EulerParameters = [1, 0, 0, 0]\n",
                      uuid = "uuid = 'stone'\n";
    EXPECT_EQ(findProblem(uuid + place + turn), "");
    EXPECT_EQ(findProblem(place + turn),
              "m:1: error: Start, key <uuid>: missing; every start names its body");
    EXPECT_EQ(findProblem("uuid = 'stoen'\n" + place + turn),
              "m:1: error: Start <stoen>: no body has this UUID; did you mean <stone>?");
    EXPECT_EQ(findProblem(uuid + turn), "m:1: error: Start <stone>, key <Position>: missing");
    EXPECT_EQ(findProblem(uuid + place + turn + "[[Start]]\n" + uuid + place + turn),
              "m:5: error: Start <stone>: the body has a start already");
    EXPECT_EQ(findProblem(uuid + turn + "Position = [0, 0]\n"),
              "m:4: error: Start <stone>, key <Position>: 2 numbers where 3 belong");
    EXPECT_EQ(findProblem(uuid + turn + "Position = [0, nan, 0]\n"),
              "m:4: error: Start <stone>, key <Position>: the number isn't finite");
    EXPECT_EQ(findProblem(uuid + place + "EulerParameters = [1, 1, 0, 0]\n"),
              "m:4: error: Start <stone>, key <EulerParameters>: their norm must be 1, but is 1.41421");
    EXPECT_EQ(findProblem(uuid + place + turn + "Omga = [0, 0, 1]\n"),
              "m:5: error: Start <stone>, key <Omga>: unknown key; did you mean <Omega>?");
    EXPECT_EQ(findProblem(uuid + place + turn + "ModalCoordinates = [1]\n"),
              "m:1: error: Start <stone>, key <ModalCoordinates>: 1 numbers, but the body has 0 modes");
}

TEST_F(ModelWriter, OmegaOfAStartIsGlobal) {
    std::ofstream(folder / "m.toml") << getBody("stone")
                                     << "[[Start]]\nuuid = 'stone'\nPosition = [0, 0, 0]\n"
                                        "EulerParameters = [0.5, 0.5, -0.1, 0.7]\nOmega = [3, -2, 5]\n";
    const LoadedModel loaded = load("m.toml");
    MBS_ModelPhysicalDofVector q(loaded.model.get()), qd(loaded.model.get());
    copyInitialState(*loaded.model, loaded.file->starts, q, qd);
    // Omega is twice the vector part of dp conj(p).
    const double *p = q.bodyData(0) + 3, *d = qd.bodyData(0) + 3;
    EXPECT_NEAR(2 * (-d[0] * p[1] + p[0] * d[1] + d[3] * p[2] - d[2] * p[3]), 3.0, 1e-14);
    EXPECT_NEAR(2 * (-d[0] * p[2] + p[0] * d[2] + d[1] * p[3] - d[3] * p[1]), -2.0, 1e-14);
    EXPECT_NEAR(2 * (-d[0] * p[3] + p[0] * d[3] + d[2] * p[1] - d[1] * p[2]), 5.0, 1e-14);
    EXPECT_NEAR(p[0] * d[0] + p[1] * d[1] + p[2] * d[2] + p[3] * d[3], 0.0, 1e-15);
}

} // namespace
} // namespace velmora::driver
