#include "driver/LoadedModel.h"

#include "driver/StartSection.h"
#include "driver/Terminal.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

namespace velmora::driver {

namespace {

bool isError(const Finding& finding) {
    return finding.severity == Finding::Severity::Error;
}

void checkForRun(const Options& options, ModelFile& file) {
    const auto report = [&](const char* text) {
        file.findings.push_back({Finding::Severity::Error, 0, text});
    };
    if (!options.endTime && !file.simulation.endTime)
        report("section [simulation], key <end_time>: missing; give it there or by --end-time");
    if (file.dataModel->getNumOfBlocks("Body") == 0)
        report("the model has no body: there is nothing to simulate");
    const auto isContact = [](const auto& block) { return block->type == "RigidContact"; };
    const SimulationSection& simulation = file.simulation;
    if (!simulation.fixedStep && !simulation.maxStep &&
        std::ranges::any_of(file.dataModel->blocks, isContact))
        file.findings.push_back(
            {Finding::Severity::Warning, 0,
             "section [simulation], key <max_step>: missing; steps grow in free flight, and "
             "may leap over a contact"});
}

/// Names of files that are relative are so to the folder of the model file, whatever the working directory
/// is.
void resolveFileNames(ModelFile& file) {
    const std::vector<MBS_BlockTypeInfo> vocabulary = MBS_getBlockVocabulary();
    for (const auto& block : file.dataModel->blocks)
        for (const MBS_BlockTypeInfo& type : vocabulary)
            for (const MBS_KeyInfo& key : type.keys) {
                const bool isName = key.role == MBS_KeyRole::File && type.kind == block->kind &&
                                    type.type == block->type && block->isKeyInBlock(key.name);
                std::string name;
                if (isName)
                    block->getValue(key.name, &name, IO_ValueCode::String);
                if (!name.empty())
                    block->replaceValue(key.name,
                                        (std::filesystem::path(block->baseDirectory) / name).string());
            }
}

void collectFindings(const Options& options, bool isForRun, ModelFile& file) {
    // A file that isn't TOML has no blocks to check, and lacks nothing else that is worth a message.
    if (file.dataModel->blocks.empty() && std::ranges::any_of(file.findings, isError))
        return;
    const auto numOfReadingFindings = static_cast<std::ptrdiff_t>(file.findings.size());
    checkStrictly(file);
    if (options.isLenient)
        std::for_each(file.findings.begin() + numOfReadingFindings, file.findings.end(),
                      [](Finding& finding) { finding.severity = Finding::Severity::Warning; });
    if (isForRun)
        checkForRun(options, file);
    std::ranges::stable_sort(file.findings, {}, &Finding::line);
}

void printFindings(const ModelFile& file, const std::string& fileName, std::size_t first = 0) {
    for (std::size_t i = first; i < file.findings.size(); ++i)
        printToStandardError(format(file.findings[i], fileName) + "\n",
                             isError(file.findings[i]) ? MessageKind::Error : MessageKind::Warning);
}

bool isKnownType(const std::vector<MBS_BlockTypeInfo>& vocabulary, const IO_DataModelBlock& block) {
    return std::ranges::any_of(vocabulary, [&](const MBS_BlockTypeInfo& info) {
        return block.kind == info.kind && block.type == info.type;
    });
}

/// Takes out the data objects at which the kernel stops.
void removeUnknownDataObjects(IO_DataModel& dataModel) {
    const std::vector<MBS_BlockTypeInfo> vocabulary = MBS_getBlockVocabulary();
    for (std::size_t i = dataModel.blocks.size(); i-- > 0;) {
        if (dataModel.blockKinds[i] != "DataObject" || isKnownType(vocabulary, *dataModel.blocks[i]))
            continue;
        dataModel.blockKinds.erase(dataModel.blockKinds.begin() + static_cast<std::ptrdiff_t>(i));
        dataModel.blocks.erase(dataModel.blocks.begin() + static_cast<std::ptrdiff_t>(i));
    }
}

/// The kernel's model; null if there are errors, which are told then.
std::unique_ptr<MBS_Model> buildModel(LoadedModel& loaded) {
    IO_DataModel& dataModel = *loaded.file->dataModel;
    const auto build = [&] {
        return std::unique_ptr<MBS_Model>(MBS_Model::makeModel(&dataModel, loaded.output.get()));
    };
    try {
        std::unique_ptr<MBS_Model> model = build();
        return model->isErrorOccured() ? nullptr : std::move(model);
    } catch (const std::string& text) {
        loaded.output->writeMessage(text);
    }
    removeUnknownDataObjects(dataModel);
    build(); // for the errors of what comes after them
    return nullptr;
}

} // namespace

std::string getResultDirectory(const Options& options, const ModelFile& file) {
    if (!options.resultDirectory.empty())
        return options.resultDirectory;
    return (std::filesystem::path("results") / file.stem).string();
}

LoadedModel loadModel(const Options& options, bool isForRun) {
    LoadedModel loaded;
    std::string error;
    loaded.file = readModelFile(options.modelFile, error);
    if (!loaded.file) {
        printToStandardError(fmt::format("velmora: {}\n", error), MessageKind::Error);
        loaded.exitCode = WrongUsage;
        return loaded;
    }
    resolveFileNames(*loaded.file);
    collectFindings(options, isForRun, *loaded.file);
    printFindings(*loaded.file, options.modelFile);
    loaded.output =
        std::make_unique<IO_OutputManager>(getResultDirectory(options, *loaded.file), loaded.file->stem);
    loaded.output->messageChannel->consolePrinter = std::make_unique<StandardErrorPrinter>();
    loaded.model = buildModel(loaded);
    if (const std::size_t numOfFindings = loaded.file->findings.size(); loaded.model) {
        checkStarts(*loaded.model, *loaded.file);
        printFindings(*loaded.file, options.modelFile, numOfFindings);
    }
    if (std::ranges::any_of(loaded.file->findings, isError))
        loaded.model.reset();
    if (!loaded.model) {
        printToStandardError(fmt::format("{}: the model has errors\n", options.modelFile));
        loaded.exitCode = ModelHasErrors;
    }
    return loaded;
}

} // namespace velmora::driver
