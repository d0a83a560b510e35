#pragma once

#include "driver/HHTSystem.h"

namespace velmora::driver {

/// Movement away from an equilibrium that grows by itself.
struct Instability {
    bool isFound = false;
    double growth = 0.0; ///< 1/s^2; a movement x without damping grows as x'' = growth * x
};

/// Looks for a movement along which the stiffness is negative, at a state at rest whose forces are in balance
/// and which is that of the last `evaluate`; leaves it in `direction`, of norm 1 in the metric of the mass
/// matrix. `scale`, in 1/s^2, is a growth to look at first; rates up to 1e4 times as large are found.
Instability findInstability(HHTSystem& system, const HHTState& state, double scale,
                            MBS_ModelPhysicalDofVector& direction);

} // namespace velmora::driver
