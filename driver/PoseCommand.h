#pragma once

#include "driver/Options.h"

namespace velmora::driver {

/// `velmora pose`: drags points of bodies to the targets of actors, writes the model in its new pose and the
/// path of the points, and tells how near they came.
int findPose(const Options& options);

} // namespace velmora::driver
