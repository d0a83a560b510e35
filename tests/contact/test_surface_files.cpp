#include "tests/contact/ContactCase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

namespace velmora::test {
namespace {

const std::string tetrahedron = "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 1 3 2\nf 1 2 4\nf 2 3 4\nf 1 4 3\n";

/// Triangles of the tetrahedron, corner after corner.
constexpr std::array<float, 9> triangles[4] = {{0, 0, 0, 0, 1, 0, 1, 0, 0},
                                               {0, 0, 0, 1, 0, 0, 0, 0, 1},
                                               {1, 0, 0, 0, 1, 0, 0, 0, 1},
                                               {0, 0, 0, 0, 0, 1, 0, 1, 0}};

std::string textStl() {
    std::string text = "solid a b\n";
    for (const auto& x : triangles) {
        text += " facet normal 0 0 0\r\n  outer loop\n";
        for (unsigned i = 0; i < 9; i += 3)
            text += "   vertex " + std::to_string(x[i]) + " +" + std::to_string(x[i + 1]) + " " +
                    std::to_string(x[i + 2]) + "e0\n";
        text += "  endloop\n endfacet\n";
    }
    return text + "endsolid a b\n";
}

/// Its head begins as a text does.
std::string binaryStl(float firstCoordinate = 0) {
    std::string bytes = "solid head";
    bytes.resize(84);
    bytes[80] = 4;
    for (auto corners : triangles) {
        corners[0] += firstCoordinate;
        firstCoordinate = 0;
        std::string triangle(50, '\0');
        std::memcpy(triangle.data() + 12, corners.data(), 36);
        bytes += triangle;
    }
    return bytes;
}

std::string replaced(std::string text, const std::string& part, const std::string& by) {
    return text.replace(text.find(part), part.size(), by);
}

/// A folder with a whole surface, and a contact of it with another one.
class SurfaceFiles : public testing::Test {
  protected:
    ScratchFolder folder;
    ContactCase c;

    void SetUp() override {
        c.path1 = folder.write("tetrahedron.obj", tetrahedron);
        c.path2 = folder.write("box.obj", boxObj({2, 2, 1}));
    }

    std::string complaint() {
        testing::internal::CaptureStderr();
        const bool isMade = c.create() != nullptr;
        std::string text = testing::internal::GetCapturedStderr();
        EXPECT_EQ(isMade, text.empty()) << text;
        return text;
    }
};

TEST_F(SurfaceFiles, allKindsGiveTheSameSurface) {
    const std::string slashes =
        "# c\no x\nvn 0 0 1\nv 0 0 0 1\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf -4/1 3//1 -3/2/3 # c\n"
        "s off\nf 1 2 4\nf 2 3 4\r\nf 1 4 3";
    std::vector<V3> forces;
    const std::pair<std::string, std::string> files[] = {
        {"a.obj", tetrahedron}, {"b.OBJ", slashes}, {"c.stl", textStl()}, {"d.Stl", binaryStl()}};
    for (const auto& [name, content] : files) {
        c.path1 = folder.write(name, content);
        ASSERT_EQ(complaint(), "");
        forces.push_back(evaluate(c.create().get(), at(0.1, 0.2, 0.97), at(0, 0, 0)).force);
        EXPECT_GT(forces.back()[2], 1);
        EXPECT_EQ(forces.back(), forces.front()) << name;
    }
}

TEST_F(SurfaceFiles, brokenFilesAreRefusedWithTheReason) {
    struct Row {
        std::string name, content, reason;
    };
    const Row rows[] = {
        {"a.ply", tetrahedron, "the name ends neither in .obj nor in .stl"},
        {"a.obj", "", "a closed surface has at least 4 triangles, this one has 0"},
        {"b.obj", replaced(tetrahedron, "f 1 4 3\n", ""),
         "a closed surface has at least 4 triangles, this one has 3"},
        {"c.obj", replaced(tetrahedron, "f 1 4 3\n", "v 9 9 9\nf 1 4 5\n"),
         "the surface is open at the edge from (0, 0, 0) to (0, 1, 0) (line 5), which has a triangle on one "
         "side only"},
        {"d.obj", replaced(tetrahedron, "f 1 4 3", "f 1 3 4"),
         "the triangles beside the edge from (0, 0, 0) to (0, 1, 0) (line 5) and in line 8 are turned "
         "against each "
         "other"},
        {"e.obj", tetrahedron + "f 1 2 4\nf 4 2 1\n",
         "4 triangles meet at the edge from (0, 0, 0) to (1, 0, 0) (line 5), where a closed surface has two"},
        {"f.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 0 0 1\nf 1 2 3\nf 1 4 2\nf 2 4 3\nf 1 3 4\n",
         "the surface is inside out: its triangles run clockwise seen from outside"},
        {"g.obj", tetrahedron + "f 1 2 2\n", "line 9: the triangle with the corner (0, 0, 0) has no area"},
        {"h.obj", tetrahedron + "f 1 2 5\n", "line 9: the face asks for vertex 5 where 4 are defined"},
        {"i.obj", tetrahedron + "f 1 -5 2\n", "line 9: the face asks for vertex -5 where 4 are defined"},
        {"j.obj", tetrahedron + "f 0 1 2\n", "line 9: the face asks for vertex 0 where 4 are defined"},
        {"k.obj", tetrahedron + "f 1 2\n", "line 9: a face has at least 3 corners, this one has 2"},
        {"l.obj", tetrahedron + "f 1 2 x\n", "line 9: a face takes numbers of vertices, <x> is none"},
        {"m.obj", tetrahedron + "f 1 2 99999999999999999999\n",
         "line 9: a face takes numbers of vertices, <99999999999999999999> is none"},
        {"n.obj", "v 0 1\n", "line 1: a vertex takes three numbers, <> is none"},
        {"o.obj", "v 0 1 2,5\n", "line 1: a vertex takes three numbers, <2,5> is none"},
        {"p.obj", "\nv 0 nan 0\n", "line 2: a coordinate is no finite number"},
        {"q.obj", "v 0 0 1e60\n", "line 1: a coordinate is no finite number"},
        {"a.stl", "soli",
         "the file is neither a text that begins with \"solid\" nor as long as a binary head"},
        {"b.stl", replaced(textStl(), "endsolid", ""), "the file ends before its solid does"},
        {"c.stl", replaced(textStl(), "  endloop\n endfacet\nends", "ends"),
         "the file ends before its solid does"},
        {"d.stl", replaced(textStl(), "vertex", "vortex"), "line 8: the facet has 2 vertices in place of 3"},
        {"e.stl", binaryStl(std::numeric_limits<float>::quiet_NaN()),
         "triangle 1: a coordinate is no finite number"},
        {"f.stl", binaryStl(0.5), "the surface is open at the edge from "},
        {"g.stl", replaced(binaryStl(), "solid", "xxxxx") + "x",
         "the file announces 4 triangles in 284 bytes, but has 285"},
        {"h.stl", std::string(84, '\xff'),
         "the file announces 4294967295 triangles in 214748364834 bytes, but has 84"},
    };
    for (const Row& row : rows) {
        c.path1 = folder.write(row.name, row.content);
        EXPECT_THAT(complaint(),
                    testing::StartsWith("ERROR in contact <pair>: surface <" + c.path1 + ">: " + row.reason))
            << row.name;
    }
    c.path1 = folder.write("folder.obj", "") + "/x.obj";
    EXPECT_EQ(complaint(), "ERROR in contact <pair>: surface <" + c.path1 + ">: there is no such file\n");
}

TEST_F(SurfaceFiles, inputsOutOfRangeAreRefusedByName) {
    const double inf = std::numeric_limits<double>::infinity();
    const std::pair<std::function<void(ContactCase&)>, std::string> rows[] = {
        {[](auto& x) { x.task = 3; }, "Task is 3, but has to be 0, 1 or 2"},
        {[](auto& x) { x.young1 = 0; }, "YoungsModulus1 is 0, but has to be positive"},
        {[inf](auto& x) { x.young2 = inf; }, "YoungsModulus2 is inf, but has to be positive"},
        {[](auto& x) { x.poisson2 = 0.5; }, "PoissonsRatio2 is 0.5, but has to be between -1 and 0.5"},
        {[](auto& x) { x.layer1 = -1; }, "LayerThickness1 is -1, but has to be positive"},
        {[](auto& x) { x.maxPenetration = std::nan(""); }, "MaxPenetration is nan, but has to be positive"},
        {[](auto& x) { x.compression = -1; }, "DampingCompression is -1, but has to be 0 or positive"},
        {[](auto& x) { x.expansion = -1; }, "DampingExpansion is -1, but has to be 0 or positive"},
        {[](auto& x) { x.mode = -1; }, "ModeOfDampingTransition is -1, but has to be 0, 1 or 2"},
        {[](auto& x) { x.mode = 1; }, "DepthOfDampingTransition is 0, but has to be positive"},
        {[](auto& x) { x.friction = -0.1; }, "SlidingFrictionCoeff is -0.1, but has to be 0 or positive"},
        {[](auto& x) { x.friction = 1, x.regularization = 0; },
         "FrictionRegularizationVelocity is 0, but has to be positive"},
        {[](auto& x) { x.graphicsOrientation1[8] = -1; },
         "OrientationContactGraphics1 has no right-handed unit axes"},
        {[inf](auto& x) { x.graphics1[0] = inf; }, "PositionContactGraphics1 isn't finite"},
    };
    const ContactCase whole = c;
    for (const auto& [spoil, reason] : rows) {
        c = whole;
        spoil(c);
        EXPECT_EQ(complaint(), "ERROR in contact <pair>: " + reason + "\n");
    }
}

} // namespace
} // namespace velmora::test
