#pragma once

#include "velmora/model/MBS_Item.h"

namespace velmora {

/// Constant data of a body.
class MBS_BodyParameter : public MBS_Item {
  public:
    std::string getClassName() const override { return "MBS_BodyParameter"; }
    /// Total mass.
    virtual double getMass() const = 0;
    /// Ixx, Iyy, Izz, then the three products of inertia, about the body reference point in the body frame.
    virtual void getInertiaComponents(double* components) const = 0;
};

} // namespace velmora
