#include "driver/StartSection.h"

#include "driver/NearName.h"
#include "driver/TomlValues.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace velmora::driver {

namespace {

constexpr double largestNormError = 1e-3; // of Euler parameters, as of the frames of bodies

void report(ModelFile& file, unsigned line, std::string text) {
    file.findings.push_back({Finding::Severity::Error, line, std::move(text)});
}

/// A list of so many finite numbers; 0: any number of them. What is wrong, or an empty text.
std::string readNumbers(const toml::node& node, std::size_t size, std::vector<double>& numbers) {
    const toml::array* list = node.as_array();
    if (!list)
        return describe(node) + " where a list of numbers belongs";
    numbers.clear();
    for (const toml::node& element : *list) {
        const std::optional<double> number =
            element.is_number() ? element.value<double>() : std::optional<double>();
        if (!number)
            return describe(element) + " where a number belongs";
        if (!std::isfinite(*number))
            return "the number isn't finite";
        numbers.push_back(*number);
    }
    if (size > 0 && numbers.size() != size)
        return fmt::format("{} numbers where {} belong", numbers.size(), size);
    return {};
}

/// One key of the table but "uuid"; what is wrong, or an empty text.
std::string readKey(const TableEntry& entry, BodyStart& start) {
    const auto read = [&](std::size_t size, std::vector<double>& numbers) {
        return readNumbers(*entry.value, size, numbers);
    };
    if (entry.key == "Position")
        return read(3, start.position);
    if (entry.key == "EulerParameters") {
        std::string problem = read(4, start.eulerParameters);
        const auto& p = start.eulerParameters;
        const double norm = std::sqrt(std::inner_product(p.begin(), p.end(), p.begin(), 0.0));
        if (problem.empty() && !(std::fabs(norm - 1.0) <= largestNormError))
            return fmt::format("their norm must be 1, but is {:.6g}", norm);
        return problem;
    }
    if (entry.key == "ModalCoordinates")
        return read(0, start.modalCoordinates);
    if (entry.key == "Velocity")
        return read(3, start.velocity);
    if (entry.key == "Omega")
        return read(3, start.omega);
    if (entry.key == "ModalRates")
        return read(0, start.modalRates);
    return "unknown key" +
           suggestNearName(entry.key, {"uuid", "Position", "EulerParameters", "ModalCoordinates", "Velocity",
                                       "Omega", "ModalRates"});
}

} // namespace

void readStart(const toml::table& table, ModelFile& file) {
    BodyStart start;
    start.line = table.source().begin.line;
    const toml::node* uuid = table.get("uuid");
    if (!uuid || !uuid->is_string())
        return report(file, (uuid ? uuid->source() : table.source()).begin.line,
                      uuid ? fmt::format("Start, key <uuid>: {} where a text belongs", describe(*uuid))
                           : "Start, key <uuid>: missing; every start names its body");
    start.uuid = uuid->as_string()->get();
    for (const TableEntry& entry : getEntries(table)) {
        const std::string problem = entry.key == "uuid" ? "" : readKey(entry, start);
        if (!problem.empty())
            report(file, entry.line, fmt::format("Start <{}>, key <{}>: {}", start.uuid, entry.key, problem));
    }
    for (const char* key : {"Position", "EulerParameters"})
        if (!table.contains(key))
            report(file, start.line, fmt::format("Start <{}>, key <{}>: missing", start.uuid, key));
    file.starts.push_back(std::move(start));
}

void completeStarts(ModelFile& file) {
    std::vector<std::string> uuids;
    for (const IO_DataModelBlock* block : file.dataModel->getBlocksOfKind("Body"))
        uuids.push_back(block->uuid);
    std::vector<std::string> moved;
    for (BodyStart& start : file.starts) {
        const auto found = std::ranges::find(uuids, start.uuid);
        if (found == uuids.end())
            report(file, start.line,
                   fmt::format("Start <{}>: no body has this UUID{}", start.uuid,
                               suggestNearName(start.uuid, uuids)));
        else if (std::ranges::find(moved, start.uuid) != moved.end())
            report(file, start.line, fmt::format("Start <{}>: the body has a start already", start.uuid));
        start.body = static_cast<unsigned>(found - uuids.begin());
        moved.push_back(start.uuid);
    }
}

void checkStarts(const MBS_Model& model, ModelFile& file) {
    for (const BodyStart& start : file.starts) {
        const unsigned numOfModes = model.getNumOfFlexDofOfBody(start.body);
        const auto check = [&](const char* key, const std::vector<double>& numbers) {
            if (!numbers.empty() && numbers.size() != numOfModes)
                report(file, start.line,
                       fmt::format("Start <{}>, key <{}>: {} numbers, but the body has {} modes", start.uuid,
                                   key, numbers.size(), numOfModes));
        };
        check("ModalCoordinates", start.modalCoordinates);
        check("ModalRates", start.modalRates);
    }
}

} // namespace velmora::driver
