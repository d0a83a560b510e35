#pragma once

#include "contact/ColumnIntegral.h"

/// \file
/// Derivatives of what ForceSum adds up with respect to the motion of the patches, polygon by polygon
/// in closed form. R c + t is the place of the point c of the patches' body.
///
/// (1) Integral over a triangle x0, x1, x2 by its points y and the area s per point, with the traction T:
///     dF = s dT + T ds,  dM = dy x F + y x dF,  ds = ((x1 - x0) x (x2 - x0)) . dn / 6 + sum of ds/dx . dx
/// (2) A corner stays a point c of its patch but for what keeps it on the planes that it is cut at:
///     dx = P (dR c + dt)
///     P = 1                      for a corner of the patch
///     P = 1 - d N' / (d . N)     on an edge of the direction d, cut at the plane with the normal N
///     P = L m' / (m . L)         on two planes with the normals N1, N2, L = N1 x N2, m along the patch's
///     normal

namespace velmora::contact {

/// A corner that remembers how it came about.
struct TracedCorner {
    static constexpr unsigned none = Face::NumPlanes;

    Vec3 place;    ///< frame of the columns
    Vec3 material; ///< frame of the patches
    /// Plane on which the edge that begins here lies; none for an edge of the patch.
    unsigned edge = none;
    std::array<unsigned, 2> planes{none, none}; ///< on which the corner lies; the second first
    Vec3 direction{};                           ///< of the edge that was cut
};

inline const Vec3& placeOf(const TracedCorner& corner) {
    return corner.place;
}
inline TracedCorner cutEdge(const TracedCorner& a, const TracedCorner& b, double share, unsigned plane,
                            bool isExit) {
    const Vec3 direction = b.place - a.place;
    return {a.place + direction * share,
            a.material + (b.material - a.material) * share,
            isExit ? plane : a.edge,
            {plane, a.edge},
            direction};
}

/// Derivatives of force and torque; a column per component of what they derive by.
struct WrenchDerivative {
    Mat3 force{}, torque{};

    WrenchDerivative& operator+=(const WrenchDerivative& other) {
        force += other.force;
        torque += other.torque;
        return *this;
    }
};
inline WrenchDerivative operator*(const WrenchDerivative& a, double s) {
    return {a.force * s, a.torque * s};
}
/// a x y'
inline WrenchDerivative timesOuter(const WrenchDerivative& a, const Vec3& x, const Vec3& y) {
    return {outer(a.force * x, y), outer(a.torque * x, y)};
}

/// Derivatives by the numbers of a RelativeMotion.
struct MotionDerivatives {
    std::array<WrenchDerivative, 3> rotation; ///< by each column
    WrenchDerivative position, velocity, angular;
};

/// Adds up forces and their derivatives.
class DerivativeSum : public ForceSum {
  public:
    using ForceSum::ForceSum;

    /// A patch within a column. Where it came from is asked only if there is any of it.
    void add(const Face& column, const Face& patch, const Cuts& cuts, const std::array<Vec3, 3>& triangle) {
        if (patchWithin(column, cuts, triangle).count == 0)
            return;
        const Polygon<TracedCorner> polygon =
            patchWithin(column, cuts,
                        std::array<TracedCorner, 3>{TracedCorner{triangle[0], patch.corners[0]},
                                                    TracedCorner{triangle[1], patch.corners[1]},
                                                    TracedCorner{triangle[2], patch.corners[2]}});
        const Vec3 normal = motion.rotation * patch.normal();
        std::array<WrenchDerivative, 9> byCorner{};
        WrenchDerivative byNormal;
        for (unsigned i = 2; i < polygon.count; ++i)
            addTriangle(column, normal, polygon, {0, i - 1, i}, byCorner, byNormal);
        const Vec3 across = cross(triangle[1] - triangle[0], triangle[2] - triangle[0]);
        for (unsigned i = 0; i < polygon.count; ++i)
            addByPlace(constrain(byCorner[i], column, polygon.corners[i], across),
                       polygon.corners[i].material);
        for (unsigned j = 0; j < 3; ++j)
            derivatives.rotation[j] += byNormal * patch.normal()[j];
    }

    MotionDerivatives derivatives{};

  private:
    /// (1)
    void addTriangle(const Face& column, const Vec3& normal, const Polygon<TracedCorner>& polygon,
                     const std::array<unsigned, 3>& numbers, std::array<WrenchDerivative, 9>& byCorner,
                     WrenchDerivative& byNormal) {
        std::array<Vec3, 3> x;
        for (unsigned i = 0; i < 3; ++i)
            x[i] = polygon.corners[numbers[i]].place;
        const TriangleRule rule(x, normal);
        const Vec3 a = x[1] - x[0], b = x[2] - x[0];
        WrenchDerivative byMiddle;
        Vec3 traction{}, moment{};
        for (unsigned i = 0; i < 3; ++i) {
            const Vec3& y = rule.points[i];
            const PatchPoint point(column, motion, normal, y);
            const ContactLaw::Tangent t = law.tangent(point.depth, normal, point.facing, point.velocity);
            addForce(y, t.traction, rule.area, point.depth);
            const WrenchDerivative byPoint = addPoint(column, y, t, rule.area, point.facing > 0, byNormal);
            byCorner[numbers[i]] += byPoint * 0.5;
            byMiddle += byPoint * (1.0 / 6);
            traction += t.traction;
            moment += cross(y, t.traction);
        }
        const auto byArea = [&](const Vec3& slope) {
            return WrenchDerivative{outer(traction, slope), outer(moment, slope)};
        };
        const Vec3 slope1 = cross(b, normal) * (0.5 / 3), slope2 = cross(normal, a) * (0.5 / 3);
        const std::array<Vec3, 3> slopes{(slope1 + slope2) * -1.0, slope1, slope2};
        for (unsigned i = 0; i < 3; ++i) {
            byCorner[numbers[i]] += byMiddle;
            byCorner[numbers[i]] += byArea(slopes[i]);
        }
        byNormal += byArea(cross(a, b) * (0.5 / 3));
    }

    /// Derivatives by the place of the point, for an area that stays; adds those by velocities and normal.
    WrenchDerivative addPoint(const Face& column, const Vec3& y, const ContactLaw::Tangent& t, double area,
                              bool isFacing, WrenchDerivative& byNormal) {
        const auto withMoment = [&](const Mat3& force) {
            return WrenchDerivative{force, skewTimes(y, force)};
        };
        const Mat3 byVelocity = t.byVelocity * area;
        Mat3 normalPart = t.byNormal * area; // facing = -normal . column's normal
        if (isFacing)
            normalPart += outer(t.byFacing, column.normal() * -area);
        byNormal += withMoment(normalPart);
        derivatives.velocity += withMoment(byVelocity);
        derivatives.angular += withMoment(timesSkew(byVelocity, y * -1.0));
        // depth = offset - y . column's normal
        WrenchDerivative byPlace =
            withMoment(outer(t.byDepth, column.normal() * -area) + timesSkew(byVelocity, motion.angular));
        byPlace.torque += skew(t.traction * -area);
        return byPlace;
    }

    /// (2): P from the right.
    static WrenchDerivative constrain(WrenchDerivative byCorner, const Face& column,
                                      const TracedCorner& corner, const Vec3& across) {
        const auto [plane, other] = corner.planes;
        if (plane == TracedCorner::none)
            return byCorner;
        const Vec3& normal = column.planes[plane].normal;
        if (other == TracedCorner::none) {
            const Vec3& d = corner.direction;
            return byCorner += timesOuter(byCorner, d, normal * -inverse(dot(d, normal)));
        }
        const Vec3 line = cross(column.planes[other].normal, normal);
        return timesOuter(byCorner, line, across * inverse(dot(across, line)));
    }

    /// 0 for 0: such a corner has come by rounding, and its polygon is nothing.
    static double inverse(double x) { return x == 0 ? 0 : 1 / x; }

    void addByPlace(const WrenchDerivative& byPlace, const Vec3& material) {
        derivatives.position += byPlace;
        for (unsigned j = 0; j < 3; ++j)
            derivatives.rotation[j] += byPlace * material[j];
    }
};

} // namespace velmora::contact
