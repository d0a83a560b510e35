#pragma once

#include <velmora/bodies/RigidBodyFormulas.h>

#include <array>
#include <vector>

namespace velmora {

/// The least that a chain of spherical joints costs: one loop over plain arrays, written for this mechanism
/// alone, that computes the residual of a Newton iteration and every entry of its matrix, joint by joint,
/// with the three equations of a joint taken together. Nothing is kept for anybody else.
///
/// Equations as in the kernel: link k carries norm equation k and, with its predecessor (link 0: with the
/// ground), the joint equations B' A1' d = const, d = r2 + A2 u2 - r1.
class ChainFloor {
  public:
    /// Entries of one link in the order in which they are computed.
    struct Entries {
        Vec3 bodyTrans;            // diagonal
        Mat4 bodyRot;              // rotational block of the link
        Mat34 trOfFirst, trOfPair; // d(force on first body)/d(its p), and on the pair's other side
        Mat43 rtOfFirst, rtOfPair; //
        Mat4 rrOfPair, rrOfPairT;  //
        Vec4 normT, norm;          // column and row of the norm equation
        Mat3 t1, t2, t1T, t2T;     // Cq', Cq of the joint
        Mat43 r1, r2;              //
        Mat34 r1T, r2T;            //
    };

    ChainFloor(std::size_t numOfLinks, double mass, const Vec3& inertia, const Vec3& pointOfFirst,
               const Vec3& pointOfSecond)
        : entries(numOfLinks),
          forces(7 * numOfLinks),
          constraints(4 * numOfLinks),
          m(mass),
          I(inertia),
          u1(pointOfFirst),
          u2(pointOfSecond) {}

    /// q, qd, qdd: 7 numbers per link; lambda: all norm equations, then 3 per joint.
    void evaluate(const double* q, const double* qd, const double* qdd, const double* lambda, double c1,
                  double c2);

    std::vector<Entries> entries;
    std::vector<double> forces, constraints;

  private:
    double m;
    Vec3 I, u1, u2;
};

inline void ChainFloor::evaluate(const double* q, const double* qd, const double* qdd, const double* lambda,
                                 double c1, double c2) {
    const std::size_t n = entries.size();
    Vec3 rBefore;
    Vec4 pBefore{{1.0, 0.0, 0.0, 0.0}};
    Mat3 ABefore = A(pBefore);
    for (std::size_t k = 0; k < n; ++k) {
        const double *x = q + 7 * k, *v = qd + 7 * k, *a = qdd + 7 * k;
        Entries& e = entries[k];
        const Vec3 r = Vec3::from(x);
        const Vec4 p = Vec4::from(x + 3), dp = Vec4::from(v + 3), ddp = Vec4::from(a + 3);
        const Mat3 A2 = A(p);
        const Vec3 w = Gbar(p) * dp, Iw = diagTimes(I, w);
        const double norm = lambda[k];
        const Vec3 l = Vec3::from(lambda + n + 3 * k);

        // The link.
        const Mat4 M = rigid::massBlock(I, p);
        Vec3 f = m * Vec3::from(a);
        f(2) += 9.81 * m;
        Vec4 g = M * ddp - rigid::velInertiaForce(p, w, Iw) + 2.0 * norm * p;
        const Mat3 Y = rigid::gyroscopicMatrix(I, w, Iw);
        Mat4 rr =
            M + c2 * (rigid::inertiaForce_q(I, p, ddp) - rigid::velInertiaForce_q(p, dp, Y, cross(w, Iw)));
        rr -= c1 * rigid::velInertiaForce_qd(p, Y);
        for (int i = 0; i < 4; ++i)
            rr(i, i) += c2 * 2.0 * norm;
        e.bodyTrans = {{m, m, m}};
        e.normT = e.norm = 2.0 * p;
        constraints[k] = normResidual(x + 3);

        // The joint, with its three axes those of the first body: B = 1.
        const Vec3 d = r + A2 * u2 - rBefore;
        (transposeTimes(ABefore, d) - u1).to(&constraints[n + 3 * k]);
        const Mat34 J2 = J(p, u2), J1 = J(pBefore, l);
        const Vec3 force = ABefore * l;
        f += force;
        g += transposeTimes(J2, force);
        e.t2 = ABefore;
        e.t2T = transpose(ABefore);
        e.t1 = -ABefore;
        e.t1T = -e.t2T;
        e.r2 = transposeTimes(J2, ABefore);
        e.r2T = transpose(e.r2);
        e.r1T = K(pBefore, d);
        e.r1 = transpose(e.r1T);
        rr += c2 * E(force, u2);
        e.bodyRot = rr;
        f.to(&forces[7 * k]);
        g.to(&forces[7 * k + 3]);
        if (k > 0) {
            Vec3 fBefore = -force;
            fBefore.addTo(&forces[7 * k - 7]);
            (e.r1 * l).addTo(&forces[7 * k - 4]);
            (c2 * E(d, l)).addTo(entries[k - 1].bodyRot.data.data());
            e.trOfFirst = -c2 * J1;
            e.rtOfFirst = transpose(e.trOfFirst);
            e.trOfPair = c2 * J1;
            e.rtOfPair = transpose(e.trOfPair);
            e.rrOfPair = transposeTimes(e.trOfPair, J2);
            e.rrOfPairT = transpose(e.rrOfPair);
        }
        rBefore = r;
        pBefore = p;
        ABefore = A2;
    }
}

} // namespace velmora
