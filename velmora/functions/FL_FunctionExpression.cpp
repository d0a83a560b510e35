#include "velmora/functions/FL_FunctionExpression.h"

#include "velmora/functions/exprTk_Interface.h"

#include <algorithm>
#include <cmath>

// With f(x) the function of one element, v its value and h the step:
//
// (1) order 1: (f(v + h) - f(v)) / h
// (2) order 2: (f(v + h) - f(v - h)) / 2h
// (4) order 4: (4 (f(v + h) - f(v - h)) / 2h - (f(v + 2h) - f(v - 2h)) / 4h) / 3
//
// Second derivatives are the same differences of the gradient.

namespace velmora {

namespace {

constexpr double smallestValue = 1e-10; // below it the step is that of the value 1

/// Step over the size of the value, for first and second derivatives of an order.
struct StepShares {
    unsigned order;
    double first, second;
};

constexpr StepShares stepShares[] = {
    {1, 1.4901161193847656e-08, 6.055454452393343e-06},
    {2, 6.055454452393343e-06, 0.0001220703125},
    {4, 0.000740095979741405, 0.002460783300575925},
};

const StepShares* findShares(unsigned order) {
    const auto found = std::ranges::find(stepShares, order, &StepShares::order);
    return found == std::end(stepShares) ? nullptr : &*found;
}

double stepAt(double v, double share) {
    return (std::abs(v) > smallestValue ? std::abs(v) : 1.0) * share;
}

} // namespace

FL_FunctionExpression::FL_FunctionExpression()
    : evaluator(std::make_unique<exprTk_Interface>()),
      perturbedEvaluator(std::make_unique<exprTk_Interface>()) {}

FL_FunctionExpression::~FL_FunctionExpression() = default;

void FL_FunctionExpression::addArrays(const std::string& name, double* values, unsigned size) {
    ++numOfSymbols;
    symbolNames.push_back(name);
    symbolSizes.push_back(size);
    symbolValues.push_back(values);
    for (auto* list : {&perturbedValues, &outerValues, &gradient1, &gradient2, &gradient3, &gradient4})
        list->push_back(std::make_unique<double[]>(size));
    secondDerivatives.push_back(std::make_unique<double[]>(std::size_t{size} * size));
}

void FL_FunctionExpression::addSymbol(const std::string& name, double* values, unsigned size) {
    addArrays(name, values, size);
    const int count = static_cast<int>(size);
    evaluator->addVectorSymbol(&name, values, &count);
    perturbedEvaluator->addVectorSymbol(&name, perturbedValues.back().get(), &count);
}

void FL_FunctionExpression::addScalarSymbol(const std::string& name, double* variable) {
    addArrays(name, variable, 1);
    evaluator->addVariableSymbol(&name, variable);
    perturbedEvaluator->addVariableSymbol(&name, perturbedValues.back().get());
}

void FL_FunctionExpression::setExpression(const std::string& text) {
    expression = text;
    evaluator->setExpression(&text);
    perturbedEvaluator->setExpression(&text);
    value = 0.0;
    if (!evaluator->isExpressionValid())
        return;
    value = evaluator->evaluateExpression();
    if (std::isnan(value))
        errorString = "ERROR: Evaluation of function expression results in QNAN!";
    if (std::isinf(value))
        errorString = "ERROR: Evaluation of function expression results in INF! Check for division by zero!";
}

unsigned FL_FunctionExpression::findSymbol(const std::string& name) const {
    return static_cast<unsigned>(std::ranges::find(symbolNames, name) - symbolNames.begin());
}

void FL_FunctionExpression::getDerivative(const std::string& name, double* out) {
    const unsigned symbol = findSymbol(name);
    if (symbol < numOfSymbols)
        computeGradient(symbol, symbolValues[symbol], out);
}

void FL_FunctionExpression::computeGradient(unsigned symbol, const double* point, double* out) {
    const StepShares* shares = findShares(differenceOrder);
    if (!shares)
        return;
    for (unsigned s = 0; s < numOfSymbols; ++s)
        std::copy_n(s == symbol ? point : symbolValues[s], symbolSizes[s], perturbedValues[s].get());
    double valueAtPoint = 0.0; // which is `value` but for second derivatives
    if (differenceOrder == 1) {
        value = evaluator->evaluateExpression();
        valueAtPoint = perturbedEvaluator->evaluateExpression();
    }
    double* const elements = perturbedValues[symbol].get();
    for (unsigned k = 0; k < symbolSizes[symbol]; ++k) {
        const double v = elements[k];
        out[k] = differenceOf(elements[k], v, stepAt(v, shares->first), valueAtPoint);
        elements[k] = v;
    }
}

// (1), (2), (4)
double FL_FunctionExpression::differenceOf(double& element, double v, double h, double valueAtV) {
    const auto f = [&](double x) {
        element = x;
        return perturbedEvaluator->evaluateExpression();
    };
    if (differenceOrder == 1)
        return (f(v + h) - valueAtV) / h;
    const double near = f(v + h) - f(v - h);
    if (differenceOrder == 2)
        return near / (2.0 * h);
    const double far = f(v + 2.0 * h) - f(v - 2.0 * h);
    return (4.0 * near / (2.0 * h) - far / (4.0 * h)) / 3.0;
}

void FL_FunctionExpression::getSecondDerivatives(const std::string& name) {
    const unsigned symbol = findSymbol(name);
    if (symbol == numOfSymbols || !findShares(differenceOrder))
        return;
    for (unsigned s = 0; s < numOfSymbols; ++s)
        std::copy_n(symbolValues[s], symbolSizes[s], outerValues[s].get());
    if (differenceOrder == 1)
        computeGradient(symbol, outerValues[symbol].get(), gradient1[symbol].get());
    for (unsigned i = 0; i < symbolSizes[symbol]; ++i)
        computeRow(symbol, i);
}

// (1), (2), (4) of the gradient by element i, from the diagonal on; the rest is known from earlier rows.
void FL_FunctionExpression::computeRow(unsigned symbol, unsigned i) {
    const unsigned n = symbolSizes[symbol];
    double& element = outerValues[symbol][i];
    const double v = element, h = stepAt(v, findShares(differenceOrder)->second);
    const auto setGradient = [&](std::vector<std::unique_ptr<double[]>>& gradient, double x) {
        element = x;
        computeGradient(symbol, outerValues[symbol].get(), gradient[symbol].get());
    };
    if (differenceOrder == 1) {
        setGradient(gradient2, v + h);
    } else {
        setGradient(gradient1, v + h);
        setGradient(gradient2, v - h);
    }
    if (differenceOrder == 4) {
        setGradient(gradient3, v + 2.0 * h);
        setGradient(gradient4, v - 2.0 * h);
    }
    element = v;
    const double *g1 = gradient1[symbol].get(), *g2 = gradient2[symbol].get(), *g3 = gradient3[symbol].get(),
                 *g4 = gradient4[symbol].get();
    double* const H = secondDerivatives[symbol].get();
    for (unsigned j = i; j < n; ++j) {
        const double near = (g1[j] - g2[j]) / (2.0 * h), far = (g3[j] - g4[j]) / (4.0 * h);
        H[std::size_t{i} * n + j] = differenceOrder == 1   ? (g2[j] - g1[j]) / h
                                    : differenceOrder == 2 ? near
                                                           : (4.0 * near - far) / 3.0;
        H[std::size_t{j} * n + i] = H[std::size_t{i} * n + j];
    }
}

} // namespace velmora
