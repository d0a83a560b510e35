#include "driver/Redundancy.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace velmora::driver {

namespace {

constexpr std::size_t numOfNamedOwners = 6;

} // namespace

bool Redundancy::leaveOutDependentEquations(double tolerance) {
    const SparseRows rows = system->getConstraintRows();
    rowLengths = getRowLengths(rows);
    found = findRank(rows, tolerance);
    return leaveOutFound();
}

/// True if these aren't the equations that are left out already.
bool Redundancy::leaveOutFound() {
    std::vector<unsigned> equations;
    for (const DependentEquation& dependent : found.dependent)
        equations.push_back(dependent.equation);
    if (equations == system->getLeftOut())
        return false;
    system->leaveOut(equations);
    return true;
}

void Redundancy::exchangeHistory(MBS_History& history) {
    history.exchange(rowLengths);
    history.exchange(found.rank);
    auto numOfDependent = found.dependent.size();
    history.exchange(numOfDependent);
    if (history.isTakingBack())
        found.dependent.resize(std::min<std::size_t>(numOfDependent, system->getNumOfConstraints()));
    for (DependentEquation& dependent : found.dependent) {
        history.exchange(dependent.equation);
        auto numOfTerms = dependent.combination.size();
        history.exchange(numOfTerms);
        if (history.isTakingBack())
            dependent.combination.resize(std::min<std::size_t>(numOfTerms, system->getNumOfConstraints()));
        for (auto& [equation, coefficient] : dependent.combination) {
            history.exchange(equation);
            history.exchange(coefficient);
        }
    }
    if (!history.isTakingBack())
        return;
    if (isSound())
        leaveOutFound();
    else
        history.refuse();
}

/// Whether all numbers of equations are such.
bool Redundancy::isSound() const {
    const unsigned end = system->getNumOfConstraints();
    bool isSound = rowLengths.size() == end;
    for (const DependentEquation& dependent : found.dependent) {
        isSound = isSound && dependent.equation < end;
        for (const auto& [equation, coefficient] : dependent.combination)
            isSound = isSound && equation < end;
    }
    return isSound;
}

std::vector<std::string> Redundancy::describe() const {
    std::vector<std::string> texts;
    for (const DependentEquation& dependent : found.dependent) {
        const std::string name = names->getShortName(dependent.equation);
        const std::string owner = names->getOwnerName(dependent.equation);
        std::vector<std::string> owners;
        for (const auto& [equation, coefficient] : dependent.combination) {
            const std::string other = names->getOwnerName(equation);
            const bool isOfJoint =
                names->locate(system->getNumOfPhysicalDof() + equation).kind != EquationNames::Place::Norm;
            if (isOfJoint && other != owner && std::ranges::find(owners, other) == owners.end())
                owners.push_back(other);
        }
        if (dependent.combination.empty())
            texts.push_back(name + " depends on no coordinate");
        else
            texts.push_back(name + " repeats " +
                            (owners.empty() ? owner : joinShortly(owners, numOfNamedOwners, ", ")));
    }
    return texts;
}

Redundancy::Violation Redundancy::findViolationOfLeftOut(const double* residuals) const {
    Violation largest;
    for (const unsigned equation : system->getLeftOut())
        if (const double size = std::fabs(residuals[equation]) / rowLengths[equation];
            !(size <= largest.size))
            largest = {size, equation};
    return largest;
}

Redundancy::Violation Redundancy::findLargestViolation() const {
    Violation largest;
    const unsigned first = system->getModel()->getNumOfInnerConstraintDof();
    for (unsigned equation = first; equation < rowLengths.size(); ++equation)
        if (const double size = std::fabs(getResiduals()[equation]) / rowLengths[equation];
            !(size <= largest.size))
            largest = {size, equation};
    return largest;
}

std::string joinShortly(const std::vector<std::string>& texts, std::size_t largestNumber,
                        const char* separator) {
    std::string joined;
    for (std::size_t i = 0; i < std::min(texts.size(), largestNumber); ++i)
        joined += (i ? separator : "") + texts[i];
    if (texts.size() > largestNumber)
        joined += fmt::format("{}and {} more", separator, texts.size() - largestNumber);
    return joined;
}

} // namespace velmora::driver
