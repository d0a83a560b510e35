#pragma once

#include "velmora/bodies/ModalRows.h"

#include <array>
#include <memory>
#include <vector>

namespace velmora {

class MBM_GeneralDenseMatrix;

// The inertia invariants of a flexible body at the current modal coordinates eta. Constant data stand in the
// parameter object and must outlive these.

/// The share of Ibar that is linear in eta: sum of C_j eta_j.
class MBS_FlexBody_Full_Wrf_Matrix {
  public:
    explicit MBS_FlexBody_Full_Wrf_Matrix(const std::vector<Mat3>& invariants) : C(&invariants) {}

    void update(const double* eta, const double* etaDot);
    /// D(v): column j = C_j v.
    void setRows(const Vec3& v, ModalRows& D) const;

    Mat3 sumOfCj;    ///< sum of C_j eta_j
    Mat3 sumOfCjDot; ///< sum of C_j deta_j

  private:
    const std::vector<Mat3>* C; // per mode; not owned
};

/// The coupling of rotation and deformation: T(x), 3 x M, row c = x' E_c with E_c skew-symmetric.
class MBS_FlexBody_Full_Wtf_Matrix {
  public:
    /// M x 3M each: E_0, E_1, E_2, and E_0', E_1', E_2'.
    MBS_FlexBody_Full_Wtf_Matrix(const MBM_GeneralDenseMatrix& invariants,
                                 const MBM_GeneralDenseMatrix& transposed);

    void update(const double* eta, const double* etaDot);
    void updateForAcceleration(const double* etaDotDot);
    /// F = s (v_0 E_0' + v_1 E_1' + v_2 E_2'), M x M: s times the derivative of T(eta)' v.
    void setFlexBlock(double s, const Vec3& v, double* F) const;

    ModalRows TofEta, TofEtaDot, TofEtaDotDot;

  private:
    void setT(const double* x, ModalRows& T) const;

    const MBM_GeneralDenseMatrix *E, *ETransposed; // not owned
};

/// The share of Ibar that is quadratic in eta: S(eta), S_ab = eta' W_ab eta. All of it comes from the
/// symmetric X_ab = W_ab + W_ba = d^2 S_ab / deta^2.
class MBS_FlexBody_Full_Wff_Matrix {
  public:
    /// M x 6M: X_00, X_11, X_22, X_01, X_02, X_12.
    explicit MBS_FlexBody_Full_Wff_Matrix(const MBM_GeneralDenseMatrix& pairSums);

    void update(const double* eta, const double* etaDot);
    void updateForAcceleration(const double* etaDot);
    /// D += D_ff(v): row b = sum over a of v_a (X_ab eta)'.
    void addRows(const Vec3& v, ModalRows& D) const { addRows(v, pairsTimesEta, D); }
    /// D = the rate of D_ff(v) at constant v.
    void setRatesOfRows(const Vec3& v, ModalRows& D) const;
    /// F = half the Hessian of v' S(eta) v, M x M.
    void setFlexBlock(const Vec3& v, double* F) const;

    Mat3 sOfEta;    ///< S(eta)
    Mat3 sOfEtaDot; ///< dS/dt

  private:
    void addRows(const Vec3& v, const std::vector<double>& pairs, ModalRows& D) const;

    unsigned M;
    const MBM_GeneralDenseMatrix* X;      // not owned
    std::vector<double> pairsTimesEta;    // X_ab eta, six times M
    std::vector<double> pairsTimesEtaDot; // X_ab deta, six times M
};

} // namespace velmora
