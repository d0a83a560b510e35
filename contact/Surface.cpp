#include "contact/Surface.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace velmora::contact {
namespace {

constexpr std::uint32_t facesPerLeaf = 4;

Vec3 unit(const Vec3& a) {
    return a * (1 / norm(a));
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

/// Faces without sides.
std::vector<Face> placeFaces(const SurfaceMesh& mesh, const Vec3& position, const Mat3& orientation,
                             double depth) {
    std::vector<Face> faces;
    faces.reserve(mesh.triangles.size());
    for (const SurfaceMesh::Triangle& triangle : mesh.triangles) {
        Face face{};
        for (unsigned i = 0; i < 3; ++i)
            face.corners[i] = position + orientation * mesh.vertices[triangle[i]];
        face.normal = unit(cross(face.corners[1] - face.corners[0], face.corners[2] - face.corners[0]));
        face.depth = depth;
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
            faces[t].sides[i] =
                sideOf(faces[t].corners[next] - faces[t].corners[i], faces[t].normal, faces[other].normal);
        }
}

/// Where the column's edge from a corner, the line common to two of its planes, reaches the depth. A column
/// that narrows to a point before lies within the box around its corners and these points, too.
Vec3 endOfEdge(const Face& face, unsigned corner) {
    const Vec3 line = cross(face.sides[(corner + 2) % 3], face.sides[corner]);
    return face.corners[corner] - line * (face.depth / dot(line, face.normal));
}

/// Grows around points.
struct Bounds {
    Vec3 low, high;

    Bounds() {
        low.fill(std::numeric_limits<double>::max());
        high.fill(std::numeric_limits<double>::lowest());
    }
    void add(const Vec3& x) {
        for (unsigned i = 0; i < 3; ++i) {
            low[i] = std::min(low[i], x[i]);
            high[i] = std::max(high[i], x[i]);
        }
    }
    Box box() const { return {(low + high) * 0.5, (high - low) * 0.5}; }
    unsigned longestAxis() const {
        const Vec3 size = high - low;
        return static_cast<unsigned>(std::max_element(size.begin(), size.end()) - size.begin());
    }
};

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
        Bounds patches, centers;
        for (std::uint32_t i = begin; i < end; ++i) {
            for (const Vec3& corner : surface.faces[i].corners)
                patches.add(corner);
            centers.add(centerOf(surface.faces[i]));
        }
        surface.nodes.push_back({patches.box(), {}, begin, end - begin, 0});
        if (end - begin <= facesPerLeaf)
            return;
        const std::uint32_t middle = begin + (end - begin) / 2;
        const unsigned axis = centers.longestAxis();
        const auto first = surface.faces.begin();
        std::nth_element(first + begin, first + middle, first + end, [axis](const Face& a, const Face& b) {
            return centerOf(a)[axis] < centerOf(b)[axis];
        });
        surface.nodes[node].count = 0;
        build(begin, middle);
        surface.nodes[node].secondChild = static_cast<std::uint32_t>(surface.nodes.size());
        build(middle, end);
    }
};

/// Shoots from under the surface inwards and finds where the body ends.
class ThicknessProbe {
  public:
    explicit ThicknessProbe(const Surface& target) : surface(target) {}

    /// Distance from x on the face to the first face on the other side, at most `limit`.
    double measure(const Vec3& x, const Vec3& inwards, double limit) {
        origin = x;
        direction = inwards;
        nearest = limit;
        visit(0);
        return nearest;
    }

  private:
    const Surface& surface;
    Vec3 origin{}, direction{};
    double nearest = 0;

    void visit(std::uint32_t index) {
        const Node& node = surface.nodes[index];
        if (!meets(node.patches))
            return;
        for (std::uint32_t i = node.begin; i < node.begin + node.count; ++i)
            meet(surface.faces[i]);
        if (node.count == 0) {
            visit(index + 1);
            visit(node.secondChild);
        }
    }

    bool meets(const Box& box) const {
        double from = 0, to = nearest;
        for (unsigned i = 0; i < 3; ++i) {
            const double distance = box.center[i] - origin[i];
            if (direction[i] == 0) {
                if (std::abs(distance) > box.half[i])
                    return false;
                continue;
            }
            const double a = (distance - box.half[i]) / direction[i],
                         b = (distance + box.half[i]) / direction[i];
            from = std::max(from, std::min(a, b));
            to = std::min(to, std::max(a, b));
        }
        return from <= to;
    }

    /// The ray leaves the body where it runs along the normal.
    void meet(const Face& face) {
        const double slope = dot(direction, face.normal);
        if (slope <= 0)
            return;
        const double distance = dot(face.corners[0] - origin, face.normal) / slope;
        if (distance < 0 || distance >= nearest)
            return;
        const Vec3 x = origin + direction * distance;
        for (unsigned i = 0; i < 3; ++i)
            if (dot(x - face.corners[i], face.sides[i]) > 0) // on the face, the planes cut along its edges
                return;
        nearest = distance;
    }
};

/// Half the thickness under the centre and under three points on the way to the corners.
void limitDepths(Surface& surface) {
    constexpr double towardsCorner = 0.5;
    ThicknessProbe probe(surface);
    for (Face& face : surface.faces) {
        const Vec3 center = centerOf(face), inwards = face.normal * -1.0;
        double thickness = probe.measure(center, inwards, 2 * face.depth);
        for (const Vec3& corner : face.corners)
            thickness = probe.measure(center + (corner - center) * towardsCorner, inwards, thickness);
        face.depth = thickness / 2;
    }
}

/// Children stand after their parents, so that the way back finds them done.
void boundColumns(Surface& surface) {
    for (std::size_t n = surface.nodes.size(); n-- > 0;) {
        Node& node = surface.nodes[n];
        Bounds bounds;
        for (std::uint32_t i = node.begin; i < node.begin + node.count; ++i)
            for (unsigned corner = 0; corner < 3; ++corner) {
                bounds.add(surface.faces[i].corners[corner]);
                bounds.add(endOfEdge(surface.faces[i], corner));
            }
        if (node.count == 0)
            for (const Node* child : {&surface.nodes[n + 1], &surface.nodes[node.secondChild]}) {
                bounds.add(child->columns.center - child->columns.half);
                bounds.add(child->columns.center + child->columns.half);
            }
        node.columns = bounds.box();
    }
}

} // namespace

Surface makeSurface(const SurfaceMesh& mesh, const Vec3& position, const Mat3& orientation,
                    double maxPenetration) {
    Surface surface;
    surface.faces = placeFaces(mesh, position, orientation, maxPenetration);
    setSides(surface.faces, mesh);
    TreeBuilder build(surface);
    limitDepths(surface);
    boundColumns(surface);
    return surface;
}

} // namespace velmora::contact
