#pragma once

#include "velmora/model/MBS_BlockVocabulary.h"

#include <memory>
#include <span>

namespace velmora {

class IO_DataModelBlock;
class MBS_DataObject;
class MBS_Model;

/// One type of data object: its keyword, what its block may hold, and how it is made.
struct MBS_DataObjectType {
    const char* type;
    MBS_TypeStatus status;
    std::span<const MBS_KeyInfo> keys;
    std::unique_ptr<MBS_DataObject> (*create)(IO_DataModelBlock*, MBS_Model*);
};

/// All types of data object.
std::span<const MBS_DataObjectType> MBS_dataObjectTypes();

} // namespace velmora
