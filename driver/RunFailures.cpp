#include "driver/RunFailures.h"

#include "driver/Diagnostics.h"

#include <fmt/format.h>

#include <algorithm>

namespace velmora::driver {

namespace {

constexpr double violationOfLostStates = 0.1; // too far from the constraints to tell of a position

std::string describeStep(double t, double h) {
    return fmt::format("Time {:.9g}, step {:.3g}: ", t, h);
}

} // namespace

std::string RunFailures::describe(StepResult result, const HHTState& trial, const HHTState* last,
                                  double h) const {
    const Diagnostics diagnostics(system, dataModel);
    const std::string place = describeStep(trial.time, h);
    if (result == StepResult::NotFinite)
        return place + diagnostics.describeNotFinite();
    const std::string found = result == StepResult::Singular ? diagnostics.describeSingularity()
                                                             : "The Newton iteration doesn't converge. " +
                                                                   diagnostics.describeLargestResiduals();
    if (!last)
        return place + found;
    // The last state may be the better witness: the trial state can be far from everything.
    std::string reason = describeSingularPosition(*last);
    if (reason.empty())
        reason = describeSingularPosition(trial);
    return place + reason + found;
}

std::string RunFailures::describeInaccuracy(double error, double t, double h) const {
    return describeStep(t, h) +
           fmt::format(
               "The local error stays {:.3g} times what the tolerance allows, however short the step. ",
               error) +
           Diagnostics(system, dataModel).describeLargestResiduals();
}

std::string RunFailures::describe(const Redundancy::Violation& violation, double t) const {
    return fmt::format(
        "Time {:.9g}: {} was left out, since it repeated other equations, but isn't fulfilled any "
        "more: it is off by {:.3g} radii of gyration or rad. The equations were left out in a "
        "singular position, then, or don't repeat the others exactly.",
        t, names->getShortName(violation.equation), violation.size);
}

/// Empty if the position isn't singular.
std::string RunFailures::describeSingularPosition(const HHTState& state) const {
    if (!system->evaluate(state) || redundancy->findLargestViolation().size > violationOfLostStates)
        return {};
    const std::vector<std::string> known = redundancy->describe();
    system->refreshJacobian(state);
    Redundancy here(system, names);
    here.leaveOutDependentEquations(nearlySameEquation);
    if (here.getRank() >= redundancy->getRank())
        return {};
    std::vector<std::string> equations = here.describe();
    std::erase_if(equations, [&](const std::string& equation) {
        return std::ranges::find(known, equation) != known.end();
    });
    return fmt::format("The mechanism has come to a singular position, or very near to one, where {}. ",
                       joinShortly(equations, numOfNamedEquations));
}

} // namespace velmora::driver
