#pragma once

#include "velmora/bodies/MBS_BodyCommons.h"
#include "velmora/model/MBS_ModelDofVector.h"

/// \file
/// One equation between two rigid bodies.
///
/// Notation: r1, e1, A1 and r2, e2, A2 = position, Euler parameters and rotation matrix of the bodies; u1, u2
/// = joint point, abar, abar1, abar2 = joint axes in the frames of their bodies; J1 = J(e1; axis of body 1),
/// J2 = J(e2; u2) or J(e2; abar2), where J(e; u) = d(A u)/de; E(a; u) = d2(a . A u)/de2; a dot is the rate
/// along the motion, J(e; u)' a has the rate J(edot; u)' a + J(e; u)' adot.
///
///                   translation along a               rotation, a1 against a2
///                   a = A1 abar, d = r2 + A2 u2 - r1  a1 = A1 abar1, a2 = A2 abar2
/// (1) C           = a . d - k1 - k0                   a1 . a2 - c0
/// (2) CqT_1       : t = -a, r = J1' d                 r = J1' a2
///     CqT_2       : t =  a, r = J2' a                 r = J2' a1
/// (3) CqTdT_1     : t = -adot, r = rate of J1' d      r = rate of J1' a2
///     CqTdT_2     : t =  adot, r = rate of J2' a      r = rate of J2' a1
/// (4) CqTLe_q_11  : tr = -l J1, rt = tr',             rr = l E(a2; abar1)
///                   rr = l E(d; abar)
///     CqTLe_q_12  : rt = l J1', rr = l J1' J2         rr = l J1' J2
///     CqTLe_q_21  : transpose of CqTLe_q_12           transpose of CqTLe_q_12
///     CqTLe_q_22  : rr = l E(a; u2)                   rr = l E(a1; abar2)
///
/// The point of body 1 doesn't occur in d: a . (A1 u1) is the constant k1 = abar . u1 for |e1| = 1, and the
/// derivatives are those of the equation with the constant in it.

namespace velmora {

/// The two bodies and the equation of a constraint.
struct BodyPair {
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;

    static Vec4 eulerParameters(const P* v, unsigned body) { return Vec4::from(v->bodyData(body) + 3); }
    static Vec3 translation(const P* v, unsigned body) { return Vec3::from(v->bodyData(body)); }

    unsigned body1Index, body2Index, constraintIndex;
    const MBS_BodyCommons *commons1, *commons2; // not owned
};

/// Numbers of a translation fix between two bodies.
struct TransFixState : BodyPair {
    /// Elements of a CqT or CqTdT object.
    struct Column {
        Vec3 t;
        Vec4 r;
    };
    /// Jacobians of the axis and of point 2, and their rates along the motion.
    struct Motion {
        Mat34 J1, J2, J1dot, J2dot;
        Vec3 aDot, dDot;
    };

    Mat34 J1(const P* q) const { return J(eulerParameters(q, body1Index), localAxis); }
    Mat34 J2(const P* q) const { return J(eulerParameters(q, body2Index), localPoint2); }
    Motion motion(const P* q, const P* qd) const {
        Motion m{J1(q), J2(q), J1(qd), J2(qd), {}, {}};
        m.aDot = m.J1 * eulerParameters(qd, body1Index);
        m.dDot = translation(qd, body2Index) + m.J2 * eulerParameters(qd, body2Index) -
                 translation(qd, body1Index);
        return m;
    }

    /// (1)
    double residual(const P* q) {
        currentAxis = commons1->A * localAxis;
        point2 = translation(q, body2Index) + commons2->A * localPoint2;
        pointDifference = point2 - translation(q, body1Index);
        return dot(currentAxis, pointDifference) - localProduct - initialOffset;
    }
    /// (2)
    void setCqT_1(const Mat34& j1) { cqT_1 = {-currentAxis, transposeTimes(j1, pointDifference)}; }
    void setCqT_2(const Mat34& j2) { cqT_2 = {currentAxis, transposeTimes(j2, currentAxis)}; }
    /// (3)
    void setCqTdT_1(const Motion& m) {
        cqTdT_1 = {-m.aDot, transposeTimes(m.J1dot, pointDifference) + transposeTimes(m.J1, m.dDot)};
    }
    void setCqTdT_2(const Motion& m) {
        cqTdT_2 = {m.aDot, transposeTimes(m.J2dot, currentAxis) + transposeTimes(m.J2, m.aDot)};
    }
    /// (4)
    void setCqTLe_q_11(double lambda, const Mat34& j1) {
        cqTLe_q_11_tr = -lambda * j1;
        cqTLe_q_11_rt = transpose(cqTLe_q_11_tr);
        cqTLe_q_11_rr = lambda * E(pointDifference, localAxis);
    }
    void setCqTLe_q_12(double lambda, const Mat34& j1, const Mat34& j2) {
        cqTLe_q_12_rt = lambda * transpose(j1);
        cqTLe_q_12_rr = cqTLe_q_12_rt * j2;
    }
    void setCqTLe_q_21() {
        cqTLe_q_21_tr = transpose(cqTLe_q_12_rt);
        cqTLe_q_21_rr = transpose(cqTLe_q_12_rr);
    }
    void setCqTLe_q_22(double lambda) { cqTLe_q_22_rr = lambda * E(currentAxis, localPoint2); }

    void updateForMotion(const P* q, C* out) {
        *out->equationsOfConstraint(constraintIndex) = residual(q);
        setCqT_1(J1(q));
        setCqT_2(J2(q));
    }
    void updateForJacobian(const P* q, const P* qd, const C* multipliers) {
        const double lambda = *multipliers->equationsOfConstraint(constraintIndex);
        const Motion m = motion(q, qd);
        setCqTLe_q_11(lambda, m.J1);
        setCqTLe_q_12(lambda, m.J1, m.J2);
        setCqTLe_q_21();
        setCqTLe_q_22(lambda);
        setCqTdT_1(m);
        setCqTdT_2(m);
    }
    void addForces(const C* multipliers, P* out) const {
        const double lambda = *multipliers->equationsOfConstraint(constraintIndex);
        double *to1 = out->bodyData(body1Index), *to2 = out->bodyData(body2Index);
        (lambda * cqT_1.t).addTo(to1);
        (lambda * cqT_1.r).addTo(to1 + 3);
        (lambda * cqT_2.t).addTo(to2);
        (lambda * cqT_2.r).addTo(to2 + 3);
    }

    double initialOffset;                      ///< k0: rounding of the start
    double localProduct;                       ///< k1 = abar . u1
    Vec3 localAxis;                            ///< abar, frame of body 1
    Vec3 localPoint2;                          ///< u2, frame of body 2
    Vec3 currentAxis, point2, pointDifference; ///< a, r2 + A2 u2, d, global frame
    Column cqT_1, cqT_2;                       // elements of the blocks from here on
    Column cqTdT_1, cqTdT_2;
    Mat34 cqTLe_q_11_tr, cqTLe_q_21_tr;
    Mat43 cqTLe_q_11_rt, cqTLe_q_12_rt;
    Mat4 cqTLe_q_11_rr, cqTLe_q_12_rr, cqTLe_q_21_rr, cqTLe_q_22_rr;
};

/// Numbers of a rotation fix between two bodies.
struct RotFixState : BodyPair {
    /// Jacobians of the axes, and their rates along the motion.
    struct Motion {
        Mat34 J1, J2, J1dot, J2dot;
        Vec3 a1Dot, a2Dot;
    };

    Mat34 J1(const P* q) const { return J(eulerParameters(q, body1Index), localAxis1); }
    Mat34 J2(const P* q) const { return J(eulerParameters(q, body2Index), localAxis2); }
    Motion motion(const P* q, const P* qd) const {
        Motion m{J1(q), J2(q), J1(qd), J2(qd), {}, {}};
        m.a1Dot = m.J1 * eulerParameters(qd, body1Index);
        m.a2Dot = m.J2 * eulerParameters(qd, body2Index);
        return m;
    }

    /// (1)
    double residual(const P*) {
        currentAxis1 = commons1->A * localAxis1;
        currentAxis2 = commons2->A * localAxis2;
        return dot(currentAxis1, currentAxis2) - initialProduct;
    }
    /// (2)
    void setCqT_1(const Mat34& j1) { cqT_1 = transposeTimes(j1, currentAxis2); }
    void setCqT_2(const Mat34& j2) { cqT_2 = transposeTimes(j2, currentAxis1); }
    /// (3)
    void setCqTdT_1(const Motion& m) {
        cqTdT_1 = transposeTimes(m.J1dot, currentAxis2) + transposeTimes(m.J1, m.a2Dot);
    }
    void setCqTdT_2(const Motion& m) {
        cqTdT_2 = transposeTimes(m.J2dot, currentAxis1) + transposeTimes(m.J2, m.a1Dot);
    }
    /// (4)
    void setCqTLe_q_11(double lambda) { cqTLe_q_11_rr = lambda * E(currentAxis2, localAxis1); }
    void setCqTLe_q_12(double lambda, const Mat34& j1, const Mat34& j2) {
        cqTLe_q_12_rr = lambda * transposeTimes(j1, j2);
    }
    void setCqTLe_q_21() { cqTLe_q_21_rr = transpose(cqTLe_q_12_rr); }
    void setCqTLe_q_22(double lambda) { cqTLe_q_22_rr = lambda * E(currentAxis1, localAxis2); }

    void updateForMotion(const P* q, C* out) {
        *out->equationsOfConstraint(constraintIndex) = residual(q);
        setCqT_1(J1(q));
        setCqT_2(J2(q));
    }
    void updateForJacobian(const P* q, const P* qd, const C* multipliers) {
        const double lambda = *multipliers->equationsOfConstraint(constraintIndex);
        const Motion m = motion(q, qd);
        setCqTLe_q_11(lambda);
        setCqTLe_q_12(lambda, m.J1, m.J2);
        setCqTLe_q_21();
        setCqTLe_q_22(lambda);
        setCqTdT_1(m);
        setCqTdT_2(m);
    }
    void addForces(const C* multipliers, P* out) const {
        const double lambda = *multipliers->equationsOfConstraint(constraintIndex);
        (lambda * cqT_1).addTo(out->bodyData(body1Index) + 3);
        (lambda * cqT_2).addTo(out->bodyData(body2Index) + 3);
    }

    double initialProduct;           ///< c0: rounding of the start
    Vec3 localAxis1, localAxis2;     ///< abar1, abar2, frames of their bodies
    Vec3 currentAxis1, currentAxis2; ///< a1, a2, global frame
    Vec4 cqT_1, cqT_2;               // elements of the blocks from here on
    Vec4 cqTdT_1, cqTdT_2;
    Mat4 cqTLe_q_11_rr, cqTLe_q_12_rr, cqTLe_q_21_rr, cqTLe_q_22_rr;
};

} // namespace velmora
