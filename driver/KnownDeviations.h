#pragma once

#include "driver/EquationNames.h"

#include <map>
#include <string>
#include <vector>

namespace velmora::driver {

/// Derivatives that are meant to differ from what they derive, as the blocks of a model tell.
class KnownDeviations {
  public:
    /// The data model is the one that the model was made of. Neither is owned.
    KnownDeviations(IO_DataModel& dataModel, const EquationNames& names);

    /// Why the derivative of this code, rows and columns of these owners, may differ; empty if it may not.
    std::string findReason(unsigned code, const EquationNames::Place& row,
                           const EquationNames::Place& col) const;

  private:
    bool isBodyOf(const IO_DataModelBlock& block, const EquationNames::Place& place) const;
    std::string findReasonInLoads(const EquationNames::Place& row, const EquationNames::Place& col) const;
    std::string findReasonInJoints(unsigned code, const EquationNames::Place& row,
                                   const EquationNames::Place& col) const;
    std::string findReasonInJoint(unsigned code, const IO_DataModelBlock& joint) const;

    const EquationNames& names;
    std::vector<IO_DataModelBlock*> bodies, joints, loads; // not owned
    std::map<std::string, IO_DataModelBlock*> measures;    // by label in lower case; not owned
};

} // namespace velmora::driver
