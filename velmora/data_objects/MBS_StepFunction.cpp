#include "velmora/data_objects/MBS_StepFunction.h"

#include "velmora/functions/FL_Step.h"
#include "velmora/io/IO_DataModelBlock.h"

namespace velmora {

MBS_StepFunction::MBS_StepFunction(IO_DataModelBlock* block, MBS_Model* owner)
    : MBS_1D_DataObject(block, owner) {
    read(*block);
}

MBS_StepFunction::~MBS_StepFunction() = default;

void MBS_StepFunction::modifyModelElement(IO_DataModelBlock* block) {
    if (!block)
        return;
    MBS_DataObject::modifyModelElement(block);
    read(*block);
}

void MBS_StepFunction::read(IO_DataModelBlock& block) {
    double begin = 0.0, initialValue = 0.0, end = 0.0, finalValue = 0.0;
    std::string mode;
    block.getValue("Begin", &begin, IO_ValueCode::Double);
    block.getValue("InitialValue", &initialValue, IO_ValueCode::Double);
    block.getValue("End", &end, IO_ValueCode::Double);
    block.getValue("FinalValue", &finalValue, IO_ValueCode::Double);
    if (block.isKeyInBlock("Mode"))
        block.getValue("Mode", &mode, IO_ValueCode::String);
    if (reportBlockErrors(block))
        return;
    step = std::make_unique<FL_Step>(begin, initialValue, end, finalValue, mode);
}

double MBS_StepFunction::getValue(double x) {
    return step ? step->getValue(x) : 0.0;
}

double MBS_StepFunction::getFirstDerivative(double x) {
    return step ? step->getFirstDerivative(x) : 0.0;
}

double MBS_StepFunction::getSecondDerivative(double x) {
    return step ? step->getSecondDerivative(x) : 0.0;
}

} // namespace velmora
