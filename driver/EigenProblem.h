#pragma once

#include "driver/Linearisation.h"

#include <Eigen/Core>
#include <Eigen/SparseCore>

#include <complex>
#include <vector>

namespace velmora::driver {

/// Motion x(t) = Re(shape exp(value t)).
struct EigenMode {
    std::complex<double> value; ///< 1/s; of a pair the one with positive imaginary part
    Eigen::VectorXcd shape;     ///< small motions, see `SmallMotions`
};

/// What is wanted of the eigenvalues.
struct EigenSettings {
    enum class Method { Automatic, Dense, Sparse };
    unsigned numOfModes = 20;
    double target = 0.0; ///< Hz; modes of sizes near it are wanted
    Method method = Method::Automatic;
};

/// Equations in coordinates in which all masses on the diagonal are 1 and the rows of Cq have length 1.
struct ScaledEquations {
    using Matrix = LinearEquations::Matrix;
    explicit ScaledEquations(const LinearEquations& equations);

    Matrix M, C, K, Cq, CqRate, MRate;
    Eigen::VectorXd scale;            ///< small motion per coordinate
    std::vector<unsigned> bodyOffset; ///< as in `LinearEquations`
    double reference = 0.0;           ///< 1/s; about the size of the largest eigenvalues
    bool isMoving = false;            ///< the constraints change
    Matrix getInverseMass() const;
};

} // namespace velmora::driver
