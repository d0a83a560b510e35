#include "velmora/results/MBS_ResultFileManager.h"

#include "velmora/forces/MBS_Force.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/io/IO_OutputManager.h"
#include "velmora/model/MBS_History.h"
#include "velmora/model/MBS_Model.h"
#include "velmora/model/MBS_ModelLookUp.h"
#include "velmora/results/MBS_BodyResultFileWriters.h"
#include "velmora/results/MBS_ConstraintResultFileWriters.h"
#include "velmora/results/MBS_ForceResultFileWriter.h"
#include "velmora/results/MBS_MeasureResultFileWriter.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <locale>
#include <sstream>

namespace velmora {

namespace {

using Writer = std::shared_ptr<MBS_ResultFileWriter>;

/// One kind of result file.
struct FileKind {
    const char* key;
    const char* kind; // the extension without its point
    bool (*isWanted)(const MBS_ModelObjectLists&);
    Writer (*create)(const std::string& name, const MBS_ModelObjectLists& model, bool append);
};

template <class W>
Writer make(const std::string& name, const MBS_ModelObjectLists& model, bool append) {
    return std::make_shared<W>(name, model, append);
}

bool always(const MBS_ModelObjectLists&) {
    return true;
}

bool hasForceBesideGravity(const MBS_ModelObjectLists& model) {
    const auto& forces = model.getForces();
    return !forces.empty() && !(forces.size() == 1 && forces.front()->isGravityForce());
}

bool hasMeasures(const MBS_ModelObjectLists& model) {
    return !model.getMeasures().empty();
}

constexpr FileKind fileKinds[] = {
    {"WriteStateResultFile", "srf", always, make<MBS_StateResultFileWriter>},
    {"WriteVelocityResultFile", "vrf", always, make<MBS_VelocityResultFileWriter>},
    {"WriteAccelerationResultFile", "arf", always, make<MBS_AccelerationResultFileWriter>},
    {"WriteForceResultFile", "frf", hasForceBesideGravity, make<MBS_ForceResultFileWriter>},
    {"WriteConstraintForceResultFile", "crf", always, make<MBS_ConstraintResultFileWriter>},
    {"WriteExtConstraintLagrangeResultFile", "lrf", always, make<MBS_ExtConstraintsLagrangeResultFileWriter>},
    {"WriteMeasureResultFile", "mrf", hasMeasures, make<MBS_MeasureResultFileWriter>},
};

} // namespace

MBS_ResultFileManager::MBS_ResultFileManager(MBS_ModelObjectLists* source, IO_OutputManager* outputManager,
                                             IO_DataModelBlock* block)
    : model(source) {
    for (const FileKind& row : fileKinds) {
        bool isAsked = false;
        if (block->isKeyInBlock(row.key))
            block->getValue(row.key, &isAsked);
        if (!isAsked || !row.isWanted(*model))
            continue;
        const bool append = outputManager->isResultKindInUse(row.kind);
        writers.push_back(row.create(outputManager->getResultFileBase() + "." + row.kind, *model, append));
        outputManager->addResultKind(row.kind);
    }
    readSchedule(*block);
    openAllResultFiles();
}

MBS_ResultFileManager::MBS_ResultFileManager(const MBS_ResultFileManager&) = default;
MBS_ResultFileManager& MBS_ResultFileManager::operator=(const MBS_ResultFileManager&) = default;

// Writers that a copy still shares stay open; the last owner closes them.
MBS_ResultFileManager::~MBS_ResultFileManager() {
    for (const Writer& writer : writers)
        if (writer.use_count() == 1 && writer->isOpen)
            writer->closeFile();
}

// The typed reads leave their error texts on the block; the values go the way of a solver's own tokens.
// Output begins at 0 unless the block says otherwise.
void MBS_ResultFileManager::readSchedule(IO_DataModelBlock& block) {
    std::vector<std::string> tokens{"", ""};
    if (block.isKeyInBlock("SimulationTimeEnd"))
        tokens.insert(tokens.end(), {"OutputTimeBegin", "0.0"});
    for (const char* key : {"OutputTimeBegin", "SimulationTimeEnd", "OutputTimeStepSize"}) {
        if (!block.isKeyInBlock(key))
            continue;
        double value = 0.0;
        std::string text;
        block.getValue(key, &value, IO_ValueCode::Double);
        block.getValue(key, &text, IO_ValueCode::String);
        tokens.insert(tokens.end(), {key, text});
    }
    if (!block.isErrorOccured())
        return extractSimPatternAndSaveInMembers(&tokens);
    std::string text;
    block.getErrorString(&text);
    model->reportError(text);
}

bool MBS_ResultFileManager::openAllResultFiles() {
    for (const Writer& writer : writers) {
        if (!writer->openFile()) {
            writer->appendErrorString(
                "Could not open result file to write. Check path and/or free disc space");
            return false;
        }
        if (!writer->appendToFile)
            writer->writeHeader();
    }
    return true;
}

void MBS_ResultFileManager::closeAllResultFiles() {
    for (const Writer& writer : writers)
        if (writer->isOpen)
            writer->closeFile();
}

bool MBS_ResultFileManager::isOutputRequested(double t) const {
    return t + 1e-10 >= nextOutputTime;
}

bool MBS_ResultFileManager::writeResultsToFile(double t, MBS_ModelPhysicalDofVector* q,
                                               MBS_ModelPhysicalDofVector* qd,
                                               MBS_ModelPhysicalDofVector* qdd,
                                               MBS_ModelConstraintDofVector* multipliers) {
    const bool isScheduled = simulationTimeEnd > 0.0;
    if (isScheduled && (t < outputTimeBegin || !isOutputRequested(t)))
        return false;
    for (const Writer& writer : writers)
        writer->writeResults(t, q, qd, qdd, multipliers);
    if (isScheduled)
        nextOutputTime = std::min(nextOutputTime + outputTimeStepSize, simulationTimeEnd);
    return true;
}

bool MBS_ResultFileManager::flushAllResultFiles() {
    return std::ranges::all_of(
        writers, [](const Writer& writer) { return !writer->isOpen || std::fflush(writer->file) == 0; });
}

void MBS_ResultFileManager::exchangeHistory(MBS_History* history) {
    history->exchange(nextOutputTime);
}

void MBS_ResultFileManager::skipOutputUntil(double t) {
    if (simulationTimeEnd > 0.0 && outputTimeStepSize > 0.0 && t < simulationTimeEnd)
        while (isOutputRequested(t))
            nextOutputTime = std::min(nextOutputTime + outputTimeStepSize, simulationTimeEnd);
}

bool MBS_ResultFileManager::isErrorOccured() const {
    return std::ranges::any_of(writers, [](const Writer& writer) { return writer->isErrorOccured(); });
}

std::string MBS_ResultFileManager::getErrorString() const {
    const auto failed =
        std::ranges::find_if(writers, [](const Writer& writer) { return writer->isErrorOccured(); });
    return failed == writers.end() ? std::string() : (*failed)->errorString;
}

void MBS_ResultFileManager::string2Value(const std::string* text, double* value) {
    std::istringstream stream(*text);
    stream.imbue(std::locale::classic());
    stream >> *value;
}

// The first two tokens are passed over, then key and value alternate; at most ten keys count.
void MBS_ResultFileManager::extractSimPatternAndSaveInMembers(const std::vector<std::string>* tokens) {
    const std::array<std::pair<const char*, double*>, 3> doubles = {{
        {"OutputTimeBegin", &outputTimeBegin},
        {"SimulationTimeEnd", &simulationTimeEnd},
        {"OutputTimeStepSize", &outputTimeStepSize},
    }};
    const std::array<std::pair<const char*, bool*>, 7> flags = {{
        {"WriteForceResultFile", &writeForceResultFile},
        {"WriteStateResultFile", &writeStateResultFile},
        {"WriteMeasureResultFile", &writeMeasureResultFile},
        {"WriteVelocityResultFile", &writeVelocityResultFile},
        {"WriteAccelerationResultFile", &writeAccelerationResultFile},
        {"WriteConstraintForceResultFile", &writeConstraintForceResultFile},
        {"WriteExtConstraintLagrangeResultFile", &writeExtConstraintLagrangeResultFile},
    }};
    unsigned numMatches = 0;
    for (std::size_t i = 2; i + 1 < tokens->size() && numMatches < 10; i += 2) {
        const std::string& key = (*tokens)[i];
        const std::string& value = (*tokens)[i + 1];
        for (const auto& [name, target] : doubles)
            if (key == name) {
                string2Value(&value, target);
                ++numMatches;
            }
        for (const auto& [name, target] : flags)
            if (key == name) {
                *target = value == "yes" || value == "Yes" || value == "YES";
                ++numMatches;
            }
        if (key == "OutputTimeBegin")
            nextOutputTime = outputTimeBegin;
    }
}

} // namespace velmora
