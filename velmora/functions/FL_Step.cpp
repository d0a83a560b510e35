#include "velmora/functions/FL_Step.h"

#include <cmath>

namespace velmora {

FL_Step::FL_Step(double stepBegin, double stepInitialValue, double stepEnd, double stepFinalValue,
                 std::string stepMode)
    : isSmooth(stepMode == "polynomial" || stepMode == "cosine"),
      inverseLength(1.0 / (stepEnd - stepBegin)),
      begin(stepBegin),
      initialValue(stepInitialValue),
      end(stepEnd),
      finalValue(stepFinalValue),
      mode(std::move(stepMode)) {}

double FL_Step::getValue(double x) {
    if (x < begin)
        return initialValue;
    if (!isSmooth || x >= end)
        return finalValue;
    const double u = (x - begin) / (end - begin), rise = finalValue - initialValue;
    if (mode == "cosine")
        return initialValue + 0.5 * rise * (1.0 - std::cos(pi * u));
    return initialValue + rise * (70.0 * std::pow(u, 9) - 315.0 * std::pow(u, 8) + 540.0 * std::pow(u, 7) -
                                  420.0 * std::pow(u, 6) + 126.0 * std::pow(u, 5));
}

double FL_Step::getFirstDerivative(double x) {
    if (!isInside(x))
        return 0.0;
    const double length = end - begin, rise = finalValue - initialValue;
    if (mode == "cosine")
        return rise * pi * std::sin(pi * (x - begin) / length) / (2.0 * length);
    return 630.0 * std::pow(x - begin, 4) * std::pow(x - end, 4) * rise / std::pow(length, 9);
}

double FL_Step::getSecondDerivative(double x) {
    if (!isInside(x))
        return 0.0;
    const double length = end - begin, rise = finalValue - initialValue;
    if (mode == "cosine")
        return rise * pi * pi * std::cos(pi * (x - begin) / length) / (2.0 * length * length);
    return 2520.0 * std::pow(x - begin, 3) * std::pow(x - end, 3) * (2.0 * x - begin - end) * rise /
           std::pow(length, 9);
}

} // namespace velmora
