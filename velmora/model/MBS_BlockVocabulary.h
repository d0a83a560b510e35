#pragma once

#include "velmora/platform/Export.h"

#include <span>
#include <vector>

namespace velmora {

/// What the value of a key stands for, beyond its type; tools check input by it before the kernel is asked.
enum class MBS_KeyRole {
    Plain,        ///< a number, flag or text with no further rule
    UnitVector,   ///< a direction: three numbers of norm 1
    Orientation,  ///< 3x3, column after column: axes of a right-handed frame
    Mass,         ///< a mass, not negative
    Inertia,      ///< three principal moments of inertia, which a body of positive mass must be able to have
    BodyID,       ///< the UUID of a body
    BodyIDs,      ///< two body UUIDs, "0" for the ground
    MeasureLabel, ///< label of a measure
    DataObjectLabel, ///< label of a data object
    Expression,      ///< text of the expression language
    File             ///< a file name
};

/// One key of a block type. `valueCode` is an IO_ValueCode.
struct MBS_KeyInfo {
    const char* name;
    unsigned valueCode;
    bool isRequired = true;
    MBS_KeyRole role = MBS_KeyRole::Plain;
    bool isNumbered = false; ///< `name` is the beginning of keys that end with 0, 1, ...
};

/// What building a block of a type comes to.
enum class MBS_TypeStatus {
    Available,      ///< the block makes an object
    CreatesNothing, ///< the block is accepted and makes none
    NotInThisBuild  ///< the type is known, and refused
};

/// One block type: what a block of this kind and type may hold. `keys` is empty for a type that isn't
/// available.
struct MBS_BlockTypeInfo {
    const char* kind;
    const char* type;
    MBS_TypeStatus status;
    std::span<const MBS_KeyInfo> keys;
};

/// All block types that the kernel knows by name, family after family.
VELMORA_EXPORT std::vector<MBS_BlockTypeInfo> MBS_getBlockVocabulary();

} // namespace velmora
