#pragma once

#include <string>

namespace velmora {
class MBS_Model;
class MBS_ModelPhysicalDofVector;
} // namespace velmora

namespace velmora::driver {

struct ModelFile;

/// Writes a model file whose bodies start at rest at the positions q, in the coordinates of the kernel. It is
/// the text of the model file as it stands, comments included, with one [[Start]] per body at its end in the
/// place of those that it held; names of files that are relative are changed where the new file lies in
/// another folder. `remark` becomes a comment in the first line. The folder must exist. Returns what went
/// wrong, or an empty text.
std::string writeModelAt(const ModelFile& file, const MBS_Model& model, const MBS_ModelPhysicalDofVector& q,
                         const std::string& fileName, const std::string& remark);

} // namespace velmora::driver
