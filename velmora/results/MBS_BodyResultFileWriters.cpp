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

void MBS_StateResultFileWriter::writeBody(const MBS_Body& body, const P* q, const P*, const P*) {
    writeNumbers(q->bodyData(body.bodyIndex), body.numTransDof);
    writeNumbers(body.commons->A.data.data(), 9);
}

void MBS_VelocityResultFileWriter::writeBody(const MBS_Body& body, const P*, const P* qd, const P*) {
    writeNumbers(qd->bodyData(body.bodyIndex), body.numTransDof);
    writeNumbers(body.commons->omegaBar.data.data(), 3);
}

// The angular acceleration is Gbar d2p/dt2, since dGbar/dt dp/dt vanishes.
void MBS_AccelerationResultFileWriter::writeBody(const MBS_Body& body, const P*, const P*, const P* qdd) {
    const double* a = qdd->bodyData(body.bodyIndex);
    writeNumbers(a, body.numTransDof);
    const Vec3 alphaBar = body.commons->Gbar() * Vec4::from(a + 3);
    writeNumbers(alphaBar.data.data(), 3);
}

} // namespace velmora
