#pragma once

#include "velmora/bodies/RotationAlgebra.h"

#include <array>

namespace velmora {

/// The angle of a vector l of body 1 in a plane that is spanned by p1 and p2 of body 2, by its plane
/// coordinates X = w . g1 and Y = w . g2 with w = A1 l, g1 = A2 p1, g2 = A2 p2, and their derivatives.
///
/// X dY - Y dX is the derivative of the angle while X^2 + Y^2 = 1; all formulas here are exact ones of that
/// form. Bodies are numbered 0 and 1; derivatives are by Euler parameters, as columns.
///
///     (1) dX_i, dY_i: for body 0 J1' g1, J1' g2; for body 1 J21' w, J22' w; J1 = J(e1; l), J2k = J(e2; pk)
///     (2) row of body i: X dY_i - Y dX_i
///     (3) its derivative by e_j: dY_i dX_j' - dX_i dY_j' + X Y_ij - Y X_ij, with the second derivatives
///         X_00 = E(g1; l), X_11 = E(w; p1), X_01 = J1' J21 = X_10', and Y_ij alike with g2, p2, J22
///     (4) rate X Y' - Y X', X' = w' . g1 + w . g1', w' = J1 e1', gk' = J2k e2', Y' alike
///     (5) its derivative by e_i: X dY'_i + Y' dX_i - Y dX'_i - X' dY_i, where dX'_i is dX_i with one factor
///         after the other replaced by its rate
struct RelativeAngle {
    Vec3 localVector;          ///< l, frame of body 1
    Vec3 planeVec1, planeVec2; ///< p1, p2, frame of body 2

    Vec3 w, g1, g2;                    ///< global frame
    double planeX = 0.0, planeY = 0.0; ///< X, Y
    Vec3 wRate, g1Rate, g2Rate;
    double planeXRate = 0.0, planeYRate = 0.0;

    /// Vectors and plane coordinates at these rotations.
    void update(const Mat3& A1, const Mat3& A2) {
        w = A1 * localVector;
        g1 = A2 * planeVec1;
        g2 = A2 * planeVec2;
        planeX = dot(w, g1);
        planeY = dot(w, g2);
    }

    /// Rates, at the vectors of the last `update`.
    void updateRates(const std::array<Vec4, 2>& e, const std::array<Vec4, 2>& eRate) {
        wRate = J(e[0], localVector) * eRate[0];
        g1Rate = J(e[1], planeVec1) * eRate[1];
        g2Rate = J(e[1], planeVec2) * eRate[1];
        planeXRate = dot(wRate, g1) + dot(w, g1Rate);
        planeYRate = dot(wRate, g2) + dot(w, g2Rate);
    }

    /// (1)
    struct Gradient {
        Vec4 dX, dY;
    };
    Gradient gradient(std::size_t i, const Vec4& e) const { return gradientOf(i, e, w, g1, g2); }

    /// (2)
    Vec4 row(std::size_t i, const Vec4& e) const {
        const Gradient g = gradient(i, e);
        return planeX * g.dY - planeY * g.dX;
    }

    /// (3)
    Mat4 rowDerivative(std::size_t i, std::size_t j, const std::array<Vec4, 2>& e) const {
        const Gradient gi = gradient(i, e[i]), gj = gradient(j, e[j]);
        const Mat4 own = gi.dY * transpose(gj.dX) - gi.dX * transpose(gj.dY);
        if (i == j)
            return own + (i == 0 ? E(planeX * g2 - planeY * g1, localVector)
                                 : planeX * E(w, planeVec2) - planeY * E(w, planeVec1));
        const Mat34 J1 = J(e[0], localVector);
        const Mat34 J2 = J(e[1], planeX * planeVec2 - planeY * planeVec1);
        return own + (i == 0 ? transposeTimes(J1, J2) : transposeTimes(J2, J1));
    }

    /// (4)
    double rate() const { return planeX * planeYRate - planeY * planeXRate; }

    /// (5)
    Vec4 rateDerivative(std::size_t i, const Vec4& e, const Vec4& eRate) const {
        const Gradient g = gradient(i, e);
        const Gradient ownTurn = gradientOf(i, eRate, w, g1, g2);
        const Gradient otherTurn = gradientOf(i, e, wRate, g1Rate, g2Rate);
        return planeX * (ownTurn.dY + otherTurn.dY) + planeYRate * g.dX -
               planeY * (ownTurn.dX + otherTurn.dX) - planeXRate * g.dY;
    }

  private:
    /// J is linear in its first argument, so that rates may stand for e or for the vectors.
    Gradient gradientOf(std::size_t i, const Vec4& x, const Vec3& onBody1, const Vec3& onBody2First,
                        const Vec3& onBody2Second) const {
        if (i == 1)
            return {transposeTimes(J(x, planeVec1), onBody1), transposeTimes(J(x, planeVec2), onBody1)};
        const Mat34 J1 = J(x, localVector);
        return {transposeTimes(J1, onBody2First), transposeTimes(J1, onBody2Second)};
    }
};

} // namespace velmora
