#pragma once

#include "contact/Vector3.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace velmora::contact {

/// What is wrong with an input, in words for the user.
class InputError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A surface as it stands in a file. Triangles run counter-clockwise seen from outside.
struct SurfaceMesh {
    using Triangle = std::array<std::uint32_t, 3>;

    std::vector<Vec3> vertices;
    std::vector<Triangle> triangles; ///< indices into vertices
    std::vector<std::string> places; ///< of each triangle, how the user finds it: "line 12", "triangle 3"
};

/// Lets vertices at exactly the same place be one, as in files that repeat the vertices for each triangle.
/// The first of them stays, the order too.
void mergeEqualVertices(SurfaceMesh& mesh);

/// Throws InputError unless the mesh is the boundary of a body: at least four triangles, none of them without
/// area, each edge between exactly two triangles that run it in opposite directions, a positive volume.
void checkClosed(const SurfaceMesh& mesh);

} // namespace velmora::contact
