#pragma once

#include "velmora/model/MBS_BlockVocabulary.h"

#include <memory>
#include <span>
#include <string_view>

namespace velmora {

class IO_DataModelBlock;
class MBS_Measure;
class MBS_Model;
class MBS_ModelLookUp;

/// One type of measure: its keyword and what its block may hold.
struct MBS_MeasureType {
    const char* type;
    MBS_TypeStatus status;
    std::span<const MBS_KeyInfo> keys;
};

/// A measure by what its block says: with ground or a second body, "MeasureMode" and "MeasureCoordinate",
/// which are empty where the type reads none; and how it is made.
struct MBS_MeasureChoice {
    std::string_view type;
    bool isToGround;
    std::string_view mode;
    std::string_view coordinate;
    std::unique_ptr<MBS_Measure> (*create)(IO_DataModelBlock*, MBS_Model*, const MBS_ModelLookUp&);
};

/// All types of measure.
std::span<const MBS_MeasureType> MBS_measureTypes();
/// Every combination that makes a measure.
std::span<const MBS_MeasureChoice> MBS_measureChoices();

} // namespace velmora
