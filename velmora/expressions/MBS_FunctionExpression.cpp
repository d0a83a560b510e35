#include "velmora/expressions/MBS_FunctionExpression.h"

#include "velmora/data_objects/MBS_StepFunction.h"
#include "velmora/expressions/ExpressionRewriter.h"
#include "velmora/functions/exprTk_Interface.h"
#include "velmora/io/StringHelpers.h"
#include "velmora/measures/MBS_Measure.h"

#include <cmath>

// With y_i = g_i(x_i(t)) the functions of the text, and partial derivatives of the outer expression F:
//
// (1) dF/dt = F_t + sum F_yi g_i' x_i'
// (2) d2F/dt2 = F_tt + sum F_yi (g_i'' x_i'^2 + g_i' x_i''), exact where F is linear in the y_i

namespace velmora {

namespace {

constexpr int defaultOfObject = -1;
constexpr unsigned numOfSamples = 8;
constexpr double goldenShare = 0.6180339887498949;

double fraction(double x) {
    return x - std::floor(x);
}

std::unique_ptr<MBM_DenseStandAloneVector> makeDerivatives(unsigned size) {
    return size > 0 ? std::make_unique<MBM_DenseStandAloneVector>(size) : nullptr;
}

} // namespace

MBS_FunctionExpression::MBS_FunctionExpression(MBS_Model* model, const MBS_ModelLookUp& lookUp,
                                               std::string text)
    : expression(std::move(text)) {
    toLowerCase(expression);
    rewrite(model, lookUp);
    evaluator = std::make_unique<FL_FunctionExpression>();
    bindSymbols();
    tryOut();
}

MBS_FunctionExpression::~MBS_FunctionExpression() = default;

void MBS_FunctionExpression::rewrite(MBS_Model* model, const MBS_ModelLookUp& lookUp) {
    RewrittenText rewritten;
    rewritten.text = std::move(expression);
    const auto addFunction = [&](MBS_1D_DataObject* data, const std::string& argument, int type) {
        functions.push_back(std::make_unique<MBS_1D_Function>(model, lookUp, data, argument, type));
        return functions.back()->getErrorString();
    };
    ExpressionRewriter(rewritten, model, lookUp, addFunction).rewriteAll();
    for (const std::string& error : rewritten.errors)
        appendErrorString(error);
    expression = std::move(rewritten.text);
    usesTime = rewritten.usesTime;
    for (const auto& function : functions)
        usesTime = usesTime || (function->argument && function->argument->usesTime);
    measures = std::move(rewritten.measures);
    parameters = std::move(rewritten.parameters);
    stepFunctions = std::move(rewritten.stepFunctions);
    numOfMeasures = static_cast<unsigned>(measures.size());
    numOfParameters = static_cast<unsigned>(parameters.size());
    numOfFunctions = static_cast<unsigned>(functions.size());
}

void MBS_FunctionExpression::bindSymbols() {
    meaValues.resize(numOfMeasures);
    parValues.resize(numOfParameters);
    funxValues.resize(numOfFunctions);
    meaDerivatives = makeDerivatives(numOfMeasures);
    parDerivatives = makeDerivatives(numOfParameters);
    funxDerivatives = makeDerivatives(numOfFunctions);
    for (unsigned k = 0; k < numOfParameters; ++k)
        parValues[k] = parameters[k]->getParameterValue();
    takeSampleValues(0);
    if (usesTime)
        evaluator->addScalarSymbol("time", &time);
    if (numOfMeasures > 0)
        evaluator->addSymbol("mea", meaValues.data(), numOfMeasures);
    if (numOfParameters > 0)
        evaluator->addSymbol("par", parValues.data(), numOfParameters);
    if (numOfFunctions > 0)
        evaluator->addSymbol("funx", funxValues.data(), numOfFunctions);
}

// Measures have no values yet. Distinct values, none of them 0 or alike, spread over (0.25, 0.75) in each
// sample.
void MBS_FunctionExpression::takeSampleValues(unsigned sample) {
    for (unsigned j = 0; j < numOfMeasures; ++j)
        meaValues[j] = 0.25 + 0.5 * fraction((j + 1 + sample * numOfMeasures) * goldenShare);
}

// A sound text may have no value for some values of its measures, like the root of a difference: it is
// refused if no sample gives one.
void MBS_FunctionExpression::tryOut() {
    evaluator->setExpression(expression.empty() ? "0" : expression);
    if (evaluator->errorString.empty())
        return;
    for (unsigned sample = 1; sample < numOfSamples && numOfMeasures > 0; ++sample) {
        takeSampleValues(sample);
        if (std::isfinite(evaluator->evaluator->evaluateExpression()))
            return;
    }
    appendErrorString(evaluator->errorString + "\n");
}

void MBS_FunctionExpression::refresh(double t) {
    time = t;
    for (unsigned j = 0; j < numOfMeasures; ++j)
        meaValues[j] = measures[j]->measureValue;
    for (unsigned k = 0; k < numOfParameters; ++k)
        parValues[k] = parameters[k]->getParameterValue();
    for (unsigned i = 0; i < numOfFunctions; ++i)
        funxValues[i] = functions[i]->getValue(t);
}

double MBS_FunctionExpression::getValue(double t) {
    refresh(t);
    evaluator->value = evaluator->evaluator->evaluateExpression();
    return evaluator->value;
}

void MBS_FunctionExpression::updateMeasureDerivatives(double t) {
    refresh(t);
    if (meaDerivatives)
        evaluator->getDerivative("mea", meaDerivatives->data);
}

void MBS_FunctionExpression::updateParameterDerivatives(double t) {
    refresh(t);
    if (parDerivatives)
        evaluator->getDerivative("par", parDerivatives->data);
}

template <class Rate>
double MBS_FunctionExpression::sumOverFunctions(double t, Rate rate) {
    double sum = 0.0;
    if (funxDerivatives)
        evaluator->getDerivative("funx", funxDerivatives->data);
    for (unsigned i = 0; i < numOfFunctions; ++i)
        if (functions[i]->argument->usesTime)
            sum += funxDerivatives->data[i] * rate(*functions[i], t);
    return sum;
}

// (1)
double MBS_FunctionExpression::getFirstTimeDerivative(double t) {
    refresh(t);
    if (!usesTime)
        return firstTimeDerivative;
    evaluator->getDerivative("time", &firstTimeDerivative);
    firstTimeDerivative += sumOverFunctions(
        t, [](MBS_1D_Function& function, double now) { return function.getFirstTimeDerivative(now); });
    return firstTimeDerivative;
}

// (2)
double MBS_FunctionExpression::getSecondTimeDerivative(double t) {
    refresh(t);
    if (!usesTime)
        return secondTimeDerivative;
    evaluator->getSecondDerivatives("time");
    for (unsigned i = 0; i < evaluator->numOfSymbols; ++i)
        if (evaluator->symbolNames[i] == "time")
            secondTimeDerivative = evaluator->secondDerivatives[i][0];
    secondTimeDerivative += sumOverFunctions(
        t, [](MBS_1D_Function& function, double now) { return function.getSecondTimeDerivative(now); });
    return secondTimeDerivative;
}

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
