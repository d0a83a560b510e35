#include "driver/PhysicsChecks.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace velmora::driver {

namespace {

constexpr double unitTolerance = 1.00001e-5;
constexpr double roundingTolerance = 1e-3;
// Volume of the frame over that of a box with edges of these lengths: below it the axes lie in a plane.
constexpr double singularVolume = 1e-9;

double dot(const double* a, const double* b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

double getVolume(const double* a, const double* b, const double* c) {
    const double cross[3] = {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
    return dot(cross, c);
}

double getDeviationFromOrthonormal(const std::array<double, 9>& axes) {
    double worst = 0.0;
    for (unsigned i = 0; i < 3; ++i)
        for (unsigned j = i; j < 3; ++j) {
            const double product = dot(axes.data() + 3 * i, axes.data() + 3 * j);
            worst = std::max(worst, i == j ? std::fabs(std::sqrt(product) - 1.0) : std::fabs(product));
        }
    return worst;
}

} // namespace

std::string checkUnitVector(const std::array<double, 3>& direction) {
    const double length = std::hypot(direction[0], direction[1], direction[2]);
    if (std::fabs(1.0 - length) < unitTolerance)
        return {};
    return fmt::format("not a unit vector: its length is {:.7g}", length);
}

std::string checkOrientation(const std::array<double, 9>& axes) {
    const double* a = axes.data();
    const double volume = getVolume(a, a + 3, a + 6);
    const double box = std::sqrt(dot(a, a)) * std::sqrt(dot(a + 3, a + 3)) * std::sqrt(dot(a + 6, a + 6));
    if (!(std::fabs(volume) > singularVolume * box))
        return "singular: the three axes lie in a plane";
    if (volume < 0.0)
        return "left-handed: the third axis points against the cross product of the first two";
    const double deviation = getDeviationFromOrthonormal(axes);
    if (deviation <= roundingTolerance)
        return {};
    return fmt::format("not orthonormal: a length or scalar product of the axes is off by {:.3g}", deviation);
}

std::string checkMass(double mass) {
    return mass < 0.0 ? fmt::format("negative mass {}", mass) : std::string();
}

std::string checkInertia(const std::array<double, 3>& moments, double mass) {
    std::array<double, 3> sorted = moments;
    std::ranges::sort(sorted);
    const auto [smallest, middle, largest] = sorted;
    if (smallest < 0.0)
        return fmt::format("negative moment of inertia {}", smallest);
    if (mass > 0.0 && smallest == 0.0)
        return "a moment of inertia is zero, but the body has mass";
    if (largest * (1.0 - roundingTolerance) <= smallest + middle)
        return {};
    return fmt::format("no body has these moments: {} is more than the sum of the other two, {}", largest,
                       smallest + middle);
}

} // namespace velmora::driver
