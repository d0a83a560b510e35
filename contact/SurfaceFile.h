#pragma once

#include "contact/SurfaceMesh.h"

namespace velmora::contact {

/// Reads a closed surface: Wavefront OBJ (.obj) or STL (.stl, text or binary). Throws InputError with the
/// file's name, the line or triangle, and what is wrong. Equal vertices are merged and the surface is
/// checked.
///
/// OBJ: "v" and "f" lines count, with faces of any number of corners, "a", "a/b", "a//c" or "a/b/c" each,
/// negative numbers counted back from the last vertex; a face of more than three corners has to be convex.
/// Everything else is passed over. STL: the normals are passed over, the order of the corners counts.
SurfaceMesh readSurface(const std::string& path);

} // namespace velmora::contact
