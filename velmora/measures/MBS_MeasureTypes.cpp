#include "velmora/measures/MBS_MeasureTypes.h"

#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/measures/MBS_RefFrameMeasureFleBo_Disp.h"
#include "velmora/measures/MBS_RefFrameMeasureRiBo_Acc.h"
#include "velmora/measures/MBS_RefFrameMeasureRiBo_Angle.h"
#include "velmora/measures/MBS_RefFrameMeasureRiBo_Disp.h"
#include "velmora/measures/MBS_RefFrameMeasureRiBo_EP.h"
#include "velmora/measures/MBS_RefFrameMeasureRiBo_Vel.h"
#include "velmora/measures/MBS_RiBoRiBoMeasure_Diff_Angle.h"
#include "velmora/measures/MBS_RiBoRiBoMeasure_Diff_Global.h"
#include "velmora/measures/MBS_RiBoRiBoMeasure_Diff_x.h"

namespace velmora {

namespace {

constexpr MBS_KeyInfo active = {"active", IO_ValueCode::Bool, false};
constexpr MBS_KeyInfo bodyIDs = {"BodyIDs", IO_ValueCode::StringPair, true, MBS_KeyRole::BodyIDs};
constexpr MBS_KeyInfo coordinateKey = {"MeasureCoordinate", IO_ValueCode::String};
constexpr MBS_KeyInfo offsetFlag = {"UseInitialValueAsOffset", IO_ValueCode::Bool, false};

constexpr MBS_KeyInfo translationalKeys[] = {
    active,
    bodyIDs,
    coordinateKey,
    {"MeasureMode", IO_ValueCode::String},
    {"MeasureLocation_Body1", IO_ValueCode::DoubleVector3},
    {"MeasureLocation_Body2", IO_ValueCode::DoubleVector3, false},
    offsetFlag,
};

// "Component" stands alone, the vectors together.
constexpr MBS_KeyInfo rotationalKeys[] = {
    active,
    bodyIDs,
    coordinateKey,
    {"MeasureVec", IO_ValueCode::DoubleVector3, false, MBS_KeyRole::UnitVector},
    {"MeasurePlaneVec1", IO_ValueCode::DoubleVector3, false, MBS_KeyRole::UnitVector},
    {"MeasurePlaneVec2", IO_ValueCode::DoubleVector3, false, MBS_KeyRole::UnitVector},
    offsetFlag,
    {"Component", IO_ValueCode::Unsigned, false},
};

constexpr MBS_KeyInfo eulerParameterKeys[] = {
    active,
    bodyIDs,
    {"EulerParameterIndex", IO_ValueCode::Unsigned},
    {"IsStateMeasure", IO_ValueCode::Bool},
};

constexpr MBS_KeyInfo flexibleKeys[] = {
    active,
    bodyIDs,
    {"MeasureMode", IO_ValueCode::String},
    coordinateKey,
    {"MeasureLocation_Body1", IO_ValueCode::DoubleVector3},
    {"MeasureLocation_Body2", IO_ValueCode::DoubleVector3},
    offsetFlag,
    {"ModeShapeFile", IO_ValueCode::String, true, MBS_KeyRole::File},
};

constexpr MBS_MeasureType types[] = {
    {"Translational", MBS_TypeStatus::Available, translationalKeys},
    {"Rotational", MBS_TypeStatus::Available, rotationalKeys},
    {"FlexTranslational", MBS_TypeStatus::Available, flexibleKeys},
    {"EP", MBS_TypeStatus::Available, eulerParameterKeys},
};

template <class Measure>
std::unique_ptr<MBS_Measure> make(IO_DataModelBlock* block, MBS_Model* model, const MBS_ModelLookUp& lookUp) {
    return std::make_unique<Measure>(block, model, lookUp);
}

constexpr auto diff_x = make<MBS_RiBoRiBoMeasure_Diff_x>;
constexpr auto vel_x = make<MBS_RiBoRiBoMeasure_Vel_x>;

constexpr MBS_MeasureChoice choices[] = {
    {"Translational", true, "disp", "X", make<MBS_RefFrameMeasureRiBo_XDisp>},
    {"Translational", true, "disp", "Y", make<MBS_RefFrameMeasureRiBo_YDisp>},
    {"Translational", true, "disp", "Z", make<MBS_RefFrameMeasureRiBo_ZDisp>},
    {"Translational", true, "disp", "XYZ", make<MBS_RefFrameMeasureRiBo_XYZDisp>},
    {"Translational", true, "vel", "X", make<MBS_RefFrameMeasureRiBo_XVel>},
    {"Translational", true, "vel", "Y", make<MBS_RefFrameMeasureRiBo_YVel>},
    {"Translational", true, "vel", "Z", make<MBS_RefFrameMeasureRiBo_ZVel>},
    {"Translational", true, "vel", "XYZ", make<MBS_RefFrameMeasureRiBo_XYZVel>},
    {"Translational", true, "acc", "X", make<MBS_RefFrameMeasureRiBo_XAcc>},
    {"Translational", true, "acc", "Y", make<MBS_RefFrameMeasureRiBo_YAcc>},
    {"Translational", true, "acc", "Z", make<MBS_RefFrameMeasureRiBo_ZAcc>},
    {"Translational", false, "disp", "XYZ", make<MBS_RiBoRiBoMeasure_Diff_GlobalDistance>},
    {"Translational", false, "disp", "X", diff_x},
    {"Translational", false, "disp", "Y", diff_x},
    {"Translational", false, "disp", "Z", diff_x},
    {"Translational", false, "vel", "XYZ", make<MBS_RiBoRiBoMeasure_Diff_GlobalVel>},
    {"Translational", false, "vel", "X", vel_x},
    {"Translational", false, "vel", "Y", vel_x},
    {"Translational", false, "vel", "Z", vel_x},
    {"Rotational", true, "", "Angle", make<MBS_RefFrameMeasureRiBo_Angle>},
    {"Rotational", true, "", "AngleVel", make<MBS_RefFrameMeasureRiBo_AngleVel>},
    {"Rotational", true, "", "LocalAngleVel", make<MBS_SingleRiBo_LocalAngleVel>},
    {"Rotational", false, "", "Angle", make<MBS_RiBoRiBoMeasure_Diff_Angle>},
    {"Rotational", false, "", "AngleVel", make<MBS_RiBoRiBoMeasure_Diff_AngleVel>},
    {"FlexTranslational", true, "disp", "", make<MBS_RefFrameMeasureFleBo_Disp>},
    {"EP", true, "", "", make<MBS_RefFrameMeasureRiBo_EP>},
};

} // namespace

std::span<const MBS_MeasureType> MBS_measureTypes() {
    return types;
}

std::span<const MBS_MeasureChoice> MBS_measureChoices() {
    return choices;
}

} // namespace velmora
