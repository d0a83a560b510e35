#include "driver/EigenProblem.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace velmora::driver {

namespace {

using Eigen::MatrixXd, Eigen::VectorXd;

} // namespace

ScaledEquations::ScaledEquations(const LinearEquations& equations) : bodyOffset(equations.bodyOffset) {
    const VectorXd masses = equations.M.diagonal();
    if (masses.size() > 0 && !(masses.minCoeff() > 0.0))
        throw std::domain_error("a body has no mass or no moment of inertia");
    scale = masses.cwiseSqrt().cwiseInverse();
    const auto S = scale.asDiagonal();
    M = S * equations.M * S;
    C = S * equations.C * S;
    K = S * equations.K * S;
    MRate = S * equations.MRate * S;
    Cq = equations.Cq * S;
    VectorXd lengths = VectorXd::Zero(Cq.rows());
    for (int j = 0; j < Cq.outerSize(); ++j)
        for (Matrix::InnerIterator entry(Cq, j); entry; ++entry)
            lengths[entry.row()] += entry.value() * entry.value();
    lengths = (lengths.array() > 0.0).select(lengths.cwiseSqrt().cwiseInverse(), 1.0);
    Cq = lengths.asDiagonal() * Cq;
    CqRate = lengths.asDiagonal() * Matrix(equations.CqRate * S);
    isMoving = equations.rate > 0.0 && Cq.rows() > 0;
    const VectorXd ones = VectorXd::Ones(masses.size());
    const VectorXd stiffness = K.cwiseAbs() * ones, damping = C.cwiseAbs() * ones;
    if (masses.size() > 0)
        reference = std::max({std::sqrt(stiffness.maxCoeff()), damping.maxCoeff(), equations.rate});
}

ScaledEquations::Matrix ScaledEquations::getInverseMass() const {
    std::vector<Eigen::Triplet<double>> entries;
    for (std::size_t body = 0; body + 1 < bodyOffset.size(); ++body) {
        const int first = static_cast<int>(bodyOffset[body]);
        const int size = static_cast<int>(bodyOffset[body + 1]) - first;
        const Eigen::LLT<MatrixXd> llt(MatrixXd(M.block(first, first, size, size)));
        if (llt.info() != Eigen::Success)
            throw std::domain_error("a body moves without mass");
        const MatrixXd inverse = llt.solve(MatrixXd::Identity(size, size));
        for (int i = 0; i < size; ++i)
            for (int j = 0; j < size; ++j)
                if (inverse(i, j) != 0.0)
                    entries.emplace_back(first + i, first + j, inverse(i, j));
    }
    Matrix result(M.rows(), M.cols());
    result.setFromTriplets(entries.begin(), entries.end());
    return result;
}

} // namespace velmora::driver
