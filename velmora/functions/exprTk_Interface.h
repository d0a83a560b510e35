#pragma once

#include <memory>
#include <string>

namespace velmora {

/// A text expression over numbers that live elsewhere, compiled once and evaluated often. Wraps the ExprTk
/// parser, whose grammar it is: operators, mathematical functions, conditions, loops and local variables;
/// `pi`, `epsilon` and `inf` are known. Texts in quotes, `return` and input and output aren't.
///
/// No text can do harm. An index outside a vector is taken as the nearest one inside; a text that loops for
/// more than a million times, or than 1e8 over the number of elements of its local vectors, gives a NaN.
/// Local vectors have at most 10000 elements together.
class exprTk_Interface {
  public:
    exprTk_Interface();
    ~exprTk_Interface();
    exprTk_Interface(const exprTk_Interface&) = delete;
    exprTk_Interface& operator=(const exprTk_Interface&) = delete;

    /// Registers a scalar by the address from which each evaluation reads it.
    void addVariableSymbol(const std::string* name, double* value);
    /// Registers a vector by its address; the text indexes it as name[i]. A vector of size 0 isn't
    /// registered.
    void addVectorSymbol(const std::string* name, double* values, const int* size);
    /// Compiles the text, after all symbols.
    void setExpression(const std::string* text);
    bool isExpressionValid() const;
    /// The value at the present numbers; 0.0 for a text that didn't compile. Allocates nothing.
    double evaluateExpression();

    /// What the parser finds wrong with the last text; empty if nothing.
    const std::string& getErrorText() const;
    /// Place of the error in the text, from 0.
    std::size_t getErrorColumn() const;

  private:
    struct Parser;
    std::unique_ptr<Parser> parser;
};

} // namespace velmora
