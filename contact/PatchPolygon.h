#pragma once

#include "contact/Surface.h"

#include <algorithm>

/// \file
/// The part of a patch within a column: a convex polygon, got by clipping the triangle at the column's three
/// sides, at its foot and at its end.

namespace velmora::contact {

/// A triangle of the other surface, in the frame of the columns.
using PlacedTriangle = std::array<Vec3, 3>;

/// Convex polygon; a triangle cut by six planes has at most 9 corners. Corners that rounding adds to a
/// sliver are left out.
struct Polygon {
    /// What the side from a corner to the next lies on: the column's plane of that number, or the edge
    /// line - PatchEdge of the triangle, which starts at its corner of that number.
    enum Line : unsigned { PatchEdge = Face::NumPlanes };

    std::array<Vec3, 9> corners;
    std::array<unsigned, 9> lines;
    unsigned count = 0;

    void add(const Vec3& corner, unsigned line) {
        if (count == corners.size())
            return;
        corners[count] = corner;
        lines[count++] = line;
    }
    unsigned next(unsigned i) const { return i + 1 < count ? i + 1 : 0; }
    unsigned previous(unsigned i) const { return (i > 0 ? i : count) - 1; }
};

/// Keeps what lies within the column's plane of that number.
inline void clip(Polygon& polygon, const Face& column, unsigned number) {
    const Face::Plane& plane = column.planes[number];
    std::array<double, 9> excess;
    bool isCut = false;
    for (unsigned i = 0; i < polygon.count; ++i) {
        excess[i] = dot(polygon.corners[i], plane.normal) - plane.offset;
        isCut = isCut || excess[i] > 0;
    }
    if (!isCut)
        return;
    Polygon kept;
    for (unsigned i = 0; i < polygon.count; ++i) {
        const unsigned j = polygon.next(i);
        const bool isIn = excess[i] <= 0, isNextIn = excess[j] <= 0;
        if (isIn)
            kept.add(polygon.corners[i], polygon.lines[i]);
        if (isIn != isNextIn)
            kept.add(polygon.corners[i] +
                         (polygon.corners[j] - polygon.corners[i]) * (excess[i] / (excess[i] - excess[j])),
                     isIn ? number : polygon.lines[i]);
    }
    polygon = kept;
}

/// Which planes of a column cut a triangle, as bits by their numbers; isApart if one has the whole outside.
struct Cuts {
    unsigned planes = 0;
    bool isApart = false;

    Cuts(const Face& column, const PlacedTriangle& triangle) {
        for (unsigned i = 0; i < Face::NumPlanes && !isApart; ++i) {
            const Face::Plane& plane = column.planes[i];
            const double a = dot(triangle[0], plane.normal), b = dot(triangle[1], plane.normal),
                         c = dot(triangle[2], plane.normal);
            isApart = std::min(a, std::min(b, c)) >= plane.offset;
            planes |= std::max(a, std::max(b, c)) > plane.offset ? 1U << i : 0U;
        }
    }
};

/// The part of the triangle within the column.
inline Polygon patchWithin(const Face& column, const Cuts& cuts, const PlacedTriangle& triangle) {
    Polygon polygon;
    for (unsigned i = 0; i < 3; ++i)
        polygon.add(triangle[i], Polygon::PatchEdge + i);
    for (unsigned i = 0; i < Face::NumPlanes && polygon.count > 0; ++i)
        if ((cuts.planes >> i & 1U) != 0)
            clip(polygon, column, i);
    return polygon;
}

} // namespace velmora::contact
