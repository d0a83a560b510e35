#include "velmora/external_forces/MBS_RiBo_RiBo_Contact.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/forces/LoadBlocks.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/platform/PCM_Contact.h"

#include <cstdlib>

namespace velmora {

namespace {

constexpr std::size_t longestText = 1023; // of what the library is given

} // namespace

MBS_ContactKeys::MBS_ContactKeys(IO_DataModelBlock& block) {
    const auto readNumber = [&](const char* key, double& value) {
        block.getValue(key, &value, IO_ValueCode::Double);
    };
    block.getValue("Path2ContactSurface1", &surface1.path, IO_ValueCode::String);
    block.getValue("Path2ContactSurface2", &surface2.path, IO_ValueCode::String);
    readNumber("YoungsModulus1", surface1.youngsModulus);
    readNumber("YoungsModulus2", surface2.youngsModulus);
    readNumber("PoissonsRatio1", surface1.poissonsRatio);
    readNumber("PoissonsRatio2", surface2.poissonsRatio);
    readNumber("LayerThickness1", surface1.layerThickness);
    readNumber("LayerThickness2", surface2.layerThickness);
    block.getValue("IsNumericJacobiRequired", &isNumericJacobiRequired);
    block.getValue("Task", &task);
    readNumber("MaxPenetration", maxPenetration);
    readNumber("DampingCompression", dampingCompression);
    readNumber("DampingExpansion", dampingExpansion);
    block.getValue("ModeOfDampingTransition", &modeOfDampingTransition);
    readNumber("DepthOfDampingTransition", depthOfDampingTransition);
    readNumber("SlidingFrictionCoeff", slidingFrictionCoeff);
    readNumber("FrictionRegularizationVelocity", frictionRegularizationVelocity);
    readGraphics(block, "1", surface1);
    readGraphics(block, "2", surface2);
}

void MBS_ContactKeys::readGraphics(IO_DataModelBlock& block, const std::string& number, Surface& surface) {
    const std::string position = "PositionContactGraphics" + number;
    const std::string orientation = "OrientationContactGraphics" + number;
    if (block.isKeyInBlock(position))
        block.getValue(position, surface.positionContactGraphics.data.data(), IO_ValueCode::DoubleVector3);
    if (block.isKeyInBlock(orientation))
        block.getValue(orientation, surface.orientationContactGraphics.data.data(),
                       IO_ValueCode::DoubleMatrix3x3);
}

void MBS_RiBo_RiBo_Contact::Release::operator()(void* memory) const {
    std::free(memory); // NOLINT(cppcoreguidelines-no-malloc): the library's one block
}

MBS_RiBo_RiBo_Contact::MBS_RiBo_RiBo_Contact(IO_DataModelBlock* block, MBS_Model* owner,
                                             const MBS_ModelLookUp& lookUp)
    : MBS_BodyBodyForce(block, owner, lookUp) {
    const MBS_ContactKeys keys(*block);
    reportBlockErrors(*block);
    for (const auto& [surface, number] : {std::pair(&keys.surface1, "1"), {&keys.surface2, "2"}})
        if (surface->path.size() > longestText)
            appendErrorString(std::string("ERROR: Path2ContactSurface") + number +
                              " is longer than 1023 characters!");
    if (isErrorOccured() || !createContact(keys))
        return;
    contactForce = PCM_Contact_GetContactForce(handle());
    contactTorqueE = PCM_Contact_GetContactTorque_E(handle());
    contactTorqueF = PCM_Contact_GetContactTorque_F(handle());
    weightedContactPosition = PCM_Contact_GetWeightedContactPosition(handle());
    if (keys.isNumericJacobiRequired)
        createBlocks();
}

bool MBS_RiBo_RiBo_Contact::createContact(const MBS_ContactKeys& keys) {
    const auto &s1 = keys.surface1, &s2 = keys.surface2;
    contactHandle.reset(PCM_Contact_Create(
        keys.task, uuid.substr(0, longestText).c_str(), s1.path.c_str(), s2.path.c_str(), s1.youngsModulus,
        s2.youngsModulus, s1.poissonsRatio, s2.poissonsRatio, s1.layerThickness, s2.layerThickness,
        keys.maxPenetration, keys.dampingCompression, keys.dampingExpansion, keys.modeOfDampingTransition,
        keys.depthOfDampingTransition, keys.slidingFrictionCoeff, keys.frictionRegularizationVelocity,
        body1->position.data.data(), body1->rotationMatrix.data.data(), body2->position.data.data(),
        body2->rotationMatrix.data.data(), s1.positionContactGraphics.data.data(),
        s1.orientationContactGraphics.data.data(), s2.positionContactGraphics.data.data(),
        s2.orientationContactGraphics.data.data()));
    if (!contactHandle)
        appendErrorString("ERROR: definition of contact not possible!");
    return contactHandle != nullptr;
}

void MBS_RiBo_RiBo_Contact::createBlocks() {
    for (const unsigned col : {0u, 1u})
        jacobianEntries.push_back({body1Index, indexOf(col),
                                   std::make_unique<MBS_RiBo_RiBo_Contact_Qe_q_1x>(*this, col),
                                   std::make_unique<MBS_RiBo_RiBo_Contact_Qe_qd_1x>(*this, col)});
    for (const unsigned col : {0u, 1u})
        jacobianEntries.push_back({body2Index, indexOf(col),
                                   std::make_unique<MBS_RiBo_RiBo_Contact_Qe_q_2x>(*this, col),
                                   std::make_unique<MBS_RiBo_RiBo_Contact_Qe_qd_2x>(*this, col)});
}

bool MBS_RiBo_RiBo_Contact::isInContact() const {
    return PCM_Contact_IsInContact(handle()) != 0;
}

void MBS_RiBo_RiBo_Contact::updateDerivatives(const P* q, const P* qd) const {
    PCM_Contact_UpdateContactForceJacobian(handle(), q->bodyData(body1Index), q->bodyData(body2Index),
                                           qd->bodyData(body1Index), qd->bodyData(body2Index));
}

Mat34 MBS_RiBo_RiBo_Contact::G(unsigned body) const {
    return (body == 0 ? bodyCommons1 : bodyCommons2)->G();
}

void MBS_RiBo_RiBo_Contact::addExternalForces(double, const P* q, const P* qd, const P*, P* Q) {
    PCM_Contact_UpdateContactForce(handle(), q->bodyData(body1Index), q->bodyData(body2Index),
                                   qd->bodyData(body1Index), qd->bodyData(body2Index));
    if (!isInContact())
        return;
    const Vec3 F = Vec3::from(contactForce);
    F.addTo(Q->bodyData(body1Index));
    transposeTimes(G(0), Vec3::from(contactTorqueE)).addTo(Q->bodyData(body1Index) + 3);
    (-F).addTo(Q->bodyData(body2Index));
    transposeTimes(G(1), Vec3::from(contactTorqueF)).addTo(Q->bodyData(body2Index) + 3);
}

// One computation serves all blocks.
void MBS_RiBo_RiBo_Contact::updateMatricesForJacobian(double, const P* q, const P* qd, const P*) {
    if (jacobianEntries.empty())
        return;
    if (isInContact())
        updateDerivatives(q, qd);
    for (const JacobianEntry& entry : jacobianEntries)
        for (auto* block : {entry.qeQ.get(), entry.qeQd.get()})
            static_cast<MBS_RiBo_RiBo_Contact_Qe_X*>(block)->takeDerivatives();
}

void MBS_RiBo_RiBo_Contact::getForceResultData(const P*, const P*, const P*, const C*, ResultData& data) {
    data.fill(Vec3());
    if (!isInContact())
        return;
    data[0] = data[4] = Vec3::from(weightedContactPosition);
    data[1] = Vec3::from(contactForce);
    data[3] = Vec3::from(contactTorqueE);
    data[5] = -data[1];
    data[7] = Vec3::from(contactTorqueF);
}

MBS_RiBo_RiBo_Contact_Qe_X::MBS_RiBo_RiBo_Contact_Qe_X(const MBS_RiBo_RiBo_Contact& owner, unsigned rowBody,
                                                       unsigned colBody, int kind)
    : MBS_BodyBodyForce_Qe_X(owner.bodyAt(rowBody), owner.bodyAt(colBody)),
      contact(&owner),
      row(rowBody),
      hasOwnRotation(rowBody == colBody && kind == 1) {
    void* handle = owner.handle();
    const int column = static_cast<int>(colBody) + 1;
    torque = row == 0 ? PCM_Contact_GetContactTorque_E(handle) : PCM_Contact_GetContactTorque_F(handle);
    forceJacobian = PCM_Contact_GetContactForce_Jac(handle, column, kind);
    torqueJacobian = row == 0 ? PCM_Contact_GetContactTorque_E_Jac(handle, column, kind)
                              : PCM_Contact_GetContactTorque_F_Jac(handle, column, kind);
}

void MBS_RiBo_RiBo_Contact_Qe_X::update(double, const P*, const P*, const P*, const C*) {
    takeDerivatives();
}

void MBS_RiBo_RiBo_Contact_Qe_q_1x::update(double, const P* q, const P* qd, const P*, const C*) {
    if (contact->isInContact())
        contact->updateDerivatives(q, qd);
    takeDerivatives();
}

void MBS_RiBo_RiBo_Contact_Qe_X::takeDerivatives() {
    Mat<3, 7> dF;
    Mat<4, 7> rows;
    if (contact->isInContact()) {
        const Mat34 R = contact->G(row);
        dF = (row == 0 ? 1.0 : -1.0) * Mat<3, 7>::from(forceJacobian);
        rows = transposeTimes(R, Mat<3, 7>::from(torqueJacobian));
        if (hasOwnRotation) {
            const Mat4 ownRotation = H(Vec3::from(torque));
            ownRotation.addTo(rows.data.data() + 12); // behind the three columns of r
        }
    }
    setRows(*this, dF, rows);
}

} // namespace velmora
