#include "velmora/bodies/MBS_FlexBody_Full_Matrix.h"

#include "velmora/bodies/MBS_FlexBody_Full_Parameter.h"
#include "velmora/model/MBS_ModelDofVector.h"

// With w = Gbar dp, alpha = Gbar a, D(v) the 3 x M matrix of columns dIbar/deta_j v, I' and D' rates:
//
// (1) M       rr = Gbar' I Gbar                        rf = Gbar' T(eta)
//             fr = rf'                                 ff = diag(Mred)
// (2) M qdd   r:  Gbar' s,  s = I alpha + T(eta) ddeta      f:  T(eta)' alpha + Mred ddeta
// (3) d/dq    rr = 2 S(s) - (I Gbar)' Gbar(a)          rf = Gbar' (D(alpha) - T(ddeta))
//             fr = -T(eta)' Gbar(a)                    ff = sum alpha_c E_c'
// (4) Qvv     r:  -Gbar' I' w - 2 Gbar(dp)' (I w + T(eta) deta)
//             f:  1/2 D(w)' w - 2 T(deta)' w
// (5) d/dq    rr = (Gbar' I' + 2 Gbar(dp)' I) Gbar(dp) - 2 S(I' w)
//             rf = -Gbar' D'(w) - 2 Gbar(dp)' (D(w) - T(deta))
//             fr = -(D(w) - 2 T(deta))' Gbar(dp)       ff = 1/2 Hessian of w' S(eta) w
// (6) d/dqd   rr = -(Gbar' I' + 2 Gbar(dp)' I) Gbar - 4 S(I w + T(eta) deta)
//             rf = -Gbar' D(w) - 2 Gbar(dp)' T(eta)
//             fr = (D(w) - 2 T(deta))' Gbar            ff = -2 sum w_c E_c'
//
// Used on the way: Gbar(x)' v = 2 S(v) x, Gbar(x) y = -Gbar(y) x, so that dw/dp = -Gbar(dp) and dw/d(dp) =
// Gbar; and d(T(eta) x)/deta = -T(x), since the E_c are skew-symmetric.

namespace velmora {

void MBS_FlexBody_Full_Matrix::setFlexDiagonal(const std::vector<double>& diagonal) {
    const auto M = static_cast<unsigned>(diagonal.size());
    setBlockMatrix(Flex, Flex, "MBM_DiagonalDenseMatrix", M, M, 0.0);
    for (unsigned j = 0; j < M; ++j)
        block[Flex][Flex]->setValue(j, j, diagonal[j]);
}

MBS_FlexBody_Full_MassMatrix::MBS_FlexBody_Full_MassMatrix(const MBS_BodyShape& shape,
                                                           const MBS_FlexBody_Full_Commons& c)
    : MBS_FlexBody_Full_Matrix(shape, c) {
    if (c.isItfActive())
        keepOnly({{Rot, Flex}, {Flex, Rot}});
    else
        keepOnly({});
    setBlockMatrix(Trans, Trans, "MBM_DiagonalDenseMatrix", 3, 3, c.flexParameter->mass);
    setBlockMatrix(Rot, Rot, "MBM_SymmetricDenseMatrix", 4, 4, 0.0);
    setFlexDiagonal(c.flexParameter->Mred);
}

// (1)
void MBS_FlexBody_Full_MassMatrix::update(double, const P*, const P*, const P*, const C*) {
    const auto& c = *commons;
    const Mat34 Gbar = c.Gbar();
    transposeTimes(Gbar, c.IbarGbar).to(rr());
    for (unsigned j = 0; c.isItfActive() && j < M(); ++j) {
        const Vec4 v = transposeTimes(Gbar, c.Wtf->TofEta.column(j));
        setColumnOfRf(j, v);
        setRowOfFr(j, v);
    }
}

MBS_FlexBody_Full_MQdd_q::MBS_FlexBody_Full_MQdd_q(const MBS_BodyShape& shape,
                                                   const MBS_FlexBody_Full_Commons& c)
    : MBS_FlexBody_Full_Matrix(shape, c) {
    if (c.isItfActive())
        keepOnly({{Rot, Rot}, {Rot, Flex}, {Flex, Rot}, {Flex, Flex}});
    else
        keepOnly({{Rot, Rot}, {Rot, Flex}});
}

// (3)
void MBS_FlexBody_Full_MQdd_q::update(double, const P*, const P*, const P* qdd, const C*) {
    const auto& c = *commons;
    const Mat34 Gbar = c.Gbar();
    Vec3 s = c.Ibar * c.alpha;
    if (c.isItfActive()) {
        s += c.Wtf->TofEta * (qdd->bodyData(bodyIndex) + 7);
        for (unsigned j = 0; j < M(); ++j) {
            setColumnOfRf(j, transposeTimes(Gbar, c.rowsWithAlpha.column(j) - c.Wtf->TofEtaDotDot.column(j)));
            setRowOfFr(j, -transposeTimes(c.accelerationMatrix, c.Wtf->TofEta.column(j)));
        }
        c.Wtf->setFlexBlock(1.0, c.alpha, ff());
    } else {
        for (unsigned j = 0; j < M(); ++j)
            setColumnOfRf(j, transposeTimes(Gbar, c.rowsWithAlpha.column(j)));
    }
    (2.0 * S(s) - transposeTimes(c.IbarGbar, c.accelerationMatrix)).to(rr());
}

MBS_FlexBody_Full_Qvv_q::MBS_FlexBody_Full_Qvv_q(const MBS_BodyShape& shape,
                                                 const MBS_FlexBody_Full_Commons& c)
    : MBS_FlexBody_Full_Matrix(shape, c) {
    if (c.isQuadraticTermOfIttActive())
        keepOnly({{Rot, Rot}, {Rot, Flex}, {Flex, Rot}, {Flex, Flex}});
    else
        keepOnly({{Rot, Rot}, {Rot, Flex}, {Flex, Rot}});
}

namespace {

/// Gbar' I' + 2 Gbar(dp)' I, 4x3.
Mat43 inertiaRates(const MBS_FlexBody_Full_Commons& c) {
    return transposeTimes(c.Gbar(), c.IbarDot) + 2.0 * transposeTimes(c.GbarDot(), c.Ibar);
}

} // namespace

// (5)
void MBS_FlexBody_Full_Qvv_q::update(double, const P*, const P*, const P*, const C*) {
    const auto& c = *commons;
    const Mat34 Gbar = c.Gbar(), GbarDot = c.GbarDot();
    (inertiaRates(c) * GbarDot - 2.0 * S(c.IbarDotOmegaBar)).to(rr());
    for (unsigned j = 0; j < M(); ++j) {
        const Vec3 D = c.rowsWithOmega.column(j);
        const Vec3 T = c.isItfActive() ? c.Wtf->TofEtaDot.column(j) : Vec3();
        Vec4 column = -2.0 * transposeTimes(GbarDot, D - T);
        if (c.isQuadraticTermOfIttActive())
            column -= transposeTimes(Gbar, c.rowsWithOmegaDot.column(j));
        setColumnOfRf(j, column);
        setRowOfFr(j, -transposeTimes(GbarDot, D - 2.0 * T));
    }
    if (c.isQuadraticTermOfIttActive())
        c.Wff->setFlexBlock(c.omegaBar, ff());
}

MBS_FlexBody_Full_Qvv_qd::MBS_FlexBody_Full_Qvv_qd(const MBS_BodyShape& shape,
                                                   const MBS_FlexBody_Full_Commons& c)
    : MBS_FlexBody_Full_Matrix(shape, c) {
    if (c.isItfActive())
        keepOnly({{Rot, Rot}, {Rot, Flex}, {Flex, Rot}, {Flex, Flex}});
    else
        keepOnly({{Rot, Rot}, {Rot, Flex}, {Flex, Rot}});
}

// (6)
void MBS_FlexBody_Full_Qvv_qd::update(double, const P*, const P*, const P*, const C*) {
    const auto& c = *commons;
    const Mat34 Gbar = c.Gbar(), twiceGbarDot = 2.0 * c.GbarDot();
    (-(inertiaRates(c) * Gbar) - 4.0 * S(c.IbarOmegaBar + c.WtfTimesFlexVelocity)).to(rr());
    for (unsigned j = 0; j < M(); ++j) {
        const Vec4 v = transposeTimes(Gbar, c.rowsWithOmega.column(j));
        Vec4 column = -v, row = v;
        if (c.isItfActive()) {
            column -= transposeTimes(twiceGbarDot, c.Wtf->TofEta.column(j));
            row -= 2.0 * transposeTimes(Gbar, c.Wtf->TofEtaDot.column(j));
        }
        setColumnOfRf(j, column);
        setRowOfFr(j, row);
    }
    if (c.isItfActive())
        c.Wtf->setFlexBlock(-2.0, c.omegaBar, ff());
}

MBS_FlexBody_Full_CqLi_q::MBS_FlexBody_Full_CqLi_q(const MBS_BodyShape& shape,
                                                   const MBS_FlexBody_Full_Commons& c)
    : MBS_FlexBody_Full_Matrix(shape, c) {
    keepOnly({});
    setBlockMatrix(Rot, Rot, "MBM_DiagonalDenseMatrix", 4, 4, 0.0);
}

void MBS_FlexBody_Full_CqLi_q::update(double, const P*, const P*, const P*, const C* lagrange) {
    const double lambda = lagrange->innerEquationOfBody(bodyIndex);
    for (unsigned i = 0; i < 4; ++i)
        rr()[5 * i] = 2.0 * lambda; // d(2 p lambda)/dp
}

MBS_FlexBody_Full_Kq_q::MBS_FlexBody_Full_Kq_q(const MBS_BodyShape& shape, const MBS_FlexBody_Full_Commons& c)
    : MBS_FlexBody_Full_Matrix(shape, c) {
    keepOnly({{Rot, Flex}, {Flex, Rot}});
    setFlexDiagonal(c.flexParameter->Kred);
}

MBS_FlexBody_Full_Dqd_qd::MBS_FlexBody_Full_Dqd_qd(const MBS_BodyShape& shape,
                                                   const MBS_FlexBody_Full_Commons& c)
    : MBS_FlexBody_Full_Matrix(shape, c) {
    keepOnly({{Rot, Flex}, {Flex, Rot}});
    setFlexDiagonal(c.flexParameter->Dred);
}

} // namespace velmora
