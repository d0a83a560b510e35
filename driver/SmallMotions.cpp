#include "driver/SmallMotions.h"

#include <Eigen/Geometry>
#include <fmt/format.h>

#include <array>

// Notation: w, a are angular velocity and acceleration in the body's frame, S(w) x = w x x
//
// (1)  w = 2 (conj(p) * dp/dt),   a = 2 (conj(p) * d2p/dt2)      vector parts; p'p = 1
// (2)  dA/dt = A S(w),   d2A/dt2 = A (S(w) S(w) + S(a))
// (3)  the turns are linear in p: rate and acceleration of their columns are those of dp/dt and d2p/dt2

namespace velmora::driver {

namespace {

using Triplets = std::vector<Eigen::Triplet<double>>;
using Eigen::Matrix3d, Eigen::Vector3d, Eigen::Quaterniond;

constexpr unsigned numOfTranslations = 3;
constexpr unsigned numOfTurns = 3;
constexpr unsigned numOfRigidMotions = numOfTranslations + numOfTurns;
constexpr unsigned numOfRigidCoordinates = 7;

Matrix3d skew(const Vector3d& w) {
    Matrix3d S;
    S << 0.0, -w.z(), w.y(), w.z(), 0.0, -w.x(), -w.y(), w.x(), 0.0;
    return S;
}

Quaterniond quaternionAt(const double* p) {
    return {p[0], p[1], p[2], p[3]};
}

void addTranslations(Triplets& entries, unsigned row, unsigned column, const Matrix3d& A) {
    for (unsigned i = 0; i < numOfTranslations; ++i)
        for (unsigned j = 0; j < numOfTranslations; ++j)
            if (A(i, j) != 0.0)
                entries.emplace_back(row + i, column + j, A(i, j));
}

void addTurns(Triplets& entries, unsigned row, unsigned column, const Quaterniond& p,
              PerturbationFrame frame) { // (3)
    for (unsigned j = 0; j < numOfTurns; ++j) {
        Quaterniond half(0.0, 0.0, 0.0, 0.0);
        half.vec()[j] = 0.5;
        const Quaterniond dp = frame == PerturbationFrame::Global ? half * p : p * half;
        const std::array<double, 4> column4 = {dp.w(), dp.x(), dp.y(), dp.z()};
        for (unsigned i = 0; i < column4.size(); ++i)
            entries.emplace_back(row + i, column + j, column4[i]);
    }
}

} // namespace

SmallMotions::SmallMotions(const MBS_Model* model, PerturbationFrame axes)
    : bodyOffset{0},
      frame(axes),
      numOfPhysicalDof(model->getNumOfPhysicalDof()) {
    for (unsigned body = 0; body < model->getNumOfBodies(); ++body) {
        numOfModes.push_back(model->getNumOfFlexDofOfBody(body));
        bodyOffset.push_back(bodyOffset.back() + numOfRigidMotions + numOfModes.back());
    }
}

void SmallMotions::update(const HHTState& state) {
    std::array<Triplets, 3> entries; // of T, rate and acceleration
    for (unsigned body = 0; body < numOfModes.size(); ++body) {
        const unsigned row = state.q.bodyOffset[body], column = bodyOffset[body];
        const std::array<Quaterniond, 3> p = {quaternionAt(state.q.bodyData(body) + 3),
                                              quaternionAt(state.qd.bodyData(body) + 3),
                                              quaternionAt(state.qdd.bodyData(body) + 3)};
        std::array<Matrix3d, 3> A = {Matrix3d::Identity(), Matrix3d::Zero(), Matrix3d::Zero()};
        if (frame == PerturbationFrame::Body) {
            const Vector3d w = 2.0 * (p[0].conjugate() * p[1]).vec(); // (1)
            const Vector3d a = 2.0 * (p[0].conjugate() * p[2]).vec();
            const Matrix3d A0 = p[0].toRotationMatrix();
            A = {A0, A0 * skew(w), A0 * (skew(w) * skew(w) + skew(a))}; // (2)
        }
        for (unsigned order = 0; order < entries.size(); ++order) {
            addTranslations(entries[order], row, column, A[order]);
            addTurns(entries[order], row + numOfTranslations, column + numOfTranslations, p[order], frame);
        }
        for (unsigned mode = 0; mode < numOfModes[body]; ++mode)
            entries[0].emplace_back(row + numOfRigidCoordinates + mode, column + numOfRigidMotions + mode,
                                    1.0);
    }
    const std::array<Matrix*, 3> results = {&T, &rate, &acceleration};
    for (unsigned order = 0; order < entries.size(); ++order) {
        results[order]->resize(numOfPhysicalDof, getNumOfMotions());
        results[order]->setFromTriplets(entries[order].begin(), entries[order].end());
    }
}

std::string getMotionName(unsigned index) {
    constexpr std::array<const char*, numOfRigidMotions> names = {"x",      "y",      "z",
                                                                  "turn x", "turn y", "turn z"};
    return index < names.size() ? names[index] : fmt::format("eta{}", index - names.size() + 1);
}

} // namespace velmora::driver
