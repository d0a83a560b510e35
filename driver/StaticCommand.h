#pragma once

#include "driver/Options.h"

namespace velmora::driver {

/// `velmora static`: finds a static equilibrium, writes the model at rest there, positions and reactions, and
/// prints them. The exit code of the program.
int findEquilibrium(const Options& options);

} // namespace velmora::driver
