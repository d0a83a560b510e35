#include "contact/SurfaceMesh.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <tuple>
#include <unordered_map>

namespace velmora::contact {
namespace {

/// Twice the area of a triangle over its longest edge squared; below it the normal is rounding error.
constexpr double smallestShape = 1e-10;

struct PlaceHash {
    std::size_t operator()(const Vec3& x) const {
        std::uint64_t hash = 0;
        for (const double value : x) {
            std::uint64_t bits = 0;
            std::memcpy(&bits, &value, sizeof bits);
            hash = (hash ^ bits) * 0x9E3779B97F4A7C15U;
            hash ^= hash >> 29U;
        }
        return hash;
    }
};

std::string toText(const Vec3& x) {
    char text[100];
    std::snprintf(text, sizeof text, "(%.9g, %.9g, %.9g)", x[0], x[1], x[2]);
    return text;
}

/// One run of a triangle along an edge, from the lower vertex to the higher or back.
struct EdgeRun {
    std::uint32_t low, high, triangle;
    bool isForward;
};

std::vector<EdgeRun> collectEdgeRuns(const SurfaceMesh& mesh) {
    std::vector<EdgeRun> runs;
    runs.reserve(3 * mesh.triangles.size());
    for (std::uint32_t t = 0; t < mesh.triangles.size(); ++t)
        for (unsigned i = 0; i < 3; ++i) {
            const std::uint32_t from = mesh.triangles[t][i], to = mesh.triangles[t][(i + 1) % 3];
            runs.push_back({std::min(from, to), std::max(from, to), t, from < to});
        }
    std::sort(runs.begin(), runs.end(), [](const EdgeRun& a, const EdgeRun& b) {
        return std::tie(a.low, a.high, a.triangle) < std::tie(b.low, b.high, b.triangle);
    });
    return runs;
}

void checkEdges(const SurfaceMesh& mesh) {
    const std::vector<EdgeRun> runs = collectEdgeRuns(mesh);
    for (std::size_t begin = 0, end = 0; begin < runs.size(); begin = end) {
        const EdgeRun& run = runs[begin];
        for (end = begin; end < runs.size() && runs[end].low == run.low && runs[end].high == run.high;)
            ++end;
        const std::string edge = "the edge from " + toText(mesh.vertices[run.low]) + " to " +
                                 toText(mesh.vertices[run.high]) + " (" + mesh.places[run.triangle] + ")";
        if (end - begin == 1)
            throw InputError("the surface is open at " + edge + ", which has a triangle on one side only");
        if (end - begin > 2)
            throw InputError(std::to_string(end - begin) + " triangles meet at " + edge +
                             ", where a closed surface has two");
        if (run.isForward == runs[begin + 1].isForward)
            throw InputError("the triangles beside " + edge + " and in " +
                             mesh.places[runs[begin + 1].triangle] + " are turned against each other");
    }
}

/// Six times the volume.
double checkTriangles(const SurfaceMesh& mesh) {
    double volume = 0;
    for (std::size_t t = 0; t < mesh.triangles.size(); ++t) {
        const auto& [i, j, k] = mesh.triangles[t];
        const Vec3 a = mesh.vertices[j] - mesh.vertices[i], b = mesh.vertices[k] - mesh.vertices[i];
        const double longest = std::max({dot(a, a), dot(b, b), dot(b - a, b - a)});
        if (!(norm(cross(a, b)) > smallestShape * longest))
            throw InputError(mesh.places[t] + ": the triangle with the corner " + toText(mesh.vertices[i]) +
                             " has no area");
        volume += dot(mesh.vertices[i] - mesh.vertices[mesh.triangles[0][0]], cross(a, b));
    }
    return volume;
}

} // namespace

void mergeEqualVertices(SurfaceMesh& mesh) {
    std::unordered_map<Vec3, std::uint32_t, PlaceHash> known;
    std::vector<std::uint32_t> newIndex;
    std::vector<Vec3> kept;
    for (const Vec3& vertex : mesh.vertices) {
        const Vec3 place = vertex + Vec3{}; // -0 becomes 0
        const auto [found, isNew] = known.try_emplace(place, static_cast<std::uint32_t>(kept.size()));
        if (isNew)
            kept.push_back(place);
        newIndex.push_back(found->second);
    }
    for (auto& triangle : mesh.triangles)
        for (auto& index : triangle)
            index = newIndex[index];
    mesh.vertices = std::move(kept);
}

void checkClosed(const SurfaceMesh& mesh) {
    if (mesh.triangles.size() < 4)
        throw InputError("a closed surface has at least 4 triangles, this one has " +
                         std::to_string(mesh.triangles.size()));
    const double volume = checkTriangles(mesh);
    checkEdges(mesh);
    if (!(volume > 0))
        throw InputError("the surface is inside out: its triangles run clockwise seen from outside");
}

} // namespace velmora::contact
