#pragma once

#include "driver/HHTSystem.h"

#include <string>

namespace velmora {
class IO_DataModel;
} // namespace velmora

namespace velmora::driver {

/// Says in the user's words where a run got stuck: rows of the system become bodies with a coordinate, or
/// constraints with the number of their equation.
class Diagnostics {
  public:
    /// Neither is owned. The data model is the one that the system's model was made of.
    Diagnostics(const HHTSystem* system, IO_DataModel* dataModel);

    /// Row of the system, from 0: "body <link1>, coordinate e0", "constraint <hinge>, equation 2 of 5".
    std::string getEquationName(unsigned row) const;

    /// The first value of the last residual that isn't finite, with the forces on its body.
    std::string describeNotFinite() const;
    /// The rows of the last right-hand side with the largest values.
    std::string describeLargestResiduals() const;
    /// Which equation the factorisation found no pivot for, and what may have caused it.
    std::string describeSingularity() const;

  private:
    struct Place {
        enum Kind { Coordinate, Norm, Constraint, Unknown } kind = Unknown;
        unsigned owner = 0; // body or constraint
        unsigned index = 0; // of the coordinate or equation
    };
    Place locate(unsigned row) const;
    std::string getBodyName(unsigned body) const;
    std::string getForcesOnBody(unsigned body) const;
    std::string getMasslessBodies() const;

    const HHTSystem* system; // not owned
    IO_DataModel* dataModel; // not owned
};

} // namespace velmora::driver
