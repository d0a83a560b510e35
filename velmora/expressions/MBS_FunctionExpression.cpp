#include "velmora/expressions/MBS_FunctionExpression.h"

#include "velmora/data_objects/MBS_StepFunction.h"
#include "velmora/expressions/ExpressionRewriter.h"
#include "velmora/expressions/MBS_1D_Function.h"
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
    ExpressionRewriter(*this, model, lookUp).rewriteAll();
    evaluator = std::make_unique<FL_FunctionExpression>();
    bindSymbols();
    tryOut();
}

MBS_FunctionExpression::~MBS_FunctionExpression() = default;

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

} // namespace velmora
