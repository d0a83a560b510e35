#include "velmora/results/MBS_ResultFileWriter.h"

#include "velmora/model/MBS_Model.h"
#include "velmora/model/MBS_ModelLookUp.h"
#include "velmora/platform/Version.h"

#include <ctime>

namespace velmora {

namespace {

const std::string separator(35, '-');

// Date and time as the standard function ctime gives them, without its line feed.
std::string currentTimeText() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
#if defined(_WIN32)
    localtime_s(&local, &now);
#else
    localtime_r(&now, &local);
#endif
    char text[64] = "";
    std::strftime(text, sizeof text, "%a %b %e %H:%M:%S %Y", &local);
    return text;
}

} // namespace

MBS_ResultFileWriter::MBS_ResultFileWriter(const std::string& name, const MBS_ModelObjectLists& source,
                                           bool append)
    : IO_FileIO(name),
      appendToFile(append),
      model(&source),
      versionText(getVersionText()),
      buildDate(getBuildDate()),
      buildId(getBuildId()) {}

bool MBS_ResultFileWriter::openFile() {
    return appendToFile ? openForAppending() : openForWriting();
}

void MBS_ResultFileWriter::closeFile() {
    close();
}

void MBS_ResultFileWriter::writeHeader() {
    std::string modelName;
    model->getModel().getModelName(&modelName);
    for (const std::string& line :
         {separator, std::string("Velmora Version"), separator, versionText,
          std::string(
              "Results of a multibody simulation; lengths, times and masses in the units of the model."),
          separator, std::string("Header"), separator, modelName, currentTimeText(), title(), separator})
        writeLine(line);
    std::vector<std::string> section = preamble();
    if (!section.empty())
        section.push_back(separator);
    section.insert(section.end(), {"Topology", separator});
    for (const std::string& line : section)
        writeLine(line);
    const std::vector<std::string> uuids = topology();
    for (std::size_t i = 0; i < uuids.size(); ++i) {
        if (i > 0)
            writeBlank();
        writeText(uuids[i]);
    }
    writeLineEnd();
    for (const std::string& line : {separator, std::string("Data"), separator})
        writeLine(line);
}

void MBS_ResultFileWriter::writeResults(double, const P*, const P*, const P*, const C*) {}

void MBS_ResultFileWriter::writeNumbers(const double* numbers, unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        writeDouble(numbers[i]);
        writeBlank();
    }
}

} // namespace velmora
