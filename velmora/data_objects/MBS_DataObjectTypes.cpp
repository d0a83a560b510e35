#include "velmora/data_objects/MBS_DataObjectTypes.h"

#include "velmora/data_objects/MBS_Spline_1D.h"
#include "velmora/data_objects/MBS_StepFunction.h"
#include "velmora/io/IO_DataModelBlock.h"

namespace velmora {

namespace {

constexpr MBS_KeyInfo parameterKeys[] = {
    {"active", IO_ValueCode::Bool, false},
    {"InitialValue", IO_ValueCode::Double},
};

constexpr MBS_KeyInfo stepKeys[] = {
    {"active", IO_ValueCode::Bool, false},  {"Begin", IO_ValueCode::Double},
    {"InitialValue", IO_ValueCode::Double}, {"End", IO_ValueCode::Double},
    {"FinalValue", IO_ValueCode::Double},   {"Mode", IO_ValueCode::String, false},
};

constexpr MBS_KeyInfo splineKeys[] = {
    {"active", IO_ValueCode::Bool, false},
    {"InterpolationType", IO_ValueCode::String, false},
    {"NumDataPts", IO_ValueCode::Unsigned, false},
    {"XData", IO_ValueCode::DoubleArray, false},
    {"YData", IO_ValueCode::DoubleArray, false},
    {"PathToSplineData", IO_ValueCode::FilePath, false, MBS_KeyRole::File},
    {"NumberOfHeaderLines", IO_ValueCode::Unsigned, false},
    {"ColumnXData", IO_ValueCode::Unsigned, false},
    {"ColumnYData", IO_ValueCode::Unsigned, false},
};

template <class Object>
std::unique_ptr<MBS_DataObject> make(IO_DataModelBlock* block, MBS_Model* model) {
    return std::make_unique<Object>(block, model);
}

constexpr MBS_DataObjectType types[] = {
    {"Parameter", MBS_TypeStatus::Available, parameterKeys, make<MBS_Parameter>},
    {"Spline_1D", MBS_TypeStatus::Available, splineKeys, make<MBS_Spline_1D>},
    {"StepFunction", MBS_TypeStatus::Available, stepKeys, make<MBS_StepFunction>},
};

} // namespace

std::span<const MBS_DataObjectType> MBS_dataObjectTypes() {
    return types;
}

} // namespace velmora
