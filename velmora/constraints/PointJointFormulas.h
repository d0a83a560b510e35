#pragma once

#include "velmora/constraints/BodyBodyFixFormulas.h"

#include <array>

/// \file
/// Up to three equations that hold a point of one rigid body on planes of another: the translation fixes of
/// one joint, which share the bodies and the point and are computed together.
///
/// Notation: r1, e1, A1 and r2, e2, A2 = position, Euler parameters and rotation matrix of the bodies; u2 =
/// joint point in the frame of body 2, d = r2 + A2 u2 - r1; B = [abar_0 abar_1 abar_2] = joint axes in the
/// frame of body 1, [a] = A1 B; l = multipliers, w = B l; J(e; u) = d(A u)/de, J1(w) = J(e1; w), J2 = J(e2;
/// u2); K(e; s) = d(A(e)' s)/de, so that J(e; u)' s = K(e; s)' u; E(a; u) = d2(a . A u)/de2; a dot is the
/// rate along the motion.
///
/// (1) C           = [a]' d - k1 - k0
/// (2) CqT_1       : t = -[a],            r = K(e1; d)' B
///     CqT_2       : t =  [a],            r = J2' [a]
/// (3) CqTdT_1     : t = -[adot],         r = (K(e1dot; d) + K(e1; ddot))' B
///     CqTdT_2     : t =  [adot],         r = J(e2dot; u2)' [a] + J2' [adot]
/// (4) CqTLe_q_11  : tr = -J1(w), rt = tr',   rr = E(d; w)
///     CqTLe_q_21  : tr =  J1(w),             rr = J2' J1(w)
///     CqTLe_q_12  : transpose of CqTLe_q_21
///     CqTLe_q_22  :                          rr = E(A1 w; u2)
///
/// (4) is linear in w: with one multiplier alone it gives the blocks of that equation, and with all of them
/// the sum over the joint.
///
/// The point of body 1 doesn't occur in d: a . (A1 u1) is the constant k1 = abar . u1 for |e1| = 1, and the
/// derivatives are those of the equation with the constant in it.

namespace velmora {

/// Numbers of one joint. Columns beyond the number of equations are zero.
struct PointJointState : BodyPair {
    /// Elements of the CqT or CqTdT objects of one body, a column for each equation.
    struct Columns {
        Mat3 t;
        Mat43 r;
    };
    /// Of both bodies.
    struct ColumnsOfBodies {
        Columns body1, body2;
    };
    /// Elements of d(Cq' lambda)/dq, those that are transposes of others left out.
    struct CqTLe_q {
        Mat34 tr_11, tr_21;
        Mat4 rr_11, rr_21, rr_22;
    };

    /// (1)
    Vec3 residual(const P* q) {
        currentAxes = commons1->A * localAxes;
        pointDifference = translation(q, body2Index) + commons2->A * localPoint2 - translation(q, body1Index);
        return transposeTimes(currentAxes, pointDifference) - localProducts - initialOffsets;
    }
    /// (2)
    void setCqT(const P* q, ColumnsOfBodies& to) const {
        const Mat34 J2 = J(eulerParameters(q, body2Index), localPoint2);
        to.body1.t = -currentAxes;
        to.body1.r = transposeTimes(K(eulerParameters(q, body1Index), pointDifference), localAxes);
        to.body2.t = currentAxes;
        to.body2.r = transposeTimes(J2, currentAxes);
    }
    /// ddot
    void setRateOfDifference(const P* q, const P* qd) {
        rateOfDifference = translation(qd, body2Index) +
                           J(eulerParameters(q, body2Index), localPoint2) * eulerParameters(qd, body2Index) -
                           translation(qd, body1Index);
    }
    /// (3) From ddot and the commons of the bodies.
    void setCqTdT(ColumnsOfBodies& to) const {
        const Vec4 &e1 = commons1->p, &e1Dot = commons1->dp, &e2 = commons2->p, &e2Dot = commons2->dp;
        const Mat3 aDot = rateOfA(e1, e1Dot) * localAxes;
        to.body1.t = -aDot;
        to.body1.r = transposeTimes(K(e1Dot, pointDifference) + K(e1, rateOfDifference), localAxes);
        to.body2.t = aDot;
        to.body2.r =
            transposeTimes(J(e2Dot, localPoint2), currentAxes) + transposeTimes(J(e2, localPoint2), aDot);
    }
    /// (4)
    void setCqTLe_q(const P* q, const Vec3& w, CqTLe_q& to) const {
        const Mat34 J1 = J(eulerParameters(q, body1Index), w);
        const Mat34 J2 = J(eulerParameters(q, body2Index), localPoint2);
        to.tr_11 = -J1;
        to.rr_11 = E(pointDifference, w);
        to.tr_21 = J1;
        to.rr_21 = transposeTimes(J2, J1);
        to.rr_22 = E(commons1->A * w, localPoint2);
    }
    /// l; 0.0 in unused columns.
    Vec3 multipliers(const C* all) const {
        Vec3 l;
        for (unsigned i = 0; i < numOfEquations; ++i)
            l(static_cast<int>(i)) = *all->equationsOfConstraint(constraints[i]);
        return l;
    }
    /// w of all equations.
    Vec3 weightedAxes(const C* all) const { return localAxes * multipliers(all); }

    unsigned numOfEquations;
    std::array<unsigned, 3> constraints; ///< index of the constraint of each column
    Vec3 initialOffsets;                 ///< k0: rounding of the start
    Vec3 localProducts;                  ///< k1 = B' u1
    Mat3 localAxes;                      ///< B, frame of body 1
    Vec3 localPoint2;                    ///< u2, frame of body 2
    Mat3 currentAxes;                    ///< [a], global frame
    Vec3 pointDifference;                ///< d, global frame
    Vec3 rateOfDifference;               ///< ddot, global frame
};

} // namespace velmora
