#include "tools/ccx/CcxFiles.h"
#include "tools/modal/Invariants.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>

namespace velmora::tools {
namespace {

using Eigen::Index;
using Eigen::MatrixXd;

const std::string job = VELMORA_TEST_BLOCK "/block";
const std::string mesh = job + ".mesh.inp";

/// All elastic modes, by dense matrices.
Modes allModes(const SolidModel& model) {
    const Index n = model.stiffness.rows();
    MatrixXd mass = MatrixXd::Zero(n, n);
    for (Index d = 0; d < 3; ++d)
        mass(Eigen::seqN(d, n / 3, 3), Eigen::seqN(d, n / 3, 3)) = MatrixXd(model.masses);
    return computeFreeModes(MatrixXd(model.stiffness), mass, static_cast<int>(n));
}

/// Motion of each surface under loads at each surface, with inertia in balance: sum of phi phi' / omega^2.
MatrixXd compliance(const std::vector<Interface>& surfaces, const Modes& modes) {
    MatrixXd shapes(12, modes.shapes.cols());
    shapes << surfaces[0].motion * modes.shapes, surfaces[1].motion * modes.shapes;
    const Eigen::VectorXd omega = 2.0 * M_PI * modes.frequencies;
    return shapes * omega.cwiseAbs2().cwiseInverse().asDiagonal() * shapes.transpose();
}

/// Masses of 1 kg at the corners of square sections, 1 m apart along x; springs of 1 N/m join all corners
/// of a section and of neighbours, except across the gap behind section `gap`.
SolidModel truss(Index sections, double width, Index gap) {
    const Index n = 4 * sections;
    SolidModel model;
    model.positions.resize(3, n);
    for (Index p = 0; p < n; ++p)
        model.positions.col(p) << static_cast<double>(p / 4), width * static_cast<double>(p % 2),
            width * static_cast<double>(p / 2 % 2);
    MatrixXd K = MatrixXd::Zero(3 * n, 3 * n);
    for (Index a = 0; a < n; ++a)
        for (Index b = a + 1; b < n && b / 4 - a / 4 <= 1; ++b) {
            if (a / 4 == gap && b / 4 != gap)
                continue;
            Eigen::VectorXd spring = Eigen::VectorXd::Zero(3 * n);
            spring.segment<3>(3 * b) = (model.positions.col(b) - model.positions.col(a)).normalized();
            spring.segment<3>(3 * a) = -spring.segment<3>(3 * b);
            K += spring * spring.transpose();
        }
    model.stiffness = K.sparseView();
    model.masses = MatrixXd(MatrixXd::Identity(n, n)).sparseView();
    return model;
}

std::vector<Interface> endsOf(const SolidModel& model) {
    const Index n = model.positions.cols();
    return {{model, {0, 1, 2, 3}}, {model, {n - 4, n - 3, n - 2, n - 1}}};
}

TEST(SparseModes, StaticShapesOfAVerySlenderPartAreExact) {
    const SolidModel model = truss(6, 0.002, -1);
    const Modes reduced = computeSparseModes(model, endsOf(model), 0), whole = allModes(model);
    ASSERT_EQ(reduced.error + whole.error, "");
    const MatrixXd a = compliance(endsOf(model), reduced), b = compliance(endsOf(model), whole);
    const Eigen::VectorXd scale = b.diagonal().cwiseSqrt().cwiseInverse();
    EXPECT_LT((scale.asDiagonal() * (a - b) * scale.asDiagonal()).cwiseAbs().maxCoeff(), 1e-6);
}

TEST(SparseModes, RefusePartsThatAreHeldOrApart) {
    const SolidModel apart = truss(6, 0.5, 2);
    SolidModel held = truss(6, 0.5, -1);
    held.stiffness.coeffRef(4, 4) += 0.01;
    for (const SolidModel& model : {apart, held})
        for (const int count : {0, 3})
            EXPECT_EQ(computeSparseModes(model, endsOf(model), count).error,
                      "the stiffness matrix isn't that of one free body");
}

TEST(SparseModes, RefuseTheSameSurfaceTwice) {
    const SolidModel model = truss(6, 0.5, -1);
    EXPECT_THAT(computeSparseModes(model, {endsOf(model)[0], endsOf(model)[0]}, 3).error,
                testing::StartsWith("modes and static shapes of the interfaces depend"));
}

// Two bricks of 0.1 m x 0.08 m x 0.06 m along x, of steel, as CalculiX assembled them.
class Block : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(part.error, ""); }

    Interface surface(const std::string& set) { return {part.model, part.sets.at(set)}; }

    CcxPart part = readCcxPart(job, mesh);
};

TEST_F(Block, HasTheMassAndInertiaOfItsShape) {
    MassField field{part.model.positions, part.model.masses};
    moveToCenterOfMass(field);
    const Invariants invariants = computeInvariants(field, MatrixXd::Zero(36, 1));
    const double mass = 7850.0 * 0.2 * 0.08 * 0.06;
    EXPECT_NEAR(invariants.mass, mass, 1e-9 * mass);
    EXPECT_LT(
        (centerOfMass({part.model.positions, part.model.masses}) - Eigen::Vector3d(0.1, 0.04, 0.03)).norm(),
        1e-12);
    const Eigen::Vector3d squares(0.04, 0.0064, 0.0036);
    for (Index i = 0; i < 3; ++i)
        EXPECT_NEAR(invariants.inertia(i, i), mass / 12.0 * (squares.sum() - squares(i)), 1e-9);
}

TEST_F(Block, LowestModesAndStaticsAreThoseOfTheWholePart) {
    const std::vector<Interface> surfaces{surface("FIRST"), surface("LAST")};
    const Modes reduced = computeSparseModes(part.model, surfaces, 3), whole = allModes(part.model);
    ASSERT_EQ(reduced.error + whole.error, "");
    ASSERT_EQ(reduced.frequencies.size(), 15);
    for (Index j = 0; j < 3; ++j)
        EXPECT_NEAR(reduced.frequencies(j), whole.frequencies(j), 1e-8 * whole.frequencies(j));
    const MatrixXd a = compliance(surfaces, reduced), b = compliance(surfaces, whole);
    EXPECT_LT((a - b).cwiseAbs().maxCoeff(), 1e-7 * b.cwiseAbs().maxCoeff());
}

TEST_F(Block, InterfacesMoveLikeTheRigidBodyThatTheirPointsMoveLike) {
    const Interface last = surface("LAST");
    EXPECT_LT((last.center - Eigen::Vector3d(0.2, 0.04, 0.03)).norm(), 1e-12);
    const Eigen::Vector3d shift(0.3, -0.2, 0.5), turn(0.1, 0.7, -0.4);
    Eigen::VectorXd u(36);
    for (Index p = 0; p < 12; ++p)
        u.segment<3>(3 * p) = shift + turn.cross(Eigen::Vector3d(part.model.positions.col(p)) - last.center);
    Eigen::VectorXd expected(6);
    expected << shift, turn;
    EXPECT_LT((last.motion * u - expected).norm(), 1e-12);
    EXPECT_TRUE(last.isSurface());
    EXPECT_FALSE(surface("EDGE").isSurface());
}

struct Fault {
    const char* extension; // of the file that is replaced
    const char* content;
    const char* text;
};

class BlockFaults : public testing::TestWithParam<Fault> {};

TEST_P(BlockFaults, AreNamedWithFileAndLine) {
    namespace fs = std::filesystem;
    std::string test = testing::UnitTest::GetInstance()->current_test_info()->name();
    std::ranges::replace(test, '/', '_');
    const std::string copy = testing::TempDir() + "velmora_test_block_" + test;
    for (const char* extension : {".dof", ".sti", ".mas", ".mesh.inp"})
        fs::copy_file(job + extension, copy + extension, fs::copy_options::overwrite_existing);
    const auto& [extension, content, text] = GetParam();
    std::ofstream(copy + extension) << content;
    EXPECT_THAT(readCcxPart(copy, copy + ".mesh.inp").error, testing::EndsWith(test + extension + text));
}

INSTANTIATE_TEST_SUITE_P(
    All, BlockFaults,
    testing::Values(
        Fault{".dof", "", ":1: the file is empty"},
        Fault{".dof", "1.1\n1.2\n", ":3: node 1 can't move along all axes: the part has to be free"},
        Fault{".dof", "1.4\n", ":1: direction 4: only solid elements have modal files"},
        Fault{".dof", "one\n", ":1: \"node.direction\" belongs here"},
        Fault{".sti", "1 1 1.0\n1 37 1.0\n", ":2: the matrix has 36 rows"},
        Fault{".sti", "0 1 1.0\n", ":1: the matrix has 36 rows"},
        Fault{".sti", "1 1 nan\n", ":1: row, column and a number belong here"},
        Fault{".mas", "1 2 0.5\n", ":1: a mass that couples two directions"},
        Fault{".mesh.inp", "*NODE\n1, 0, 0\n", ":2: a label and three coordinates belong here"},
        Fault{".mesh.inp", "*NODE\n1, 0, 0, 0\n", ":3: node 2 isn't in the mesh"},
        Fault{".mesh.inp", "*NSET\n1\n*NSET, NSET=a\n1, two\n", ":4: labels of nodes belong here"}));

TEST(CcxProgram, SaysWhatIsWrongWithItsOptions) {
    const auto exitCode = [](const std::string& jobName, const std::string& options) {
        std::string command = VELMORA_CCX;
        command.append(" ").append(jobName).append(" ").append(testing::TempDir());
        command.append("velmora_ccx_test.mtx --mesh ")
            .append(mesh)
            .append(options)
            .append(" >/dev/null 2>&1");
        return WEXITSTATUS(std::system(command.c_str()));
    };
    EXPECT_EQ(exitCode(job, " --interface first=7 --interface LAST=8 --modes 4"), 0);
    EXPECT_EQ(exitCode(job, ""), 2);
    for (const char* interface : {"first", "first=x", "middle=1", "edge=1", "first=1 --interface last=1"})
        EXPECT_EQ(exitCode(job, std::string(" --interface ").append(interface)), 2) << interface;
    EXPECT_EQ(exitCode("nowhere", " --interface first=1"), 1);
}

} // namespace
} // namespace velmora::tools
