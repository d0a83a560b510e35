#pragma once

#include "contact/SurfaceMesh.h"

#include <type_traits>

namespace velmora::contact {

/// A triangle in the two roles that it plays, in the frame of its body. As the foot of a column it carries
/// elastic material inwards, between three planes: the one through each edge halves the angle to the
/// neighbour's triangle, so that the columns of a body neither overlap at its edges nor leave gaps, and the
/// depth below the feet is continuous from one column to the next. The column ends at the depth `depth`, or
/// before that at a plane near the middle of the body, where columns from other sides begin. As a patch the
/// triangle presses into the columns of the other body.
struct Face {
    /// What lies within has normal . x <= offset.
    struct Plane {
        Vec3 normal;
        double offset;
    };
    /// Numbers of the planes around the column; Side + i runs through the edge from corner i.
    enum PlaneNumber : unsigned { Foot, Side, Depth = 4, End, NumPlanes };

    std::array<Vec3, 3> corners; ///< counter-clockwise seen from outside
    std::array<Plane, NumPlanes> planes;

    /// Outwards, unit.
    const Vec3& normal() const { return planes[Foot].normal; }
};

/// Box along axes of its own, in the frame of the body.
struct Box {
    Mat3 axes; ///< columns, unit
    Vec3 center, half;
};

/// A node of the tree of boxes around runs of faces. The first child of an inner node is the next node.
struct Node {
    Box patches, columns;      ///< around the triangles; around their columns
    std::uint32_t begin, end;  ///< the faces within
    std::uint32_t secondChild; ///< 0 for a leaf

    bool isLeaf() const { return secondChild == 0; }
};

/// Faces in the order of the leaves, with the tree over them. Depth of the tree: at most 1 + log2(faces).
struct SurfaceView {
    const Face* faces;
    const Node* nodes;
};

/// A surface while it is being made; afterwards plain memory to be copied.
struct Surface {
    std::vector<Face> faces;
    std::vector<Node> nodes;
};
static_assert(std::is_trivially_copyable_v<Face> && std::is_trivially_copyable_v<Node>);

/// The surface of a body whose vertices are position + orientation * u for the vertices u of the mesh, u in
/// the mesh's frame and the result in the body's. The columns reach down to maxPenetration, but not beyond
/// the middle of the body: under each place of the foot a column ends about where the largest ball in the
/// body that touches the surface there has its centre.
Surface makeSurface(const SurfaceMesh& mesh, const Vec3& position, const Mat3& orientation,
                    double maxPenetration);

} // namespace velmora::contact
