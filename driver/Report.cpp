#include "driver/Report.h"

#include "driver/Terminal.h"

#include <fmt/format.h>

namespace velmora::driver {

namespace {

constexpr auto timeBetweenUpdates = std::chrono::milliseconds(100);
constexpr const char* eraseLine = "\r\033[K";

std::string describeAngularMomentum(const RunOutcome& outcome) {
    if (!outcome.isAngularMomentumConserved)
        return "not conserved in this model";
    return fmt::format("largest drift {:.3e} (relative)", outcome.maxAngularMomentumDrift);
}

std::string describe(const StartReport::Largest& largest, const char* unit) {
    return largest.size > 0.0 ? fmt::format("{:.3e} {} ({})", largest.size, unit, largest.body)
                              : fmt::format("0 {}", unit);
}

/// What the bodies' positions or velocities had to be changed by.
std::string describeChange(const StartReport::Largest& ofPlace, const char* unitOfPlace,
                           const StartReport::Largest& ofAngle, const char* unitOfAngle) {
    if (ofPlace.size == 0.0 && ofAngle.size == 0.0)
        return "fulfil the constraints as they are";
    return fmt::format("changed by at most {} and {}", describe(ofPlace, unitOfPlace),
                       describe(ofAngle, unitOfAngle));
}

std::string describeStepLength(const RunOutcome& outcome) {
    if (outcome.smallestStep > 0.0)
        return fmt::format("{:.3e} s to {:.3e} s", outcome.smallestStep, outcome.largestStep);
    return fmt::format("at most {:.3e} s", outcome.largestStep);
}

} // namespace

ProgressLine::ProgressLine(double end, bool wanted) : endTime(end), isWanted(wanted) {}

void ProgressLine::update(double t, double step) {
    if (!isWanted || Clock::now() < nextUpdate)
        return;
    nextUpdate = Clock::now() + timeBetweenUpdates;
    printToStandardError(fmt::format("{}{:5.1f} %  time {:.6g} s of {:.6g} s, step {:.2e} s", eraseLine,
                                     100.0 * t / endTime, t, endTime, step));
    isShown = true;
}

void ProgressLine::clear() {
    if (isShown)
        printToStandardError(eraseLine);
    isShown = false;
}

std::string summarize(const RunOutcome& outcome, const std::vector<std::string>& resultFiles) {
    const double kernelShare =
        outcome.wallSeconds > 0.0 ? 100.0 * outcome.kernelSeconds / outcome.wallSeconds : 0.0;
    std::string text;
    const auto addLine = [&](const char* name, const std::string& value) {
        text += fmt::format("{:<18}{}\n", name, value);
    };
    addLine("Time reached", fmt::format("{:.9g} s{}", outcome.timeReached,
                                        outcome.isStopped   ? " (the run was stopped)"
                                        : outcome.succeeded ? ""
                                                            : " (the run failed)"));
    const StartReport& start = outcome.start;
    addLine("Freedom", fmt::format("{} degrees of freedom, {} redundant equations", start.degreesOfFreedom,
                                   start.redundantEquations.size()));
    if (outcome.timeOfResumption > 0.0) {
        addLine("Continued from", fmt::format("{:.9g} s", outcome.timeOfResumption));
    } else {
        addLine("Start positions", describeChange(start.translation, "m", start.rotation, "rad"));
        addLine("Start velocities", describeChange(start.velocity, "m/s", start.angularVelocity, "rad/s"));
        addLine("Start forces",
                "in balance with accelerations of at most " + describe(start.acceleration, "m/s^2"));
    }
    addLine("Steps", fmt::format("{} accepted, {} rejected", outcome.steps, outcome.rejectedSteps));
    addLine("Step length", describeStepLength(outcome));
    addLine("Newton iterations", fmt::format("{}", outcome.newtonIterations));
    addLine("Factorisations", fmt::format("{} with pivoting, {} with known pivots", outcome.factorisations,
                                          outcome.refactorisations));
    addLine("Wall time",
            fmt::format("{:.3f} s, {:.0f} % of it in the kernel", outcome.wallSeconds, kernelShare));
    addLine("Energy",
            fmt::format("{:.9g} J at the start, {:.9g} J at the end, largest drift {:.3e} (relative)",
                        outcome.energyStart, outcome.energyEnd, outcome.maxEnergyDrift));
    addLine("Angular momentum", describeAngularMomentum(outcome));
    if (resultFiles.empty())
        addLine("Results", "no files");
    for (const std::string& file : resultFiles)
        addLine(file == resultFiles.front() ? "Results" : "", file);
    return text;
}

} // namespace velmora::driver
