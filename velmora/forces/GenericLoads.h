#pragma once

#include <memory>

namespace velmora {

class IO_DataModelBlock;
class MBS_Force;
class MBS_Model;
class MBS_ModelLookUp;

/// Force vector on one body (second ID "0") or between two. A force that has failed, the reason reported, if
/// "BodyIDs" or "ForceExpression" can't be read, the expression is faulty, or the first ID is "0".
std::unique_ptr<MBS_Force> makeGenericForce(IO_DataModelBlock* block, MBS_Model* model,
                                            const MBS_ModelLookUp& lookUp);

/// Torque vector on one body or between two, by the same rules; reads "TorqueExpression".
std::unique_ptr<MBS_Force> makeGenericTorque(IO_DataModelBlock* block, MBS_Model* model,
                                             const MBS_ModelLookUp& lookUp);

} // namespace velmora
