#include "velmora/model/internal/MBS_AnnouncedTypes.h"

namespace velmora {

namespace {

constexpr MBS_MeasureChoice measureChoices[] = {
    {"Translational", true, "disp", "X"},    {"Translational", true, "disp", "Y"},
    {"Translational", true, "disp", "Z"},    {"Translational", true, "disp", "XYZ"},
    {"Translational", true, "vel", "X"},     {"Translational", true, "vel", "Y"},
    {"Translational", true, "vel", "Z"},     {"Translational", true, "vel", "XYZ"},
    {"Translational", true, "acc", "X"},     {"Translational", true, "acc", "Y"},
    {"Translational", true, "acc", "Z"},     {"Translational", false, "disp", "X"},
    {"Translational", false, "disp", "Y"},   {"Translational", false, "disp", "Z"},
    {"Translational", false, "disp", "XYZ"}, {"Translational", false, "vel", "X"},
    {"Translational", false, "vel", "Y"},    {"Translational", false, "vel", "Z"},
    {"Translational", false, "vel", "XYZ"},  {"Rotational", true, "", "Angle"},
    {"Rotational", true, "", "AngleVel"},    {"Rotational", true, "", "LocalAngleVel"},
    {"Rotational", false, "", "Angle"},      {"Rotational", false, "", "AngleVel"},
};

constexpr auto pending = MBS_TypeStatus::NotInThisBuild;

constexpr MBS_BlockTypeInfo announcedTypes[] = {
    {"DataObject", "Parameter", pending, {}},
    {"DataObject", "Spline_1D", pending, {}},
    {"DataObject", "StepFunction", pending, {}},
    {"Measure", "Translational", pending, {}},
    {"Measure", "Rotational", pending, {}},
    {"Measure", "FlexTranslational", pending, {}},
    {"Measure", "EP", pending, {}},
    {"Actor", "KinematicActor", pending, {}},
};

} // namespace

std::span<const MBS_MeasureChoice> MBS_measureChoices() {
    return measureChoices;
}

std::span<const MBS_BlockTypeInfo> MBS_announcedTypes() {
    return announcedTypes;
}

} // namespace velmora
