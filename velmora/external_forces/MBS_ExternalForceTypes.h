#pragma once

#include "velmora/forces/MBS_ForceTypes.h"

namespace velmora {

/// All types of force that come from outside libraries.
std::span<const MBS_ForceType> MBS_externalForceTypes();

} // namespace velmora
