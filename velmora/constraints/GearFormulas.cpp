#include "velmora/constraints/GearFormulas.h"

#include "velmora/bodies/MBS_RotationMath.h"

#include <array>
#include <cmath>
#include <numbers>

namespace velmora {

namespace {

constexpr double jumpTolerance = std::numbers::pi / 20;

/// constant + sum of weights(i, j) M(i, j)
struct AffineForm {
    double constant;
    Mat3 weights;
};
struct CaseForms {
    AffineForm N, H;
};

// p0 and p1 + p2 + p3 of the four cases, times twice the root of the case.
// clang-format off
constexpr std::array<CaseForms, 4> caseForms = {{
    {{0, {{ 0, 1, -1,  -1,  0,  1,   1, -1,  0}}}, {1, {{1, 0,  0,   0, 1, 0,   0,  0, 1}}}},
    {{1, {{ 1, 1,  1,   1, -1,  0,   1,  0, -1}}}, {0, {{0, 0,  0,   0, 0, 1,   0, -1, 0}}}},
    {{1, {{-1, 1,  0,   1,  1,  1,   0,  1, -1}}}, {0, {{0, 0, -1,   0, 0, 0,   1,  0, 0}}}},
    {{1, {{-1, 0,  1,   0, -1,  1,   1,  1,  1}}}, {0, {{0, 1,  0,  -1, 0, 0,   0,  0, 0}}}},
}};
// clang-format on

// Sum over the columns A_j of w_j . A_j: its gradient with respect to e at e = x, linear in x.
Vec4 gradientOf(const Mat3& w, const Vec4& x) {
    Vec4 sum;
    for (int j = 0; j < 3; ++j) {
        Vec3 unit;
        unit(j) = 1.0;
        sum += transposeTimes(J(x, unit), Vec3::from(&w.data[static_cast<std::size_t>(3 * j)]));
    }
    return sum;
}

// With M = A R' the weights of A are W R.
GearSide::Form evaluate(const AffineForm& form, const Mat3& A, const Mat3& R, const Vec4& e,
                        const Vec4& eDot) {
    const Mat3 weights = form.weights * R;
    GearSide::Form result{form.constant, gradientOf(weights, e), gradientOf(weights, eDot)};
    for (std::size_t k = 0; k < 9; ++k)
        result.value += weights.data[k] * A.data[k];
    return result;
}

// (2) without its factor sa / D
Vec4 numerator(const GearSide::Ratio& r) {
    return r.H.value * r.N.gradient - r.N.value * r.H.gradient;
}

double denominator(const GearSide::Ratio& r, double sa) {
    return sa * sa * r.H.value * r.H.value + r.N.value * r.N.value;
}

} // namespace

GearSide::Ratio GearSide::ratio(const P* q, const P* qd) const {
    const Vec4 e = Vec4::from(q->bodyData(bodyIndex) + 3);
    const Vec4 eDot = qd ? Vec4::from(qd->bodyData(bodyIndex) + 3) : Vec4();
    if (hasUnitOrientation)
        return {{e(1) + e(2) + e(3), {{0, 1, 1, 1}}, {}}, {e(0), {{1, 0, 0, 0}}, {}}};
    const Mat3 M = commons->A * transpose(startOrientation);
    unsigned caseIndex = 0;
    Vec4 p;
    MBS_RotationMath::rotationMatrixToEulerParametersWithCase(3, M.data.data(), p.data.data(), &caseIndex);
    const CaseForms& forms = caseForms[caseIndex - 1];
    return {evaluate(forms.N, commons->A, startOrientation, e, eDot),
            evaluate(forms.H, commons->A, startOrientation, e, eDot)};
}

void GearSide::countJump(double theta) {
    const bool isJump = std::abs(halfAngle - theta) > std::numbers::pi - jumpTolerance;
    if (theta >= 0.0 && !isPositive && isJump)
        --turnCount;
    if (theta < 0.0 && isPositive && isJump)
        ++turnCount;
    halfAngle = theta;
    isPositive = theta >= 0.0;
}

double GearSide::turnedHalfAngle(const P* q) {
    const Ratio r = ratio(q, nullptr);
    countJump(std::atan(r.N.value * (1.0 / axisSum) / r.H.value)); // (1)
    return turnCount * std::numbers::pi + halfAngle;
}

void GearSide::setCqT(const P* q) {
    const Ratio r = ratio(q, nullptr);
    cqT = factor * axisSum / denominator(r, axisSum) * numerator(r); // (2)
}

void GearSide::setCqTdT(const P* q, const P* qd) {
    const Ratio r = ratio(q, qd);
    const Vec4 eDot = Vec4::from(qd->bodyData(bodyIndex) + 3);
    const double N = r.N.value, H = r.H.value;
    const double NDot = dot(r.N.gradient, eDot), HDot = dot(r.H.gradient, eDot);
    const double D = denominator(r, axisSum), DDot = 2.0 * (axisSum * axisSum * H * HDot + N * NDot);
    const Vec4 uDot = HDot * r.N.gradient + H * r.N.gradientDot - NDot * r.H.gradient - N * r.H.gradientDot;
    cqTdT = factor * axisSum / (D * D) * (D * uDot - DDot * numerator(r)); // (3)
}

void GearSide::setCqTLe_q(double lambda, const P* q) {
    if (!hasUnitOrientation)
        return; // stays zero
    const Ratio r = ratio(q, nullptr);
    const double N = r.N.value, H = r.H.value, sa = axisSum, D = denominator(r, sa);
    const double scale = factor * lambda * sa / (D * D);
    cqTLe_q(0, 0) = scale * 2.0 * sa * sa * H * N; // (4)
    for (int i = 1; i < 4; ++i) {
        cqTLe_q(0, i) = cqTLe_q(i, 0) = scale * (N * N - sa * sa * H * H);
        for (int j = 1; j < 4; ++j)
            cqTLe_q(i, j) = -scale * 2.0 * H * N;
    }
}

double GearState::residual(const P* q) {
    const double turned1 = side1.turnedHalfAngle(q);
    return side1.factor * turned1 + side2.factor * side2.turnedHalfAngle(q); // (5)
}

void GearState::updateForMotion(const P* q, C* out) {
    *out->equationsOfConstraint(constraintIndex) = residual(q);
    side1.setCqT(q);
    side2.setCqT(q);
}

void GearState::updateForJacobian(const P* q, const P* qd, const C* multipliers) {
    const double lambda = *multipliers->equationsOfConstraint(constraintIndex);
    for (GearSide* side : {&side1, &side2}) {
        side->setCqTLe_q(lambda, q);
        side->setCqTdT(q, qd);
    }
}

void GearState::addForces(const C* multipliers, P* out) const {
    const double lambda = *multipliers->equationsOfConstraint(constraintIndex);
    for (const GearSide* side : {&side1, &side2})
        (lambda * side->cqT).addTo(out->bodyData(side->bodyIndex) + 3);
}

} // namespace velmora
