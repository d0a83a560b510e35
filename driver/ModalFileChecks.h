#pragma once

#include "driver/ModalFile.h"
#include "driver/ModelContents.h"

#include <vector>

namespace velmora::driver {

/// Everything that keeps a body from being what the file means, each with the line of its block: what the
/// kernel refuses, and what physics says of invariants, stiffness, modes and nodes. Empty if nothing is
/// wrong.
std::vector<Finding> collectFindings(const ModalFile& file);

} // namespace velmora::driver
