#pragma once

#include "contact/ContactLaw.h"
#include "contact/Surface.h"

#include <algorithm>
#include <type_traits>

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
/// sliver are left out.
template <class T>
struct Polygon {
    std::array<Vector3<T>, 9> corners;
    unsigned count = 0;

    void add(const Vector3<T>& corner) {
        if (count < corners.size())
            corners[count++] = corner;
    }
};

/// Keeps what lies within the plane.
template <class T>
void clip(Polygon<T>& polygon, const Face::Plane& plane) {
    std::array<T, 9> excess;
    bool isCut = false;
    for (unsigned i = 0; i < polygon.count; ++i) {
        excess[i] = dot(polygon.corners[i], plane.normal) - plane.offset;
        isCut = isCut || valueOf(excess[i]) > 0;
    }
    if (!isCut)
        return;
    Polygon<T> kept;
    for (unsigned i = 0; i < polygon.count; ++i) {
        const unsigned j = i + 1 < polygon.count ? i + 1 : 0;
        const bool isIn = valueOf(excess[i]) <= 0, isNextIn = valueOf(excess[j]) <= 0;
        if (isIn)
            kept.add(polygon.corners[i]);
        if (isIn != isNextIn)
            kept.add(polygon.corners[i] +
                     (polygon.corners[j] - polygon.corners[i]) * (excess[i] / (excess[i] - excess[j])));
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
template <class T>
Polygon<T> patchWithin(const Face& column, const Cuts& cuts, const std::array<Vector3<T>, 3>& triangle) {
    Polygon<T> polygon;
    polygon.count = 3;
    for (unsigned i = 0; i < 3; ++i)
        polygon.corners[i] = triangle[i];
    for (unsigned i = 0; i < Face::NumPlanes && polygon.count > 0; ++i)
        if ((cuts.planes >> i & 1U) != 0)
            clip(polygon, column.planes[i]);
    return polygon;
}

/// Walks both trees and sums up the forces.
template <class T>
class ColumnIntegral {
  public:
    ColumnIntegral(const ContactLaw& contactLaw, const SurfaceView& columnSurface,
                   const SurfaceView& patchSurface, const RelativeMotion<T>& relativeMotion)
        : law(contactLaw),
          columns(columnSurface),
          patches(patchSurface),
          motion(relativeMotion) {
        for (unsigned j = 0; j < 3; ++j) {
            for (unsigned i = 0; i < 3; ++i)
                values.rotation[j][i] = valueOf(motion.rotation[j][i]);
            values.position[j] = valueOf(motion.position[j]);
        }
        for (unsigned i = 0; i < 3; ++i)
            for (unsigned j = 0; j < 3; ++j)
                skewness += std::abs(dot(values.rotation[i], values.rotation[j]) - (i == j ? 1 : 0));
    }

    const ColumnForces<T>& compute() {
        visit(0, 0, place(patches.nodes[0].patches));
        return sum;
    }

  private:
    const ContactLaw& law;
    const SurfaceView& columns;
    const SurfaceView& patches;
    const RelativeMotion<T>& motion;
    RelativeMotion<double> values{};
    /// Bound of how far the rotation is from a true one, with Euler parameters off norm 1.
    double skewness = 0;
    ColumnForces<T> sum{};

    /// A box around patches, in the columns' frame.
    struct PlacedBox {
        Mat3 axes;
        Vec3 center, half;
    };

    PlacedBox place(const Box& box) const {
        const Vec3 center = values.position + values.rotation * box.center;
        return {{values.rotation * box.axes[0], values.rotation * box.axes[1], values.rotation * box.axes[2]},
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
            const std::array<Vec3, 3> triangle = placed(values, patches.faces[j]);
            for (std::uint32_t i = a.begin; i < a.end; ++i) {
                const Cuts cuts(columns.faces[i], triangle);
                if (!cuts.isApart)
                    addPair(columns.faces[i], patches.faces[j], cuts, triangle);
            }
        }
    }

    /// Dual numbers come in only where the polygon of values isn't empty.
    void addPair(const Face& column, const Face& patch, const Cuts& cuts,
                 const std::array<Vec3, 3>& triangle) {
        const Polygon<double> polygon = patchWithin(column, cuts, triangle);
        if (polygon.count == 0)
            return;
        if constexpr (std::is_same_v<T, double>)
            add(column, patch, polygon);
        else
            add(column, patch, patchWithin(column, cuts, placed(motion, patch)));
    }

    template <class S>
    static std::array<Vector3<S>, 3> placed(const RelativeMotion<S>& m, const Face& patch) {
        return {m.position + m.rotation * patch.corners[0], m.position + m.rotation * patch.corners[1],
                m.position + m.rotation * patch.corners[2]};
    }

    void add(const Face& column, const Face& patch, const Polygon<T>& polygon) {
        const Vector3<T> normal = motion.rotation * patch.normal();
        for (unsigned i = 2; i < polygon.count; ++i)
            addTriangle(column, normal, {polygon.corners[0], polygon.corners[i - 1], polygon.corners[i]});
    }

    /// Three points, exact for polynomials of second order (A. H. Stroud, "Approximate Calculation of
    /// Multiple Integrals", T2: 2-1).
    void addTriangle(const Face& column, const Vector3<T>& normal, const std::array<Vector3<T>, 3>& x) {
        const T share = dot(cross(x[1] - x[0], x[2] - x[0]), normal) * (0.5 / 3);
        const Vector3<T> middle = (x[0] + x[1] + x[2]) * (1.0 / 6);
        for (unsigned i = 0; i < 3; ++i)
            addPoint(column, normal, middle + x[i] * 0.5, share);
    }

    void addPoint(const Face& column, const Vector3<T>& normal, const Vector3<T>& y, const T& area) {
        const T depth = column.planes[Face::Foot].offset - dot(y, column.normal());
        const T cosine = -dot(normal, column.normal());
        const T facing = valueOf(cosine) > 0 ? cosine : T(0.0);
        const Vector3<T> velocity = motion.velocity + cross(motion.angular, y);
        const Vector3<T> force = law.traction(depth, normal, facing, velocity) * area;
        sum.force += force;
        sum.torque += cross(y, force);
        const double weight = valueOf(area), load = weight * valueOf(depth);
        const Vec3 place{valueOf(y[0]), valueOf(y[1]), valueOf(y[2])};
        sum.area += weight;
        sum.load += load;
        sum.areaMoment += place * weight;
        sum.loadMoment += place * load;
    }
};

} // namespace velmora::contact
