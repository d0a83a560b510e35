#include "velmora/measures/MBS_Measure.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/io/IO_DataModelBlock.h"

namespace velmora {

MBS_Measure::MBS_Measure(IO_DataModelBlock* block, MBS_Model* owner) : MBS_ModelObject(block, owner) {
    reportBlockErrors(*block);
}

void MBS_Measure::addBody(MBS_Body& body) {
    measureBodies.push_back(&body);
    measureBodyCommons.push_back(body.commons);
}

void MBS_Measure::refuse(const IO_DataModelBlock& block, const std::string& message) {
    std::string prefix;
    block.getErrorString(&prefix);
    appendErrorString(prefix + message);
}

bool MBS_Measure::readFlag(IO_DataModelBlock& block, const std::string& key) {
    bool flag = false;
    if (block.isKeyInBlock(key))
        block.getValue(key, &flag);
    return flag;
}

Vec3 MBS_Measure::toLocalPoint(const MBS_Body& body, const Vec3& point) {
    return toLocalAxis(body, point - body.position);
}

Vec3 MBS_Measure::toLocalAxis(const MBS_Body& body, const Vec3& axis) {
    return transposeTimes(body.rotationMatrix, axis);
}

} // namespace velmora
