#pragma once

#include "velmora/data_objects/MBS_DataObject.h"

namespace velmora {

/// A function y(x) of one variable with its first two derivatives. `splineType` picks the interpolation of a
/// table per call: 0 Akima, 1 zero-clamped cubic, -1 as the object says, which is what the forms without it
/// do.
class MBS_1D_DataObject : public MBS_DataObject {
  public:
    using MBS_DataObject::MBS_DataObject;
    std::string getClassName() const override { return "MBS_1D_DataObject"; }

    virtual double getValue(double x, int splineType) = 0;
    virtual double getValue(double x) = 0;
    virtual double getFirstDerivative(double x, int splineType) = 0;
    virtual double getFirstDerivative(double x) = 0;
    virtual double getSecondDerivative(double x, int splineType) = 0;
    virtual double getSecondDerivative(double x) = 0;
};

} // namespace velmora
