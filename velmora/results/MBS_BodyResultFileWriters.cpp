#include "velmora/results/MBS_BodyResultFileWriters.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/model/MBS_ModelLookUp.h"

namespace velmora {

std::vector<std::string> MBS_BodyResultFileWriter::topology() const {
    std::vector<std::string> uuids;
    for (const auto& body : model->getBodies())
        uuids.push_back(body->uuid);
    return uuids;
}

void MBS_BodyResultFileWriter::writeResults(double t, const P* q, const P* qd, const P* qdd, const C*) {
    writeDouble(t);
    writeLineEnd();
    for (const auto& body : model->getBodies()) {
        writeBody(*body, q, qd, qdd);
        writeLineEnd();
    }
}

// Files hold physical amplitudes of the modes: coordinate j divided by omega_j.
void MBS_BodyResultFileWriter::writeAmplitudes(const MBS_Body& body, const P* v) {
    const auto* omega = body.getOmegaOfModes();
    for (unsigned j = 0; omega && j < body.numFlexDof; ++j) {
        const double amplitude = v->bodyData(body.bodyIndex)[7 + j] / (*omega)[j];
        writeNumbers(&amplitude, 1);
    }
}

void MBS_StateResultFileWriter::writeBody(const MBS_Body& body, const P* q, const P*, const P*) {
    writeNumbers(q->bodyData(body.bodyIndex), body.numTransDof);
    writeNumbers(body.commons->A.data.data(), 9);
    writeAmplitudes(body, q);
}

void MBS_VelocityResultFileWriter::writeBody(const MBS_Body& body, const P*, const P* qd, const P*) {
    writeNumbers(qd->bodyData(body.bodyIndex), body.numTransDof);
    writeNumbers(body.commons->omegaBar.data.data(), 3);
    writeAmplitudes(body, qd);
}

// The angular acceleration is Gbar d2p/dt2, since dGbar/dt dp/dt vanishes.
void MBS_AccelerationResultFileWriter::writeBody(const MBS_Body& body, const P*, const P*, const P* qdd) {
    const double* a = qdd->bodyData(body.bodyIndex);
    writeNumbers(a, body.numTransDof);
    const Vec3 alphaBar = body.commons->Gbar() * Vec4::from(a + 3);
    writeNumbers(alphaBar.data.data(), 3);
    writeAmplitudes(body, qdd);
}

} // namespace velmora
