#pragma once

#include "driver/EigenSolver.h"

#include <string>

namespace velmora {
class IO_DataModel;
} // namespace velmora

namespace velmora::driver {

/// Prints eigenvalues and the modes' largest coordinates to standard output. `place` says in words which
/// state it was that the equations are about; the data model names the bodies.
void printModes(const LinearEquations& equations, const EigenModes& found, const std::string& place,
                const IO_DataModel& dataModel);

} // namespace velmora::driver
