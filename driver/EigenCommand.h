#pragma once

#include "driver/Options.h"

namespace velmora::driver {

/// Linearises a model about a state and prints eigenvalues and modes of small motions; the exit code.
int findEigenvalues(const Options& options);

} // namespace velmora::driver
