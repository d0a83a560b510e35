#pragma once

#include "velmora/bodies/RotationAlgebra.h"
#include "velmora/forces/MBS_Force.h"

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

/// Adds the part that comes from the row body's own rotation at a constant load.
inline void addOwnRotation(MBS_GeneralBodyBodyMatrix& target, const Mat4& part) {
    part.addTo(target.block[Rot][Rot]->data);
}

/// Root of the derivative blocks of a load of class `Load`, whose `updateColumn` fills all blocks of a
/// column.
template <class Load, class Root>
class LoadBlock : public Root {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;

    /// `ownColumn`: place of the column body among the bodies that the load depends on.
    LoadBlock(Load& owner, const MBS_Body& rowBody, const MBS_Body& colBody, std::size_t ownColumn)
        : Root(rowBody, colBody),
          load(&owner),
          column(ownColumn) {}
    /// Refreshes all blocks of this column.
    void updateForBody(double t, const P* q, const P* qd, const P* qdd, const C* multipliers,
                       unsigned) override {
        load->updateColumn(t, q, qd, qdd, multipliers, column);
    }

  private:
    Load* load; // not owned
    std::size_t column;
};

} // namespace velmora
