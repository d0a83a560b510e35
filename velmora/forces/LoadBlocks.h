#pragma once

#include "velmora/bodies/RotationAlgebra.h"
#include "velmora/model/MBS_GeneralBodyBodyMatrix.h"

/// \file
/// How the derivative D of a vector load fills the block of a row body: D = d(f)/dx of a force at a point, or
/// d(tau)/dx of a torque, 3x7, global frame, with the sign that the load has on the row body.

namespace velmora {

/// Columns 3 to 6: those of the Euler parameters.
template <int R>
inline Mat<R, 4> rotColumns(const Mat<R, 7>& D) {
    return Mat<R, 4>::from(&D.data[std::size_t{3} * R]);
}

/// Q = [f; J' f], J = J(e; u) of the row body: the derivative by f.
inline void setForceRows(MBS_GeneralBodyBodyMatrix& target, const Mat<3, 7>& D, const Mat34& J) {
    const Mat<4, 7> turned = transposeTimes(J, D);
    Mat3::from(D.data.data()).to(target.block[Trans][Trans]->data);
    rotColumns(D).to(target.block[Trans][Rot]->data);
    Mat43::from(turned.data.data()).to(target.block[Rot][Trans]->data);
    rotColumns(turned).to(target.block[Rot][Rot]->data);
}

/// Q = [0; G' tau], G of the row body: the derivative by tau.
inline void setTorqueRows(MBS_GeneralBodyBodyMatrix& target, const Mat<3, 7>& D, const Mat34& G) {
    const Mat<4, 7> turned = transposeTimes(G, D);
    Mat43::from(turned.data.data()).to(target.block[Rot][Trans]->data);
    rotColumns(turned).to(target.block[Rot][Rot]->data);
}

/// Leaves the places that a torque's block has: those of the rotational rows.
inline void keepTorqueRows(MBS_GeneralBodyBodyMatrix& target) {
    target.deleteBlock(Trans, Trans);
    target.deleteBlock(Trans, Rot);
}

/// Adds the part that comes from the row body's own rotation at a constant load.
inline void addOwnRotation(MBS_GeneralBodyBodyMatrix& target, const Mat4& part) {
    part.addTo(target.block[Rot][Rot]->data);
}

} // namespace velmora
