#pragma once

#include "driver/HHTSystem.h"

namespace velmora::driver {

/// Root mean square of how far the points of a body move, in m, by a change of its place and its modes; or of
/// their speed, in m/s, by rates.
double getPointMovement(const HHTSystem& system, unsigned body, const double* change);

/// Angle in radians between two attitudes, by their Euler parameters.
double getAngleBetween(const double* eulerParameters, const double* others);

/// Largest movement of a body by a change of all coordinates: of its points in units of `lengthUnit` (m), or
/// of its attitude in radians.
double measureMovement(const HHTSystem& system, const double* change, double lengthUnit);

/// How well forces are in balance.
struct ForceMeasure {
    double unbalanced = 0.0; ///< N; largest force that nothing balances
    double largest = 0.0;    ///< N; largest force on a body
};

/// The forces of the last `evaluate`. Torques count over the radius of gyration of the body, or
/// `typicalLength` if that is 0, modal forces over the square root of the share of the modal mass in the
/// mass.
ForceMeasure measureForces(const HHTSystem& system, double typicalLength);

} // namespace velmora::driver
