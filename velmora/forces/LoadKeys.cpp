#include "velmora/forces/LoadKeys.h"

#include "velmora/io/IO_DataModelBlock.h"

namespace velmora {

ForceVectorKeys::ForceVectorKeys(IO_DataModelBlock& block) {
    block.getValue("ForceExpression", &expression, IO_ValueCode::String);
    block.getValue("PointOfApplication_Body1", point1.data.data(), IO_ValueCode::DoubleVector3);
    block.getValue("PointOfApplication_Body2", point2.data.data(), IO_ValueCode::DoubleVector3);
    isTypeGiven = block.isKeyInBlock("ForceDirectionType");
    if (!isTypeGiven)
        return;
    block.getValue("ForceDirectionType", &directionType, IO_ValueCode::String);
    if (directionType != "In-line-of-sight")
        block.getValue("ForceDirection", direction.data.data(), IO_ValueCode::DoubleVector3);
}

TorqueVectorKeys::TorqueVectorKeys(IO_DataModelBlock& block) {
    block.getValue("TorqueExpression", &expression, IO_ValueCode::String);
    block.getValue("Axis", axis.data.data(), IO_ValueCode::DoubleVector3);
    block.getValue("AxisType", &axisType, IO_ValueCode::String);
}

std::unique_ptr<MBS_3DUnitVector> makeGivenDirection(const std::string& type, const Vec3& given,
                                                     MBS_Body* body) {
    if (type == "BodyFixed")
        return std::make_unique<MBS_3DUnitVector_BodyFixed>(given, body);
    if (type == "SpaceFixed")
        return std::make_unique<MBS_3DUnitVector_SpaceFixed>(given);
    return nullptr;
}

} // namespace velmora
