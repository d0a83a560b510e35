#include "driver/MeasureTable.h"

#include "driver/CommandSupport.h"

#include <velmora/velmora.h>

#include <fmt/format.h>

namespace velmora::driver {

MeasureTable::MeasureTable(MBS_Model* multibodyModel, std::string name, bool isContinued)
    : model(multibodyModel),
      fileName(std::move(name)),
      stream(fileName, isContinued ? std::ios::binary | std::ios::app : std::ios::binary | std::ios::out) {
    if (isContinued)
        return;
    stream << "t";
    for (unsigned i = 0; i < model->getNumOfMeasures(); ++i) {
        std::string label;
        model->getMeasureLabel(i, &label);
        stream << "," << toCsvField(label);
    }
    stream << "\n";
}

void MeasureTable::write(double t) {
    stream << fmt::format("{}", t);
    for (unsigned i = 0; i < model->getNumOfMeasures(); ++i)
        stream << fmt::format(",{}", model->getMeasureValue(i));
    stream << "\n";
}

bool MeasureTable::flush() {
    return stream.flush().good();
}

bool MeasureTable::close() {
    stream.close();
    return stream.good();
}

} // namespace velmora::driver
