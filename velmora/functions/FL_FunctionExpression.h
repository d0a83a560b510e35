#pragma once

#include "velmora/functions/FL_FunctionObject.h"

#include <memory>
#include <string>
#include <vector>

namespace velmora {

class exprTk_Interface;

/// A function of named numbers, given as text, with derivatives by differences.
///
/// Symbols are registered first, by the address of their values; then the text is set once. A second
/// evaluator works on copies of the values, so that differences leave the original ones alone.
class FL_FunctionExpression final : public FL_FunctionObject {
  public:
    FL_FunctionExpression();
    ~FL_FunctionExpression() override;
    std::string getClassName() const override { return "FL_FunctionExpression"; }

    /// A vector, which the text indexes; a size of 0 is legal. The values aren't owned.
    void addSymbol(const std::string& name, double* values, unsigned size);
    /// A plain name.
    void addScalarSymbol(const std::string& name, double* value);

    /// Compiles the text and evaluates it once. Errors: "ERROR: Evaluation of function expression results in
    /// QNAN!", "... results in INF! Check for division by zero!". A text that doesn't compile is no error,
    /// and its value is 0.0.
    void setExpression(const std::string& text);

    /// Derivatives by each element of a symbol, as many as its size, with differences of order
    /// `differenceOrder`: forward (1), central (2), or central with two widths (4). The step is that share of
    /// the element's size, or of 1 near 0, which balances truncation and rounding (Press et al., "Numerical
    /// Recipes", section 5.7). Nothing for an unknown name.
    void getDerivative(const std::string& name, double* out);
    /// Second derivatives by all pairs of elements of a symbol, row by row, into `secondDerivatives` of the
    /// symbol: differences of the gradient above, symmetric by construction.
    void getSecondDerivatives(const std::string& name);

    unsigned numOfSymbols = 0;
    unsigned differenceOrder = 2; ///< 1, 2 or 4
    double value = 0.0;           ///< of the last evaluation
    std::string expression = "0.0";
    std::vector<unsigned> symbolSizes; ///< 1 for a plain name
    std::vector<std::string> symbolNames;
    std::vector<double*> symbolValues; ///< not owned
    // One array per symbol.
    std::vector<std::unique_ptr<double[]>> perturbedValues;   ///< where the second evaluator evaluates
    std::vector<std::unique_ptr<double[]>> outerValues;       ///< where second derivatives ask for a gradient
    std::vector<std::unique_ptr<double[]>> secondDerivatives; ///< size squared
    std::vector<std::unique_ptr<double[]>> gradient1, gradient2, gradient3, gradient4;
    std::unique_ptr<exprTk_Interface> evaluator;          ///< bound to `symbolValues`
    std::unique_ptr<exprTk_Interface> perturbedEvaluator; ///< bound to `perturbedValues`

  private:
    void addArrays(const std::string& name, double* values, unsigned size);
    /// Index of the symbol; their number if there is none of this name.
    unsigned findSymbol(const std::string& name) const;
    /// Gradient by one symbol, whose values stand at `point`; the others have their present ones.
    void computeGradient(unsigned symbol, const double* point, double* out);
    double differenceOf(double& element, double v, double h, double valueAtV);
    void computeRow(unsigned symbol, unsigned i);
};

} // namespace velmora
