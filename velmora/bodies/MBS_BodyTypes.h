#pragma once

#include "velmora/model/MBS_BlockVocabulary.h"

#include <memory>
#include <span>

namespace velmora {

class IO_DataModelBlock;
class MBS_Body;
class MBS_Model;

/// One type of body: its keyword, what its block may hold, and how it is made.
struct MBS_BodyType {
    const char* type;
    MBS_TypeStatus status;
    std::span<const MBS_KeyInfo> keys;
    std::unique_ptr<MBS_Body> (*create)(IO_DataModelBlock*, MBS_Model*,
                                        unsigned bodyIndex); ///< null if not in this build
};

/// All types of body.
std::span<const MBS_BodyType> MBS_bodyTypes();

} // namespace velmora
