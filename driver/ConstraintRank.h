#pragma once

#include <utility>
#include <vector>

namespace velmora::driver {

/// A sparse matrix by compressed rows, indices from 0.
struct SparseRows {
    unsigned numOfColumns = 0;
    std::vector<unsigned> starts{0}; ///< per row, and the end of the last
    std::vector<unsigned> columns;
    std::vector<double> values;

    unsigned getNumOfRows() const { return static_cast<unsigned>(starts.size()) - 1; }
};

/// An equation whose row is a linear combination of rows that are kept.
struct DependentEquation {
    unsigned equation = 0;
    std::vector<std::pair<unsigned, double>> combination; ///< kept equation and its coefficient; may be empty
};

/// Which rows of a constraint Jacobian say something new.
struct ConstraintRank {
    unsigned rank = 0;
    std::vector<DependentEquation> dependent; ///< in the order of their equations
};

/// A row, of length 1, that lies nearer than this to the span of the rows before it is dependent.
constexpr double sameEquation = 1e-6;

/// Rank of the rows, each of which counts with length 1. Of several equations that say the same the first
/// ones are kept.
///
/// The columns should be scaled so that what counts as a movement of 1 is of like meaning in all of them.
/// The rows become the columns of a rank-revealing sparse QR factorisation (Davis, "Algorithm 915,
/// SuiteSparseQR", 2011; the test of columns by Heath, "Some extensions of an algorithm for sparse linear
/// least squares problems", 1982). Throws std::bad_alloc if the memory doesn't suffice.
ConstraintRank findRank(const SparseRows& rows, double tolerance = sameEquation);

/// Euclidean length per row; 1 for a row of nothing.
std::vector<double> getRowLengths(const SparseRows& rows);

} // namespace velmora::driver
