#include "velmora/data_objects/MBS_DataObject.h"

#include "velmora/io/IO_DataModelBlock.h"

namespace velmora {

MBS_DataObject::MBS_DataObject(IO_DataModelBlock* block, MBS_Model* owner) : MBS_ModelObject(block, owner) {
    reportBlockErrors(*block);
}

void MBS_DataObject::modifyModelElement(IO_DataModelBlock* block) {
    if (!block)
        return;
    MBS_ModelObject::modifyModelElement(block);
    reportBlockErrors(*block);
}

MBS_Parameter::MBS_Parameter(IO_DataModelBlock* block, MBS_Model* owner) : MBS_DataObject(block, owner) {
    block->getValue("InitialValue", &value, IO_ValueCode::Double);
    reportBlockErrors(*block);
}

void MBS_Parameter::modifyModelElement(IO_DataModelBlock* block) {
    if (!block)
        return;
    MBS_DataObject::modifyModelElement(block);
    block->getValue("InitialValue", &value, IO_ValueCode::Double);
    reportBlockErrors(*block);
}

} // namespace velmora
