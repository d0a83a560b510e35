#include "driver/SparseSolver.h"

#include <velmora/velmora.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmora::driver {

namespace {

// Old pivots are given up when the pivot growth gets this much worse than with pivots of their own.
constexpr double allowedLossOfPivotGrowth = 1.0e-3;

// Ratio of smallest to largest pivot, of rows scaled to one, that is nothing but rounding.
constexpr double smallestPivotRatio = 0.5 * std::numeric_limits<double>::epsilon();

} // namespace

SparseSolver::SparseSolver(const MBM_SparseMat_CSR3* sparseMatrix)
    : matrix(sparseMatrix),
      size(static_cast<int>(sparseMatrix->rows)),
      rowStarts(sparseMatrix->rows + 1),
      columns(sparseMatrix->numNonZeros),
      common(std::make_unique<klu_common>()),
      symbolic(nullptr, FreeSymbolic{common.get()}),
      numeric(nullptr, FreeNumeric{common.get()}) {
    const auto toZeroBased = [](unsigned index) { return static_cast<int>(index) - 1; };
    std::transform(matrix->rowIndex, matrix->rowIndex + matrix->rows + 1, rowStarts.begin(), toZeroBased);
    std::transform(matrix->colIndices, matrix->colIndices + matrix->numNonZeros, columns.begin(),
                   toZeroBased);
    klu_defaults(common.get());
    common->ordering = 0; // approximate minimum degree
    common->btf = 0;      // the matrix of coupled equations is one block
    symbolic.reset(klu_analyze(size, rowStarts.data(), columns.data(), common.get()));
}

bool SparseSolver::factorise() {
    if (!symbolic) {
        singularEquation = matrix->rows;
        return false;
    }
    if (numeric && refactoriseWithOldPivots())
        return true;
    return factoriseWithNewPivots();
}

void SparseSolver::solve(double* rightHandSide) {
    klu_tsolve(symbolic.get(), numeric.get(), size, 1, rightHandSide, common.get());
}

bool SparseSolver::refactoriseWithOldPivots() {
    ++refactorisations;
    if (!klu_refactor(rowStarts.data(), columns.data(), matrix->values, symbolic.get(), numeric.get(),
                      common.get()) ||
        common->status == KLU_SINGULAR)
        return false;
    if (!klu_rgrowth(rowStarts.data(), columns.data(), matrix->values, symbolic.get(), numeric.get(),
                     common.get()))
        return false;
    return common->rgrowth > allowedLossOfPivotGrowth * pivotGrowthAtFactorisation;
}

bool SparseSolver::factoriseWithNewPivots() {
    ++factorisations;
    numeric.reset(klu_factor(rowStarts.data(), columns.data(), matrix->values, symbolic.get(), common.get()));
    if (!numeric || common->status == KLU_SINGULAR) {
        // A column of the transposed matrix is an equation.
        const bool isKnown = common->status == KLU_SINGULAR && common->singular_col < size;
        singularEquation = isKnown ? static_cast<unsigned>(common->singular_col) : matrix->rows;
        numeric.reset();
        return false;
    }
    klu_rcond(symbolic.get(), numeric.get(), common.get());
    if (!(common->rcond > smallestPivotRatio)) {
        singularEquation = findSmallestPivot();
        numeric.reset();
        return false;
    }
    klu_rgrowth(rowStarts.data(), columns.data(), matrix->values, symbolic.get(), numeric.get(),
                common.get());
    pivotGrowthAtFactorisation = common->rgrowth;
    return true;
}

unsigned SparseSolver::findSmallestPivot() const {
    const auto* pivots = static_cast<const double*>(numeric->Udiag);
    const auto* smallest = std::min_element(pivots, pivots + size,
                                            [](double a, double b) { return std::fabs(a) < std::fabs(b); });
    return static_cast<unsigned>(symbolic->Q[smallest - pivots]);
}

} // namespace velmora::driver
