#pragma once

#include "driver/EquationNames.h"
#include "driver/HHTSystem.h"

#include <array>
#include <string>
#include <vector>

namespace velmora::driver {

/// What a joint does to one of its bodies; global frame.
struct Reaction {
    std::string joint;                          ///< label of the constraint's block
    std::string body;                           ///< UUID
    std::array<double, 3> point, force, moment; ///< m; N; N m about the point
};

/// The reactions of all joints of a model, block by block and body by body. The kernel's caches must be those
/// of the state. The point is the joint's, or that of the motion or gear, as it moves with the body; the
/// centre of mass if the block gives none.
std::vector<Reaction> computeReactions(MBS_Model& model, IO_DataModel& dataModel, const EquationNames& names,
                                       const HHTState& state);

} // namespace velmora::driver
