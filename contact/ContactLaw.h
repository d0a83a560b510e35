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

/// A traction with its derivatives. Columns of the matrices belong to the variable's components.
struct TractionSlopes {
    Vec3 value{}, depth{};
    Mat3 normal{}, velocity{};
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
        if (transition == DampingTransition::None || depth >= transitionDepth)
            return 1;
        const double t = depth * (1 / transitionDepth);
        return transition == DampingTransition::Linear ? t : t * t * (3.0 - 2.0 * t);
    }
    double dampingShareSlope(double depth) const {
        if (transition == DampingTransition::None || depth >= transitionDepth)
            return 0;
        const double t = depth * (1 / transitionDepth);
        return (transition == DampingTransition::Linear ? 1.0 : 6.0 * t * (1.0 - t)) / transitionDepth;
    }

    /// Traction on the body of the columns, per area of the patch.
    ///
    /// depth: of the point below the foot of its column; normal: of the patch, outwards; facing:
    /// cross-section of the column per area of the patch, 0 where the patch looks away; velocity: of the
    /// columns' body relative to the patch's. Damping and friction act per cross-section, so that walls along
    /// the columns and back sides have none; the pressure never pulls.
    ///
    ///     p = k depth + facing c(s) share(depth) s,  s = -velocity . normal   at least 0
    ///     traction = p normal - mu facing p v / sqrt(v . v + vr^2),  v the tangential part of the velocity
    Vec3 traction(double depth, const Vec3& normal, double facing, const Vec3& velocity) const {
        const double approach = -dot(velocity, normal);
        const double damping = approach > 0 ? compression : expansion;
        double pressure = stiffness * depth;
        if (damping > 0)
            pressure += facing * dampingShare(depth) * approach * damping;
        if (pressure <= 0)
            return {};
        Vec3 result = normal * pressure;
        if (friction > 0) {
            const Vec3 sliding = velocity + normal * approach;
            result += sliding * (facing * pressure * (-friction * inverseSpeed(sliding)));
        }
        return result;
    }

    /// The same with derivatives; facingSlope is the derivative of facing with respect to the normal. With
    /// e = normal - mu facing v / u, the traction per pressure, and u the root,
    ///
    ///     d traction = e dp + p dnormal - mu p v dfacing / u - mu facing p (dv - v (v . dv) / u^2) / u
    ///     dv = dvelocity + normal ds + s dnormal,  ds = -(normal . dvelocity + velocity . dnormal)
    TractionSlopes tractionSlopes(double depth, const Vec3& normal, double facing, const Vec3& facingSlope,
                                  const Vec3& velocity) const {
        const double approach = -dot(velocity, normal);
        const double damping = approach > 0 ? compression : expansion;
        const double share = dampingShare(depth);
        const double pressure = stiffness * depth + facing * share * approach * damping;
        if (pressure <= 0)
            return {};
        const Vec3 sliding = velocity + normal * approach;
        const double inverse = friction > 0 ? inverseSpeed(sliding) : 0.0, grip = -friction * inverse;
        const double drag = facing * pressure * grip;
        const Vec3 alongSliding = sliding * (-drag * inverse * inverse);
        const Vec3 perPressure = normal + sliding * (facing * grip);
        const Vec3 perApproach =
            perPressure * (facing * damping * share) + normal * drag + alongSliding * dot(sliding, normal);
        const Vec3 perFacing = perPressure * (damping * share * approach) + sliding * (pressure * grip);

        TractionSlopes slopes;
        slopes.value = normal * pressure + sliding * drag;
        slopes.depth = perPressure * (stiffness + facing * damping * dampingShareSlope(depth) * approach);
        for (unsigned j = 0; j < 3; ++j) {
            Vec3 bySliding = alongSliding * sliding[j];
            bySliding[j] += drag;
            slopes.velocity[j] = bySliding - perApproach * normal[j];
            slopes.normal[j] = bySliding * approach - perApproach * velocity[j] + perFacing * facingSlope[j];
            slopes.normal[j][j] += pressure;
        }
        return slopes;
    }

  private:
    /// 1 / sqrt(v . v + vr^2)
    double inverseSpeed(const Vec3& sliding) const {
        return 1 / std::sqrt(dot(sliding, sliding) + regularizationVelocity * regularizationVelocity);
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
