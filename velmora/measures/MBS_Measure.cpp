#include "velmora/measures/MBS_Measure.h"

#include "velmora/bodies/MBS_Body.h"

namespace velmora {

MBS_Measure::MBS_Measure(IO_DataModelBlock* block, MBS_Model* owner) : MBS_ModelObject(block, owner) {
    reportBlockErrors(*block);
}

void MBS_Measure::addBody(MBS_Body& body) {
    measureBodies.push_back(&body);
    measureBodyCommons.push_back(body.commons);
}

} // namespace velmora
