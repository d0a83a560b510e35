#include "contact/Surface.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace velmora::contact {
namespace {

constexpr std::uint32_t facesPerLeaf = 6;

Vec3 unit(const Vec3& a) {
    return a * (1 / norm(a));
}

/// The plane through a point.
Face::Plane planeThrough(const Vec3& point, const Vec3& normal) {
    return {normal, dot(point, normal)};
}

Vec3 centerOf(const Face& face) {
    return (face.corners[0] + face.corners[1] + face.corners[2]) * (1.0 / 3);
}

/// The plane through an edge between two triangles. It halves the angle between them, but where the surface
/// bends inwards it leans out by 45 degrees at most, as in a corner of a room.
Vec3 sideOf(const Vec3& edge, const Vec3& normal, const Vec3& neighbour) {
    const Vec3 upright = unit(cross(edge, normal)), halving = cross(edge, normal + neighbour);
    const bool isBlade = norm(halving) < 1e-9 * norm(edge);
    const Vec3 side = isBlade ? upright : unit(halving);
    return dot(side, normal) > std::sqrt(0.5) ? unit(upright + normal) : side;
}

/// Number of the triangle that runs an edge, by the edge's ends.
class EdgeTable {
  public:
    explicit EdgeTable(const SurfaceMesh& mesh) {
        for (std::uint32_t t = 0; t < mesh.triangles.size(); ++t)
            for (unsigned i = 0; i < 3; ++i)
                runs.push_back({keyOf(mesh.triangles[t][i], mesh.triangles[t][(i + 1) % 3]), t});
        std::sort(runs.begin(), runs.end());
    }
    std::uint32_t triangleAt(std::uint32_t from, std::uint32_t to) const {
        return std::lower_bound(runs.begin(), runs.end(), Run{keyOf(from, to), 0})->second;
    }

  private:
    using Run = std::pair<std::uint64_t, std::uint32_t>;
    std::vector<Run> runs;

    static std::uint64_t keyOf(std::uint32_t from, std::uint32_t to) {
        return (std::uint64_t{from} << 32U) + to;
    }
};

/// Faces with nothing but their feet.
std::vector<Face> placeFaces(const SurfaceMesh& mesh, const Vec3& position, const Mat3& orientation) {
    std::vector<Face> faces;
    faces.reserve(mesh.triangles.size());
    for (const SurfaceMesh::Triangle& triangle : mesh.triangles) {
        Face face{};
        for (unsigned i = 0; i < 3; ++i)
            face.corners[i] = position + orientation * mesh.vertices[triangle[i]];
        face.planes[Face::Foot] =
            planeThrough(face.corners[0],
                         unit(cross(face.corners[1] - face.corners[0], face.corners[2] - face.corners[0])));
        faces.push_back(face);
    }
    return faces;
}

void setSides(std::vector<Face>& faces, const SurfaceMesh& mesh) {
    const EdgeTable edges(mesh);
    for (std::size_t t = 0; t < faces.size(); ++t)
        for (unsigned i = 0; i < 3; ++i) {
            const unsigned next = (i + 1) % 3;
            const std::uint32_t other = edges.triangleAt(mesh.triangles[t][next], mesh.triangles[t][i]);
            const Vec3 edge = faces[t].corners[next] - faces[t].corners[i];
            faces[t].planes[Face::Side + i] =
                planeThrough(faces[t].corners[i], sideOf(edge, faces[t].normal(), faces[other].normal()));
        }
}

/// Where the column's edge from a corner, the line common to two of its sides, reaches the depth. A column
/// that narrows to a point before lies within the box around its corners and these points, too.
Vec3 endOfEdge(const Face& face, unsigned corner) {
    const Vec3 line =
        cross(face.planes[Face::Side + (corner + 2) % 3].normal, face.planes[Face::Side + corner].normal);
    const double depth = face.planes[Face::Depth].offset + face.planes[Face::Foot].offset;
    return face.corners[corner] - line * (depth / dot(line, face.normal()));
}

/// Grows around points, along given axes.
struct Bounds {
    Mat3 axes;
    Vec3 low, high; // along the axes

    explicit Bounds(const Mat3& alongAxes) : axes(alongAxes) {
        low.fill(std::numeric_limits<double>::max());
        high.fill(std::numeric_limits<double>::lowest());
    }
    void add(const Vec3& x) {
        const Vec3 place = transposedTimes(axes, x);
        for (unsigned i = 0; i < 3; ++i) {
            low[i] = std::min(low[i], place[i]);
            high[i] = std::max(high[i], place[i]);
        }
    }
    Box box() const { return {axes, axes * ((low + high) * 0.5), (high - low) * 0.5}; }
    unsigned longestAxis() const {
        const Vec3 size = high - low;
        return static_cast<unsigned>(std::max_element(size.begin(), size.end()) - size.begin());
    }
};

constexpr Mat3 bodyAxes{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

/// The mean normal and two tangents; the body's axes where normals look in all directions.
Mat3 axesOf(const std::vector<Face>& faces, std::uint32_t begin, std::uint32_t end) {
    Vec3 sum{};
    for (std::uint32_t i = begin; i < end; ++i)
        sum += faces[i].normal();
    if (norm(sum) < 0.1 * (end - begin))
        return bodyAxes;
    const Vec3 normal = unit(sum);
    const Vec3 tangent = unit(cross(normal, bodyAxes[std::abs(normal[0]) < 0.6 ? 0 : 1]));
    return {tangent, cross(normal, tangent), normal};
}

/// Splits the faces at the middle one along the longest axis of their centres, down to the leaves.
class TreeBuilder {
  public:
    explicit TreeBuilder(Surface& target) : surface(target) {
        build(0, static_cast<std::uint32_t>(surface.faces.size()));
    }

  private:
    Surface& surface;

    void build(std::uint32_t begin, std::uint32_t end) {
        const std::size_t node = surface.nodes.size();
        surface.nodes.push_back({{}, {}, begin, end, 0});
        if (end - begin > facesPerLeaf) {
            const std::uint32_t middle = split(begin, end);
            build(begin, middle);
            surface.nodes[node].secondChild = static_cast<std::uint32_t>(surface.nodes.size());
            build(middle, end);
        }
        Bounds patches(axesOf(surface.faces, begin, end));
        for (std::uint32_t i = begin; i < end; ++i)
            for (const Vec3& corner : surface.faces[i].corners)
                patches.add(corner);
        surface.nodes[node].patches = patches.box();
    }

    std::uint32_t split(std::uint32_t begin, std::uint32_t end) {
        Bounds centers(bodyAxes);
        for (std::uint32_t i = begin; i < end; ++i)
            centers.add(centerOf(surface.faces[i]));
        const std::uint32_t middle = begin + (end - begin) / 2;
        const unsigned axis = centers.longestAxis();
        const auto first = surface.faces.begin();
        std::nth_element(first + begin, first + middle, first + end, [axis](const Face& a, const Face& b) {
            return centerOf(a)[axis] < centerOf(b)[axis];
        });
        return middle;
    }
};

/// The point of a triangle next to x (C. Ericson, "Real-Time Collision Detection", section 5.1.5).
Vec3 nearestPoint(const Face& face, const Vec3& x) {
    const auto& [a, b, c] = face.corners;
    const Vec3 ab = b - a, ac = c - a, ax = x - a, bx = x - b, cx = x - c;
    const double d1 = dot(ab, ax), d2 = dot(ac, ax), d3 = dot(ab, bx), d4 = dot(ac, bx), d5 = dot(ab, cx),
                 d6 = dot(ac, cx);
    if (d1 <= 0 && d2 <= 0)
        return a;
    if (d3 >= 0 && d4 <= d3)
        return b;
    if (d6 >= 0 && d5 <= d6)
        return c;
    const double va = d3 * d6 - d5 * d4, vb = d5 * d2 - d1 * d6, vc = d1 * d4 - d3 * d2;
    if (vc <= 0 && d1 >= 0 && d3 <= 0)
        return a + ab * (d1 / (d1 - d3));
    if (vb <= 0 && d2 >= 0 && d6 <= 0)
        return a + ac * (d2 / (d2 - d6));
    if (va <= 0 && d4 >= d3 && d5 >= d6)
        return b + (c - b) * ((d4 - d3) / ((d4 - d3) + (d5 - d6)));
    return a + ab * (vb / (va + vb + vc)) + ac * (vc / (va + vb + vc));
}

/// The largest ball within the surface that touches it at a given place, by shrinking a ball until no point
/// of the surface lies in it (J. Ma, S. W. Bae, S. Choi, "3D medial axis point approximation using nearest
/// neighbors and the normal field", 2012).
class InscribedBall {
  public:
    explicit InscribedBall(const Surface& target) : surface(target) {}

    double radiusAt(const Vec3& touch, const Vec3& outwards, double limit) {
        constexpr int maxSteps = 30;
        constexpr double tolerance = 1e-6;
        double radius = limit;
        for (int step = 0; step < maxSteps; ++step) {
            center = touch - outwards * radius;
            bestDistance = radius * (1 - tolerance);
            found = false;
            visit(0);
            if (!found)
                break;
            const Vec3 toTouch = touch - best;
            radius = dot(toTouch, toTouch) / (2 * dot(toTouch, outwards));
        }
        return radius;
    }

  private:
    const Surface& surface;
    Vec3 center{}, best{};
    double bestDistance = 0;
    bool found = false;

    void visit(std::uint32_t index) {
        const Node& node = surface.nodes[index];
        const Vec3 place = transposedTimes(node.patches.axes, center - node.patches.center);
        double outside = 0;
        for (unsigned i = 0; i < 3; ++i) {
            const double gap = std::abs(place[i]) - node.patches.half[i];
            outside += gap > 0 ? gap * gap : 0;
        }
        if (outside >= bestDistance * bestDistance)
            return;
        if (!node.isLeaf()) {
            visit(index + 1);
            visit(node.secondChild);
            return;
        }
        for (std::uint32_t i = node.begin; i < node.end; ++i) {
            const Vec3 x = nearestPoint(surface.faces[i], center);
            if (norm(x - center) < bestDistance) {
                bestDistance = norm(x - center);
                best = x;
                found = true;
            }
        }
    }
};

/// The radius is taken half-way between centre and corners, so that it isn't the shape of the triangles'
/// seams that counts, and continued to the corners.
void limitDepths(Surface& surface, double maxPenetration) {
    const double maxDepth = std::min(maxPenetration, norm(surface.nodes[0].patches.half));
    InscribedBall ball(surface);
    for (Face& face : surface.faces) {
        Vec3 radii{};
        for (unsigned i = 0; i < 3; ++i)
            radii[i] = ball.radiusAt((centerOf(face) + face.corners[i]) * 0.5, face.normal(), maxDepth);
        const double mean = (radii[0] + radii[1] + radii[2]) / 3;
        std::array<Vec3, 3> ends{};
        double deepest = 0;
        for (unsigned i = 0; i < 3; ++i) {
            const double depth = std::clamp(2 * radii[i] - mean, 0.0, maxDepth);
            ends[i] = face.corners[i] - face.normal() * depth;
            deepest = std::max(deepest, depth);
        }
        face.planes[Face::Depth] = {face.normal() * -1.0, deepest - face.planes[Face::Foot].offset};
        face.planes[Face::End] = planeThrough(ends[0], unit(cross(ends[2] - ends[0], ends[1] - ends[0])));
    }
}

void boundColumns(Surface& surface) {
    for (Node& node : surface.nodes) {
        Bounds bounds(node.patches.axes);
        for (std::uint32_t i = node.begin; i < node.end; ++i)
            for (unsigned corner = 0; corner < 3; ++corner) {
                bounds.add(surface.faces[i].corners[corner]);
                bounds.add(endOfEdge(surface.faces[i], corner));
            }
        node.columns = bounds.box();
    }
}

} // namespace

Surface makeSurface(const SurfaceMesh& mesh, const Vec3& position, const Mat3& orientation,
                    double maxPenetration) {
    Surface surface;
    surface.faces = placeFaces(mesh, position, orientation);
    setSides(surface.faces, mesh);
    TreeBuilder build(surface);
    limitDepths(surface, maxPenetration);
    boundColumns(surface);
    return surface;
}

} // namespace velmora::contact
