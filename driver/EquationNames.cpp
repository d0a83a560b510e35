#include "driver/EquationNames.h"

#include <velmora/velmora.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace velmora::driver {

namespace {

constexpr std::array<const char*, 7> coordinateNames = {"x", "y", "z", "e0", "e1", "e2", "e3"};
// In the order in which a block makes its constraints.
constexpr const char* fixFlags[] = {"dxFixed", "axFixed", "dyFixed", "ayFixed", "dzFixed", "azFixed"};

std::string getCoordinateName(unsigned index) {
    const auto numOfNames = static_cast<unsigned>(coordinateNames.size());
    return index < numOfNames ? coordinateNames[index] : fmt::format("eta{}", index - numOfNames + 1);
}

bool isFlagSet(IO_DataModelBlock& block, const char* flag) {
    bool isSet = false;
    if (block.isKeyInBlock(flag))
        block.getValue(flag, &isSet);
    return isSet;
}

std::string getLabel(const IO_DataModelBlock& block) {
    return block.label.empty() ? block.uuid : block.label;
}

/// "link1, ground"
std::string getBodies(IO_DataModelBlock& block) {
    std::vector<std::string> bodies;
    block.getValue("BodyIDs", &bodies);
    std::string names;
    for (const std::string& body : bodies)
        names += (names.empty() ? "" : ", ") + (body == "0" ? "ground" : body);
    return names;
}

} // namespace

EquationNames::EquationNames(const MBS_Model* multibodyModel, IO_DataModel* input)
    : model(multibodyModel),
      dataModel(input),
      numOfPhysicalDof(multibodyModel->getNumOfPhysicalDof()) {
    collectRows();
    collectConstraints();
}

void EquationNames::collectConstraints() {
    for (IO_DataModelBlock* block : dataModel->getBlocksOfKind("Constraint")) {
        if (block->type != "Generic") {
            sources.push_back({block, ""});
            continue;
        }
        for (const char* flag : fixFlags)
            if (isFlagSet(*block, flag))
                sources.push_back({block, flag});
    }
    // A block that made nothing would shift all names; then numbers have to do.
    if (sources.size() != model->getNumOfExternalConstraints())
        sources.clear();
}

void EquationNames::collectRows() {
    const unsigned numOfBodies = model->getNumOfBodies();
    unsigned row = 0;
    const auto add = [&](Place::Kind kind, unsigned owner, unsigned size) {
        if (size > 0)
            owners.push_back({row, kind, owner});
        row += size;
    };
    for (unsigned body = 0; body < numOfBodies; ++body)
        add(Place::Coordinate, body,
            model->getNumOfTransDofOfBody(body) + model->getNumOfRotDofOfBody(body) +
                model->getNumOfFlexDofOfBody(body));
    for (unsigned body = 0; body < numOfBodies; ++body)
        add(Place::Norm, body, model->getNumOfInnerConstraintDofOfBody(body));
    for (unsigned i = 0; i < model->getNumOfExternalConstraints(); ++i)
        add(Place::Constraint, i, model->getNumOfConstraintDofOfConstraint(i));
    add(Place::Unknown, 0, 1);
}

EquationNames::Place EquationNames::locate(unsigned row) const {
    const auto next = std::ranges::upper_bound(owners, row, {}, &Owner::firstRow);
    const Owner& owner = *(next - 1);
    return {owner.kind, owner.index, row - owner.firstRow};
}

const EquationNames::Source* EquationNames::getSource(unsigned constraint) const {
    return constraint < sources.size() ? &sources[constraint] : nullptr;
}

const IO_DataModelBlock* EquationNames::getConstraintBlock(unsigned constraint) const {
    const Source* source = getSource(constraint);
    return source ? source->block : nullptr;
}

std::string EquationNames::getBodyUuid(unsigned body) const {
    const bool isInOrder = dataModel->getNumOfBlocks("Body") == model->getNumOfBodies();
    const IO_DataModelBlock* block = isInOrder ? dataModel->getBlock("Body", body) : nullptr;
    return block ? block->uuid : std::string();
}

std::string EquationNames::getBodyName(unsigned body) const {
    const std::string uuid = getBodyUuid(body);
    if (uuid.empty())
        return fmt::format("body number {}", body + 1);
    const std::string label = dataModel->getBlock("Body", body)->label;
    if (label.empty() || label == uuid)
        return fmt::format("body <{}>", uuid);
    return fmt::format("body <{}> (\"{}\")", uuid, label);
}

std::string EquationNames::getName(unsigned row) const {
    const Place place = locate(row);
    switch (place.kind) {
    case Place::Coordinate:
        return fmt::format("{}, coordinate {}", getBodyName(place.owner), getCoordinateName(place.index));
    case Place::Norm:
        return fmt::format("{}, norm of the Euler parameters", getBodyName(place.owner));
    case Place::Constraint:
        return "constraint " + getShortName(row - numOfPhysicalDof);
    default:
        return "an unknown equation";
    }
}

std::string EquationNames::getShortName(unsigned equation) const {
    const Place place = locate(numOfPhysicalDof + equation);
    if (place.kind != Place::Constraint)
        return getName(numOfPhysicalDof + equation);
    const Source* source = getSource(place.owner);
    if (!source)
        return fmt::format("number {}", place.owner + 1);
    std::string name = getLabel(*source->block);
    if (!source->flag.empty())
        name = source->flag + " of " + name;
    if (const unsigned size = model->getNumOfConstraintDofOfConstraint(place.owner); size > 1)
        name = fmt::format("equation {} of {}", place.index + 1, name);
    return name + " (" + getBodies(*source->block) + ")";
}

std::string EquationNames::getOwnerName(unsigned equation) const {
    const Place place = locate(numOfPhysicalDof + equation);
    if (place.kind != Place::Constraint)
        return getBodyUuid(place.owner);
    const Source* source = getSource(place.owner);
    return source ? getLabel(*source->block) : fmt::format("number {}", place.owner + 1);
}

} // namespace velmora::driver
