#include "driver/ModelSections.h"

#include "driver/NearName.h"
#include "driver/SimulationSettings.h"
#include "driver/TomlValues.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>

namespace velmora::driver {

namespace {

/// One section while it is read: typed values by key, with findings where they aren't what they should be.
class SectionReader {
  public:
    SectionReader(const char* sectionName, const toml::table& section, ModelFile& modelFile)
        : name(sectionName),
          entries(getEntries(section)),
          file(modelFile) {}

    // Each of these three is false if the key isn't given or has no such value.
    bool getText(const std::string& key, std::string* value) {
        const TableEntry* entry = find(key);
        if (!entry || !isKind(*entry, entry->value->is_string(), "a text"))
            return false;
        *value = entry->value->as_string()->get();
        return true;
    }
    /// One of a few texts.
    bool getChoice(const std::string& key, std::string* value, const std::vector<std::string>& choices) {
        if (!getText(key, value))
            return false;
        if (std::ranges::find(choices, *value) != choices.end())
            return true;
        report(*find(key),
               fmt::format("must be \"{}\", but is \"{}\"", fmt::join(choices, "\" or \""), *value));
        return false;
    }
    bool getFlag(const std::string& key, bool* value) {
        const TableEntry* entry = find(key);
        if (!entry || !isKind(*entry, entry->value->is_boolean(), "true or false"))
            return false;
        *value = entry->value->as_boolean()->get();
        return true;
    }
    bool getNumber(const std::string& key, double* value) {
        const TableEntry* entry = find(key);
        if (!entry || !isKind(*entry, entry->value->is_number(), "a number"))
            return false;
        const double number = *entry->value->value<double>();
        if (!std::isfinite(number)) {
            report(*entry, "the number isn't finite");
            return false;
        }
        *value = number;
        return true;
    }

    /// A number of a range, which `isInRange` decides and `range` names.
    template <class Predicate>
    bool getNumber(const std::string& key, double* value, Predicate isInRange, const char* range) {
        double number = 0.0;
        if (!getNumber(key, &number))
            return false;
        if (!isInRange(number)) {
            report(*find(key), fmt::format("must {}, but is {}", range, number));
            return false;
        }
        *value = number;
        return true;
    }

    /// Finds fault with the keys that nobody has asked for.
    void reportUnknownKeys() {
        for (const TableEntry& entry : entries)
            if (std::ranges::find(knownKeys, entry.key) == knownKeys.end())
                report(entry, "unknown key" + suggestNearName(entry.key, knownKeys));
    }

  private:
    const TableEntry* find(const std::string& key) {
        knownKeys.push_back(key);
        const auto found = std::ranges::find(entries, key, &TableEntry::key);
        return found == entries.end() ? nullptr : &*found;
    }
    bool isKind(const TableEntry& entry, bool is, const char* wanted) {
        if (!is)
            report(entry, describe(*entry.value) + " where " + wanted + " belongs");
        return is;
    }
    void report(const TableEntry& entry, const std::string& problem) {
        file.findings.push_back({Finding::Severity::Error, entry.line,
                                 fmt::format("section [{}], key <{}>: {}", name, entry.key, problem)});
    }

    const char* name;
    std::vector<TableEntry> entries;
    ModelFile& file;
    std::vector<std::string> knownKeys;
};

bool isPositive(double x) {
    return x > 0.0;
}

bool isNotNegative(double x) {
    return x >= 0.0;
}

// The range in which the HHT method is unconditionally stable and of second order.
bool isHHTParameter(double x) {
    return x >= -1.0 / 3.0 && x <= 0.0;
}

} // namespace

void readModelSection(const toml::table& section, ModelFile& file) {
    SectionReader reader("model", section, file);
    reader.getText("name", &file.dataModel->modelName);
    reader.reportUnknownKeys();
}

void readSimulationSection(const toml::table& section, ModelFile& file) {
    SectionReader reader("simulation", section, file);
    SimulationSection& simulation = file.simulation;
    double endTime = 0.0;
    if (reader.getNumber("end_time", &endTime, isPositive, "be positive"))
        simulation.endTime = endTime;
    reader.getNumber("step", &simulation.step, isPositive, "be positive");
    double maxStep = 0.0;
    if (reader.getNumber("max_step", &maxStep, isPositive, "be positive"))
        simulation.maxStep = maxStep;
    // A faulty flag leaves open which range of alpha was meant: the wider one then.
    const bool isVarying = !section.contains("fixed_step") ||
                           (reader.getFlag("fixed_step", &simulation.fixedStep) && !simulation.fixedStep);
    reader.getNumber("tolerance", &simulation.tolerance, isPositive, "be positive");
    const auto isDamped = [](double x) { return isHHTParameter(x) && x <= weakestDamping; };
    if (isVarying)
        reader.getNumber("alpha", &simulation.alpha, isDamped,
                         "lie in [-1/3, -0.01] unless fixed_step is true");
    else
        reader.getNumber("alpha", &simulation.alpha, isHHTParameter, "lie in [-1/3, 0]");
    reader.getNumber("start_correction_limit", &simulation.startCorrectionLimit, isNotNegative,
                     "not be negative");
    if (std::string redundant = "drop"; reader.getChoice("redundant", &redundant, {"drop", "error"}))
        simulation.refuseRedundant = redundant == "error";
    reader.reportUnknownKeys();
}

void readResultsSection(const toml::table& section, ModelFile& file) {
    SectionReader reader("results", section, file);
    for (const char* key : {"WriteStateResultFile", "WriteVelocityResultFile", "WriteAccelerationResultFile",
                            "WriteForceResultFile", "WriteConstraintForceResultFile",
                            "WriteExtConstraintLagrangeResultFile", "WriteMeasureResultFile"}) {
        bool isWanted = false;
        if (reader.getFlag(key, &isWanted))
            file.resultKeys.emplace_back(key, isWanted ? "yes" : "no");
    }
    reader.getFlag("csv", &file.isTableOfMeasuresWanted);
    double value = 0.0;
    for (const char* key : {"OutputTimeBegin", "OutputTimeStepSize"})
        if (reader.getNumber(key, &value, isNotNegative, "not be negative"))
            file.resultKeys.emplace_back(key, fmt::format("{}", value));
    if (reader.getNumber("SimulationTimeEnd", &value, isPositive, "be positive"))
        file.resultKeys.emplace_back("SimulationTimeEnd", fmt::format("{}", value));
    reader.reportUnknownKeys();
}

} // namespace velmora::driver
