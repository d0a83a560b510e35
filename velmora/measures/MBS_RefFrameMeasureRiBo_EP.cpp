#include "velmora/measures/MBS_RefFrameMeasureRiBo_EP.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/io/IO_DataModelBlock.h"

namespace velmora {

MBS_RefFrameMeasureRiBo_EP::MBS_RefFrameMeasureRiBo_EP(IO_DataModelBlock* block, MBS_Model* owner,
                                                       const MBS_ModelLookUp& lookUp)
    : MBS_RefFrameMeasureRiBo(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    block->getValue("EulerParameterIndex", &eulerParameterIndex);
    block->getValue("IsStateMeasure", &isStateMeasure);
    if (reportBlockErrors(*block))
        return;
    measureOrder = isStateMeasure ? 0 : 1;
    if (eulerParameterIndex > 3)
        refuse(*block,
               "ERROR: EulerParameterIndex <" + std::to_string(eulerParameterIndex) + "> not valid!\n");
}

void MBS_RefFrameMeasureRiBo_EP::updateMeasure(double, const P* q, const P* qd, const P*) {
    measureValue = rotOf(isStateMeasure ? q : qd).data[eulerParameterIndex];
}

void MBS_RefFrameMeasureRiBo_EP::getMeasure_q(double, const P*, const P*, const P*, const C*, unsigned body,
                                              Row row) {
    if (startRow(body, row) && isStateMeasure)
        row[3 + eulerParameterIndex] = 1.0;
}

void MBS_RefFrameMeasureRiBo_EP::getMeasure_qd(double, const P*, const P*, const P*, const C*, unsigned body,
                                               Row row) {
    if (startRow(body, row) && !isStateMeasure)
        row[3 + eulerParameterIndex] = 1.0;
}

MBS_SingleRiBo_LocalAngleVel::MBS_SingleRiBo_LocalAngleVel(IO_DataModelBlock* block, MBS_Model* owner,
                                                           const MBS_ModelLookUp& lookUp)
    : MBS_RefFrameMeasureRiBo(block, owner, lookUp) {
    if (isErrorOccured())
        return;
    measureOrder = 1;
    block->getValue("Component", &component);
    if (reportBlockErrors(*block))
        return;
    if (component > 2)
        refuse(*block, "ERROR: Component <" + std::to_string(component) + "> not valid!\n");
}

void MBS_SingleRiBo_LocalAngleVel::updateMeasure(double, const P*, const P* qd, const P*) {
    localAngularVelocity = commons().Gbar() * rotOf(qd);
    measureValue = localAngularVelocity.data[component];
}

} // namespace velmora
