#include "driver/Diagnostics.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace velmora::driver {

namespace {

constexpr unsigned numOfNamedResiduals = 3;

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
      dataModel(input),
      equationNames(equations->getModel(), input) {}

std::string Diagnostics::getForcesOnBody(unsigned body) const {
    const IO_DataModelBlock* block = dataModel->getBlock("Body", body);
    std::string names;
    for (IO_DataModelBlock* force : dataModel->getBlocksOfKind("Force"))
        if (block && actsOnBody(*force, block->uuid))
            names += fmt::format("{}<{}> ({})", names.empty() ? "" : ", ", force->uuid, force->type);
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
            fmt::format("The residual of {} is not finite ({}).", equationNames.getName(row), value);
        const EquationNames::Place place = equationNames.locate(row);
        return place.kind == EquationNames::Place::Coordinate ? text + " " + getForcesOnBody(place.owner)
                                                              : text;
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
        text += fmt::format("{} {} ({:.3g})", i ? ";" : "", equationNames.getName(row), values[row]);
    }
    return text + ".";
}

std::string Diagnostics::getMasslessBodies() const {
    std::string names;
    for (unsigned body = 0; body < system->bodyMasses.size(); ++body)
        if (system->bodyMasses[body] == 0.0)
            names += (names.empty() ? "" : ", ") + equationNames.getBodyName(body);
    return names;
}

std::string Diagnostics::describeSingularity() const {
    const unsigned row = system->getSolver().getSingularEquation();
    const EquationNames::Place place = equationNames.locate(row);
    const bool isOfBody =
        place.kind == EquationNames::Place::Coordinate || place.kind == EquationNames::Place::Norm;
    std::string text = fmt::format("The system of equations is singular: {}.", equationNames.getName(row));
    if (isOfBody && system->bodyMasses[place.owner] == 0.0)
        return text + fmt::format(" The mass of {} is 0, and constraints don't hold all of its coordinates.",
                                  equationNames.getBodyName(place.owner));
    if (place.kind == EquationNames::Place::Constraint)
        text += " The equation repeats what other constraints say, or depends on no coordinate here.";
    else if (place.kind == EquationNames::Place::Coordinate)
        text += " Nothing determines its acceleration: mass or inertia is missing, or a constraint is "
                "redundant.";
    const std::string massless = getMasslessBodies();
    return massless.empty() ? text : text + " Bodies of mass 0: " + massless + ".";
}

} // namespace velmora::driver
