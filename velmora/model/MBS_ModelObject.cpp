#include "velmora/model/MBS_ModelObject.h"

#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/io/StringHelpers.h"
#include "velmora/model/MBS_Model.h"

namespace velmora {

MBS_ModelObject::MBS_ModelObject(IO_DataModelBlock* block, MBS_Model* owner)
    : uuid(block->uuid),
      label(block->label),
      model(owner) {
    toLowerCase(label);
    if (block->isKeyInBlock("active"))
        block->getValue("active", &active);
}

void MBS_ModelObject::appendErrorString(std::string message) {
    errorString += message;
    model->appendErrorString(std::move(message));
}

void MBS_ModelObject::appendErrorString(std::string* message) {
    errorString += *message;
    model->appendErrorString(message);
}

bool MBS_ModelObject::reportBlockErrors(const IO_DataModelBlock& block) {
    if (!block.isErrorOccured())
        return false;
    std::string text;
    block.getErrorString(&text);
    appendErrorString(std::move(text));
    return true;
}

void MBS_ModelObject::modifyModelElement(IO_DataModelBlock* block) {
    label = block->label;
    if (block->isKeyInBlock("active"))
        block->getValue("active", &active);
}

void MBS_ModelObject::getDataModelOfObject(MBS_ModelPhysicalDofVector*, IO_DataModelBlock*) {}

} // namespace velmora
