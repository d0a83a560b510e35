#include "driver/ModelFile.h"

#include "driver/ModelChanges.h"
#include "driver/ModelSections.h"
#include "driver/NearName.h"
#include "driver/StartSection.h"
#include "driver/TextFile.h"
#include "driver/TomlValues.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

namespace velmora::driver {

namespace {

unsigned getNumOfLines(const std::string& text) {
    const auto lineFeeds = static_cast<unsigned>(std::ranges::count(text, '\n'));
    return text.empty() || text.back() == '\n' ? lineFeeds : lineFeeds + 1;
}

std::vector<std::string> getBlockKinds() {
    std::vector<std::string> kinds;
    for (const MBS_BlockTypeInfo& type : MBS_getBlockVocabulary())
        if (std::ranges::find(kinds, type.kind) == kinds.end())
            kinds.emplace_back(type.kind);
    return kinds;
}

/// One block of the file before it goes to the data model.
struct BlockSource {
    std::string kind;
    unsigned line = 0;
    const toml::table* table = nullptr;
};

/// Takes a parsed document apart.
class DocumentReader {
  public:
    DocumentReader(ModelFile& modelFile, unsigned numOfLines)
        : file(modelFile),
          lastLine(numOfLines),
          kinds(getBlockKinds()) {}

    void read(const toml::table& document) {
        collectHeads(document);
        std::ranges::sort(heads);
        for (const TableEntry& entry : getEntries(document))
            readRootEntry(entry);
        std::ranges::stable_sort(blocks, {}, &BlockSource::line);
        for (const BlockSource& block : blocks)
            addBlock(block);
        completeChanges(file);
        completeStarts(file);
    }

  private:
    void report(unsigned line, std::string text) {
        file.findings.push_back({Finding::Severity::Error, line, std::move(text)});
    }
    void collectHeads(const toml::node& node);
    void readRootEntry(const TableEntry& entry);
    void readSection(const TableEntry& entry);
    void readKind(const TableEntry& entry);
    void addBlock(const BlockSource& source);
    std::string readName(const BlockSource& source, const char* key, const std::string& uuid);
    void addKeys(const BlockSource& source, IO_DataModelBlock& block, BlockPlace& place);
    unsigned getLineOfNextHead(unsigned line) const;

    ModelFile& file;
    unsigned lastLine;
    std::vector<std::string> kinds;
    std::vector<unsigned> heads; // lines on which tables begin
    std::vector<BlockSource> blocks;
};

void DocumentReader::collectHeads(const toml::node& node) {
    if (const auto* list = node.as_array()) {
        for (const toml::node& element : *list)
            collectHeads(element);
    } else if (const auto* table = node.as_table()) {
        heads.push_back(table->source().begin.line);
        for (const auto& [key, value] : *table)
            collectHeads(value);
    }
}

unsigned DocumentReader::getLineOfNextHead(unsigned line) const {
    const auto next = std::ranges::upper_bound(heads, line);
    return next == heads.end() ? std::max(lastLine, line) : *next;
}

void DocumentReader::readRootEntry(const TableEntry& entry) {
    if (entry.key == "Change" || entry.key == "Start" || std::ranges::find(kinds, entry.key) != kinds.end())
        return readKind(entry);
    if (entry.key == "model" || entry.key == "simulation" || entry.key == "results")
        return readSection(entry);
    if (!entry.value->is_table() && !entry.value->is_array_of_tables())
        return report(entry.line, fmt::format("key <{}> stands outside of every section", entry.key));
    std::vector<std::string> names{"model", "simulation", "results", "Change", "Start"};
    names.insert(names.end(), kinds.begin(), kinds.end());
    report(entry.line, fmt::format("unknown section <{}>{}", entry.key, suggestNearName(entry.key, names)));
}

void DocumentReader::readSection(const TableEntry& entry) {
    const toml::table* section = entry.value->as_table();
    if (!section)
        return report(entry.line, fmt::format("section [{}]: {} where a table belongs; it begins with [{}]",
                                              entry.key, describe(*entry.value), entry.key));
    if (entry.key == "model")
        readModelSection(*section, file);
    else if (entry.key == "simulation")
        readSimulationSection(*section, file);
    else {
        readResultsSection(*section, file);
        file.resultsLine = getLineOfNextHead(section->source().begin.line);
    }
}

void DocumentReader::readKind(const TableEntry& entry) {
    if (!entry.value->is_array_of_tables())
        return report(entry.line, fmt::format("{}: {} where a block belongs; a block begins with [[{}]]",
                                              entry.key, describe(*entry.value), entry.key));
    for (const toml::node& element : *entry.value->as_array())
        if (entry.key == "Change")
            readChange(*element.as_table(), file);
        else if (entry.key == "Start")
            readStart(*element.as_table(), file);
        else
            blocks.push_back({entry.key, element.source().begin.line, element.as_table()});
}

/// The text under one of the keys that every block has; empty if it isn't given or isn't a text.
std::string DocumentReader::readName(const BlockSource& source, const char* key, const std::string& uuid) {
    const toml::node* value = source.table->get(key);
    if (!value)
        return {};
    if (const auto* text = value->as_string())
        return text->get();
    report(value->source().begin.line, fmt::format("{} <{}>, key <{}>: {} where a text belongs", source.kind,
                                                   uuid, key, describe(*value)));
    return {};
}

void DocumentReader::addBlock(const BlockSource& source) {
    const std::string uuid = readName(source, "uuid", "");
    const std::string type = readName(source, "type", uuid);
    const std::string label = readName(source, "label", uuid);
    const std::string directory = std::filesystem::path(file.fileName).parent_path().string();
    IO_DataModelBlock* block = file.dataModel->addBlock(
        source.kind, type, uuid, source.table->contains("label") ? label : uuid, directory);
    block->lineNumber = getLineOfNextHead(source.line);
    BlockPlace place;
    place.line = source.line;
    addKeys(source, *block, place);
    file.places.push_back(std::move(place));
}

void DocumentReader::addKeys(const BlockSource& source, IO_DataModelBlock& block, BlockPlace& place) {
    for (const TableEntry& entry : getEntries(*source.table)) {
        TextValue value = toText(*entry.value);
        place.keys.push_back({entry.key, entry.line, value.kinds});
        if (entry.key == "type" || entry.key == "uuid" || entry.key == "label")
            continue;
        if (!value.problem.empty())
            report(entry.line,
                   fmt::format("{} <{}>, key <{}>: {}", source.kind, block.uuid, entry.key, value.problem));
        block.addKeyValue(entry.key, std::move(value.text));
    }
}

} // namespace

std::unique_ptr<ModelFile> readModelFile(const std::string& fileName, std::string& error) {
    error.clear();
    const std::optional<std::string> text = readText(fileName, error);
    if (!text)
        return nullptr;
    auto file = std::make_unique<ModelFile>();
    file->fileName = fileName;
    file->stem = std::filesystem::path(fileName).stem().string();
    file->dataModel = std::make_unique<IO_DataModel>(file->stem);
    try {
        const toml::table document = toml::parse(std::string_view(*text), std::string_view(fileName));
        if (document.empty())
            file->findings.push_back(
                {Finding::Severity::Error, 0, "the file is empty: it holds neither sections nor blocks"});
        DocumentReader(*file, getNumOfLines(*text)).read(document);
    } catch (const toml::parse_error& failure) {
        const toml::source_position place = failure.source().begin;
        file->findings.push_back({Finding::Severity::Error, place.line,
                                  fmt::format("column {}: {}", place.column, failure.description())});
    }
    std::ranges::stable_sort(file->findings, {}, &Finding::line);
    return file;
}

} // namespace velmora::driver
