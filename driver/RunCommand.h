#pragma once

#include "driver/Options.h"

namespace velmora::driver {

/// Simulates a model and writes its results: `velmora run`. Returns an ExitCode.
int runModel(const Options& options);

} // namespace velmora::driver
