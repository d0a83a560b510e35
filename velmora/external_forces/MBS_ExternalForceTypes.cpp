#include "velmora/external_forces/MBS_ExternalForceTypes.h"

#include "velmora/external_forces/MBS_RiBo_RiBo_Contact.h"
#include "velmora/external_forces/MBS_RiBo_RiBo_ExtSub.h"
#include "velmora/external_forces/MBS_SingleRiBo_ExtSub.h"
#include "velmora/io/IO_DataModelBlock.h"

#include <algorithm>

namespace velmora {

namespace {

constexpr MBS_KeyInfo userKeys[] = {
    {"active", IO_ValueCode::Bool, false},
    {"BodyIDs", IO_ValueCode::StringPair, true, MBS_KeyRole::BodyIDs},
    {"ForceDirectionType", IO_ValueCode::String},
    {"Path2Dll", IO_ValueCode::FilePath, true, MBS_KeyRole::File},
    {"Path2Par", IO_ValueCode::FilePath, false, MBS_KeyRole::File},
    {"PointOfApplication_Body1", IO_ValueCode::DoubleVector3},
    {"PointOfApplication_Body2", IO_ValueCode::DoubleVector3, false},
    {"Measure_", IO_ValueCode::String, false, MBS_KeyRole::MeasureLabel, true},
};

constexpr MBS_KeyInfo contactKeys[] = {
    {"active", IO_ValueCode::Bool, false},
    {"BodyIDs", IO_ValueCode::StringPair, true, MBS_KeyRole::BodyIDs},
    {"Path2ContactSurface1", IO_ValueCode::String, true, MBS_KeyRole::File},
    {"Path2ContactSurface2", IO_ValueCode::String, true, MBS_KeyRole::File},
    {"YoungsModulus1", IO_ValueCode::Double},
    {"YoungsModulus2", IO_ValueCode::Double},
    {"PoissonsRatio1", IO_ValueCode::Double},
    {"PoissonsRatio2", IO_ValueCode::Double},
    {"LayerThickness1", IO_ValueCode::Double},
    {"LayerThickness2", IO_ValueCode::Double},
    {"IsNumericJacobiRequired", IO_ValueCode::Bool},
    {"Task", IO_ValueCode::Int},
    {"MaxPenetration", IO_ValueCode::Double},
    {"DampingCompression", IO_ValueCode::Double},
    {"DampingExpansion", IO_ValueCode::Double},
    {"ModeOfDampingTransition", IO_ValueCode::Int},
    {"DepthOfDampingTransition", IO_ValueCode::Double},
    {"SlidingFrictionCoeff", IO_ValueCode::Double},
    {"FrictionRegularizationVelocity", IO_ValueCode::Double},
    {"PositionContactGraphics1", IO_ValueCode::DoubleVector3, false},
    {"OrientationContactGraphics1", IO_ValueCode::DoubleMatrix3x3, false, MBS_KeyRole::Orientation},
    {"PositionContactGraphics2", IO_ValueCode::DoubleVector3, false},
    {"OrientationContactGraphics2", IO_ValueCode::DoubleMatrix3x3, false, MBS_KeyRole::Orientation},
};

using Creator = std::unique_ptr<MBS_Force> (*)(IO_DataModelBlock*, MBS_Model*, const MBS_ModelLookUp&);

template <class Force>
std::unique_ptr<MBS_Force> make(IO_DataModelBlock* block, MBS_Model* model, const MBS_ModelLookUp& lookUp) {
    return std::make_unique<Force>(block, model, lookUp);
}

struct UserForceChoice {
    const char* direction;
    Creator onOneBody, betweenTwo;
};

constexpr UserForceChoice userForces[] = {
    {"BodyFixed", make<MBS_SingleRiBo_ExtSub_BodyFixed>, make<MBS_RiBo_RiBo_ExtSub_BodyFixed>},
    {"SpaceFixed", make<MBS_SingleRiBo_ExtSub_SpaceFixed>, make<MBS_RiBo_RiBo_ExtSub_SpaceFixed>},
};

std::unique_ptr<MBS_Force> makeUserForce(IO_DataModelBlock* block, MBS_Model* model,
                                         const MBS_ModelLookUp& lookUp) {
    auto refused = std::make_unique<MBS_RefusedForce>(block, model);
    if (refused->isErrorOccured())
        return refused;
    const auto refuse = [&](const std::string& reason) {
        refused->refuse(*block, reason);
        return std::move(refused);
    };
    std::vector<std::string> ids;
    std::string direction;
    block->getValue("BodyIDs", &ids);
    block->getValue("ForceDirectionType", &direction, IO_ValueCode::String);
    if (block->isErrorOccured())
        return refuse("\n");
    ids.resize(std::max<std::size_t>(ids.size(), 2));
    if (ids[0] == "0")
        return refuse("ERROR: Check BodyIDs, either Body-Ground or Body-Body Force is valid\n");
    const auto* choice =
        std::ranges::find(userForces, direction, [](const auto& row) { return std::string(row.direction); });
    if (choice == std::end(userForces))
        return refuse("ERROR: ForceDirectionType <" + direction + "> not valid!\n");
    return (ids[1] == "0" ? choice->onOneBody : choice->betweenTwo)(block, model, lookUp);
}

constexpr MBS_ForceType types[] = {
    {"ExternalSubroutine", MBS_TypeStatus::Available, userKeys, makeUserForce},
    {"RigidContact", MBS_TypeStatus::Available, contactKeys, make<MBS_RiBo_RiBo_Contact>},
};

} // namespace

std::span<const MBS_ForceType> MBS_externalForceTypes() {
    return types;
}

} // namespace velmora
