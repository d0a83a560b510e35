#include "velmora/forces/MBS_ForceTypes.h"

#include "velmora/forces/GenericLoads.h"
#include "velmora/forces/MBS_GravityForce.h"
#include "velmora/io/IO_DataModelBlock.h"

namespace velmora {

namespace {

constexpr MBS_KeyInfo gravityKeys[] = {
    {"active", IO_ValueCode::Bool, false},
    {"GravityAccVector", IO_ValueCode::DoubleVector3},
    {"ActivationTime", IO_ValueCode::Double, false},
};

constexpr MBS_KeyInfo forceKeys[] = {
    {"active", IO_ValueCode::Bool, false},
    {"BodyIDs", IO_ValueCode::StringPair, true, MBS_KeyRole::BodyIDs},
    {"ForceExpression", IO_ValueCode::String, true, MBS_KeyRole::Expression},
    {"PointOfApplication_Body1", IO_ValueCode::DoubleVector3},
    {"PointOfApplication_Body2", IO_ValueCode::DoubleVector3},
    {"ForceDirectionType", IO_ValueCode::String},
    {"ForceDirection", IO_ValueCode::DoubleVector3, false, MBS_KeyRole::UnitVector},
};

constexpr MBS_KeyInfo torqueKeys[] = {
    {"active", IO_ValueCode::Bool, false},
    {"BodyIDs", IO_ValueCode::StringPair, true, MBS_KeyRole::BodyIDs},
    {"TorqueExpression", IO_ValueCode::String, true, MBS_KeyRole::Expression},
    {"Axis", IO_ValueCode::DoubleVector3, true, MBS_KeyRole::UnitVector},
    {"AxisType", IO_ValueCode::String},
};

constexpr MBS_ForceType types[] = {
    {"GenericForce", MBS_TypeStatus::Available, forceKeys, makeGenericForce},
    {"GenericTorque", MBS_TypeStatus::Available, torqueKeys, makeGenericTorque},
    {"Gravity", MBS_TypeStatus::Available, gravityKeys,
     [](IO_DataModelBlock* block, MBS_Model* model, const MBS_ModelLookUp& lookUp)
         -> std::unique_ptr<MBS_Force> { return std::make_unique<MBS_GravityForce>(block, model, lookUp); }},
    {"FlexBodyJointForce", MBS_TypeStatus::CreatesNothing, {}, nullptr},
    {"TireForce", MBS_TypeStatus::CreatesNothing, {}, nullptr},
    {"ModalForceSubroutine", MBS_TypeStatus::CreatesNothing, {}, nullptr},
};

} // namespace

std::span<const MBS_ForceType> MBS_forceTypes() {
    return types;
}

} // namespace velmora
