#pragma once

#include <string>

namespace velmora {

/// Root of the functions that know nothing of a model.
class FL_FunctionObject {
  public:
    FL_FunctionObject() = default;
    FL_FunctionObject(const FL_FunctionObject&) = delete;
    FL_FunctionObject& operator=(const FL_FunctionObject&) = delete;
    virtual ~FL_FunctionObject() = default;
    /// Exact name of the concrete class.
    virtual std::string getClassName() const { return "FL_FunctionObject"; }

    double pi = 3.141592653589793;
    std::string errorString; ///< empty while there is no error; nothing clears it
};

/// A function y(x) of one variable.
class FL_1DFunction : public FL_FunctionObject {
  public:
    std::string getClassName() const override { return "FL_1DFunction"; }
    virtual double getValue(double x) = 0;
    /// dy/dx.
    virtual double getFirstDerivative(double x) = 0;
    /// d2y/dx2.
    virtual double getSecondDerivative(double x) = 0;
};

} // namespace velmora
