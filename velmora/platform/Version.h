#pragma once

#include "velmora/platform/Export.h"

namespace velmora {

/// Version of the kernel, for example 0.1.0.
VELMORA_EXPORT const char* getVersionText();
/// Date of the commit that the kernel was built from, yyyy-mm-dd.
VELMORA_EXPORT const char* getBuildDate();
/// Seven hexadecimal digits of that commit; 0000000 for a build outside a repository.
VELMORA_EXPORT const char* getBuildId();

} // namespace velmora
