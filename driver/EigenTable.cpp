#include "driver/EigenTable.h"

#include <velmora/velmora.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace velmora::driver {

namespace {

constexpr double hertz = 2.0 * std::numbers::pi; // rad/s
constexpr double noise = 1e-9;                   // share of a size that isn't worth a digit
constexpr double growthThatCounts = 1e-7;        // the same for telling growth
constexpr double smallestAmplitude = 0.01;       // of the largest one, in the metric of the masses
constexpr std::size_t numOfCoordinates = 4;

struct Amplitude {
    unsigned motion = 0;
    double weight = 0.0; // size in the metric of the masses
};

std::string getCoordinate(const LinearEquations& equations, const IO_DataModel& dataModel, unsigned motion) {
    const auto& offsets = equations.bodyOffset;
    const auto next = std::ranges::upper_bound(offsets, motion);
    const auto body = static_cast<unsigned>(next - offsets.begin()) - 1;
    const auto blocks = dataModel.getBlocksOfKind("Body");
    const std::string name = body < blocks.size() ? blocks[body]->label : std::string();
    return fmt::format("{} {}", name.empty() ? fmt::format("body {}", body + 1) : name,
                       getMotionName(motion - offsets[body]));
}

std::string formatRatio(std::complex<double> ratio) {
    if (std::fabs(ratio.imag()) <= 0.02 * std::abs(ratio))
        return fmt::format("{:.3g}", ratio.real());
    return fmt::format("{:.3g} at {:.0f} deg", std::abs(ratio), std::arg(ratio) * 180.0 / std::numbers::pi);
}

/// The largest coordinates of a mode, as ratios to the largest.
std::string listCoordinates(const LinearEquations& equations, const IO_DataModel& dataModel,
                            const EigenMode& mode) {
    const Eigen::VectorXd masses = equations.M.diagonal();
    std::vector<Amplitude> amplitudes;
    for (unsigned i = 0; i < mode.shape.size(); ++i)
        amplitudes.push_back({i, std::abs(mode.shape[i]) * std::sqrt(masses[i])});
    std::ranges::stable_sort(amplitudes, std::greater(), &Amplitude::weight);
    std::string text;
    for (std::size_t k = 0; k < std::min(numOfCoordinates, amplitudes.size()); ++k) {
        if (amplitudes[k].weight < smallestAmplitude * amplitudes.front().weight)
            break;
        const std::complex<double> ratio =
            mode.shape[amplitudes[k].motion] / mode.shape[amplitudes.front().motion];
        text += fmt::format("{}{} {}", k == 0 ? "" : ", ",
                            getCoordinate(equations, dataModel, amplitudes[k].motion), formatRatio(ratio));
    }
    return text;
}

std::string describeKind(std::complex<double> value) {
    const double size = std::abs(value);
    if (value.imag() == 0.0)
        return value.real() > 0.0 ? "unstable" : "decaying";
    if (std::fabs(value.real()) <= growthThatCounts * size)
        return "undamped";
    return value.real() > 0.0 ? "growing" : "damped";
}

void printMode(unsigned number, std::complex<double> value, const std::string& coordinates) {
    const double size = std::abs(value);
    const double real = std::fabs(value.real()) > noise * size ? value.real() : 0.0;
    std::string frequencies = fmt::format("{:>14}{:>14}{:>11}", "-", "-", "-");
    if (value.imag() != 0.0)
        frequencies = fmt::format("{:>14.7g}{:>14.7g}{:>11.4g}", size / hertz, value.imag() / hertz,
                                  real == 0.0 ? 0.0 : -real / size);
    fmt::print("{:>4}{}{:>14.6g}  {:<9} {}\n", number, frequencies, real, describeKind(value), coordinates);
}

void printSummary(const LinearEquations& equations, const EigenModes& found, const std::string& place) {
    const auto print = [](const char* name, const std::string& value) {
        fmt::print("{:<18}{}\n", name, value);
    };
    print("Linearised", fmt::format("about {}", place));
    if (equations.rate > 0.0)
        print("", fmt::format("it moves, or isn't in balance ({:.3g} 1/s): the coefficients are frozen",
                              equations.rate));
    if (equations.isByDifferences)
        print("", "terms that the derivatives of the kernel leave out are differences of forces");
    print("Freedom", fmt::format("{} degrees of freedom; {} equations of joints have no finite eigenvalues",
                                 found.degreesOfFreedom, equations.Cq.rows()));
    if (found.numOfZeros > 0)
        print("Zeros", fmt::format("{} eigenvalues are 0 (below {:.2g} Hz): motions that nothing holds",
                                   found.numOfZeros, found.zeroLimit / hertz));
    const auto numOfGrowing = std::ranges::count_if(found.modes, [](const EigenMode& mode) {
        return mode.value.real() > growthThatCounts * std::abs(mode.value);
    });
    print("Stability", numOfGrowing > 0 ? fmt::format("unstable: {} of these modes", numOfGrowing)
                                        : "none of these modes grows");
    print("Modes", fmt::format("{}{}", found.modes.size(), found.isComplete ? ", which are all" : ""));
}

} // namespace

void printModes(const LinearEquations& equations, const EigenModes& found, const std::string& place,
                const IO_DataModel& dataModel) {
    printSummary(equations, found, place);
    if (found.modes.empty())
        return;
    fmt::print("\n{:>4}{:>14}{:>14}{:>11}{:>14}  {:<9} {}\n", "mode", "undamped [Hz]", "damped [Hz]", "ratio",
               "real [1/s]", "kind", "largest coordinates, m and rad");
    unsigned number = 0;
    for (const EigenMode& mode : found.modes)
        printMode(++number, mode.value, listCoordinates(equations, dataModel, mode));
}

} // namespace velmora::driver
