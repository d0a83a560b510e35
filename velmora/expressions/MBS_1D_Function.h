#pragma once

#include "velmora/model/MBS_Item.h"

#include <memory>
#include <string>

namespace velmora {

class MBS_1D_DataObject;
class MBS_FunctionExpression;
class MBS_Model;
class MBS_ModelLookUp;

/// One call of a function of one variable inside an expression: a data object g, and an expression x of its
/// own for the argument.
class MBS_1D_Function : public MBS_Item {
  public:
    /// `type` 0 Akima, 1 zero-clamped cubic, -1 as the data object says. Errors are those of the argument.
    MBS_1D_Function(MBS_Model* model, const MBS_ModelLookUp& lookUp, MBS_1D_DataObject* function,
                    std::string argumentText, int type);
    ~MBS_1D_Function() override;
    std::string getClassName() const override { return "MBS_1D_Function"; }

    /// g(x(t)).
    double getValue(double t);
    /// g' x'.
    double getFirstTimeDerivative(double t);
    /// g'' x'^2 + g' x''.
    double getSecondTimeDerivative(double t);

    double lastArgument = 0.0; ///< x at the last derivative
    std::unique_ptr<MBS_FunctionExpression> argument;
    MBS_1D_DataObject* dataObject; ///< not owned
    int splineType;

  private:
    double getFirstDerivative(double x);
    double getSecondDerivative(double x);
};

} // namespace velmora
