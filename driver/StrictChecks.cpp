#include "driver/ModelFile.h"
#include "driver/NearName.h"
#include "driver/PhysicsChecks.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <map>
#include <set>

namespace velmora::driver {

namespace {

using Block = IO_DataModelBlock;
using Names = std::set<std::string>;

std::string toLower(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

std::string suggest(const std::string& text, const Names& names) {
    return suggestNearName(text, std::vector<std::string>(names.begin(), names.end()));
}

/// What stands behind the beginning of a numbered key; empty unless it is a number.
std::string numberBehind(const MBS_KeyInfo& key, const std::string& name) {
    if (!key.isNumbered || !name.starts_with(key.name))
        return {};
    const std::string rest = name.substr(std::string_view(key.name).size());
    return std::ranges::all_of(rest, [](char c) { return c >= '0' && c <= '9'; }) ? rest : std::string();
}

const MBS_KeyInfo* findKey(const MBS_BlockTypeInfo& type, const std::string& name) {
    const auto found = std::ranges::find_if(type.keys, [&](const MBS_KeyInfo& key) {
        return key.isNumbered ? !numberBehind(key, name).empty() : name == key.name;
    });
    return found == type.keys.end() ? nullptr : &*found;
}

/// The numbers under a key; none if the kernel couldn't read them, which it reports itself.
template <std::size_t N>
std::optional<std::array<double, N>> readNumbers(const Block& block, const std::string& key, unsigned code) {
    Block probe(block); // a failed read leaves its text on the block
    std::array<double, N> numbers{};
    if (!probe.isKeyInBlock(key))
        return std::nullopt;
    probe.errorString.clear();
    probe.getValue(key, numbers.data(), code);
    return probe.isErrorOccured() ? std::nullopt : std::optional(numbers);
}

std::string getText(const Block& block, const std::string& key) {
    return block.values[static_cast<std::size_t>(std::ranges::find(block.keys, key) - block.keys.begin())];
}

std::vector<std::string> readTexts(const Block& block, const std::string& key) {
    Block probe(block);
    std::vector<std::string> ids;
    if (probe.isKeyInBlock(key))
        probe.getValue(key, &ids);
    return ids;
}

/// What a value of this kind is called where another one belongs; empty if it may stand there.
std::string findWrongKind(const MBS_KeyInfo& key, const ValueKinds& kinds, const std::string& text) {
    const bool isText = key.valueCode == String || key.valueCode == StringPair || key.valueCode == FilePath;
    if (isText) {
        const bool mayBeNumber = key.role == MBS_KeyRole::Expression;
        if (kinds.hasFlag)
            return "true or false where a text belongs";
        return kinds.hasNumber && !mayBeNumber ? "a number where a text belongs" : "";
    }
    if (key.valueCode == Bool) {
        // The kernel's own words for true and false are unmistakable.
        const bool isYesOrNo = toLower(text) == "yes" || toLower(text) == "no";
        if (kinds.hasNumber)
            return "a number where true or false belongs";
        return kinds.hasText && !isYesOrNo ? "a text where true or false belongs" : "";
    }
    if (kinds.hasText)
        return "a text where a number belongs";
    return kinds.hasFlag ? "true or false where a number belongs" : "";
}

/// The line of a text that holds a place, and a caret below the place.
std::string showPlace(const std::string& text, std::size_t column) {
    const std::size_t begin = column == 0 ? 0 : text.rfind('\n', column - 1) + 1; // 0 without a line feed
    std::string line = text.substr(begin, text.find('\n', begin) - begin), blanks = line;
    blanks.resize(column - begin, ' ');
    std::ranges::replace_if(
        blanks, [](char c) { return c != '\t'; }, ' ');
    return fmt::format("\n    {}\n    {}^", line, blanks);
}

/// One pass over all blocks of a file.
class Checker {
  public:
    Checker(ModelFile& modelFile, std::span<const MBS_BlockTypeInfo> knownTypes)
        : file(modelFile),
          vocabulary(knownTypes) {}

    void run() {
        collectNames();
        for (std::size_t i = 0; i < file.dataModel->blocks.size(); ++i) {
            block = file.dataModel->blocks[i].get();
            place = &file.places[i];
            checkUuid();
            checkType();
        }
        std::ranges::stable_sort(findings, {}, &Finding::line);
        file.findings.insert(file.findings.end(), findings.begin(), findings.end());
    }

  private:
    void collectNames();
    void report(const std::string& key, const std::string& problem,
                Finding::Severity severity = Finding::Severity::Error);
    void checkUuid();
    void checkType();
    void checkKeys(const MBS_BlockTypeInfo& type);
    void checkThatItMakesSomething(const MBS_BlockTypeInfo& type);
    void checkContact(const MBS_BlockTypeInfo& type);
    void checkRole(const MBS_BlockTypeInfo& type, const MBS_KeyInfo& key);
    void checkFile(const MBS_KeyInfo& key);
    void checkNumber(const MBS_KeyInfo& key, const std::string& name);
    void checkInertiaOf(const MBS_BlockTypeInfo& type, const MBS_KeyInfo& key);
    void checkBodyIDs(const MBS_KeyInfo& key);
    void checkBodyID(const char* key, const std::string& id);
    void checkLabel(const MBS_KeyInfo& key, const char* kind, const char* name);
    void checkExpression(const MBS_KeyInfo& key);
    std::string findProblem(const MBS_ExpressionMention& mention);

    ModelFile& file;
    std::span<const MBS_BlockTypeInfo> vocabulary;
    std::vector<Finding> findings;
    std::map<std::string, std::size_t> firstBlocks; // UUID, index of the first block that has it
    Names bodies;                                   // their UUIDs
    std::map<std::string, Names> labels;            // of each kind, in lower case
    std::map<std::string, std::string> dataTypes;   // of data objects, by label in lower case
    Block* block = nullptr;                         // in work
    const BlockPlace* place = nullptr;              // of this block
};

void Checker::collectNames() {
    const auto& blocks = file.dataModel->blocks;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        firstBlocks.emplace(blocks[i]->uuid, i);
        labels[blocks[i]->kind].insert(toLower(blocks[i]->label));
        if (blocks[i]->kind == "DataObject")
            dataTypes.emplace(toLower(blocks[i]->label), blocks[i]->type);
        if (blocks[i]->kind == "Body")
            bodies.insert(blocks[i]->uuid);
    }
}

void Checker::report(const std::string& key, const std::string& problem, Finding::Severity severity) {
    const KeyPlace* keyPlace = place->find(key);
    findings.push_back({severity, keyPlace ? keyPlace->line : place->line,
                        fmt::format("{} <{}>, key <{}>: {}", block->kind, block->uuid, key, problem)});
}

void Checker::checkUuid() {
    const KeyPlace* key = place->find("uuid");
    if (!key)
        return report("uuid", "missing; every block needs one");
    if (!key->kinds.hasText)
        return; // found when the file was read
    if (block->uuid.empty())
        return report("uuid", "empty; every block needs one");
    if (block->uuid == "0")
        return report("uuid", "<0> stands for the ground");
    if (block->uuid == "noUUID")
        return report("uuid", "<noUUID> marks the kernel's own blocks");
    const std::size_t first = firstBlocks.at(block->uuid);
    const Block* other = file.dataModel->blocks[first].get();
    if (other != block)
        report("uuid",
               fmt::format("already used by the {} in line {}", other->kind, file.places[first].line));
}

void Checker::checkType() {
    const KeyPlace* key = place->find("type");
    if (!key)
        return report("type", "missing; every block needs one");
    if (!key->kinds.hasText)
        return; // found when the file was read
    std::vector<std::string> names;
    for (const MBS_BlockTypeInfo& type : vocabulary) {
        if (block->kind != type.kind)
            continue;
        names.emplace_back(type.type);
        if (block->type != type.type)
            continue;
        if (type.status == MBS_TypeStatus::CreatesNothing)
            report("type", fmt::format("<{}> is accepted, but makes nothing", type.type));
        // The kernel refuses these too, but not if it finds nothing to make of the block.
        if (type.status == MBS_TypeStatus::NotInThisBuild)
            report("type", fmt::format("<{}> is not available in this build", type.type));
        if (type.status == MBS_TypeStatus::Available)
            checkKeys(type);
        checkContact(type);
        return checkThatItMakesSomething(type);
    }
    report("type", fmt::format("unknown type <{}>{}", block->type, suggestNearName(block->type, names)));
}

void Checker::checkKeys(const MBS_BlockTypeInfo& type) {
    std::vector<std::string> names{"type", "uuid", "label"};
    for (const MBS_KeyInfo& key : type.keys)
        names.push_back(key.isNumbered ? std::string(key.name).append("0") : key.name);
    for (const std::string& name : block->keys) {
        const MBS_KeyInfo* key = findKey(type, name);
        if (!key) {
            report(name, "unknown key" + suggestNearName(name, names));
            continue;
        }
        const KeyPlace* keyPlace = place->find(name);
        const std::string wrongKind =
            keyPlace ? findWrongKind(*key, keyPlace->kinds, getText(*block, name)) : std::string();
        if (!wrongKind.empty())
            report(name, wrongKind);
        MBS_KeyInfo given = *key;
        given.name = name.c_str();
        checkRole(type, given);
        if (key->isNumbered)
            checkNumber(*key, name);
    }
}

/// The kernel counts from 0 and stops at a gap.
void Checker::checkNumber(const MBS_KeyInfo& key, const std::string& name) {
    const std::string number = numberBehind(key, name);
    if (number.size() > 1 && number[0] == '0')
        return report(name, "not read: the number begins with a zero");
    for (std::size_t k = 0; k < block->keys.size(); ++k) {
        const std::string next = key.name + std::to_string(k);
        if (next == name)
            return;
        if (!block->isKeyInBlock(next))
            return report(name, fmt::format("not read: <{}> is missing", next));
    }
}

/// The blocks whose keys may call for no object at all.
void Checker::checkThatItMakesSomething(const MBS_BlockTypeInfo& type) {
    const std::string name = type.type;
    if (block->kind == "Constraint" && name == "Generic") {
        bool isAnySet = false;
        for (const char* flag : {"dxFixed", "axFixed", "dyFixed", "ayFixed", "dzFixed", "azFixed"}) {
            Block probe(*block); // a failed read leaves its text on the block
            bool isSet = false;
            if (probe.isKeyInBlock(flag))
                probe.getValue(flag, &isSet);
            isAnySet = isAnySet || isSet;
        }
        if (!isAnySet)
            report("type", "none of dxFixed, axFixed, dyFixed, ayFixed, dzFixed, azFixed is true: the "
                           "constraint makes nothing");
    }
    if (block->kind == "Measure" && name == "FlexTranslational") {
        const std::vector<std::string> ids = readTexts(*block, "BodyIDs");
        if (ids.size() == 2 && ids[1] != "0")
            report("BodyIDs", "the second must be \"0\": between two bodies the measure makes nothing");
    }
}

void Checker::checkContact(const MBS_BlockTypeInfo& type) {
    const char* const key = "IsNumericJacobiRequired";
    if (block->kind == "Force" && std::string(type.type) == "RigidContact" && block->isKeyInBlock(key) &&
        toLower(getText(*block, key)) == "no")
        report(key, "false: Newton's method will be slow while the bodies touch", Finding::Severity::Warning);
}

void Checker::checkRole(const MBS_BlockTypeInfo& type, const MBS_KeyInfo& key) {
    std::string problem;
    switch (key.role) {
    case MBS_KeyRole::UnitVector:
        if (const auto direction = readNumbers<3>(*block, key.name, DoubleVector3))
            problem = checkUnitVector(*direction);
        break;
    case MBS_KeyRole::Orientation:
        if (const auto axes = readNumbers<9>(*block, key.name, DoubleMatrix3x3))
            problem = checkOrientation(*axes);
        break;
    case MBS_KeyRole::Mass:
        if (const auto mass = readNumbers<1>(*block, key.name, Double))
            problem = checkMass((*mass)[0]);
        break;
    case MBS_KeyRole::Inertia:
        return checkInertiaOf(type, key);
    case MBS_KeyRole::BodyID:
        return checkBodyID(key.name, getText(*block, key.name));
    case MBS_KeyRole::BodyIDs:
        return checkBodyIDs(key);
    case MBS_KeyRole::MeasureLabel:
        return checkLabel(key, "Measure", "measure");
    case MBS_KeyRole::DataObjectLabel:
        return checkLabel(key, "DataObject", "data object");
    case MBS_KeyRole::Expression:
        return checkExpression(key);
    case MBS_KeyRole::File:
        return checkFile(key);
    case MBS_KeyRole::Plain:
        break;
    }
    if (!problem.empty())
        report(key.name, problem);
}

void Checker::checkFile(const MBS_KeyInfo& key) {
    IO_DataModelBlock probe = *block;
    std::string name;
    if (!probe.isKeyInBlock(key.name))
        return;
    probe.getValue(key.name, &name, IO_ValueCode::String);
    if (std::error_code problem; !std::filesystem::is_regular_file(name, problem))
        report(key.name, fmt::format("there is no file <{}>", name));
}

void Checker::checkInertiaOf(const MBS_BlockTypeInfo& type, const MBS_KeyInfo& key) {
    const auto moments = readNumbers<3>(*block, key.name, DoubleVector3);
    const auto massKey =
        std::ranges::find_if(type.keys, [](const MBS_KeyInfo& k) { return k.role == MBS_KeyRole::Mass; });
    if (!moments || massKey == type.keys.end())
        return;
    const auto mass = readNumbers<1>(*block, massKey->name, Double);
    const std::string problem = checkInertia(*moments, mass ? (*mass)[0] : 0.0);
    if (!problem.empty())
        report(key.name, problem);
}

void Checker::checkBodyIDs(const MBS_KeyInfo& key) {
    const std::vector<std::string> ids = readTexts(*block, key.name);
    if (ids.size() != 2 || ids[0].empty() || ids[1].empty())
        return report(key.name, "two UUIDs of bodies belong here, \"0\" for the ground");
    for (const std::string& id : ids)
        if (id != "0")
            checkBodyID(key.name, id);
}

void Checker::checkBodyID(const char* key, const std::string& id) {
    if (!bodies.contains(id))
        report(key, fmt::format("no body has the UUID <{}>{}", id, suggest(id, bodies)));
}

void Checker::checkLabel(const MBS_KeyInfo& key, const char* kind, const char* name) {
    const std::string label = getText(*block, key.name);
    const Names& known = labels[kind];
    if (!known.contains(toLower(label)))
        report(key.name, fmt::format("no {} has the label <{}>{}", name, label, suggest(label, known)));
}

/// What is wrong with a label in an expression; empty if nothing.
std::string Checker::findProblem(const MBS_ExpressionMention& mention) {
    const bool isMeasure = mention.kind == MBS_ExpressionMention::Measure;
    const Names& known = labels[isMeasure ? "Measure" : "DataObject"];
    if (!known.contains(mention.label))
        return fmt::format("no {} has the label <{}>{}", isMeasure ? "measure" : "data object", mention.label,
                           suggest(mention.label, known));
    if (isMeasure)
        return {};
    const bool isParameter = dataTypes[mention.label] == "Parameter";
    if (isParameter == (mention.kind == MBS_ExpressionMention::Parameter))
        return {};
    return fmt::format("the data object <{}> is {}", mention.label,
                       isParameter ? "a parameter, where a spline belongs" : "no parameter");
}

void Checker::checkExpression(const MBS_KeyInfo& key) {
    const std::string text = getText(*block, key.name);
    const MBS_ExpressionFinding finding = MBS_checkExpression(text);
    for (const MBS_ExpressionMention& mention : finding.mentions)
        if (const std::string problem = findProblem(mention); !problem.empty())
            report(key.name, problem + showPlace(text, mention.column));
    if (!finding.message.empty())
        report(key.name, finding.message + showPlace(text, finding.column));
}

} // namespace

void checkStrictly(ModelFile& file, std::span<const MBS_BlockTypeInfo> vocabulary) {
    Checker(file, vocabulary).run();
}

void checkStrictly(ModelFile& file) {
    const std::vector<MBS_BlockTypeInfo> vocabulary = MBS_getBlockVocabulary();
    checkStrictly(file, vocabulary);
}

} // namespace velmora::driver
