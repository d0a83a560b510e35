#include "velmora/bodies/MBS_BodyTypes.h"

#include "velmora/bodies/MBS_FlexBody_Full.h"
#include "velmora/bodies/MBS_RigidBody_EulerP_PAI.h"
#include "velmora/io/IO_DataModelBlock.h"

namespace velmora {

namespace {

constexpr MBS_KeyInfo rigidBodyKeys[] = {
    {"active", IO_ValueCode::Bool, false},
    {"BodyName", IO_ValueCode::String, false},
    {"RegardVelocityInertiaForcesInsideJacobian", IO_ValueCode::Bool, false},
    {"Mass", IO_ValueCode::Double, true, MBS_KeyRole::Mass},
    {"Inertia", IO_ValueCode::DoubleVector3, true, MBS_KeyRole::Inertia},
    {"LocationCenterMass", IO_ValueCode::DoubleVector3},
    {"OrientationPAI", IO_ValueCode::DoubleMatrix3x3, true, MBS_KeyRole::Orientation},
    {"InitialVelocityVector", IO_ValueCode::DoubleVector3},
    {"InitialOmegaVector", IO_ValueCode::DoubleVector3},
};

constexpr MBS_KeyInfo flexibleBodyKeys[] = {
    {"active", IO_ValueCode::Bool, false},
    {"BodyName", IO_ValueCode::String, false},
    {"RegardVelocityInertiaForcesInsideJacobian", IO_ValueCode::Bool, false},
    {"Is_Itf_active", IO_ValueCode::Bool},
    {"Is_QuadraticTermOF_Itt_active", IO_ValueCode::Bool},
    {"Path2MtxFile", IO_ValueCode::String, true, MBS_KeyRole::File},
    {"LocationCenterMass", IO_ValueCode::DoubleVector3},
    {"OrientationPAI", IO_ValueCode::DoubleMatrix3x3, true, MBS_KeyRole::Orientation},
    {"InitialVelocityVector", IO_ValueCode::DoubleVector3},
    {"InitialOmegaVector", IO_ValueCode::DoubleVector3},
    {"GlobalDampingFactor", IO_ValueCode::String},
};

constexpr MBS_BodyType types[] = {
    {"Rigid_EulerParameter_PAI", MBS_TypeStatus::Available, rigidBodyKeys,
     [](IO_DataModelBlock* block, MBS_Model* model, unsigned index) -> std::unique_ptr<MBS_Body> {
         return std::make_unique<MBS_RigidBody_EulerP_PAI>(block, model, index);
     }},
    {"MBS_FlexBody_Full", MBS_TypeStatus::Available, flexibleBodyKeys,
     [](IO_DataModelBlock* block, MBS_Model* model, unsigned index) -> std::unique_ptr<MBS_Body> {
         return std::make_unique<MBS_FlexBody_Full>(block, model, index);
     }},
};

} // namespace

std::span<const MBS_BodyType> MBS_bodyTypes() {
    return types;
}

} // namespace velmora
