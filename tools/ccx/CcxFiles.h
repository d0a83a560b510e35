#pragma once

#include "tools/modal/SparseModes.h"

#include <map>
#include <string>
#include <vector>

namespace velmora::tools {

/// A part as CalculiX stores it with "*FREQUENCY, SOLVER=MATRIXSTORAGE": JOB.dof, JOB.sti, JOB.mas, and the
/// nodes and node sets of its mesh.
struct CcxPart {
    SolidModel model;
    std::map<std::string, std::vector<Eigen::Index>> sets; ///< points per set, names in capitals
    std::string error;                                     ///< names file and line; empty if all was read
};

/// `mesh` is a file with *NODE and *NSET cards.
CcxPart readCcxPart(const std::string& job, const std::string& mesh);

} // namespace velmora::tools
