#include "driver/MeasureTable.h"

#include <velmora/velmora.h>

#include <fmt/format.h>

namespace velmora::driver {

namespace {

/// A text as a field: in quotes if it holds what separates fields, with quotes of its own doubled.
std::string toField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos)
        return text;
    std::string field = "\"";
    for (const char c : text)
        field += c == '"' ? "\"\"" : std::string(1, c);
    return field + "\"";
}

} // namespace

MeasureTable::MeasureTable(MBS_Model* multibodyModel, std::string name)
    : model(multibodyModel),
      fileName(std::move(name)),
      stream(fileName, std::ios::binary) {
    stream << "t";
    for (unsigned i = 0; i < model->getNumOfMeasures(); ++i) {
        std::string label;
        model->getMeasureLabel(i, &label);
        stream << "," << toField(label);
    }
    stream << "\n";
}

void MeasureTable::write(double t) {
    stream << fmt::format("{}", t);
    for (unsigned i = 0; i < model->getNumOfMeasures(); ++i)
        stream << fmt::format(",{}", model->getMeasureValue(i));
    stream << "\n";
}

bool MeasureTable::close() {
    stream.close();
    return stream.good();
}

} // namespace velmora::driver
