#include "velmora/expressions/MBS_1D_Function.h"

#include "velmora/data_objects/MBS_1D_DataObject.h"
#include "velmora/expressions/MBS_FunctionExpression.h"

namespace velmora {

namespace {

constexpr int defaultOfObject = -1;

} // namespace

MBS_1D_Function::MBS_1D_Function(MBS_Model* model, const MBS_ModelLookUp& lookUp, MBS_1D_DataObject* function,
                                 std::string argumentText, int type)
    : dataObject(function),
      splineType(type) {
    if (!dataObject)
        return;
    argument = std::make_unique<MBS_FunctionExpression>(model, lookUp, std::move(argumentText));
    if (argument->isErrorOccured())
        appendErrorString(argument->getErrorString());
}

MBS_1D_Function::~MBS_1D_Function() = default;

double MBS_1D_Function::getValue(double t) {
    const double x = argument->getValue(t);
    return splineType == defaultOfObject ? dataObject->getValue(x) : dataObject->getValue(x, splineType);
}

double MBS_1D_Function::getFirstTimeDerivative(double t) {
    lastArgument = argument->getValue(t);
    const double rate = argument->getFirstTimeDerivative(t);
    return getFirstDerivative(lastArgument) * rate;
}

double MBS_1D_Function::getSecondTimeDerivative(double t) {
    lastArgument = argument->getValue(t);
    const double rate = argument->getFirstTimeDerivative(t);
    const double acceleration = argument->getSecondTimeDerivative(t);
    return getSecondDerivative(lastArgument) * rate * rate + getFirstDerivative(lastArgument) * acceleration;
}

double MBS_1D_Function::getFirstDerivative(double x) {
    return splineType == defaultOfObject ? dataObject->getFirstDerivative(x)
                                         : dataObject->getFirstDerivative(x, splineType);
}

double MBS_1D_Function::getSecondDerivative(double x) {
    return splineType == defaultOfObject ? dataObject->getSecondDerivative(x)
                                         : dataObject->getSecondDerivative(x, splineType);
}

} // namespace velmora
