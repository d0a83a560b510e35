#pragma once

#include "driver/Options.h"

namespace velmora::driver {

/// Tells what a model holds and how well its initial state fulfils the constraints: `velmora check`. Returns
/// an ExitCode.
int checkModel(const Options& options);

} // namespace velmora::driver
