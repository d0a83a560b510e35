#pragma once

#include "velmora/model/MBS_BlockVocabulary.h"

#include <span>
#include <string_view>

namespace velmora {

/// A measure by what its block says: with ground or a second body, mode and coordinate. `mode` is empty where
/// the type reads none.
struct MBS_MeasureChoice {
    std::string_view type;
    bool isToGround;
    std::string_view mode;
    std::string_view coordinate;
};

/// Every combination that makes a measure.
std::span<const MBS_MeasureChoice> MBS_measureChoices();

/// Block types whose classes aren't in this build: known by name, and refused.
std::span<const MBS_BlockTypeInfo> MBS_announcedTypes();

} // namespace velmora
