#pragma once

#include "velmora/model/MBS_BlockVocabulary.h"

#include <memory>
#include <span>

namespace velmora {

class IO_DataModelBlock;
class MBS_ExtConstraint;
class MBS_Model;
class MBS_ModelLookUp;

/// One type of constraint: its keyword, what its block may hold, and how it is made.
struct MBS_ConstraintType {
    const char* type;
    MBS_TypeStatus status;
    std::span<const MBS_KeyInfo> keys;
    /// Null for a type that isn't in this build, and for the one that is made of fixes, `MBS_genericFixes`.
    std::unique_ptr<MBS_ExtConstraint> (*create)(IO_DataModelBlock*, MBS_Model*, const MBS_ModelLookUp&,
                                                 unsigned index, bool isToGround);
};

/// One flag of the type "Generic": the constraint of one equation that it stands for.
struct MBS_GenericFix {
    const char* key;
    unsigned axis; ///< 0, 1, 2 for the joint's x, y, z
    std::unique_ptr<MBS_ExtConstraint> (*create)(IO_DataModelBlock*, MBS_Model*, const MBS_ModelLookUp&,
                                                 unsigned index, unsigned axis, bool isToGround);
};

/// All types of constraint.
std::span<const MBS_ConstraintType> MBS_constraintTypes();
/// All flags of the type "Generic", in the order in which their constraints are made.
std::span<const MBS_GenericFix> MBS_genericFixes();

} // namespace velmora
