#include "driver/StateMeasures.h"

#include <algorithm>
#include <cmath>

namespace velmora::driver {

namespace {

double getLength3(const double* x) {
    return std::hypot(x[0], x[1], x[2]);
}

} // namespace

double getPointMovement(const HHTSystem& system, unsigned body, const double* change) {
    const double mass = system.bodyMasses[body];
    const double* modalMass = system.modalMasses.data() + system.residual.bodyOffset[body];
    double sum = 0.0;
    for (unsigned i = 0; i < system.residual.bodyDof[body]->size; ++i)
        sum += modalMass[i] * change[i] * change[i]; // without modal mass, in places and turns: 0
    return std::hypot(getLength3(change), mass > 0.0 ? std::sqrt(sum / mass) : 0.0);
}

// The distances of p to q and -q are 2 sin and 2 cos of a quarter of the angle.
double getAngleBetween(const double* p, const double* q) {
    double near = 0.0, far = 0.0;
    for (unsigned i = 0; i < 4; ++i) {
        near = std::hypot(near, p[i] - q[i]);
        far = std::hypot(far, p[i] + q[i]);
    }
    return 4.0 * std::atan2(std::min(near, far), std::max(near, far));
}

double measureMovement(const HHTSystem& system, const double* change, double lengthUnit) {
    double largest = 0.0;
    for (unsigned body = 0; body < system.bodyMasses.size(); ++body) {
        const double* d = change + system.residual.bodyOffset[body];
        const double size = std::max(getPointMovement(system, body, d) / lengthUnit,
                                     2.0 * std::hypot(d[3], getLength3(d + 4)));
        if (!(size <= largest))
            largest = size;
    }
    return largest;
}

ForceMeasure measureForces(const HHTSystem& system, double typicalLength) {
    const double *residual = system.residual.dofVector->data, *elastic = system.elasticForces.dofVector->data,
                 *external = system.externalForces.dofVector->data;
    ForceMeasure measure;
    const auto take = [&](unsigned row, double unit) {
        const double joints = residual[row] + external[row] - elastic[row];
        measure.unbalanced = std::max(measure.unbalanced, std::fabs(residual[row]) / unit);
        for (const double force : {external[row], elastic[row], joints})
            measure.largest = std::max(measure.largest, std::fabs(force) / unit);
    };
    for (unsigned body = 0; body < system.bodyMasses.size(); ++body) {
        const unsigned first = system.residual.bodyOffset[body];
        const double mass = system.bodyMasses[body], gyration = system.bodyGyrations[body];
        for (unsigned i = 0; i < system.residual.bodyDof[body]->size; ++i) {
            const double modalMass = system.modalMasses[first + i];
            if (i < 3)
                take(first + i, 1.0);
            else if (i < 7) // a torque enters the rows of Euler parameters twice
                take(first + i, 2.0 * (gyration > 0.0 ? gyration : typicalLength));
            else if (modalMass > 0.0 && mass > 0.0)
                take(first + i, std::sqrt(modalMass / mass));
        }
    }
    return measure;
}

} // namespace velmora::driver
