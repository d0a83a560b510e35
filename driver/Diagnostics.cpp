#include "driver/Diagnostics.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace velmora::driver {

namespace {

constexpr unsigned numOfNamedResiduals = 3;
constexpr std::array<const char*, 7> coordinateNames = {"x", "y", "z", "e0", "e1", "e2", "e3"};

std::string getCoordinateName(unsigned index) {
    const auto numOfNames = static_cast<unsigned>(coordinateNames.size());
    return index < numOfNames ? coordinateNames[index] : fmt::format("mode {}", index - numOfNames + 1);
}

bool actsOnBody(IO_DataModelBlock& force, const std::string& body) {
    if (!force.isKeyInBlock("BodyIDs"))
        return true; // a field, like gravity
    std::vector<std::string> bodies;
    force.getValue("BodyIDs", &bodies);
    return std::find(bodies.begin(), bodies.end(), body) != bodies.end();
}

} // namespace

Diagnostics::Diagnostics(const HHTSystem* equations, IO_DataModel* input)
    : system(equations),
      dataModel(input) {}

Diagnostics::Place Diagnostics::locate(unsigned row) const {
    const MBS_Model& model = *system->getModel();
    const unsigned numOfPhysicalDof = system->getNumOfPhysicalDof();
    if (row < numOfPhysicalDof) {
        const auto& offsets = system->residual.bodyOffset;
        const auto next = std::upper_bound(offsets.begin(), offsets.end(), row);
        const auto body = static_cast<unsigned>(next - offsets.begin()) - 1;
        return {Place::Coordinate, body, row - offsets[body]};
    }
    unsigned equation = row - numOfPhysicalDof;
    for (unsigned body = 0; body < model.getNumOfBodies(); ++body) {
        if (equation < model.getNumOfInnerConstraintDofOfBody(body))
            return {Place::Norm, body, equation};
        equation -= model.getNumOfInnerConstraintDofOfBody(body);
    }
    for (unsigned constraint = 0; constraint < model.getNumOfExternalConstraints(); ++constraint) {
        if (equation < model.getNumOfConstraintDofOfConstraint(constraint))
            return {Place::Constraint, constraint, equation};
        equation -= model.getNumOfConstraintDofOfConstraint(constraint);
    }
    return {};
}

std::string Diagnostics::getBodyName(unsigned body) const {
    // A block that made no body would shift all names; then the number has to do.
    const bool isInOrder = dataModel->getNumOfBlocks("Body") == system->getModel()->getNumOfBodies();
    const IO_DataModelBlock* block = isInOrder ? dataModel->getBlock("Body", body) : nullptr;
    if (!block)
        return fmt::format("body number {}", body + 1);
    if (block->label.empty() || block->label == block->uuid)
        return fmt::format("body <{}>", block->uuid);
    return fmt::format("body <{}> (\"{}\")", block->uuid, block->label);
}

std::string Diagnostics::getEquationName(unsigned row) const {
    const Place place = locate(row);
    switch (place.kind) {
    case Place::Coordinate:
        return fmt::format("{}, coordinate {}", getBodyName(place.owner), getCoordinateName(place.index));
    case Place::Norm:
        return fmt::format("{}, norm of the Euler parameters", getBodyName(place.owner));
    case Place::Constraint:
        return fmt::format("constraint <{}>, equation {} of {}",
                           system->getModel()->getConstraintID(place.owner), place.index + 1,
                           system->getModel()->getNumOfConstraintDofOfConstraint(place.owner));
    default:
        return "an unknown equation";
    }
}

std::string Diagnostics::getForcesOnBody(unsigned body) const {
    const IO_DataModelBlock* block = dataModel->getBlock("Body", body);
    std::string names;
    for (unsigned i = 0; block && i < dataModel->getNumOfBlocks("Force"); ++i) {
        IO_DataModelBlock& force = *dataModel->getBlock("Force", i);
        if (actsOnBody(force, block->uuid))
            names += fmt::format("{}<{}> ({})", names.empty() ? "" : ", ", force.uuid, force.type);
    }
    return names.empty() ? "No force acts there." : "Forces that act there: " + names + ".";
}

std::string Diagnostics::describeNotFinite() const {
    const unsigned numOfPhysicalDof = system->getNumOfPhysicalDof();
    for (unsigned row = 0; row < numOfPhysicalDof + system->getNumOfConstraints(); ++row) {
        const double value = row < numOfPhysicalDof
                                 ? system->residual.dofVector->data[row]
                                 : system->constraintResidual.dofVector->data[row - numOfPhysicalDof];
        if (std::isfinite(value))
            continue;
        const std::string text =
            fmt::format("The residual of {} is not finite ({}).", getEquationName(row), value);
        const Place place = locate(row);
        return place.kind == Place::Coordinate ? text + " " + getForcesOnBody(place.owner) : text;
    }
    return "The residual is finite.";
}

std::string Diagnostics::describeLargestResiduals() const {
    const std::vector<double>& values = system->getRightHandSide();
    std::vector<unsigned> rows(values.size());
    for (unsigned i = 0; i < rows.size(); ++i)
        rows[i] = i;
    const auto numOfRows = std::min<std::ptrdiff_t>(numOfNamedResiduals, std::ssize(rows));
    std::partial_sort(rows.begin(), rows.begin() + numOfRows, rows.end(),
                      [&](unsigned a, unsigned b) { return std::fabs(values[a]) > std::fabs(values[b]); });
    std::string text = "Largest residuals:";
    for (std::ptrdiff_t i = 0; i < numOfRows; ++i) {
        const unsigned row = rows[static_cast<std::size_t>(i)];
        text += fmt::format("{} {} ({:.3g})", i ? ";" : "", getEquationName(row), values[row]);
    }
    return text + ".";
}

std::string Diagnostics::getMasslessBodies() const {
    std::string names;
    for (unsigned body = 0; body < system->bodyMasses.size(); ++body)
        if (system->bodyMasses[body] == 0.0)
            names += (names.empty() ? "" : ", ") + getBodyName(body);
    return names;
}

std::string Diagnostics::describeSingularity() const {
    const unsigned row = system->getSolver().getSingularEquation();
    const Place place = locate(row);
    const bool isOfBody = place.kind == Place::Coordinate || place.kind == Place::Norm;
    std::string text = fmt::format("The system of equations is singular: {}.", getEquationName(row));
    if (isOfBody && system->bodyMasses[place.owner] == 0.0)
        return text + fmt::format(" The mass of {} is 0, and constraints don't hold all of its coordinates.",
                                  getBodyName(place.owner));
    if (place.kind == Place::Constraint)
        text += " The equation repeats what other constraints say, or depends on no coordinate here.";
    else if (place.kind == Place::Coordinate)
        text += " Nothing determines its acceleration: mass or inertia is missing, or a constraint is "
                "redundant.";
    const std::string massless = getMasslessBodies();
    return massless.empty() ? text : text + " Bodies of mass 0: " + massless + ".";
}

} // namespace velmora::driver
