#pragma once

#include "velmora/model/MBS_BlockVocabulary.h"

#include <span>

namespace velmora {

/// Block types whose classes aren't in this build: known by name, and refused.
std::span<const MBS_BlockTypeInfo> MBS_announcedTypes();

} // namespace velmora
