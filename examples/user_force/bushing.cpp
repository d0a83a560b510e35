// A rubber bushing between two bodies, in the frame of body 1: stiffer as it is pressed more, with damping,
// and with a torsion spring and damper about y.
//
//     F_i = k x_i + k3 x_i^3 + c v_i,   T_y = -(kt a + ct w)      on body 1 at its point; body 2 gets the
//     negated vectors
//
// Measures: 0 to 2 the way x from the point on body 1 to that on body 2 along the axes of body 1, 3 to 5 its
// rates v, 6 the angle a of body 1 against body 2 about y, 7 its rate w. The parameter file holds k, k3, c,
// kt, ct.

#include <velmora/external_forces/ExternalSubroutine.h>

#include <array>
#include <cstdio>
#include <deque>
#include <fstream>
#include <limits>

namespace {

constexpr uint32_t numOfMeasuresNeeded = 8;

struct Bushing {
    double k = 0.0, k3 = 0.0, c = 0.0;       // N/m, N/m^3, N s/m
    double kt = 0.0, ct = 0.0;               // N m/rad, N m s/rad
    std::array<double, 3> force{}, torque{}; // last ones, for the result file
};

// A deque doesn't move what it holds. A force's number is its place here.
std::deque<Bushing> bushings;

Bushing& at(const int32_t* objectId) {
    return bushings[static_cast<std::size_t>(*objectId)];
}

// The interface has no way to report an error: without a number the run stops by itself.
Bushing makeUseless(const char* reason) {
    std::fprintf(stderr, "bushing: %s\n", reason);
    Bushing bushing;
    bushing.k = std::numeric_limits<double>::quiet_NaN();
    return bushing;
}

Bushing read(const char* path) {
    Bushing bushing;
    std::ifstream file(path);
    if (!(file >> bushing.k >> bushing.k3 >> bushing.c >> bushing.kt >> bushing.ct))
        return makeUseless("the parameter file must hold five numbers: k, k3, c, kt, ct");
    return bushing;
}

} // namespace

void createExteralSubroutine(const uint32_t* numOfMeasures, const char* parameterPath, int32_t* objectId) {
    bushings.push_back(*numOfMeasures == numOfMeasuresNeeded ? read(parameterPath)
                                                             : makeUseless("eight measures are needed"));
    *objectId = static_cast<int32_t>(bushings.size()) - 1;
}

void get3x1ForceVector(const int32_t* objectId, const double*, const double* measures, double* force) {
    Bushing& b = at(objectId);
    for (std::size_t i = 0; i < 3; ++i) {
        const double x = measures[i], v = measures[i + 3];
        force[i] = b.force[i] = b.k * x + b.k3 * x * x * x + b.c * v;
    }
}

void get3x1TorqueVector(const int32_t* objectId, const double*, const double* measures, double* torque) {
    Bushing& b = at(objectId);
    torque[0] = torque[2] = 0.0;
    torque[1] = b.torque[1] = -(b.kt * measures[6] + b.ct * measures[7]);
}

void get3x1ForceDerivative(const int32_t* objectId, const double*, const double* measures,
                           const uint32_t* measure, double* derivative) {
    const Bushing& b = at(objectId);
    derivative[0] = derivative[1] = derivative[2] = 0.0;
    if (*measure < 3)
        derivative[*measure] = b.k + 3.0 * b.k3 * measures[*measure] * measures[*measure];
    else if (*measure < 6)
        derivative[*measure - 3] = b.c;
}

void get3x1TorqueDerivative(const int32_t* objectId, const double*, const double*, const uint32_t* measure,
                            double* derivative) {
    const Bushing& b = at(objectId);
    derivative[0] = derivative[2] = 0.0;
    derivative[1] = *measure == 6 ? -b.kt : *measure == 7 ? -b.ct : 0.0;
}

void get3x1ForceAndTorqueVector4ResultFile(const int32_t* objectId, double* force, double* torque) {
    const Bushing& b = at(objectId);
    for (std::size_t i = 0; i < 3; ++i) {
        force[i] = b.force[i];
        torque[i] = b.torque[i];
    }
}

void setTimeOfLastSuccessfulStep(const int32_t*, const double*) {}
