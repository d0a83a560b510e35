#include "velmora/global_matrix/MBS_ScatterPlan.h"

#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/matrix/MBM_SparseMat_CSR3.h"

#include <algorithm>
#include <functional>

namespace velmora {

// The routes of a fixed size are unrolled; their names give the size in the sparse matrix. A column vector
// and its transpose have the same elements in the same order.
enum class MBS_ScatterPlan::Route : std::uint8_t {
    Block4x4,
    Block3x3,
    Block3x4,
    Block4x3,
    Column4,
    Column3,
    Row4,
    Row3,
    Transposed4x4,
    Transposed3x3,
    Transposed3x4,
    Transposed4x3,
    Diagonal3,
    Diagonal4,
    AnySize,
    WithT
};

bool MBS_ScatterPlan::Pattern::isLike(const Pattern& other) const {
    return numRows == other.numRows && numCols == other.numCols && shape == other.shape &&
           isTransposed == other.isTransposed && isConstraintCell == other.isConstraintCell &&
           weights == other.weights && usesT == other.usesT;
}

MBS_ScatterPlan::Route MBS_ScatterPlan::Pattern::findRoute() const {
    struct Row {
        unsigned numRows, numCols;
        MBS_BlockShape shape;
        Route route, routeOfTransposed;
    };
    using enum MBS_BlockShape;
    static constexpr Row rows[] = {
        {4, 4, General, Route::Block4x4, Route::Transposed4x4},
        {3, 3, General, Route::Block3x3, Route::Transposed3x3},
        {3, 4, General, Route::Block3x4, Route::Transposed3x4},
        {4, 3, General, Route::Block4x3, Route::Transposed4x3},
        {4, 1, General, Route::Column4, Route::Column4},
        {3, 1, General, Route::Column3, Route::Column3},
        {1, 4, General, Route::Row4, Route::Row4},
        {1, 3, General, Route::Row3, Route::Row3},
        {3, 3, Diagonal, Route::Diagonal3, Route::Diagonal3},
        {4, 4, Diagonal, Route::Diagonal4, Route::Diagonal4},
    };
    if (std::ranges::find(usesT, true) != usesT.end())
        return Route::WithT;
    const bool areMixed =
        std::ranges::adjacent_find(isTransposed, std::not_equal_to<>()) != isTransposed.end();
    for (const Row& row : rows)
        if (!areMixed && row.numRows == numRows && row.numCols == numCols && row.shape == shape)
            return !isTransposed.empty() && isTransposed.front() ? row.routeOfTransposed : row.route;
    return Route::AnySize;
}

// Sum of s_k B_k for blocks of a size known at compile time, kept in registers.
template <int R, int C>
inline Mat<R, C> MBS_ScatterPlan::Pattern::weightedSum(const double* const* data) const {
    Mat<R, C> sum;
    for (const double* weight : weights) {
        const double* source = *data++;
        for (std::size_t n = 0; n < sum.data.size(); ++n)
            sum.data[n] += *weight * source[n];
    }
    return sum;
}

template <int R, int C>
inline void MBS_ScatterPlan::Pattern::writeSized(double* first, std::size_t rowStride,
                                                 const double* const* data) const {
    const Mat<R, C> sum = weightedSum<R, C>(data);
    for (int i = 0; i < R; ++i)
        for (int j = 0; j < C; ++j)
            first[static_cast<std::size_t>(i) * rowStride + static_cast<std::size_t>(j)] = sum(i, j);
}

template <int R, int C>
inline void MBS_ScatterPlan::Pattern::writeTransposed(double* first, std::size_t rowStride,
                                                      const double* const* data) const {
    const Mat<R, C> sum = weightedSum<R, C>(data);
    for (int j = 0; j < C; ++j)
        for (int i = 0; i < R; ++i)
            first[static_cast<std::size_t>(j) * rowStride + static_cast<std::size_t>(i)] = sum(i, j);
}

template <int N>
inline void MBS_ScatterPlan::Pattern::writeDiagonal(double* first, std::size_t rowStride,
                                                    const double* const* data) const {
    Mat<N, 1> sum;
    for (const double* weight : weights) {
        const double* source = *data++;
        for (int i = 0; i < N; ++i)
            sum(i) += *weight * source[(N + 1) * i];
    }
    for (int i = 0; i < N; ++i)
        first[static_cast<std::size_t>(i) * rowStride] = sum(i);
}

inline double MBS_ScatterPlan::Pattern::element(const double* const* data, std::size_t k, std::size_t i,
                                                std::size_t j) const {
    return data[k][isTransposed[k] ? i * numCols + j : j * numRows + i];
}

void MBS_ScatterPlan::Pattern::writeAnySize(double* first, std::size_t rowStride,
                                            const double* const* data) const {
    const bool isDiagonal = shape == MBS_BlockShape::Diagonal;
    for (std::size_t j = 0; j < numCols; ++j)
        for (std::size_t i = isDiagonal ? j : 0; i < (isDiagonal ? j + 1 : numRows); ++i) {
            double sum = 0.0;
            for (std::size_t k = 0; k < weights.size(); ++k)
                sum += *weights[k] * element(data, k, i, j);
            first[i * rowStride + (isDiagonal ? 0 : j)] = sum;
        }
}

// Euler parameters stand in the columns.
void MBS_ScatterPlan::Pattern::writeWithT(double* first, std::size_t rowStride, const double* const* data,
                                          const MBM_GeneralDenseMatrix& T) const {
    for (std::size_t j = 0; j < numCols; ++j)
        for (std::size_t i = 0; i < numRows; ++i) {
            double sum = 0.0;
            for (std::size_t k = 0; k < weights.size(); ++k)
                if (!usesT[k])
                    sum += *weights[k] * element(data, k, i, j);
                else
                    for (std::size_t m = 0; m < 4; ++m)
                        sum -= element(data, k, i, m) * T.data[j * 4 + m];
            first[i * rowStride + j] = sum;
        }
}

std::uint32_t MBS_ScatterPlan::findPattern(const Place& place, const std::vector<Source>& added) {
    Pattern pattern{Route::AnySize,        {}, {}, {}, place.numRows, place.numCols, place.shape,
                    place.isConstraintCell};
    for (const Source& source : added) {
        pattern.weights.push_back(source.weight);
        pattern.usesT.push_back(source.usesT);
        pattern.isTransposed.push_back(source.isTransposed);
    }
    pattern.route = pattern.findRoute();
    auto found = std::ranges::find_if(patterns, [&](const Pattern& p) { return p.isLike(pattern); });
    if (found == patterns.end())
        found = patterns.insert(found, std::move(pattern));
    return static_cast<std::uint32_t>(found - patterns.begin());
}

void MBS_ScatterPlan::add(MBM_SparseMat_CSR3& sparse, const Place& place, const std::vector<Source>& added) {
    const auto indexOf = [&](unsigned row, unsigned col) {
        return static_cast<std::uint32_t>(sparse.lowerBound(row, col));
    };
    values = sparse.values;
    Target target{indexOf(place.row, place.col), 0, findPattern(place, added)};
    // Within a block the rows hold the same columns, or, on a diagonal, equally many; so their distance is
    // one.
    const unsigned shift = place.shape == MBS_BlockShape::Diagonal ? 1 : 0;
    if (place.numRows > 1)
        target.rowStride = indexOf(place.row + 1, place.col + shift) - target.first;
    targets.push_back(target);
    for (const Source& source : added)
        sources.push_back(source.data);
    if (patterns[target.pattern].route == Route::WithT)
        bodiesOfT.push_back(added.front().colBody);
}

void MBS_ScatterPlan::sort() {
    struct Entry {
        Target target;
        const double* const* sources;
        const std::uint32_t* bodyOfT;
    };
    std::vector<Entry> entries;
    entries.reserve(targets.size());
    const double* const* source = sources.data();
    const std::uint32_t* bodyOfT = bodiesOfT.data();
    for (const Target& target : targets) {
        entries.push_back({target, source, bodyOfT});
        source += patterns[target.pattern].weights.size();
        bodyOfT += patterns[target.pattern].route == Route::WithT ? 1 : 0;
    }
    std::ranges::sort(entries, {}, [](const Entry& entry) { return entry.target.first; });
    EvaluationArray<Target> sortedTargets;
    EvaluationArray<const double*> sortedSources;
    std::vector<std::uint32_t> sortedBodies;
    sortedTargets.reserve(targets.size());
    sortedSources.reserve(sources.size());
    for (const Entry& entry : entries) {
        const Pattern& pattern = patterns[entry.target.pattern];
        sortedTargets.push_back(entry.target);
        sortedSources.insert(sortedSources.end(), entry.sources, entry.sources + pattern.weights.size());
        if (pattern.route == Route::WithT)
            sortedBodies.push_back(*entry.bodyOfT);
    }
    targets = std::move(sortedTargets);
    sources = std::move(sortedSources);
    bodiesOfT = std::move(sortedBodies);
}

void MBS_ScatterPlan::run(Cells cells, MBM_GeneralDenseMatrix** T) const {
    const double* const* source = sources.data();
    const std::uint32_t* bodyOfT = bodiesOfT.data();
    for (const Target& target : targets) {
        const Pattern& p = patterns[target.pattern];
        if (cells == Cells::Constraints && !p.isConstraintCell) {
            source += p.weights.size();
            bodyOfT += p.route == Route::WithT ? 1 : 0;
            continue;
        }
        double* first = values + target.first;
        const std::size_t stride = target.rowStride;
        switch (p.route) {
        case Route::Block4x4:
            p.writeSized<4, 4>(first, stride, source);
            break;
        case Route::Block3x3:
            p.writeSized<3, 3>(first, stride, source);
            break;
        case Route::Block3x4:
            p.writeSized<3, 4>(first, stride, source);
            break;
        case Route::Block4x3:
            p.writeSized<4, 3>(first, stride, source);
            break;
        case Route::Column4:
            p.writeSized<4, 1>(first, stride, source);
            break;
        case Route::Column3:
            p.writeSized<3, 1>(first, stride, source);
            break;
        case Route::Row4:
            p.writeSized<1, 4>(first, stride, source);
            break;
        case Route::Row3:
            p.writeSized<1, 3>(first, stride, source);
            break;
        case Route::Transposed4x4:
            p.writeTransposed<4, 4>(first, stride, source);
            break;
        case Route::Transposed3x3:
            p.writeTransposed<3, 3>(first, stride, source);
            break;
        case Route::Transposed4x3:
            p.writeTransposed<3, 4>(first, stride, source);
            break;
        case Route::Transposed3x4:
            p.writeTransposed<4, 3>(first, stride, source);
            break;
        case Route::Diagonal3:
            p.writeDiagonal<3>(first, stride, source);
            break;
        case Route::Diagonal4:
            p.writeDiagonal<4>(first, stride, source);
            break;
        case Route::AnySize:
            p.writeAnySize(first, stride, source);
            break;
        case Route::WithT:
            p.writeWithT(first, stride, source, *T[*bodyOfT++]);
            break;
        }
        source += p.weights.size();
    }
}

} // namespace velmora
