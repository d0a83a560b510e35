#include "driver/ConstraintRank.h"

#include <SuiteSparseQR_C.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <new>

// Notation: A holds the normalised rows as columns,
//
// (1)  A = Q R,   R in steps: column j goes down one row further than all before it, unless it is dependent
// (2)  R_kept x = R e_j gives the dependent row j as the combination x of the kept ones before it

namespace velmora::driver {

namespace {

constexpr double negligibleCoefficient = 10.0; // of rows of length 1, in tolerances: what these let in
constexpr double emptyRow = 1e-100;

/// Workspace and matrices of the library, which it frees by its own functions.
class Workspace {
  public:
    Workspace() { cholmod_l_start(&common); }
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;
    ~Workspace() {
        cholmod_l_free_sparse(&A, &common);
        cholmod_l_free_sparse(&R, &common);
        cholmod_l_finish(&common);
    }

    void setColumns(const SparseRows& rows, const std::vector<double>& lengths);
    unsigned factorise(int ordering, double tolerance);
    /// Per row of the input, after a factorisation in their order: whether it is dependent.
    std::vector<bool> findDependentRows();
    /// Coefficients of the kept rows, in their order, for a dependent row.
    std::vector<double> getCombination(unsigned row) const;
    const std::vector<unsigned>& getKeptRows() const { return kept; }

  private:
    cholmod_common common{};
    cholmod_sparse* A = nullptr;
    cholmod_sparse* R = nullptr;
    std::vector<unsigned> kept;
};

void Workspace::setColumns(const SparseRows& rows, const std::vector<double>& lengths) {
    common.print = 0;
    const unsigned numOfColumns = rows.getNumOfRows();
    A = cholmod_l_allocate_sparse(rows.numOfColumns, numOfColumns, rows.values.size(), 1, 1, 0, CHOLMOD_REAL,
                                  &common);
    if (!A)
        throw std::bad_alloc();
    std::ranges::copy(rows.starts, static_cast<SuiteSparse_long*>(A->p));
    std::ranges::copy(rows.columns, static_cast<SuiteSparse_long*>(A->i));
    for (unsigned row = 0; row < numOfColumns; ++row)
        for (unsigned k = rows.starts[row]; k < rows.starts[row + 1]; ++k)
            static_cast<double*>(A->x)[k] = rows.values[k] / lengths[row];
}

unsigned Workspace::factorise(int ordering, double tolerance) {
    cholmod_l_free_sparse(&R, &common);
    SuiteSparse_long* order = nullptr;
    const SuiteSparse_long rank = SuiteSparseQR_C(ordering, tolerance, 0, 0, A, nullptr, nullptr, nullptr,
                                                  nullptr, &R, &order, nullptr, nullptr, nullptr, &common);
    if (order)
        cholmod_l_free(A->ncol, sizeof *order, order, &common);
    if (rank < 0)
        throw std::bad_alloc();
    return static_cast<unsigned>(rank);
}

std::vector<bool> Workspace::findDependentRows() { // (1)
    const auto* starts = static_cast<const SuiteSparse_long*>(R->p);
    const auto* indices = static_cast<const SuiteSparse_long*>(R->i);
    std::vector<bool> isDependent(A->ncol, true);
    for (unsigned column = 0; column < A->ncol; ++column) {
        const auto nextStep = static_cast<SuiteSparse_long>(kept.size());
        if (std::find(indices + starts[column], indices + starts[column + 1], nextStep) ==
            indices + starts[column + 1])
            continue;
        kept.push_back(column);
        isDependent[column] = false;
    }
    return isDependent;
}

std::vector<double> Workspace::getCombination(unsigned row) const { // (2)
    const auto* starts = static_cast<const SuiteSparse_long*>(R->p);
    const auto* indices = static_cast<const SuiteSparse_long*>(R->i);
    const auto* values = static_cast<const double*>(R->x);
    std::vector<double> x(kept.size(), 0.0);
    for (SuiteSparse_long k = starts[row]; k < starts[row + 1]; ++k)
        x[static_cast<std::size_t>(indices[k])] = values[k];
    for (std::size_t j = kept.size(); j-- > 0;) {
        if (x[j] == 0.0)
            continue;
        const SuiteSparse_long begin = starts[kept[j]], end = starts[kept[j] + 1];
        const auto step = std::find(indices + begin, indices + end, static_cast<SuiteSparse_long>(j));
        x[j] /= values[step - indices];
        for (SuiteSparse_long k = begin; k < end; ++k)
            if (indices[k] < static_cast<SuiteSparse_long>(j))
                x[static_cast<std::size_t>(indices[k])] -= values[k] * x[j];
    }
    return x;
}

} // namespace

std::vector<double> getRowLengths(const SparseRows& rows) {
    std::vector<double> lengths(rows.getNumOfRows());
    for (unsigned row = 0; row < lengths.size(); ++row) {
        double sum = 0.0;
        for (unsigned k = rows.starts[row]; k < rows.starts[row + 1]; ++k)
            sum += rows.values[k] * rows.values[k];
        // A row of nothing stays one: it isn't lifted out of rounding.
        lengths[row] = sum > emptyRow ? std::sqrt(sum) : 1.0;
    }
    return lengths;
}

ConstraintRank findRank(const SparseRows& rows, double tolerance) {
    const unsigned numOfRows = rows.getNumOfRows();
    if (numOfRows == 0)
        return {};
    const std::vector<double> lengths = getRowLengths(rows);
    Workspace workspace;
    workspace.setColumns(rows, lengths);
    // The order of least fill suffices to see that nothing is dependent; which rows are, their own order
    // says.
    ConstraintRank result{workspace.factorise(SPQR_ORDERING_COLAMD, tolerance), {}};
    if (result.rank == numOfRows)
        return result;
    workspace.factorise(SPQR_ORDERING_FIXED, tolerance);
    const std::vector<bool> isDependent = workspace.findDependentRows();
    const std::vector<unsigned>& kept = workspace.getKeptRows();
    result.rank = static_cast<unsigned>(kept.size());
    for (unsigned row = 0; row < numOfRows; ++row) {
        if (!isDependent[row])
            continue;
        DependentEquation found{row, {}};
        const std::vector<double> x = workspace.getCombination(row);
        for (std::size_t j = 0; j < kept.size(); ++j)
            if (std::fabs(x[j]) > negligibleCoefficient * tolerance)
                found.combination.emplace_back(kept[j], x[j] * lengths[row] / lengths[kept[j]]);
        result.dependent.push_back(std::move(found));
    }
    return result;
}

} // namespace velmora::driver
