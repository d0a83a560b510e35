#pragma once

#include <string>
#include <vector>

namespace velmora {
class MBS_Model;
class MBS_ModelPhysicalDofVector;
} // namespace velmora

namespace velmora::driver {

/// Where a body is at the start of an analysis when that isn't where its block puts it. Joints, forces and
/// measures are still made at the place that the blocks give; only then the bodies are moved.
struct BodyStart {
    std::string uuid;
    unsigned line = 0;                                  ///< of the head in the model file
    unsigned body = 0;                                  ///< number of the body, from 0
    std::vector<double> position = {0, 0, 0};           ///< m; of the body's frame, global frame
    std::vector<double> eulerParameters = {1, 0, 0, 0}; ///< of norm 1
    std::vector<double> modalCoordinates;               ///< the kernel's; empty: undeformed
    std::vector<double> velocity = {0, 0, 0};           ///< m/s; global frame
    std::vector<double> omega = {0, 0, 0};              ///< rad/s; angular velocity, global frame
    std::vector<double> modalRates;                     ///< empty: at rest
};

/// Initial positions and velocities of all bodies: those of the model, but for the bodies that the list
/// moves. Modal coordinates must be as many as the body has, or none.
void copyInitialState(MBS_Model& model, const std::vector<BodyStart>& starts, MBS_ModelPhysicalDofVector& q,
                      MBS_ModelPhysicalDofVector& qd);

} // namespace velmora::driver
