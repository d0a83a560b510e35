#pragma once

#include "driver/ConsistentStart.h"
#include "driver/HHTIntegrator.h"
#include "driver/Simulation.h"

#include <velmora/velmora.h>

#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <string>

namespace velmora::driver {

inline std::string toText(double x) {
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", x);
    return text;
}

/// Data model with bodies and gravity.
struct Input {
    IO_DataModel data{"test"};
    IO_OutputManager output{".", "test_integrator"};

    IO_DataModelBlock* addBody(const std::string& uuid, double mass, const std::string& inertia,
                               const std::string& velocity, const std::string& omega,
                               const std::string& orientation = "1,0,0, 0,1,0, 0,0,1") {
        IO_DataModelBlock* block = data.addBlock("Body", "Rigid_EulerParameter_PAI", uuid, uuid, ".");
        block->addKeyValue("Mass", toText(mass));
        block->addKeyValue("Inertia", inertia);
        block->addKeyValue("LocationCenterMass", "0, 0, 0");
        block->addKeyValue("OrientationPAI", orientation);
        block->addKeyValue("InitialVelocityVector", velocity);
        block->addKeyValue("InitialOmegaVector", omega);
        block->addKeyValue("BodyName", uuid);
        block->addKeyValue("RegardVelocityInertiaForcesInsideJacobian", "yes");
        return block;
    }
    /// `flags` is a list like "dx dy ax"; turning axes are global ones.
    IO_DataModelBlock* addJoint(const std::string& label, const std::string& bodies,
                                const std::string& location, const std::string& flags) {
        IO_DataModelBlock* block = data.addBlock("Constraint", "Generic", label, label, ".");
        block->addKeyValue("BodyIDs", bodies);
        block->addKeyValue("Location", location);
        for (std::size_t i = 0; i + 1 < flags.size(); i += 3)
            block->addKeyValue(flags.substr(i, 2) + "Fixed", "yes");
        return block;
    }
    IO_DataModelBlock* addGravity(const std::string& acceleration) {
        IO_DataModelBlock* block = data.addBlock("Force", "Gravity", "gravity", "gravity", ".");
        block->addKeyValue("GravityAccVector", acceleration);
        return block;
    }
    std::unique_ptr<MBS_Model> make() {
        return std::unique_ptr<MBS_Model>(MBS_Model::makeModel(&data, &output));
    }
};

inline StepResult startConsistently(HHTSystem& system, HHTIntegrator& integrator, IO_DataModel& data,
                                    const SimulationSettings& settings) {
    const EquationNames names(system.getModel(), &data);
    Redundancy redundancy(&system, &names);
    const StepResult result =
        ConsistentStart(&system, &names, &redundancy, settings).run(integrator.getState());
    return result == StepResult::Converged ? integrator.start(settings.step) : result;
}

/// The real model with a force added to it that the matrix knows nothing of, and the last state seen.
class ProbeModel : public MBS_Model {
  public:
    using Force = std::function<void(double t, const P& q, const P& qd, P& force)>;

    ProbeModel(MBS_Model* realModel, Force added) : MBS_Model(*realModel), real(realModel), force(added) {}

    MBS_GlobalModelMatrix* createModelRelatedMatrix(unsigned r, unsigned c,
                                                    const std::vector<unsigned>* types,
                                                    const std::vector<unsigned>* rows,
                                                    const std::vector<unsigned>* cols,
                                                    const std::vector<double>* s, bool isHHT) override {
        return real->createModelRelatedMatrix(r, c, types, rows, cols, s, isHHT);
    }
    void updateMatricesForEquationOfMotion(double t, const P* q, const P* qd, const P* qdd) override {
        real->updateMatricesForEquationOfMotion(t, q, qd, qdd);
    }
    void updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(double t, const P* q, const P* qd,
                                                                         const P* qdd, C* out) override {
        lastQ = *q;
        lastQd = *qd;
        real->updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(t, q, qd, qdd, out);
        if (disturbResidual)
            disturbResidual(t, out->dofVector->data);
    }
    void updateMatricesForJacobian(double t, const P* q, const P* qd, const P* qdd, const C* l) override {
        real->updateMatricesForJacobian(t, q, qd, qdd, l);
    }
    void getAccInertiaForces(const P* qdd, P* out) override { real->getAccInertiaForces(qdd, out); }
    void getVelInertiaForces(const P* q, const P* qd, P* out) override {
        real->getVelInertiaForces(q, qd, out);
    }
    void getElasticForces(const P* q, P* out) override { real->getElasticForces(q, out); }
    void getDampingForces(const P* qd, P* out) override { real->getDampingForces(qd, out); }
    void getConstraintForces(const C* l, P* out) override { real->getConstraintForces(l, out); }
    void getExternalForces(double t, const P* q, const P* qd, const P* qdd, P* out) override {
        real->getExternalForces(t, q, qd, qdd, out);
        if (force)
            force(t, *q, *qd, *out);
    }
    void getCqdT_Mult_Qd(const P* q, const P* qd, const P* qdd, C* out) override {
        real->getCqdT_Mult_Qd(q, qd, qdd, out);
    }
    void get_C_t(double t, const P* q, const P* qd, const P* qdd, C* out) override {
        real->get_C_t(t, q, qd, qdd, out);
    }
    void get_C_t_order2(double t, const P* q, const P* qd, const P* qdd, C* out) override {
        real->get_C_t_order2(t, q, qd, qdd, out);
    }
    void copyInitialDataIntoPhysicalDofVector(P* q, P* qd) override {
        real->copyInitialDataIntoPhysicalDofVector(q, qd);
        if (disturbStart)
            disturbStart(*q, *qd);
    }
    unsigned getNumOfTransDofOfBody(unsigned i) const override { return real->getNumOfTransDofOfBody(i); }
    unsigned getNumOfRotDofOfBody(unsigned i) const override { return real->getNumOfRotDofOfBody(i); }
    unsigned getNumOfFlexDofOfBody(unsigned i) const override { return real->getNumOfFlexDofOfBody(i); }
    unsigned getNumOfInnerConstraintDofOfBody(unsigned i) const override {
        return real->getNumOfInnerConstraintDofOfBody(i);
    }
    unsigned getNumOfConstraintDofOfConstraint(unsigned i) const override {
        return real->getNumOfConstraintDofOfConstraint(i);
    }
    unsigned getNumOfExternalConstraints() const override { return real->getNumOfExternalConstraints(); }
    unsigned getNumOfExternalForces() const override { return real->getNumOfExternalForces(); }
    unsigned getNumOfBodies() const override { return real->getNumOfBodies(); }

    std::unique_ptr<MBS_Model> real;
    Force force;
    std::function<void(P& q, P& qd)> disturbStart;
    std::function<void(double t, double* residuals)> disturbResidual;
    P lastQ{real.get()}, lastQd{real.get()};
};

/// Jacobi's elliptic functions by the descending arithmetic-geometric mean (Abramowitz and Stegun, 16.4).
struct Elliptic {
    double sn, cn, dn;
    Elliptic(double u, double k2) {
        std::array<double, 16> a{1.0}, c{std::sqrt(k2)};
        double b = std::sqrt(1.0 - k2);
        unsigned n = 0;
        for (; n + 1 < a.size() && std::fabs(c[n]) > 1e-17; ++n) {
            a[n + 1] = 0.5 * (a[n] + b);
            c[n + 1] = 0.5 * (a[n] - b);
            b = std::sqrt(a[n] * b);
        }
        double phi = std::ldexp(a[n] * u, static_cast<int>(n));
        for (; n > 0; --n)
            phi = 0.5 * (phi + std::asin(c[n] / a[n] * std::sin(phi)));
        sn = std::sin(phi);
        cn = std::cos(phi);
        dn = std::sqrt(1.0 - k2 * sn * sn);
    }
    static double quarterPeriod(double k2) {
        double a = 1.0, b = std::sqrt(1.0 - k2);
        while (std::fabs(a - b) > 1e-15) {
            const double next = 0.5 * (a + b);
            b = std::sqrt(a * b);
            a = next;
        }
        return std::acos(-1.0) / (a + b);
    }
};

/// Free body with principal moments 1, 2, 3 that starts with omega = (0, 1, 0.1) and its angular momentum
/// along the global z axis (Landau and Lifshitz, "Mechanics", section 37).
struct TorqueFreeTop {
    using Vector = std::array<double, 3>;
    static constexpr Vector I = {1.0, 2.0, 3.0};
    double L2 = 4.09, E2 = 2.03; // squared momentum, twice the energy
    double rate = std::sqrt((I[2] - I[1]) * (L2 - E2 * I[0]) / (I[0] * I[1] * I[2]));
    double k2 = (I[1] - I[0]) * (E2 * I[2] - L2) / ((I[2] - I[1]) * (L2 - E2 * I[0]));
    double K = Elliptic::quarterPeriod(k2);

    Vector omega(double t) const {
        const Elliptic at(K + rate * t, k2);
        return {std::sqrt((E2 * I[2] - L2) / (I[0] * (I[2] - I[0]))) * at.cn,
                std::sqrt((E2 * I[2] - L2) / (I[1] * (I[2] - I[1]))) * at.sn,
                std::sqrt((L2 - E2 * I[0]) / (I[2] * (I[2] - I[0]))) * at.dn};
    }
    Vector omegaDot(double t) const {
        const Vector w = omega(t);
        return {(I[1] - I[2]) / I[0] * w[1] * w[2], (I[2] - I[0]) / I[1] * w[2] * w[0],
                (I[0] - I[1]) / I[2] * w[0] * w[1]};
    }
    /// Precession about the momentum: Simpson's rule on its closed rate.
    double precession(double t) const {
        const auto phiDot = [this](double s) {
            const Vector w = omega(s);
            const double x = I[0] * w[0], y = I[1] * w[1];
            return std::sqrt(L2) * (x * w[0] + y * w[1]) / (x * x + y * y);
        };
        const unsigned n = 4000;
        double sum = phiDot(0.0) + phiDot(t);
        for (unsigned i = 1; i < n; ++i)
            sum += (i % 2 ? 4.0 : 2.0) * phiDot(t * i / n);
        return sum * t / (3.0 * n);
    }
    /// Rotation matrix, column after column: Rz(phi) Rx(theta) Rz(psi).
    std::array<double, 9> attitude(double t) const {
        const Vector w = omega(t);
        const double phi = precession(t), psi = std::atan2(I[0] * w[0], I[1] * w[1]);
        const double c = I[2] * w[2] / std::sqrt(L2), s = std::sqrt(1.0 - c * c);
        const double cf = std::cos(phi), sf = std::sin(phi), cp = std::cos(psi), sp = std::sin(psi);
        return {cf * cp - sf * c * sp,
                sf * cp + cf * c * sp,
                s * sp,
                -cf * sp - sf * c * cp,
                -sf * sp + cf * c * cp,
                s * cp,
                sf * s,
                -cf * s,
                c};
    }
    void addTo(Input& input) const {
        const std::array<double, 9> A = attitude(0.0);
        std::string orientation, globalOmega;
        for (unsigned i = 0; i < 9; ++i)
            orientation += (i ? ", " : "") + toText(A[i]);
        for (unsigned i = 0; i < 3; ++i)
            globalOmega += (i ? ", " : "") + toText(A[3 + i] + 0.1 * A[6 + i]);
        input.addBody("top", 1.0, "1, 2, 3", "0, 0, 0", globalOmega, orientation);
    }
};

/// Gbar(p) x with Gbar of factor 2: angular velocity or acceleration in the body frame.
inline TorqueFreeTop::Vector multiplyGbar(const double* p, const double* x) {
    return {2.0 * (-p[1] * x[0] + p[0] * x[1] + p[3] * x[2] - p[2] * x[3]),
            2.0 * (-p[2] * x[0] - p[3] * x[1] + p[0] * x[2] + p[1] * x[3]),
            2.0 * (-p[3] * x[0] + p[2] * x[1] - p[1] * x[2] + p[0] * x[3])};
}

inline std::array<double, 9> toRotationMatrix(const double* e) {
    return {1 - 2 * (e[2] * e[2] + e[3] * e[3]), 2 * (e[1] * e[2] + e[0] * e[3]),
            2 * (e[1] * e[3] - e[0] * e[2]),     2 * (e[1] * e[2] - e[0] * e[3]),
            1 - 2 * (e[1] * e[1] + e[3] * e[3]), 2 * (e[2] * e[3] + e[0] * e[1]),
            2 * (e[1] * e[3] + e[0] * e[2]),     2 * (e[2] * e[3] - e[0] * e[1]),
            1 - 2 * (e[1] * e[1] + e[2] * e[2])};
}

template <std::size_t N>
double largestDifference(const std::array<double, N>& a, const std::array<double, N>& b) {
    double largest = 0.0;
    for (std::size_t i = 0; i < N; ++i)
        largest = std::max(largest, std::fabs(a[i] - b[i]));
    return largest;
}

} // namespace velmora::driver
