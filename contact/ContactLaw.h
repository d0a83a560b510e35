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

    template <class T>
    T dampingShare(const T& depth) const {
        if (transition == DampingTransition::None || valueOf(depth) >= transitionDepth)
            return T(1.0);
        const T t = depth * (1 / transitionDepth);
        return transition == DampingTransition::Linear ? t : t * t * (3.0 - 2.0 * t);
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
    template <class T>
    Vector3<T> traction(const T& depth, const Vector3<T>& normal, const T& facing,
                        const Vector3<T>& velocity) const {
        const T approach = -dot(velocity, normal);
        const double damping = valueOf(approach) > 0 ? compression : expansion;
        T pressure = stiffness * depth;
        if (damping > 0)
            pressure += facing * dampingShare(depth) * approach * damping;
        if (valueOf(pressure) <= 0)
            return {};
        Vector3<T> result = normal * pressure;
        if (friction > 0) {
            const Vector3<T> sliding = velocity + normal * approach;
            const T speed = sqrt(dot(sliding, sliding) + regularizationVelocity * regularizationVelocity);
            result += sliding * (facing * pressure * -friction / speed);
        }
        return result;
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
