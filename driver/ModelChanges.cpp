#include "driver/ModelChanges.h"

#include "driver/NearName.h"
#include "driver/TomlValues.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace velmora::driver {

namespace {

void report(ModelFile& file, unsigned line, std::string text) {
    file.findings.push_back({Finding::Severity::Error, line, std::move(text)});
}

/// The text under "uuid"; empty, and reported, if there is none.
std::string readUuid(const toml::table& table, ModelFile& file) {
    const toml::node* value = table.get("uuid");
    if (value && value->is_string())
        return value->as_string()->get();
    report(file, (value ? value->source() : table.source()).begin.line,
           value ? fmt::format("Change, key <uuid>: {} where a text belongs", describe(*value))
                 : "Change, key <uuid>: missing; every change names the object that it changes");
    return {};
}

/// The number under "time"; none, and reported, if it isn't a time.
std::optional<double> readTime(const toml::table& table, const std::string& uuid, ModelFile& file) {
    const toml::node* value = table.get("time");
    const std::optional<double> time =
        value && value->is_number() ? value->value<double>() : std::optional<double>();
    if (time && std::isfinite(*time) && *time >= 0.0)
        return time;
    report(file, (value ? value->source() : table.source()).begin.line,
           fmt::format("Change <{}>, key <time>: {}", uuid,
                       !value  ? "missing; every change has its time"
                       : !time ? describe(*value) + " where a number belongs"
                               : std::string("must be a number that isn't negative")));
    return std::nullopt;
}

/// The block of the object with the values of the change: the kernel reads most objects anew as a whole.
void makeBlock(ModelChange& change, const IO_DataModelBlock& object) {
    change.block = std::make_shared<IO_DataModelBlock>(object);
    change.block->lineNumber = change.line;
    for (std::size_t i = 0; i < change.keys.size(); ++i) {
        const std::string& key = change.keys[i].key;
        if (change.block->isKeyInBlock(key))
            change.block->replaceValue(key, change.texts[i]);
        else
            change.block->addKeyValue(key, change.texts[i]);
    }
}

/// Keys and values of a change against what the type of its object knows.
void checkKeys(const ModelChange& change, const MBS_BlockTypeInfo& type, ModelFile& file) {
    std::vector<std::string> names{"time", "uuid"};
    for (const MBS_KeyInfo& key : type.keys)
        names.emplace_back(key.name);
    for (std::size_t i = 0; i < change.keys.size(); ++i) {
        const KeyPlace& place = change.keys[i];
        const auto key =
            std::ranges::find_if(type.keys, [&](const MBS_KeyInfo& row) { return place.key == row.name; });
        std::string problem;
        if (key == type.keys.end())
            problem = "unknown key" + suggestNearName(place.key, names);
        else if (key->valueCode == Double && (place.kinds.hasText || place.kinds.hasFlag))
            problem = "a number belongs here";
        if (!problem.empty())
            report(file, place.line,
                   fmt::format("Change <{}>, key <{}>: {}", change.uuid, place.key, problem));
    }
}

} // namespace

void readChange(const toml::table& table, ModelFile& file) {
    const std::string uuid = readUuid(table, file);
    const std::optional<double> time = readTime(table, uuid, file);
    if (uuid.empty() || !time)
        return;
    ModelChange change;
    change.time = *time;
    change.line = table.source().begin.line;
    for (const TableEntry& entry : getEntries(table)) {
        if (entry.key == "time" || entry.key == "uuid")
            continue;
        TextValue value = toText(*entry.value);
        if (!value.problem.empty())
            report(file, entry.line,
                   fmt::format("Change <{}>, key <{}>: {}", uuid, entry.key, value.problem));
        change.keys.push_back({entry.key, entry.line, value.kinds});
        change.texts.push_back(std::move(value.text));
    }
    change.uuid = uuid;
    const auto place = std::ranges::upper_bound(file.changes, change.time, {}, &ModelChange::time);
    file.changes.insert(place, std::move(change));
}

void completeChanges(ModelFile& file) {
    const std::vector<MBS_BlockTypeInfo> vocabulary = MBS_getBlockVocabulary();
    const std::vector<IO_DataModelBlock*> dataObjects = file.dataModel->getBlocksOfKind("DataObject");
    std::vector<std::string> uuids;
    uuids.reserve(dataObjects.size());
    for (const IO_DataModelBlock* block : dataObjects)
        uuids.push_back(block->uuid);
    for (ModelChange& change : file.changes) {
        const auto found = std::ranges::find(uuids, change.uuid);
        if (found == uuids.end()) {
            report(file, change.line,
                   fmt::format("Change <{}>: no data object has this UUID{}", change.uuid,
                               suggestNearName(change.uuid, uuids)));
            continue;
        }
        const IO_DataModelBlock& object = *dataObjects[static_cast<std::size_t>(found - uuids.begin())];
        makeBlock(change, object);
        const auto type = std::ranges::find_if(vocabulary, [&](const MBS_BlockTypeInfo& row) {
            return object.kind == row.kind && object.type == row.type;
        });
        if (type != vocabulary.end())
            checkKeys(change, *type, file);
    }
}

} // namespace velmora::driver
