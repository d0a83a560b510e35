#include "velmora/forces/GenericLoads.h"

#include "velmora/expressions/MBS_FunctionExpression.h"
#include "velmora/forces/MBS_RiBoRiBoForceVector.h"
#include "velmora/forces/MBS_RiBoRiBoTorqueVector.h"
#include "velmora/forces/MBS_SingleRiBoForceVector.h"
#include "velmora/forces/MBS_SingleRiBoTorqueVector.h"
#include "velmora/io/IO_DataModelBlock.h"

namespace velmora {

namespace {

/// What differs between forces and torques before they are made.
struct Wording {
    const char* expressionKey;
    const char* faultyExpression;
    const char* faultyIDs;
};

constexpr Wording forceWording{"ForceExpression", "Please check the expression after <ForceExpression>\n",
                               "ERROR: Check BodyIDs, either Body-Ground or Body-Body Force is valid\n"};
constexpr Wording torqueWording{"TorqueExpression",
                                "ERROR: Please check the expression after <TorqueExpression>\n",
                                "ERROR: Check BodyIDs, either Body-Ground or Body-Body Torque is valid\n"};

template <class OnOneBody, class BetweenTwo>
std::unique_ptr<MBS_Force> makeLoad(IO_DataModelBlock* block, MBS_Model* model, const MBS_ModelLookUp& lookUp,
                                    const Wording& wording) {
    auto refused = std::make_unique<MBS_RefusedForce>(block, model);
    if (refused->isErrorOccured())
        return refused;
    const auto refuse = [&](const std::string& reason) {
        refused->refuse(*block, reason);
        return std::move(refused);
    };
    std::vector<std::string> ids;
    std::string expression;
    block->getValue("BodyIDs", &ids);
    block->getValue(wording.expressionKey, &expression, IO_ValueCode::String);
    if (block->isErrorOccured())
        return refuse("\n");
    const MBS_FunctionExpression trial(model, lookUp, expression);
    if (trial.isErrorOccured())
        return refuse(wording.faultyExpression + trial.getErrorString() + "\n");
    ids.resize(std::max<std::size_t>(ids.size(), 2));
    if (ids[0] == "0")
        return refuse(wording.faultyIDs);
    if (ids[1] == "0")
        return std::make_unique<OnOneBody>(block, model, lookUp);
    return std::make_unique<BetweenTwo>(block, model, lookUp);
}

} // namespace

std::unique_ptr<MBS_Force> makeGenericForce(IO_DataModelBlock* block, MBS_Model* model,
                                            const MBS_ModelLookUp& lookUp) {
    return makeLoad<MBS_SingleRiBoForceVector, MBS_RiBoRiBoForceVector>(block, model, lookUp, forceWording);
}

std::unique_ptr<MBS_Force> makeGenericTorque(IO_DataModelBlock* block, MBS_Model* model,
                                             const MBS_ModelLookUp& lookUp) {
    return makeLoad<MBS_SingleRiBoTorqueVector, MBS_RiBoRiBoTorqueVector>(block, model, lookUp,
                                                                          torqueWording);
}

} // namespace velmora
