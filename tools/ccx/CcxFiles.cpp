#include "tools/ccx/CcxFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>

namespace velmora::tools {

namespace {

using Eigen::Index;
using Triplets = std::vector<Eigen::Triplet<double>>;

/// Reads the files one after the other; the first thing that is wrong ends it.
class Reader {
  public:
    Reader(std::string jobName, std::string meshName) : job(std::move(jobName)), mesh(std::move(meshName)) {}

    CcxPart read() {
        Triplets masses, stiffness;
        if (readDof() && readMatrix(".sti", stiffness, false) && readMatrix(".mas", masses, true) &&
            readMesh()) {
            const auto points = static_cast<Index>(part.model.labels.size());
            part.model.stiffness.resize(3 * points, 3 * points);
            part.model.stiffness.setFromTriplets(stiffness.begin(), stiffness.end());
            part.model.masses.resize(points, points);
            part.model.masses.setFromTriplets(masses.begin(), masses.end());
        }
        return std::move(part);
    }

  private:
    bool open(const std::string& name) {
        fileName = name;
        file.close();
        file.clear();
        file.open(name);
        lineNumber = 0;
        if (!file)
            part.error = fmt::format("can't read <{}>", name);
        return part.error.empty();
    }
    bool nextLine() {
        ++lineNumber;
        if (!std::getline(file, line))
            return false;
        if (line.ends_with('\r'))
            line.pop_back();
        return true;
    }
    bool refuse(const std::string& text) {
        part.error = fmt::format("{}:{}: {}", fileName, lineNumber, text);
        return false;
    }

    bool readDof();
    bool readMatrix(const char* extension, Triplets& entries, bool isMass);
    bool readMesh();
    bool readCard();
    bool readNode();
    bool readSetMembers();

    std::string job, mesh, fileName, line;
    std::ifstream file;
    std::size_t lineNumber = 0;
    CcxPart part;
    std::map<unsigned, Index> pointOfLabel;
    std::vector<std::pair<Index, Index>> places; // per row: point and direction
    std::vector<bool> hasPosition;
    bool isInNodes = false;
    std::vector<Index>* openSet = nullptr;
};

// Lines "node.direction", directions 1 to 3, one per row of the matrices.
bool Reader::readDof() {
    if (!open(job + ".dof"))
        return false;
    std::vector<unsigned> directions;
    while (nextLine()) {
        unsigned label = 0, direction = 0;
        const std::size_t dot = line.find('.');
        if (dot == std::string::npos || !(std::istringstream(line.substr(0, dot)) >> label) ||
            !(std::istringstream(line.substr(dot + 1)) >> direction))
            return refuse("\"node.direction\" belongs here");
        if (direction < 1 || direction > 3)
            return refuse(fmt::format("direction {}: only solid elements have modal files", direction));
        const auto [place, isNew] =
            pointOfLabel.try_emplace(label, static_cast<Index>(part.model.labels.size()));
        if (isNew) {
            part.model.labels.push_back(label);
            directions.push_back(0);
        }
        directions[static_cast<std::size_t>(place->second)] |= 1U << (direction - 1);
        places.emplace_back(place->second, direction - 1);
    }
    for (std::size_t p = 0; p < directions.size(); ++p)
        if (directions[p] != 7)
            return refuse(fmt::format("node {} can't move along all axes: the part has to be free",
                                      part.model.labels[p]));
    return !places.empty() || refuse("the file is empty");
}

// Lines "row column value" of one triangle. Masses are alike along x, y and z, and don't couple these.
bool Reader::readMatrix(const char* extension, Triplets& entries, bool isMass) {
    if (!open(job + extension))
        return false;
    while (nextLine()) {
        std::size_t row = 0, col = 0;
        double value = 0.0;
        if (!(std::istringstream(line) >> row >> col >> value) || !std::isfinite(value))
            return refuse("row, column and a number belong here");
        if (row < 1 || row > places.size() || col < 1 || col > places.size())
            return refuse(fmt::format("the matrix has {} rows", places.size()));
        const auto [i, a] = places[row - 1];
        const auto [j, b] = places[col - 1];
        if (isMass && a != b && value != 0.0)
            return refuse("a mass that couples two directions");
        if (isMass && (a != 0 || b != 0))
            continue;
        const Index r = isMass ? i : 3 * i + a, c = isMass ? j : 3 * j + b;
        entries.emplace_back(r, c, value);
        if (row != col)
            entries.emplace_back(c, r, value);
    }
    return true;
}

bool Reader::readMesh() {
    if (!open(mesh))
        return false;
    part.model.positions = Eigen::Matrix3Xd::Zero(3, static_cast<Index>(part.model.labels.size()));
    hasPosition.assign(part.model.labels.size(), false);
    while (nextLine()) {
        if (line.starts_with("**") || line.find_first_not_of(" \t") == std::string::npos)
            continue;
        const bool isSound = line.starts_with('*') ? readCard() : isInNodes ? readNode() : readSetMembers();
        if (!isSound)
            return false;
    }
    for (std::size_t p = 0; p < hasPosition.size(); ++p)
        if (!hasPosition[p])
            return refuse(fmt::format("node {} isn't in the mesh", part.model.labels[p]));
    return true;
}

bool Reader::readCard() {
    std::string card = line;
    std::erase(card, ' ');
    std::ranges::transform(card, card.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    isInNodes = card == "*NODE" || card.starts_with("*NODE,");
    openSet = nullptr;
    if (!card.starts_with("*NSET,"))
        return true;
    const std::size_t name = card.find("NSET=");
    if (name == std::string::npos)
        return refuse("a set without a name");
    openSet = &part.sets[card.substr(name + 5, card.find(',', name) - name - 5)];
    return true;
}

bool Reader::readNode() {
    std::string numbers = line;
    std::ranges::replace(numbers, ',', ' ');
    unsigned label = 0;
    Eigen::Vector3d position;
    if (!(std::istringstream(numbers) >> label >> position(0) >> position(1) >> position(2)) ||
        !position.allFinite())
        return refuse("a label and three coordinates belong here");
    if (const auto point = pointOfLabel.find(label); point != pointOfLabel.end()) {
        part.model.positions.col(point->second) = position;
        hasPosition[static_cast<std::size_t>(point->second)] = true;
    }
    return true;
}

// Nodes that no element holds aren't among the degrees of freedom.
bool Reader::readSetMembers() {
    std::string numbers = openSet ? line : "";
    std::ranges::replace(numbers, ',', ' ');
    std::istringstream labels(numbers);
    for (unsigned label = 0; labels >> label;)
        if (const auto point = pointOfLabel.find(label); point != pointOfLabel.end())
            openSet->push_back(point->second);
    return labels.eof() || refuse("labels of nodes belong here");
}

} // namespace

CcxPart readCcxPart(const std::string& job, const std::string& mesh) {
    return Reader(job, mesh).read();
}

} // namespace velmora::tools
