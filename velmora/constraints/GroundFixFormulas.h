#pragma once

#include "velmora/bodies/MBS_BodyCommons.h"
#include "velmora/model/MBS_ModelDofVector.h"

/// \file
/// One equation that ties a rigid body to the ground.
///
/// Notation: r, e = position and Euler parameters of the body, A = A(e); u = joint point and abar = joint
/// axis in the body frame; a, g = axes that stay in the ground. J(e; u) = d(A u)/de and E(a; u) = d2(a . A
/// u)/de2, so that d(J(e; u)' a)/dt = J(de/dt; u)' a and d(J(e; u)' a)/de = E(a; u).
///
///                   translation along a          rotation, abar against g
/// (1) C           = a . (r + A u) - k1 - k0      g . (A abar) - c0
/// (2) CqT         : t = a, r = J(e; u)' a        r = J(e; abar)' g
/// (3) CqTdT       : r = J(de/dt; u)' a           r = J(de/dt; abar)' g
/// (4) CqTLe_q     : rr = lambda E(a; u)          rr = lambda E(g; abar)

namespace velmora {

/// Numbers of a translation fix to the ground.
struct GroundTransFixState {
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;

    /// (1)
    double residual(const P* q) {
        offset = commons->A * localPoint;
        point = Vec3::from(q->bodyData(bodyIndex)) + offset;
        return dot(fixedDirection, point) - planeConstant - initialOffset;
    }
    /// (2)
    void setCqT(const P* q) {
        cqT_t = fixedDirection;
        cqT_r = transposeTimes(J(Vec4::from(q->bodyData(bodyIndex) + 3), localPoint), fixedDirection);
    }
    /// (3)
    void setCqTdT(const P* qd) {
        cqTdT_r = transposeTimes(J(Vec4::from(qd->bodyData(bodyIndex) + 3), localPoint), fixedDirection);
    }
    /// (4)
    void setCqTLe_q(double lambda) { cqTLe_q = lambda * hessian; }

    void updateForMotion(const P* q, C* out) {
        *out->equationsOfConstraint(constraintIndex) = residual(q);
        setCqT(q);
    }
    void updateForJacobian(const P*, const P* qd, const C* multipliers) {
        setCqTLe_q(*multipliers->equationsOfConstraint(constraintIndex));
        setCqTdT(qd);
    }
    void addForces(const C* multipliers, P* out) const {
        const double lambda = *multipliers->equationsOfConstraint(constraintIndex);
        double* to = out->bodyData(bodyIndex);
        (lambda * cqT_t).addTo(to);
        (lambda * cqT_r).addTo(to + 3);
    }

    unsigned bodyIndex, constraintIndex;
    const MBS_BodyCommons* commons; // not owned
    double planeConstant;           ///< k1 = a . L
    double initialOffset;           ///< k0 = a . (c + R u) - k1: rounding of the start
    Vec3 fixedDirection;            ///< a, global frame
    Vec3 localPoint;                ///< u = R' (L - c)
    Mat4 hessian;                   ///< E(a; u)
    Vec3 offset, point;             ///< A u, r + A u
    Vec3 cqT_t;                     // elements of the blocks from here on
    Vec4 cqT_r, cqTdT_r;
    Mat4 cqTLe_q;
};

/// Numbers of a rotation fix to the ground.
struct GroundRotFixState {
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;

    /// (1)
    double residual(const P*) {
        currentAxis = commons->A * localAxis;
        return dot(currentAxis, groundAxis) - initialProduct;
    }
    /// (2)
    void setCqT(const P* q) {
        cqT_r = transposeTimes(J(Vec4::from(q->bodyData(bodyIndex) + 3), localAxis), groundAxis);
    }
    /// (3)
    void setCqTdT(const P* qd) {
        cqTdT_r = transposeTimes(J(Vec4::from(qd->bodyData(bodyIndex) + 3), localAxis), groundAxis);
    }
    /// (4)
    void setCqTLe_q(double lambda) { cqTLe_q = lambda * hessian; }

    void updateForMotion(const P* q, C* out) {
        *out->equationsOfConstraint(constraintIndex) = residual(q);
        setCqT(q);
    }
    void updateForJacobian(const P*, const P* qd, const C* multipliers) {
        setCqTLe_q(*multipliers->equationsOfConstraint(constraintIndex));
        setCqTdT(qd);
    }
    void addForces(const C* multipliers, P* out) const {
        const double lambda = *multipliers->equationsOfConstraint(constraintIndex);
        (lambda * cqT_r).addTo(out->bodyData(bodyIndex) + 3);
    }

    unsigned bodyIndex, constraintIndex;
    const MBS_BodyCommons* commons; // not owned
    double initialProduct;          ///< c0 = o_j . o_k: rounding of the start
    Vec3 localAxis;                 ///< abar = R' o_j
    Vec3 groundAxis;                ///< g = o_k, global frame
    Mat4 hessian;                   ///< E(g; abar)
    Vec3 currentAxis;               ///< A abar
    Vec4 cqT_r, cqTdT_r;            // elements of the blocks from here on
    Mat4 cqTLe_q;
};

} // namespace velmora
