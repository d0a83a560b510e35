#pragma once

#include "contact/Vector3.h"

namespace velmora::contact {

/// How damping sets in with the depth x below the surface, as a share of its full value; D is the depth of
/// transition and t = min(x / D, 1).
enum class DampingTransition {
    None = 0,   ///< 1 at once
    Linear = 1, ///< t
    Smooth = 2, ///< t^2 (3 - 2 t), without a kink
};

/// Which surfaces carry columns.
enum class ColumnTask {
    Both = 0,     ///< both; forces are the mean of those of 1 and 2
    Surface1 = 1, ///< surface 1, into which surface 2 presses
    Surface2 = 2, ///< surface 2, into which surface 1 presses
};

/// What the pressure between two surfaces depends on.
struct ContactLaw {
    double stiffness = 0;                  ///< pressure per depth
    double compression = 0, expansion = 0; ///< damping pressure per speed of approach, or of departure
    DampingTransition transition = DampingTransition::None;
    double transitionDepth = 0;
    double friction = 0;
    double regularizationVelocity = 0;

    double dampingShare(double depth) const {
        if (isDampingFull(depth))
            return 1;
        const double t = depth / transitionDepth;
        return transition == DampingTransition::Linear ? t : t * t * (3 - 2 * t);
    }
    /// d(share) / d(depth)
    double dampingShareSlope(double depth) const {
        if (isDampingFull(depth))
            return 0;
        const double t = depth / transitionDepth;
        return (transition == DampingTransition::Linear ? 1 : 6 * t * (1 - t)) / transitionDepth;
    }

    /// Traction on the body of the columns, per area of the patch.
    ///
    /// depth: of the point below the foot of its column; normal: of the patch, outwards; facing:
    /// cross-section of the column per area of the patch, 0 where the patch looks away; velocity: of the
    /// columns' body relative to the patch's. Damping and friction act per cross-section, so that walls along
    /// the columns and back sides have none; the pressure never pulls.
    ///
    ///     p = k depth + facing c(s) share(depth) s,  s = -velocity . normal   at least 0
    ///     traction = p normal - g v,  g = mu facing p / sqrt(v . v + vr^2),  v = velocity + normal s
    Vec3 traction(double depth, const Vec3& normal, double facing, const Vec3& velocity) const {
        return evaluate(depth, normal, facing, velocity).traction;
    }

    /// The traction with its derivatives. Matrices have a column per component of what they derive by.
    struct Tangent {
        Vec3 traction, byDepth, byFacing;
        Mat3 byNormal, byVelocity;
    };
    Tangent tangent(double depth, const Vec3& normal, double facing, const Vec3& velocity) const {
        const Terms at = evaluate(depth, normal, facing, velocity);
        if (!(at.pressure > 0))
            return {};
        const double share = at.share, s = at.approach;
        const double pByDepth = stiffness + at.damping * facing * dampingShareSlope(depth) * s;
        const double pByFacing = at.damping * share * s, pByApproach = at.damping * share * facing;
        // s = -velocity . normal
        Tangent t{at.traction, normal * pByDepth, normal * pByFacing,
                  diagonal(at.pressure) + outer(normal, velocity * -pByApproach),
                  outer(normal, normal * -pByApproach)};
        if (!(friction > 0))
            return t;
        // v = velocity + normal s; dg = g (d facing / facing + dp / p) - g v . dv / (v . v + vr^2)
        const Vec3& v = at.sliding;
        const double g = at.drag, gByPressure = friction * facing / at.speed;
        const double along = dot(v, normal), bend = g / (at.speed * at.speed);
        const Mat3 vByVelocity = diagonal(1) + outer(normal, normal * -1.0);
        const Mat3 vByNormal = diagonal(s) + outer(normal, velocity * -1.0);
        const Vec3 gByVelocity = normal * (-pByApproach * gByPressure) + (v - normal * along) * -bend;
        const Vec3 gByNormal = velocity * (-pByApproach * gByPressure) + (v * s - velocity * along) * -bend;
        t.byDepth += v * (-pByDepth * gByPressure);
        t.byFacing += v * -(friction * at.pressure / at.speed + pByFacing * gByPressure);
        t.byNormal += outer(v, gByNormal * -1.0) + vByNormal * -g;
        t.byVelocity += outer(v, gByVelocity * -1.0) + vByVelocity * -g;
        return t;
    }

  private:
    struct Terms {
        Vec3 traction{}, sliding{};
        double approach = 0, damping = 0, share = 1, pressure = 0;
        double speed = 1, drag = 0; ///< sqrt(v . v + vr^2), g
    };

    bool isDampingFull(double depth) const {
        return transition == DampingTransition::None || depth >= transitionDepth;
    }
    Terms evaluate(double depth, const Vec3& normal, double facing, const Vec3& velocity) const {
        Terms t;
        t.approach = -dot(velocity, normal);
        t.damping = t.approach > 0 ? compression : expansion;
        t.pressure = stiffness * depth;
        if (t.damping > 0) {
            t.share = dampingShare(depth);
            t.pressure += facing * t.share * t.approach * t.damping;
        }
        if (t.pressure <= 0)
            return t;
        t.traction = normal * t.pressure;
        if (friction > 0) {
            t.sliding = velocity + normal * t.approach;
            t.speed = std::sqrt(dot(t.sliding, t.sliding) + regularizationVelocity * regularizationVelocity);
            t.drag = friction * facing * t.pressure / t.speed;
            t.traction += t.sliding * -t.drag;
        }
        return t;
    }
};

/// Modulus of a thin elastic layer bonded to a rigid body, pressure per compression, for Young's modulus E,
/// Poisson's ratio nu and thickness h: (1 - nu) E / ((1 + nu)(1 - 2 nu) h). K. L. Johnson, "Contact
/// Mechanics", section 5.8; Y. Bei, B. J. Fregly, "Multibody dynamic simulation of knee contact mechanics",
/// 2004.
inline double layerStiffness(double youngsModulus, double poissonsRatio, double thickness) {
    return (1 - poissonsRatio) * youngsModulus / ((1 + poissonsRatio) * (1 - 2 * poissonsRatio) * thickness);
}

/// Both layers carry the same pressure and share the compression.
inline double inSeries(double stiffness1, double stiffness2) {
    return 1 / (1 / stiffness1 + 1 / stiffness2);
}

} // namespace velmora::contact
