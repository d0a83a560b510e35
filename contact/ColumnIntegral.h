#pragma once

#include "contact/ContactLaw.h"
#include "contact/Surface.h"

#include <algorithm>

/// \file
/// Forces of the columns of one surface on the patches of the other, in the frame of the columns' body.
///
/// Under each face stands a column of elastic material. A point of it at the depth x below the face carries
/// the pressure p = k x, a field that is fixed in the body and vanishes on its surface. Where the other
/// surface runs through the column it bears that pressure on its inner side; so the force on the body of the
/// columns is the integral of p n dA over the part of the patch within the column, n the patch's outward
/// normal. The work of p is the change of the integral of k x over the common volume: without damping and
/// friction the forces have that potential. The field as in R. Elandt et al., "A pressure field model for
/// fast, robust approximation of net contact force and moment between nominally rigid objects", 2019.
///
/// A patch within a column is a convex polygon, got by clipping the triangle at the column's three sides, at
/// its foot x = 0 and at its end. The elastic traction is linear in the place, its moment quadratic: a rule
/// of second order over a fan of triangles makes both exact.

namespace velmora::contact {

/// How the patches stand and move relative to the columns.
template <class T>
struct RelativeMotion {
    Matrix3<T> rotation; ///< frame of the patches to that of the columns
    Vector3<T> position; ///< of the patches' body, from the columns'
    /// Velocity of the columns relative to the patches at the place y: velocity + angular x y.
    Vector3<T> velocity, angular;
};

/// Sums over all patches in columns.
template <class T>
struct ColumnForces {
    Vector3<T> force{}, torque{}; ///< on the columns' body, about its position
    double area = 0, load = 0;    ///< of the patches; integral of the elastic pressure
    Vec3 areaMoment{}, loadMoment{};
};

/// Convex polygon; a triangle cut by six planes has at most 9 corners. Corners that rounding adds to a
/// sliver are left out. `Corner` is a place, or one that knows where it comes from.
template <class Corner>
struct Polygon {
    std::array<Corner, 9> corners;
    unsigned count = 0;

    void add(const Corner& corner) {
        if (count < corners.size())
            corners[count++] = corner;
    }
};

inline const Vec3& placeOf(const Vec3& corner) {
    return corner;
}
/// Where the edge from a to b meets the plane, at a share of its length.
inline Vec3 cutEdge(const Vec3& a, const Vec3& b, double share, unsigned /*plane*/, bool /*isExit*/) {
    return a + (b - a) * share;
}

/// Keeps what lies within the plane of that number.
template <class Corner>
void clip(Polygon<Corner>& polygon, const Face::Plane& plane, unsigned number) {
    std::array<double, 9> excess{};
    bool isCut = false;
    for (unsigned i = 0; i < polygon.count; ++i) {
        excess[i] = dot(placeOf(polygon.corners[i]), plane.normal) - plane.offset;
        isCut = isCut || excess[i] > 0;
    }
    if (!isCut)
        return;
    Polygon<Corner> kept;
    for (unsigned i = 0; i < polygon.count; ++i) {
        const unsigned j = i + 1 < polygon.count ? i + 1 : 0;
        const bool isIn = excess[i] <= 0, isNextIn = excess[j] <= 0;
        if (isIn)
            kept.add(polygon.corners[i]);
        if (isIn != isNextIn)
            kept.add(cutEdge(polygon.corners[i], polygon.corners[j], excess[i] / (excess[i] - excess[j]),
                             number, isIn));
    }
    polygon = kept;
}

/// Which planes of a column cut a triangle, as bits by their numbers; isApart if one has the whole outside.
struct Cuts {
    unsigned planes = 0;
    bool isApart = false;

    Cuts(const Face& column, const std::array<Vec3, 3>& triangle) {
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
template <class Corner>
Polygon<Corner> patchWithin(const Face& column, const Cuts& cuts, const std::array<Corner, 3>& triangle) {
    Polygon<Corner> polygon;
    for (const Corner& corner : triangle)
        polygon.add(corner);
    for (unsigned i = 0; i < Face::NumPlanes && polygon.count > 0; ++i)
        if ((cuts.planes >> i & 1U) != 0)
            clip(polygon, column.planes[i], i);
    return polygon;
}

/// The corners of a patch in the columns' frame.
inline std::array<Vec3, 3> placed(const RelativeMotion<double>& motion, const Face& patch) {
    return {motion.position + motion.rotation * patch.corners[0],
            motion.position + motion.rotation * patch.corners[1],
            motion.position + motion.rotation * patch.corners[2]};
}

/// The points and weights by which a triangle is integrated, exact for polynomials of second order (A. H.
/// Stroud, "Approximate Calculation of Multiple Integrals", T2: 2-1). A point has the weight 1/6 + 1/2 in its
/// own corner and 1/6 in the others.
struct TriangleRule {
    std::array<Vec3, 3> points;
    double area; ///< per point

    TriangleRule(const std::array<Vec3, 3>& x, const Vec3& normal)
        : area(dot(cross(x[1] - x[0], x[2] - x[0]), normal) * (0.5 / 3)) {
        const Vec3 middle = (x[0] + x[1] + x[2]) * (1.0 / 6);
        for (unsigned i = 0; i < 3; ++i)
            points[i] = middle + x[i] * 0.5;
    }
};

/// What the law is told of a point of a patch.
struct PatchPoint {
    double depth, facing;
    Vec3 velocity;

    PatchPoint(const Face& column, const RelativeMotion<double>& motion, const Vec3& normal, const Vec3& y)
        : depth(column.planes[Face::Foot].offset - dot(y, column.normal())),
          facing(std::max(0.0, -dot(normal, column.normal()))),
          velocity(motion.velocity + cross(motion.angular, y)) {}
};

/// Adds up forces alone.
class ForceSum {
  public:
    ForceSum(const ContactLaw& contactLaw, const RelativeMotion<double>& relativeMotion)
        : law(contactLaw),
          motion(relativeMotion) {}

    /// A patch within a column.
    void add(const Face& column, const Face& patch, const Cuts& cuts, const std::array<Vec3, 3>& triangle) {
        const Polygon<Vec3> polygon = patchWithin(column, cuts, triangle);
        const Vec3 normal = motion.rotation * patch.normal();
        for (unsigned i = 2; i < polygon.count; ++i) {
            const TriangleRule rule({polygon.corners[0], polygon.corners[i - 1], polygon.corners[i]}, normal);
            for (const Vec3& y : rule.points) {
                const PatchPoint point(column, motion, normal, y);
                addForce(y, law.traction(point.depth, normal, point.facing, point.velocity), rule.area,
                         point.depth);
            }
        }
    }

    ColumnForces<double> sum{};

  protected:
    void addForce(const Vec3& y, const Vec3& traction, double area, double depth) {
        const Vec3 force = traction * area;
        sum.force += force;
        sum.torque += cross(y, force);
        sum.area += area;
        sum.load += area * depth;
        sum.areaMoment += y * area;
        sum.loadMoment += y * (area * depth);
    }

    const ContactLaw& law;
    const RelativeMotion<double>& motion;
};

/// Walks both trees and hands each patch that may reach into a column to a sum.
template <class Sum>
class ColumnIntegral {
  public:
    ColumnIntegral(const SurfaceView& columnSurface, const SurfaceView& patchSurface,
                   const RelativeMotion<double>& relativeMotion, Sum& target)
        : columns(columnSurface),
          patches(patchSurface),
          motion(relativeMotion),
          sum(target) {
        for (unsigned i = 0; i < 3; ++i)
            for (unsigned j = 0; j < 3; ++j)
                skewness += std::abs(dot(motion.rotation[i], motion.rotation[j]) - (i == j ? 1 : 0));
    }

    void compute() { visit(0, 0, place(patches.nodes[0].patches)); }

  private:
    const SurfaceView& columns;
    const SurfaceView& patches;
    const RelativeMotion<double>& motion;
    Sum& sum;
    /// Bound of how far the rotation is from a true one, with Euler parameters off norm 1.
    double skewness = 0;

    /// A box around patches, in the columns' frame.
    struct PlacedBox {
        Mat3 axes;
        Vec3 center, half;
    };

    PlacedBox place(const Box& box) const {
        const Vec3 center = motion.position + motion.rotation * box.center;
        return {{motion.rotation * box.axes[0], motion.rotation * box.axes[1], motion.rotation * box.axes[2]},
                center,
                box.half + Vec3{1, 1, 1} * (skewness * (box.half[0] + box.half[1] + box.half[2]))};
    }

    void visit(std::uint32_t columnNode, std::uint32_t patchNode, const PlacedBox& patchBox) {
        const Node& a = columns.nodes[columnNode];
        const Node& b = patches.nodes[patchNode];
        if (!overlap(a.columns, patchBox))
            return;
        if (a.isLeaf() && b.isLeaf())
            return addLeaves(a, b);
        if (a.isLeaf() || (!b.isLeaf() && sizeOf(b.patches) > sizeOf(a.columns))) {
            visit(columnNode, patchNode + 1, place(patches.nodes[patchNode + 1].patches));
            visit(columnNode, b.secondChild, place(patches.nodes[b.secondChild].patches));
        } else {
            visit(columnNode + 1, patchNode, patchBox);
            visit(a.secondChild, patchNode, patchBox);
        }
    }

    static double sizeOf(const Box& box) { return dot(box.half, box.half); }

    /// False if a plane along the sides of either box parts them, or if a coordinate is no number.
    static bool overlap(const Box& column, const PlacedBox& patch) {
        const Vec3 distance = patch.center - column.center, along = transposedTimes(column.axes, distance);
        Vec3 reaches = column.half;
        for (unsigned j = 0; j < 3; ++j) {
            const Vec3 cosines = transposedTimes(column.axes, patch.axes[j]);
            const Vec3 sizes{std::abs(cosines[0]), std::abs(cosines[1]), std::abs(cosines[2])};
            if (!(std::abs(dot(patch.axes[j], distance)) <= patch.half[j] + dot(sizes, column.half)))
                return false;
            reaches += sizes * patch.half[j];
        }
        return std::abs(along[0]) <= reaches[0] && std::abs(along[1]) <= reaches[1] &&
               std::abs(along[2]) <= reaches[2];
    }

    void addLeaves(const Node& a, const Node& b) {
        for (std::uint32_t j = b.begin; j < b.end; ++j) {
            const std::array<Vec3, 3> triangle = placed(motion, patches.faces[j]);
            for (std::uint32_t i = a.begin; i < a.end; ++i) {
                const Cuts cuts(columns.faces[i], triangle);
                if (!cuts.isApart)
                    sum.add(columns.faces[i], patches.faces[j], cuts, triangle);
            }
        }
    }
};

} // namespace velmora::contact
