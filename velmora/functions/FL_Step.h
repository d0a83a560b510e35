#pragma once

#include "velmora/functions/FL_FunctionObject.h"

namespace velmora {

/// From y0 before `begin` to y1 from `end` on; a hard step is y1 from `begin` on. Between them a smooth step
/// is y0 + (y1 - y0) s(u), u = (x - begin) / (end - begin), by its mode:
///
///     "polynomial"  s = 70 u^9 - 315 u^8 + 540 u^7 - 420 u^6 + 126 u^5
///     "cosine"      s = (1 - cos(pi u)) / 2
///
/// Four derivatives of the polynomial vanish at both ends.
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
