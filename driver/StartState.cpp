#include "driver/StartState.h"

#include <velmora/velmora.h>

#include <algorithm>

// The rates of the Euler parameters p = (e0, e) belong to the angular velocity w in the global frame by
//
//     de0/dt = -1/2 w . e,    de/dt = 1/2 (e0 w + w x e)
//
// (Nikravesh, Computer-Aided Analysis of Mechanical Systems, 1988).

namespace velmora::driver {

namespace {

constexpr unsigned firstEulerParameter = 3;
constexpr unsigned firstModalCoordinate = 7;

void setEulerRates(const double* p, const double* w, double* dp) {
    dp[0] = -0.5 * (w[0] * p[1] + w[1] * p[2] + w[2] * p[3]);
    dp[1] = 0.5 * (p[0] * w[0] + w[1] * p[3] - w[2] * p[2]);
    dp[2] = 0.5 * (p[0] * w[1] + w[2] * p[1] - w[0] * p[3]);
    dp[3] = 0.5 * (p[0] * w[2] + w[0] * p[2] - w[1] * p[1]);
}

} // namespace

void copyInitialState(MBS_Model& model, const std::vector<BodyStart>& starts, MBS_ModelPhysicalDofVector& q,
                      MBS_ModelPhysicalDofVector& qd) {
    model.copyInitialDataIntoPhysicalDofVector(&q, &qd);
    for (const BodyStart& start : starts) {
        double *coordinates = q.bodyData(start.body), *rates = qd.bodyData(start.body);
        std::ranges::copy(start.position, coordinates);
        std::ranges::copy(start.eulerParameters, coordinates + firstEulerParameter);
        std::ranges::copy(start.velocity, rates);
        setEulerRates(coordinates + firstEulerParameter, start.omega.data(), rates + firstEulerParameter);
        std::fill_n(coordinates + firstModalCoordinate, model.getNumOfFlexDofOfBody(start.body), 0.0);
        std::fill_n(rates + firstModalCoordinate, model.getNumOfFlexDofOfBody(start.body), 0.0);
        std::ranges::copy(start.modalCoordinates, coordinates + firstModalCoordinate);
        std::ranges::copy(start.modalRates, rates + firstModalCoordinate);
    }
}

} // namespace velmora::driver
