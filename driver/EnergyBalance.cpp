#include "driver/EnergyBalance.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace velmora::driver {

namespace {

double dot(const MBS_ModelPhysicalDofVector& a, const MBS_ModelPhysicalDofVector& b) {
    return std::inner_product(a.dofVector->data, a.dofVector->data + a.getNumOfDof(), b.dofVector->data, 0.0);
}

double dot3(const double* a, const double* b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

} // namespace

EnergyBalance::EnergyBalance(HHTSystem* equations, IO_DataModel* dataModel)
    : system(equations),
      momenta(equations->getModel()),
      timeTerms(equations->getModel()),
      isAngularMomentumConserved(isFreeOfOutsideForces(*dataModel)) {
    readGravity(*dataModel);
}

void EnergyBalance::readGravity(IO_DataModel& dataModel) {
    for (IO_DataModelBlock* block : dataModel.getBlocksOfKind("Force")) {
        if (block->type != "Gravity")
            continue;
        double activationTime = 0.0;
        if (block->isKeyInBlock("ActivationTime"))
            block->getValue("ActivationTime", &activationTime, IO_ValueCode::Double);
        if (activationTime > 0.0)
            continue;
        Vector3 acceleration = {};
        block->getValue("GravityAccVector", acceleration.data(), IO_ValueCode::DoubleVector3);
        for (unsigned k = 0; k < 3; ++k)
            gravity[k] += acceleration[k];
    }
}

bool EnergyBalance::isFreeOfOutsideForces(IO_DataModel& dataModel) const {
    if (system->getModel()->getNumOfExternalForces() > 0)
        return false;
    for (IO_DataModelBlock* block : dataModel.getBlocksOfKind("Constraint")) {
        std::vector<std::string> bodies;
        block->getValue("BodyIDs", &bodies);
        if (bodies.size() < 2 || std::find(bodies.begin(), bodies.end(), "0") != bodies.end())
            return false;
    }
    return true;
}

void EnergyBalance::start(const HHTState& state) {
    first = last = measure(state);
    compareWithStart();
}

void EnergyBalance::addStep(const HHTState& state) {
    const Sample now = measure(state);
    work += 0.5 * (now.time - last.time) * (now.power + last.power);
    last = now;
    compareWithStart();
}

EnergyBalance::Sample EnergyBalance::measure(const HHTState& state) {
    Sample sample;
    sample.time = state.time;
    system->multiplyByMass(state.qd, momenta);
    sample.kinetic = 0.5 * dot(momenta, state.qd);
    sample.potential = 0.5 * dot(system->elasticForces, state.q);
    sample.power = dot(system->externalForces, state.qd) - dot(system->dampingForces, state.qd) +
                   getPowerOfDrivenJoints(state);
    addGravity(state, sample);
    if (isAngularMomentumConserved)
        addAngularMomentum(state, sample);
    return sample;
}

void EnergyBalance::addGravity(const HHTState& state, Sample& sample) const {
    for (unsigned body = 0; body < system->bodyMasses.size(); ++body) {
        const double mass = system->bodyMasses[body];
        sample.potential -= mass * dot3(gravity.data(), state.q.bodyData(body));
        sample.power -= mass * dot3(gravity.data(), state.qd.bodyData(body));
    }
}

double EnergyBalance::getPowerOfDrivenJoints(const HHTState& state) {
    // A joint's force is -Cq' lambda, and Cq qd = -C_t.
    if (system->getModel()->getNumOfExternalConstraints() == 0)
        return 0.0;
    system->computeTimeTerms(state, timeTerms);
    const double* lambda = state.lambda.dofVector->data;
    return std::inner_product(lambda, lambda + system->getNumOfConstraints(), timeTerms.dofVector->data, 0.0);
}

void EnergyBalance::addAngularMomentum(const HHTState& state, Sample& sample) const {
    for (unsigned body = 0; body < system->bodyMasses.size(); ++body) {
        const double *r = state.q.bodyData(body), *e = r + 3;
        const double *g = momenta.bodyData(body), *s = g + 3;
        // G(p) g_r / 4 with G = 2 | -e1  e0 -e3  e2 |
        //                         | -e2  e3  e0 -e1 |
        //                         | -e3 -e2  e1  e0 |
        const Vector3 own = {
            r[1] * g[2] - r[2] * g[1] + 0.5 * (-e[1] * s[0] + e[0] * s[1] - e[3] * s[2] + e[2] * s[3]),
            r[2] * g[0] - r[0] * g[2] + 0.5 * (-e[2] * s[0] + e[3] * s[1] + e[0] * s[2] - e[1] * s[3]),
            r[0] * g[1] - r[1] * g[0] + 0.5 * (-e[3] * s[0] - e[2] * s[1] + e[1] * s[2] + e[0] * s[3])};
        for (unsigned k = 0; k < 3; ++k)
            sample.angularMomentum[k] += own[k];
        sample.sumOfMomenta += std::sqrt(dot3(own.data(), own.data()));
    }
}

void EnergyBalance::compareWithStart() {
    const double change = last.kinetic + last.potential - first.kinetic - first.potential;
    energyScale = std::max({energyScale, last.kinetic, std::fabs(last.potential - first.potential)});
    largestDrift = std::max(largestDrift, std::fabs(change - work));
    Vector3 difference = {};
    for (unsigned k = 0; k < 3; ++k)
        difference[k] = last.angularMomentum[k] - first.angularMomentum[k];
    momentumScale = std::max(momentumScale, last.sumOfMomenta);
    largestMomentumDrift =
        std::max(largestMomentumDrift, std::sqrt(dot3(difference.data(), difference.data())));
}

void EnergyBalance::Sample::exchange(MBS_History& history) {
    for (double* number : {&time, &kinetic, &potential, &power, &sumOfMomenta})
        history.exchange(*number);
    history.exchange(angularMomentum);
}

void EnergyBalance::exchangeHistory(MBS_History& history) {
    first.exchange(history);
    last.exchange(history);
    for (double* number : {&work, &energyScale, &largestDrift, &momentumScale, &largestMomentumDrift})
        history.exchange(*number);
}

void EnergyBalance::report(RunOutcome& outcome) const {
    outcome.energyStart = first.kinetic + first.potential;
    outcome.energyEnd = last.kinetic + last.potential;
    outcome.workOfForces = work;
    outcome.energyScale = energyScale;
    outcome.maxEnergyDrift = energyScale > 0.0 ? largestDrift / energyScale : largestDrift;
    outcome.isAngularMomentumConserved = isAngularMomentumConserved;
    outcome.angularMomentumStart = first.angularMomentum;
    outcome.maxAngularMomentumDrift =
        momentumScale > 0.0 ? largestMomentumDrift / momentumScale : largestMomentumDrift;
}

} // namespace velmora::driver
