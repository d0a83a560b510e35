#pragma once

#include "velmora/bodies/MBS_BodyCommons.h"
#include "velmora/model/MBS_ModelDofVector.h"

/// \file
/// One equation between the directions of two rigid bodies.
///
/// Notation: e1, A1 and e2, A2 = Euler parameters and rotation matrix of the bodies; abar1, abar2 = joint
/// axes in the frames of their bodies; a1 = A1 abar1, a2 = A2 abar2; J1 = J(e1; abar1), J2 = J(e2; abar2),
/// where J(e; u) = d(A u)/de; E(a; u) = d2(a . A u)/de2; a dot is the rate along the motion, J(e; u)' a has
/// the rate J(edot; u)' a + J(e; u)' adot.
///
/// (1) C           = a1 . a2 - c0
/// (2) CqT_1       : r = J1' a2
///     CqT_2       : r = J2' a1
/// (3) CqTdT_1     : r = rate of J1' a2
///     CqTdT_2     : r = rate of J2' a1
/// (4) CqTLe_q_11  : rr = l E(a2; abar1)
///     CqTLe_q_12  : rr = l J1' J2
///     CqTLe_q_21  : transpose of CqTLe_q_12
///     CqTLe_q_22  : rr = l E(a1; abar2)

namespace velmora {

/// The two bodies of a constraint.
struct BodyPair {
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;

    static Vec4 eulerParameters(const P* v, unsigned body) { return Vec4::from(v->bodyData(body) + 3); }
    static Vec3 translation(const P* v, unsigned body) { return Vec3::from(v->bodyData(body)); }

    unsigned body1Index, body2Index;
    const MBS_BodyCommons *commons1, *commons2; // not owned
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

    unsigned constraintIndex;
    double initialProduct;           ///< c0: rounding of the start
    Vec3 localAxis1, localAxis2;     ///< abar1, abar2, frames of their bodies
    Vec3 currentAxis1, currentAxis2; ///< a1, a2, global frame
    Vec4 cqT_1, cqT_2;               // elements of the blocks from here on
    Vec4 cqTdT_1, cqTdT_2;
    Mat4 cqTLe_q_11_rr, cqTLe_q_12_rr, cqTLe_q_21_rr, cqTLe_q_22_rr;
};

} // namespace velmora
