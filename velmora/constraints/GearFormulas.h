#pragma once

#include "velmora/bodies/MBS_BodyCommons.h"
#include "velmora/model/MBS_ModelDofVector.h"

/// \file
/// One equation between the half angles of two rigid bodies, each counted over any number of turns.
///
/// Notation: p = Euler parameters of the rotation M of a body since the start; sa = sum of the elements of
/// its axis. A start in the unit matrix has M = A(e) and p = e; otherwise M = A(e) R', and p follows from M
/// by one of four cases (Spurrier 1978). In all of them
///
/// (1) theta = atan((p1 + p2 + p3) / (sa p0)) = atan(N / (sa H))
///
/// with N = p1 + p2 + p3, H = p0 in the first instance, and otherwise, after multiplication with the root of
/// the case, with N and H affine in M, so quadratic in e: no division by p0. With u = H N_e - N H_e and
/// D = sa^2 H^2 + N^2, where _e is the gradient with respect to e,
///
/// (2) d(theta)/de  = sa u / D
/// (3) its rate     = sa (u' D - u D') / D^2,  u' = H' N_e + H N_e' - N' H_e - N H_e',
///                                             D' = 2 sa^2 H H' + 2 N N'
/// (4) d2(theta)/de2 for p = e, symmetric, i, j = 1, 2, 3:
///     00: 2 sa^3 H N / D^2,  0i: sa (N^2 - sa^2 H^2) / D^2,  ij: -2 sa H N / D^2
///
/// (5) C = k1 (n1 pi + theta1) - k2 (n2 pi + theta2), with n the number of jumps of theta.

namespace velmora {

/// Share of one body in a gear.
struct GearSide {
    using P = MBS_ModelPhysicalDofVector;

    /// N or H: value, gradient with respect to e, and the rate of the gradient.
    struct Form {
        double value;
        Vec4 gradient, gradientDot;
    };
    /// Numerator and denominator of (1) with their derivatives.
    struct Ratio {
        Form N, H;
    };

    /// N and H at the state; rates are those along qd, and zero without qd.
    Ratio ratio(const P* q, const P* qd) const;
    /// (1), and counts the jumps. Gives n pi + theta.
    double turnedHalfAngle(const P* q);
    /// (2), (3) and (4) times the factor; (4) is zero for a body with a turned start.
    void setCqT(const P* q);
    void setCqTdT(const P* q, const P* qd);
    void setCqTLe_q(double lambda, const P* q);

    unsigned bodyIndex;
    const MBS_BodyCommons* commons; // not owned
    double factor;                  ///< k1 or -k2
    double axisSum;                 ///< sa
    bool hasUnitOrientation;        ///< R is exactly the unit matrix
    Mat3 startOrientation;          ///< R
    double halfAngle = 0.0;         ///< theta of the last evaluation
    bool isPositive = true;         ///< the last theta was >= 0
    int turnCount = 0;              ///< n
    Vec4 cqT, cqTdT;                // elements of the blocks
    Mat4 cqTLe_q;

  private:
    void countJump(double theta);
};

/// Numbers of a gear.
struct GearState {
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;

    /// (5)
    double residual(const P* q);
    void updateForMotion(const P* q, C* out);
    void updateForJacobian(const P* q, const P* qd, const C* multipliers);
    void addForces(const C* multipliers, P* out) const;

    unsigned constraintIndex;
    GearSide side1, side2;
};

} // namespace velmora
