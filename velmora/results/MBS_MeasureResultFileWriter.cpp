#include "velmora/results/MBS_MeasureResultFileWriter.h"

#include "velmora/measures/MBS_Measure.h"
#include "velmora/model/MBS_ModelLookUp.h"

namespace velmora {

std::vector<std::string> MBS_MeasureResultFileWriter::topology() const {
    std::vector<std::string> uuids;
    for (const auto& measure : model->getMeasures())
        uuids.push_back(measure->uuid);
    return uuids;
}

void MBS_MeasureResultFileWriter::writeResults(double t, const P* q, const P* qd, const P* qdd, const C*) {
    writeDouble(t);
    writeLineEnd();
    for (const auto& measure : model->getMeasures()) {
        measure->updateMeasure(t, q, qd, qdd);
        writeNumbers(&measure->measureValue, 1);
        writeLineEnd();
    }
}

} // namespace velmora
