#pragma once

#include "velmora/model/MBS_BlockVocabulary.h"

#include <memory>
#include <span>

namespace velmora {

class IO_DataModelBlock;
class MBS_Force;
class MBS_Model;
class MBS_ModelLookUp;

/// One type of applied force: its keyword, what its block may hold, and how it is made.
struct MBS_ForceType {
    const char* type;
    MBS_TypeStatus status;
    std::span<const MBS_KeyInfo> keys;
    /// Null for a type that makes nothing.
    std::unique_ptr<MBS_Force> (*create)(IO_DataModelBlock*, MBS_Model*, const MBS_ModelLookUp&);
};

/// All types of applied force.
std::span<const MBS_ForceType> MBS_forceTypes();

} // namespace velmora
