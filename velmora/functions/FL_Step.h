#pragma once

#include "velmora/functions/FL_FunctionObject.h"

namespace velmora {

/// From y0 before `begin` to y1 from `end` on, with y0 and y1 at `begin` of a hard step. Between them a
/// smooth step follows, with u = (x - begin) / (end - begin), by its mode:
///
///     "polynomial"   70 u^9 - 315 u^8 + 540 u^7 - 420 u^6 + 126 u^5, four derivatives of which vanish at
///     both ends "cosine"       (1 - cos(pi u)) / 2
class FL_Step final : public FL_1DFunction {
  public:
    /// `stepMode` "polynomial" or "cosine"; any other makes a hard step.
    FL_Step(double stepBegin, double stepInitialValue, double stepEnd, double stepFinalValue,
            std::string stepMode);
    std::string getClassName() const override { return "FL_Step"; }

    double getValue(double x) override;
    double getFirstDerivative(double x) override;
    double getSecondDerivative(double x) override;

    bool isSmooth;
    double inverseLength; ///< 1 / (end - begin)
    double begin, initialValue, end, finalValue;
    std::string mode;

  private:
    /// Of a smooth step with a length, and its limits count as inside.
    bool isInside(double x) const { return isSmooth && end > begin && x >= begin && x <= end; }
};

} // namespace velmora
