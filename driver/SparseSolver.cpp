#include "driver/SparseSolver.h"

#include <velmora/velmora.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmora::driver {

namespace {

// Old pivots are given up when the pivot growth gets this much worse than with pivots of their own.
constexpr double allowedLossOfPivotGrowth = 1.0e-3;

// Old pivots are looked at more closely when the ratio of smallest to largest pivot gets this much worse.
constexpr double suspiciousLossOfCondition = 1.0e-2;

// Ratio of smallest to largest pivot, of rows scaled to one, that is nothing but rounding.
constexpr double smallestPivotRatio = 0.5 * std::numeric_limits<double>::epsilon();

// Of KLU: rows as they are (and the pattern unchecked), and over their largest element.
constexpr int noScaling = -1;
constexpr int scalingByLargest = 2;

// Far enough for main memory, near enough for the first cache.
constexpr int columnsFetchedAhead = 24;

/// The columns of one of KLU's triangular factors without its diagonal: of each first the row indices, padded
/// to whole doubles, then the values.
struct FactorColumns {
    const double* factors;
    const int* places; // of each column, in doubles
    const int* lengths;

    /// Asks the memory system for a column, without waiting for it.
    void fetch([[maybe_unused]] int column) const {
#if defined(__GNUC__)
        constexpr int doublesPerCacheLine = 8;
        for (int i = 0; i < lengths[column] + lengths[column] / 2; i += doublesPerCacheLine)
            __builtin_prefetch(factors + places[column] + i);
#endif
    }
    /// The column times x; in two sums, which don't wait for each other.
    double multiply(int column, const double* x) const {
        const double* begin = factors + places[column];
        const int length = lengths[column];
        const int* rows =
            reinterpret_cast<const int*>(begin); // NOLINT(*-reinterpret-cast): as KLU packs them
        const double* values = begin + (length + 1) / 2;
        double even = 0.0, odd = 0.0;
        int i = 0;
        for (; i + 1 < length; i += 2) {
            even += values[i] * x[rows[i]];
            odd += values[i + 1] * x[rows[i + 1]];
        }
        if (i < length)
            even += values[i] * x[rows[i]];
        return even + odd;
    }
};

} // namespace

SparseSolver::SparseSolver(const MBM_SparseMat_CSR3* sparseMatrix)
    : matrix(sparseMatrix),
      common(std::make_unique<klu_common>()),
      symbolic(nullptr, FreeSymbolic{common.get()}),
      numeric(nullptr, FreeNumeric{common.get()}) {
    klu_defaults(common.get());
    common->ordering = 0; // approximate minimum degree
    common->btf = 0;      // the matrix of coupled equations is one block
    leaveOut({});
}

void SparseSolver::leaveOut(const std::vector<unsigned>& equations) {
    constexpr int notKept = -1;
    std::vector<int> places(matrix->rows, 0); // per equation, in what is factorised
    for (const unsigned equation : equations)
        places[equation] = notKept;
    kept.clear();
    for (unsigned row = 0; row < matrix->rows; ++row) {
        if (places[row] == notKept)
            continue;
        places[row] = static_cast<int>(kept.size());
        kept.push_back(row);
    }
    rowStarts.assign(1, 0);
    columns.clear();
    sources.clear();
    for (const unsigned row : kept) {
        for (unsigned k = matrix->rowIndex[row] - 1; k < matrix->rowIndex[row + 1] - 1; ++k) {
            const int column = places[matrix->colIndices[k] - 1];
            if (column == notKept)
                continue;
            columns.push_back(column);
            sources.push_back(k);
        }
        rowStarts.push_back(static_cast<int>(columns.size()));
    }
    if (equations.empty()) {
        kept.clear();
        sources.clear();
    }
    values.resize(sources.size());
    analyse();
}

void SparseSolver::analyse() {
    size = static_cast<int>(rowStarts.size()) - 1;
    permuted.resize(static_cast<std::size_t>(size));
    reciprocals.resize(static_cast<std::size_t>(size));
    numeric.reset();
    symbolic.reset(klu_analyze(size, rowStarts.data(), columns.data(), common.get()));
}

double* SparseSolver::gatherValues() {
    if (sources.empty())
        return matrix->values;
    for (std::size_t k = 0; k < sources.size(); ++k)
        values[k] = matrix->values[sources[k]];
    return values.data();
}

void SparseSolver::scatterValues(const std::vector<double>& factorised) {
    for (std::size_t k = 0; k < factorised.size(); ++k)
        matrix->values[sources.empty() ? k : sources[k]] = factorised[k];
}

void SparseSolver::exchangeHistory(MBS_History& history) {
    const std::size_t count = columns.size();
    std::vector<double> ofPivots, refactorised;
    if (numeric)
        ofPivots = valuesOfPivots;
    if (numeric && hasOldPivots) {
        const double* last = sources.empty() ? matrix->values : values.data();
        refactorised.assign(last, last + count);
    }
    unsigned long counts[] = {factorisations, refactorisations};
    for (unsigned long& number : counts)
        history.exchange(number);
    history.exchange(ofPivots);
    history.exchange(refactorised);
    if (!history.isTakingBack())
        return;
    numeric.reset();
    const auto isSound = [count](const auto& list) { return list.empty() || list.size() == count; };
    if (!isSound(ofPivots) || !isSound(refactorised) || !repeatFactorisations(ofPivots, refactorised))
        history.refuse();
    factorisations = counts[0];
    refactorisations = counts[1];
}

bool SparseSolver::repeatFactorisations(std::vector<double>& ofPivots,
                                        const std::vector<double>& refactorised) {
    if (ofPivots.empty())
        return refactorised.empty();
    scatterValues(ofPivots);
    if (!symbolic || !factoriseWithNewPivots(ofPivots.data()))
        return false;
    if (refactorised.empty())
        return true;
    scatterValues(refactorised);
    return refactoriseWithOldPivots(gatherValues());
}

bool SparseSolver::factorise() {
    if (!symbolic) {
        singularEquation = matrix->rows;
        return false;
    }
    double* present = gatherValues();
    return (numeric && refactoriseWithOldPivots(present)) || factoriseWithNewPivots(present);
}

void SparseSolver::solve(const double* rightHandSide, double* unknowns) {
    for (int k = 0; k < size; ++k)
        permuted[static_cast<std::size_t>(k)] = rightHandSide[getEquation(symbolic->Q[k])];
    substitute(permuted.data());
    if (!kept.empty())
        std::fill_n(unknowns, matrix->rows, 0.0);
    for (int k = 0; k < size; ++k)
        unknowns[getEquation(numeric->Pnum[k])] = permuted[static_cast<std::size_t>(k)];
}

// What klu_tsolve does, but it waits for memory at every column of a large matrix: the columns are too short
// for the processor to run ahead, so that the following ones are asked for here.
void SparseSolver::substitute(double* x) const {
    if (size == 1) { // KLU keeps no factors then
        x[0] *= reciprocals[0];
    } else {
        const auto* factors = static_cast<const double*>(numeric->LUbx[0]);
        const FactorColumns upper{factors, numeric->Uip, numeric->Ulen},
            lower{factors, numeric->Lip, numeric->Llen};
        for (int k = 0; k < size; ++k) {
            upper.fetch(std::min(k + columnsFetchedAhead, size - 1));
            x[k] = (x[k] - upper.multiply(k, x)) * reciprocals[static_cast<std::size_t>(k)];
        }
        for (int k = size - 1; k >= 0; --k) {
            lower.fetch(std::max(k - columnsFetchedAhead, 0));
            x[k] -= lower.multiply(k, x);
        }
    }
    if (numeric->Rs)
        for (int k = 0; k < size; ++k)
            x[k] /= numeric->Rs[k];
}

// Scaling the rows matters for the choice of pivots and for judging them, not for what they give; and it
// takes a fifth of KLU's time.
bool SparseSolver::refactoriseWithOldPivots(double* present) {
    ++refactorisations;
    hasOldPivots = true;
    common->scale = noScaling;
    if (!klu_refactor(rowStarts.data(), columns.data(), present, symbolic.get(), numeric.get(),
                      common.get()) ||
        common->status == KLU_SINGULAR)
        return false;
    // Pivots tell at once that all is well; the growth takes another look.
    return takePivots() > suspiciousLossOfCondition * pivotRatioAtFactorisation || isPivotGrowthGood(present);
}

bool SparseSolver::isPivotGrowthGood(double* present) {
    common->scale = scalingByLargest;
    return klu_refactor(rowStarts.data(), columns.data(), present, symbolic.get(), numeric.get(),
                        common.get()) &&
           common->status != KLU_SINGULAR && takePivots() > 0.0 &&
           measurePivotGrowth(present) > allowedLossOfPivotGrowth * pivotGrowthAtFactorisation;
}

double SparseSolver::measurePivotGrowth(double* present) {
    klu_rgrowth(rowStarts.data(), columns.data(), present, symbolic.get(), numeric.get(), common.get());
    return common->rgrowth;
}

/// Keeps the reciprocals of the pivots and returns the smallest over the largest, of rows without scaling;
/// NaN if one is.
double SparseSolver::takePivots() {
    const auto* pivots = static_cast<const double*>(numeric->Udiag);
    double smallest = std::numeric_limits<double>::infinity(), largest = 0.0, zero = 0.0;
    for (int k = 0; k < size; ++k) {
        reciprocals[static_cast<std::size_t>(k)] = 1.0 / pivots[k];
        const double pivot = std::fabs(numeric->Rs ? pivots[k] * numeric->Rs[k] : pivots[k]);
        smallest = std::min(smallest, pivot);
        largest = std::max(largest, pivot);
        zero += 0.0 * pivot;
    }
    return smallest / largest + zero;
}

bool SparseSolver::factoriseWithNewPivots(double* present) {
    ++factorisations;
    hasOldPivots = false;
    common->scale = scalingByLargest;
    numeric.reset(klu_factor(rowStarts.data(), columns.data(), present, symbolic.get(), common.get()));
    if (!numeric || common->status == KLU_SINGULAR) {
        // A column of the transposed matrix is an equation.
        const bool isKnown = common->status == KLU_SINGULAR && common->singular_col < size;
        singularEquation = isKnown ? getEquation(common->singular_col) : matrix->rows;
        numeric.reset();
        return false;
    }
    klu_rcond(symbolic.get(), numeric.get(), common.get());
    if (!(common->rcond > smallestPivotRatio)) {
        singularEquation = findSmallestPivot();
        numeric.reset();
        return false;
    }
    valuesOfPivots.assign(present, present + columns.size());
    pivotRatioAtFactorisation = takePivots();
    pivotGrowthAtFactorisation = measurePivotGrowth(present);
    return true;
}

unsigned SparseSolver::findSmallestPivot() const {
    const auto* pivots = static_cast<const double*>(numeric->Udiag);
    const auto* smallest = std::min_element(pivots, pivots + size,
                                            [](double a, double b) { return std::fabs(a) < std::fabs(b); });
    return getEquation(symbolic->Q[smallest - pivots]);
}

unsigned SparseSolver::getEquation(int row) const {
    return kept.empty() ? static_cast<unsigned>(row) : kept[static_cast<std::size_t>(row)];
}

} // namespace velmora::driver
