#pragma once

#include "driver/EquationNames.h"
#include "driver/HHTSystem.h"

#include <string>

namespace velmora {
class IO_DataModel;
} // namespace velmora

namespace velmora::driver {

/// Says in the user's words where a run got stuck.
class Diagnostics {
  public:
    /// Neither is owned. The data model is the one that the system's model was made of.
    Diagnostics(const HHTSystem* system, IO_DataModel* dataModel);

    /// The first value of the last residual that isn't finite, with the forces on its body.
    std::string describeNotFinite() const;
    /// The rows of the last right-hand side with the largest values.
    std::string describeLargestResiduals() const;
    /// Which equation the factorisation found no pivot for, and what may have caused it.
    std::string describeSingularity() const;

  private:
    std::string getForcesOnBody(unsigned body) const;
    std::string getMasslessBodies() const;

    const HHTSystem* system; // not owned
    IO_DataModel* dataModel; // not owned
    EquationNames equationNames;
};

} // namespace velmora::driver
