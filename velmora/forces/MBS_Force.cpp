#include "velmora/forces/MBS_Force.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/model/MBS_ModelLookUp.h"

namespace velmora {

MBS_Force_Qe_X::MBS_Force_Qe_X(const MBS_Body& rowBody, const MBS_Body& colBody)
    : MBS_GeneralBodyBodyMatrix(rowBody.numTransDof, rowBody.numRotDof, rowBody.numFlexDof,
                                colBody.numTransDof, colBody.numRotDof, colBody.numFlexDof) {}

MBS_Force::MBS_Force(IO_DataModelBlock* block, MBS_Model* owner) : MBS_ModelObject(block, owner) {
    reportBlockErrors(*block);
}

void MBS_Force::addExternalForces(double, const P*, const P*, const P*, P*) {}

void MBS_Force::updateMatricesForJacobian(double t, const P* q, const P* qd, const P* qdd) {
    for (const JacobianEntry& entry : jacobianEntries) {
        if (entry.qeQ)
            entry.qeQ->update(t, q, qd, qdd, nullptr);
        if (entry.qeQd)
            entry.qeQd->update(t, q, qd, qdd, nullptr);
    }
}

void MBS_Force::refuse(const IO_DataModelBlock& block, const std::string& text) {
    std::string prefix;
    block.getErrorString(&prefix);
    appendErrorString(prefix + text);
}

MBS_Body* MBS_Force::findBody(const IO_DataModelBlock& block, const MBS_ModelLookUp& lookUp,
                              const std::vector<std::string>& ids, unsigned n, const std::string& role,
                              bool anyKind) {
    const std::string id = n < ids.size() ? ids[n] : std::string();
    MBS_Body* found = lookUp.getBodyByUUID(id);
    if (!found) {
        refuse(block, role + " not found using bodyID: " + id + "!\n");
        return nullptr;
    }
    if (!anyKind && found->getClassName() != "MBS_RigidBody_EulerP_PAI") {
        refuse(block, "Supplied body using bodyID: " + id + " is not of type MBS_RigidBody_EulerP_PAI!\n");
        return nullptr;
    }
    return found;
}

MBS_SingleBodyForce::MBS_SingleBodyForce(IO_DataModelBlock* block, MBS_Model* owner,
                                         const MBS_ModelLookUp& lookUp)
    : MBS_Force(block, owner) {
    std::vector<std::string> ids;
    block->getValue("BodyIDs", &ids);
    if (reportBlockErrors(*block))
        return;
    const bool anyKind = block->type == "FlexBodyJointForce" || block->type == "ModalForceSubroutine";
    body = findBody(*block, lookUp, ids, 0, "Body", anyKind);
    if (!body)
        return;
    bodyIndex = body->bodyIndex;
    bodyCommons = body->commons;
}

MBS_BodyBodyForce::MBS_BodyBodyForce(IO_DataModelBlock* block, MBS_Model* owner,
                                     const MBS_ModelLookUp& lookUp)
    : MBS_Force(block, owner) {
    std::vector<std::string> ids;
    block->getValue("BodyIDs", &ids);
    if (reportBlockErrors(*block))
        return;
    body1 = findBody(*block, lookUp, ids, 0, "Body1", false);
    if (!body1)
        return;
    body1Index = body1->bodyIndex;
    bodyCommons1 = body1->commons;
    body2 = findBody(*block, lookUp, ids, 1, "Body2", false);
    if (!body2)
        return;
    body2Index = body2->bodyIndex;
    bodyCommons2 = body2->commons;
}

} // namespace velmora
