#include "velmora/results/MBS_ForceResultFileWriter.h"

#include "velmora/forces/MBS_GravityForce.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <locale>
#include <sstream>

namespace velmora {

MBS_ForceResultFileWriter::MBS_ForceResultFileWriter(const std::string& name,
                                                     const MBS_ModelObjectLists& source, bool append)
    : MBS_ResultFileWriter(name, source, append) {
    for (const auto& force : model->getForces())
        if (force->isGravityForce())
            gravity = dynamic_cast<const MBS_GravityForce*>(force.get());
        else if (force->hasForceResultData())
            forces.push_back(force.get());
}

std::vector<std::string> MBS_ForceResultFileWriter::preamble() const {
    if (!gravity)
        return {"Gravity Off"};
    std::ostringstream components;
    components.imbue(std::locale::classic());
    const Vec3& g = gravity->gravityAcc;
    components << g(0) << ' ' << g(1) << ' ' << g(2);
    return {"Gravity On (with acceleration:)", components.str()};
}

std::vector<std::string> MBS_ForceResultFileWriter::topology() const {
    std::vector<std::string> uuids;
    for (const MBS_Force* force : forces)
        uuids.push_back(force->uuid);
    return uuids;
}

void MBS_ForceResultFileWriter::writeResults(double t, const P* q, const P* qd, const P* qdd,
                                             const C* multipliers) {
    writeDouble(t);
    writeLineEnd();
    for (MBS_Force* force : forces) {
        MBS_Force::ResultData data;
        force->getForceResultData(q, qd, qdd, multipliers, data);
        for (const Vec3& vector : data)
            writeNumbers(vector.data.data(), 3);
        writeLineEnd();
    }
}

} // namespace velmora
