#pragma once

#include "velmora/bodies/RotationAlgebra.h"
#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"

#include <algorithm>

/// \file
/// How the derivative D of a vector load fills the block of a row body: D = d(f)/dx of a force at a point, or
/// d(tau)/dx of a torque, 3x7, global frame, with the sign that the load has on the row body. The places of a
/// block stand one behind the other, so that D and its product are copied as they are: (trans, trans),
/// (trans, rot), (rot, trans), (rot, rot) of a force, the last two of a torque.

namespace velmora {

constexpr std::size_t numOfForceValues = 49, numOfTorqueValues = 28; ///< per block

/// Q = [f; J' f], J = J(e; u) of the row body, by f.
inline void setForceRows(double* values, const Mat<3, 7>& D, const Mat34& J) {
    D.to(values);
    (transpose(J) * D).to(values + 21);
}

/// Q = [0; G' tau], G of the row body, by tau.
inline void setTorqueRows(double* values, const Mat<3, 7>& D, const Mat34& G) {
    (transpose(G) * D).to(values);
}

/// Copies the rows of the force, D, and those of the Euler parameters, R, to a block.
inline void setRows(MBS_GeneralBodyBodyMatrix& target, const Mat<3, 7>& D, const Mat<4, 7>& R) {
    std::copy_n(D.data.data(), 9, target.block[Trans][Trans]->data);
    std::copy_n(D.data.data() + 9, 12, target.block[Trans][Rot]->data);
    std::copy_n(R.data.data(), 12, target.block[Rot][Trans]->data);
    std::copy_n(R.data.data() + 12, 16, target.block[Rot][Rot]->data);
}

/// Adds the part that comes from the row body's own rotation at a constant load, to a block of so many
/// values.
inline void addOwnRotation(double* values, std::size_t numOfValues, const Mat4& part) {
    part.addTo(values + numOfValues - 16);
}

/// Leaves the places that a torque's block has: those of the rotational rows.
inline void keepTorqueRows(MBS_GeneralBodyBodyMatrix& target) {
    target.deleteBlock(Trans, Trans);
    target.deleteBlock(Trans, Rot);
}

} // namespace velmora
