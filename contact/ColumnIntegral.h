#pragma once

#include "contact/ForceSlopes.h"

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
/// A patch within a column is a convex polygon. The elastic traction is linear in the place, its moment
/// quadratic: a rule of second order over a fan of triangles makes both exact.

namespace velmora::contact {

/// Walks both trees and sums up the forces, and their derivatives if there is something to take them up.
class ColumnIntegral {
  public:
    ColumnIntegral(const ContactLaw& contactLaw, const SurfaceView& columnSurface,
                   const SurfaceView& patchSurface, const RelativeMotion<double>& relativeMotion,
                   ForceSlopes* forceSlopes)
        : law(contactLaw),
          columns(columnSurface),
          patches(patchSurface),
          motion(relativeMotion),
          slopes(forceSlopes) {
        for (unsigned i = 0; i < 3; ++i)
            for (unsigned j = 0; j < 3; ++j)
                skewness += std::abs(dot(motion.rotation[i], motion.rotation[j]) - (i == j ? 1 : 0));
    }

    const ColumnForces<double>& compute() {
        visit(0, 0, place(patches.nodes[0].patches));
        return sum;
    }

  private:
    const ContactLaw& law;
    const SurfaceView& columns;
    const SurfaceView& patches;
    const RelativeMotion<double>& motion;
    ForceSlopes* slopes;
    /// Bound of how far the rotation is from a true one, with Euler parameters off norm 1.
    double skewness = 0;
    ColumnForces<double> sum{};

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
            const PlacedTriangle triangle = place(patches.faces[j]);
            if (isBeside(a.columns, triangle))
                continue;
            for (std::uint32_t i = a.begin; i < a.end; ++i) {
                const Cuts cuts(columns.faces[i], triangle);
                if (!cuts.isApart)
                    addPair(columns.faces[i], patches.faces[j], cuts, triangle);
            }
        }
    }

    static bool isBeside(const Box& box, const PlacedTriangle& triangle) {
        for (unsigned i = 0; i < 3; ++i) {
            const double middle = dot(box.axes[i], box.center), a = dot(box.axes[i], triangle[0]) - middle,
                         b = dot(box.axes[i], triangle[1]) - middle,
                         c = dot(box.axes[i], triangle[2]) - middle;
            if (std::min(a, std::min(b, c)) > box.half[i] || std::max(a, std::max(b, c)) < -box.half[i])
                return true;
        }
        return false;
    }

    PlacedTriangle place(const Face& patch) const {
        return {motion.position + motion.rotation * patch.corners[0],
                motion.position + motion.rotation * patch.corners[1],
                motion.position + motion.rotation * patch.corners[2]};
    }

    void addPair(const Face& column, const Face& patch, const Cuts& cuts, const PlacedTriangle& triangle) {
        const Polygon polygon = patchWithin(column, cuts, triangle);
        if (polygon.count == 0)
            return;
        if (slopes)
            return slopes->add(column, patch, triangle, polygon, sum);
        const Vec3 normal = motion.rotation * patch.normal();
        for (unsigned i = 2; i < polygon.count; ++i)
            addTriangle(column, normal, {polygon.corners[0], polygon.corners[i - 1], polygon.corners[i]});
    }

    /// Three points, exact for polynomials of second order (A. H. Stroud, "Approximate Calculation of
    /// Multiple Integrals", T2: 2-1).
    void addTriangle(const Face& column, const Vec3& normal, const PlacedTriangle& x) {
        const double share = dot(cross(x[1] - x[0], x[2] - x[0]) * (0.5 / 3), normal);
        const Vec3 middle = (x[0] + x[1] + x[2]) * (1.0 / 6);
        for (unsigned i = 0; i < 3; ++i)
            addPoint(column, normal, middle + x[i] * 0.5, share);
    }

    void addPoint(const Face& column, const Vec3& normal, const Vec3& y, double area) {
        const double depth = column.planes[Face::Foot].offset - dot(y, column.normal());
        const double cosine = -dot(normal, column.normal());
        const double facing = cosine > 0 ? cosine : 0.0;
        const Vec3 velocity = motion.velocity + cross(motion.angular, y);
        sum.addPoint(y, depth, law.traction(depth, normal, facing, velocity) * area, area);
    }
};

} // namespace velmora::contact
