#include "velmora/constraints/MBS_ConstraintTypes.h"

#include "velmora/constraints/MBS_RiBo_FleBo_FixJoint.h"
#include "velmora/constraints/MBS_RiBo_Ground_RotFix.h"
#include "velmora/constraints/MBS_RiBo_Ground_TransFix.h"
#include "velmora/constraints/MBS_RiBo_RiBo_GearJoint.h"
#include "velmora/constraints/MBS_RiBo_RiBo_RotFix.h"
#include "velmora/constraints/MBS_RiBo_RiBo_Time_Motion.h"
#include "velmora/constraints/MBS_RiBo_RiBo_TransFix.h"
#include "velmora/constraints/MBS_RiBo_Time_Motion.h"
#include "velmora/io/IO_DataModelBlock.h"

namespace velmora {

namespace {

constexpr MBS_KeyInfo genericKeys[] = {
    {"active", IO_ValueCode::Bool, false},
    {"BodyIDs", IO_ValueCode::StringPair, true, MBS_KeyRole::BodyIDs},
    {"Location", IO_ValueCode::DoubleVector3, false},
    {"ConstraintOrientation", IO_ValueCode::DoubleMatrix3x3, false, MBS_KeyRole::Orientation},
    {"dxFixed", IO_ValueCode::Bool, false},
    {"axFixed", IO_ValueCode::Bool, false},
    {"dyFixed", IO_ValueCode::Bool, false},
    {"ayFixed", IO_ValueCode::Bool, false},
    {"dzFixed", IO_ValueCode::Bool, false},
    {"azFixed", IO_ValueCode::Bool, false},
};

constexpr MBS_KeyInfo gearKeys[] = {
    {"active", IO_ValueCode::Bool, false},
    {"BodyIDs", IO_ValueCode::StringPair, true, MBS_KeyRole::BodyIDs},
    {"Location", IO_ValueCode::DoubleVector3, false},
    {"ConstraintOrientation", IO_ValueCode::DoubleMatrix3x3, false, MBS_KeyRole::Orientation},
    {"LocationBody1", IO_ValueCode::DoubleVector3},
    {"LocationBody2", IO_ValueCode::DoubleVector3},
    {"VectorBody1", IO_ValueCode::DoubleVector3, true, MBS_KeyRole::UnitVector},
    {"VectorBody2", IO_ValueCode::DoubleVector3, true, MBS_KeyRole::UnitVector},
    {"Multiplier", IO_ValueCode::DoubleVector2},
};

// The second point goes with a second body.
constexpr MBS_KeyInfo motionKeys[] = {
    {"active", IO_ValueCode::Bool, false},
    {"BodyIDs", IO_ValueCode::StringPair, true, MBS_KeyRole::BodyIDs},
    {"Location", IO_ValueCode::DoubleVector3, false},
    {"ConstraintOrientation", IO_ValueCode::DoubleMatrix3x3, false, MBS_KeyRole::Orientation},
    {"PointOfApplication_Body1", IO_ValueCode::DoubleVector3},
    {"PointOfApplication_Body2", IO_ValueCode::DoubleVector3, false},
    {"Measure", IO_ValueCode::String, true, MBS_KeyRole::MeasureLabel},
    {"MotionExpression", IO_ValueCode::String, true, MBS_KeyRole::Expression},
    {"ActivationPeriod", IO_ValueCode::Double, false},
};

constexpr MBS_KeyInfo weldKeys[] = {
    {"active", IO_ValueCode::Bool, false},
    {"BodyIDs", IO_ValueCode::StringPair, true, MBS_KeyRole::BodyIDs},
    {"Location", IO_ValueCode::DoubleVector3},
    {"ConstraintOrientation", IO_ValueCode::DoubleMatrix3x3, false, MBS_KeyRole::Orientation},
    {"InterfaceNode", IO_ValueCode::Unsigned},
};

constexpr MBS_ConstraintType types[] = {
    {"Generic", MBS_TypeStatus::Available, genericKeys, nullptr},
    {"TimeMotion", MBS_TypeStatus::Available, motionKeys,
     [](IO_DataModelBlock* block, MBS_Model* model, const MBS_ModelLookUp& lookUp, unsigned index,
        bool isToGround) -> std::unique_ptr<MBS_ExtConstraint> {
         if (isToGround)
             return std::make_unique<MBS_RiBo_Time_Motion>(block, model, lookUp, index);
         return std::make_unique<MBS_RiBo_RiBo_Time_Motion>(block, model, lookUp, index);
     }},
    {"Gear", MBS_TypeStatus::Available, gearKeys,
     [](IO_DataModelBlock* block, MBS_Model* model, const MBS_ModelLookUp& lookUp, unsigned index,
        bool) -> std::unique_ptr<MBS_ExtConstraint> {
         return std::make_unique<MBS_RiBo_RiBo_GearJoint>(block, model, lookUp, index);
     }},
    {"FixRiBoFleBo", MBS_TypeStatus::Available, weldKeys,
     [](IO_DataModelBlock* block, MBS_Model* model, const MBS_ModelLookUp& lookUp, unsigned index,
        bool) -> std::unique_ptr<MBS_ExtConstraint> {
         return std::make_unique<MBS_RiBo_FleBo_FixJoint>(block, model, lookUp, index);
     }},
};

template <class ToGround, class ToBody>
std::unique_ptr<MBS_ExtConstraint> makeFix(IO_DataModelBlock* block, MBS_Model* model,
                                           const MBS_ModelLookUp& lookUp, unsigned index, unsigned axis,
                                           bool isToGround) {
    if (isToGround)
        return std::make_unique<ToGround>(block, model, lookUp, index, axis);
    return std::make_unique<ToBody>(block, model, lookUp, index, axis);
}

constexpr auto makeTransFix = makeFix<MBS_RiBo_Ground_TransFix, MBS_RiBo_RiBo_TransFix>;
constexpr auto makeRotFix = makeFix<MBS_RiBo_Ground_RotFix, MBS_RiBo_RiBo_RotFix>;

constexpr MBS_GenericFix genericFixes[] = {
    {"dxFixed", 0, makeTransFix}, {"axFixed", 0, makeRotFix},   {"dyFixed", 1, makeTransFix},
    {"ayFixed", 1, makeRotFix},   {"dzFixed", 2, makeTransFix}, {"azFixed", 2, makeRotFix},
};

} // namespace

std::span<const MBS_ConstraintType> MBS_constraintTypes() {
    return types;
}

std::span<const MBS_GenericFix> MBS_genericFixes() {
    return genericFixes;
}

} // namespace velmora
