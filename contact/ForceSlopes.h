#pragma once

#include "contact/ContactLaw.h"
#include "contact/PatchPolygon.h"

/// \file
/// Derivatives of the columns' forces with respect to placement and velocity of the patches, in closed form.
///
/// Within a polygon the forces depend on its corners, on the patch's normal and on the relative velocity.
/// Each point of the integration rule is a mean of corners, and depth and velocity are linear in the place;
/// so all that the points contribute is handed to the corners in the point's weights, and the chain rule goes
/// on once per corner. There
///
/// (1) the corner moves as u = dt + dR c, c its place in the patch's frame, if it is one of the triangle's,
/// (2) as u - d (N . u) / (N . d) where the triangle's edge along d meets the plane with the normal N,
/// (3) as L (m . u) / (m . L) where the triangle's plane, normal m, meets the line L common to two planes.

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

    /// The force at a point y of the rule, at the depth below the column's foot, with its share of the area.
    void addPoint(const Vec3& y, double depth, const Vec3& pointForce, double pointArea) {
        const double pointLoad = pointArea * depth;
        force += pointForce;
        torque += cross(y, pointForce);
        area += pointArea;
        load += pointLoad;
        areaMoment += y * pointArea;
        loadMoment += y * pointLoad;
    }
};

/// A force over its moment, or a derivative of both. Numbers stand in pairs, which the compiler keeps in one
/// register each.
class Wrench {
  public:
    Wrench() = default;
    /// Of a force at a place.
    [[gnu::always_inline]] Wrench(const Vec3& force, const Vec3& place) {
        const Vec3 moment = cross(place, force);
        pairs[0] = Pair{force[0], force[1]};
        pairs[1] = Pair{force[2], moment[0]};
        pairs[2] = Pair{moment[1], moment[2]};
    }
    double operator[](unsigned i) const { return pairs[i / 2][i % 2]; }
    void addMoment(unsigned i, double moment) { pairs[(i + 3) / 2][(i + 3) % 2] += moment; }

    [[gnu::always_inline]] Wrench& operator+=(const Wrench& y) {
        for (unsigned i = 0; i < 3; ++i)
            pairs[i] += y.pairs[i];
        return *this;
    }
    [[gnu::always_inline]] friend Wrench operator+(Wrench x, const Wrench& y) { return x += y; }
    [[gnu::always_inline]] friend Wrench operator-(Wrench x, const Wrench& y) {
        for (unsigned i = 0; i < 3; ++i)
            x.pairs[i] -= y.pairs[i];
        return x;
    }
    [[gnu::always_inline]] friend Wrench operator*(Wrench x, double c) {
        for (Pair& pair : x.pairs)
            pair *= c;
        return x;
    }
    [[gnu::always_inline]] friend Wrench operator*(double c, const Wrench& x) { return x * c; }

  private:
    using Pair [[gnu::vector_size(2 * sizeof(double))]] = double;
    Pair pairs[3]{};
};

/// Sums up the polygons' forces with their derivatives.
class ForceSlopes {
  public:
    /// With respect to the motion's numbers.
    RelativeMotion<Wrench> sum{};

    ForceSlopes(const ContactLaw& contactLaw, const RelativeMotion<double>& relativeMotion)
        : law(contactLaw),
          motion(relativeMotion) {
        const Mat3& r = motion.rotation;
        const Mat3 cofactors{cross(r[1], r[2]), cross(r[2], r[0]), cross(r[0], r[1])};
        const double determinant = dot(r[0], cofactors[0]);
        for (unsigned i = 0; i < 3; ++i)
            inverseRows[i] = cofactors[i] * (1 / determinant);
    }

    void add(const Face& column, const Face& patch, const PlacedTriangle& triangle, const Polygon& polygon,
             ColumnForces<double>& forces) {
        const Vec3 normal = motion.rotation * patch.normal();
        for (unsigned i = 0; i < polygon.count; ++i) {
            shares[i].clear();
            clear(perArea[i]);
        }
        clear(perNormal);
        for (unsigned i = 2; i < polygon.count; ++i)
            addTriangle(column, normal, polygon, {0, i - 1, i}, forces);
        for (unsigned i = 0; i < polygon.count; ++i)
            addCorner(column, triangle, polygon, i);
        for (unsigned k = 0; k < 3; ++k)
            sum.rotation[k] += perNormal * patch.normal()[k];
    }

  private:
    /// What of a polygon's forces belongs to a corner.
    struct Share {
        Vec3 force{};
        Wrench perDepth;
        Vector3<Wrench> perVelocity{};

        Share() = default;
        /// Of a point, with its weight.
        Share(const TractionSlopes& slopes, const Vec3& y, double weight)
            : force(slopes.value * weight),
              perDepth(slopes.depth * weight, y) {
            for (unsigned j = 0; j < 3; ++j)
                perVelocity[j] = Wrench(slopes.velocity[j] * weight, y);
        }
        Share& operator+=(const Share& other) {
            force += other.force;
            perDepth += other.perDepth;
            perVelocity += other.perVelocity;
            return *this;
        }
        void clear() {
            force = {};
            perDepth = Wrench();
            ForceSlopes::clear(perVelocity);
        }
        void scale(double factor) {
            force = force * factor;
            perDepth = perDepth * factor;
            perVelocity = perVelocity * factor;
        }
    };

    /// Number by number: as a whole, compilers take an instruction that is slow for few bytes.
    static void clear(Vector3<Wrench>& slopes) {
        for (Wrench& slope : slopes)
            slope = Wrench();
    }

    const ContactLaw& law;
    const RelativeMotion<double>& motion;
    Mat3 inverseRows{}; ///< of the rotation
    // Of the polygon in work.
    std::array<Share, 9> shares{};
    std::array<Vector3<Wrench>, 9> perArea{}; ///< by the triangles' areas, per place of the corner
    Vector3<Wrench> perNormal{};

    /// The rule's points are middle + x / 2 with middle = (x0 + x1 + x2) / 6: half of a point belongs to its
    /// corner, the other half to all three.
    void addTriangle(const Face& column, const Vec3& normal, const Polygon& polygon,
                     const std::array<unsigned, 3>& corners, ColumnForces<double>& forces) {
        const Vec3 &a = polygon.corners[corners[0]], &b = polygon.corners[corners[1]],
                   &c = polygon.corners[corners[2]];
        const Vec3 areaVector = cross(b - a, c - a) * (0.5 / 3), middle = (a + b + c) * (1.0 / 6);
        const double area = dot(areaVector, normal);
        Share common;
        Wrench perUnitArea;
        for (const unsigned corner : corners) {
            const Vec3 y = middle + polygon.corners[corner] * 0.5;
            const double depth = column.planes[Face::Foot].offset - dot(y, column.normal());
            const TractionSlopes slopes = slopesAt(column, normal, y, depth);
            forces.addPoint(y, depth, slopes.value * area, area);
            const Share half(slopes, y, area * 0.5);
            common += half;
            shares[corner] += half;
            for (unsigned j = 0; j < 3; ++j)
                perNormal[j] += Wrench(slopes.normal[j] * area, y);
            perUnitArea += Wrench(slopes.value, y);
        }
        common.scale(1.0 / 3);
        const Vec3 byB = cross(c - a, normal) * (0.5 / 3), byC = cross(normal, b - a) * (0.5 / 3);
        const Mat3 areaSlopes{(byB + byC) * -1.0, byB, byC};
        for (unsigned i = 0; i < 3; ++i) {
            shares[corners[i]] += common;
            perArea[corners[i]] += areaSlopes[i] * perUnitArea;
        }
        perNormal += areaVector * perUnitArea;
    }

    TractionSlopes slopesAt(const Face& column, const Vec3& normal, const Vec3& y, double depth) const {
        const double cosine = -dot(normal, column.normal());
        const bool isFacing = cosine > 0;
        return law.tractionSlopes(depth, normal, isFacing ? cosine : 0.0,
                                  isFacing ? column.normal() * -1.0 : Vec3{},
                                  motion.velocity + cross(motion.angular, y));
    }

    void addCorner(const Face& column, const PlacedTriangle& triangle, const Polygon& polygon, unsigned i) {
        const Share& share = shares[i];
        const Vec3& x = polygon.corners[i];
        sum.velocity += share.perVelocity;
        sum.angular += cross(x, share.perVelocity);

        Vector3<Wrench> perPlace =
            perArea[i] + cross(share.perVelocity, motion.angular) - column.normal() * share.perDepth;
        for (unsigned j = 0; j < 3; ++j) { // the force's arm
            const unsigned k = (j + 1) % 3, l = (j + 2) % 3;
            perPlace[j].addMoment(k, -share.force[l]);
            perPlace[j].addMoment(l, share.force[k]);
        }
        const Vector3<Wrench> perPatch =
            carry(perPlace, column, triangle, polygon.lines[polygon.previous(i)], polygon.lines[i]);
        const Vec3 fromOrigin = x - motion.position;
        sum.position += perPatch;
        for (unsigned k = 0; k < 3; ++k)
            sum.rotation[k] += perPatch * dot(inverseRows[k], fromOrigin);
    }

    /// (1) to (3), transposed: from what depends on the corner's place to what depends on u. What is
    /// parallel up to rounding doesn't meet anywhere; such a corner goes with the patch.
    static Vector3<Wrench> carry(const Vector3<Wrench>& perPlace, const Face& column,
                                 const PlacedTriangle& triangle, unsigned before, unsigned after) {
        const unsigned patchEdge = Polygon::PatchEdge;
        if (before >= patchEdge && after >= patchEdge)
            return perPlace;
        if (before >= patchEdge || after >= patchEdge) {
            const unsigned start = std::max(before, after) - patchEdge;
            const Vec3 along = triangle[(start + 1) % 3] - triangle[start];
            const Vec3& normal = column.planes[std::min(before, after)].normal;
            const double slope = dot(normal, along);
            return isRounding(slope, along, normal)
                       ? perPlace
                       : perPlace - normal * (dot(perPlace, along) * (1 / slope));
        }
        const Vec3 line = cross(column.planes[before].normal, column.planes[after].normal);
        const Vec3 normal = cross(triangle[1] - triangle[0], triangle[2] - triangle[0]);
        const double slope = dot(normal, line);
        return isRounding(slope, line, normal) ? perPlace : normal * (dot(perPlace, line) * (1 / slope));
    }

    /// Whether the product a . b is 0 but for rounding.
    static bool isRounding(double product, const Vec3& a, const Vec3& b) {
        constexpr double tolerance = 1e-12;
        return product * product <= tolerance * tolerance * dot(a, a) * dot(b, b);
    }
};

} // namespace velmora::contact
