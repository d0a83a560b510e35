#include "velmora/global_matrix/MBS_ScatterPlan.h"

#include "velmora/matrix/FixedSize.h"
#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/matrix/MBM_SparseMat_CSR3.h"

namespace velmora {

namespace {

using Source = MBS_ScatterPlan::Source;

// Sum of s_k B_k for blocks of a size known at compile time, kept in registers.
template <int R, int C>
Mat<R, C> weightedSum(const Source* source, const Source* end) {
    Mat<R, C> sum;
    for (; source != end; ++source)
        for (std::size_t n = 0; n < sum.data.size(); ++n)
            sum.data[n] += *source->weight * source->data[n];
    return sum;
}

template <int R, int C>
void writeSized(double* first, std::size_t rowStride, const Source* source, const Source* end) {
    const Mat<R, C> sum = weightedSum<R, C>(source, end);
    for (int i = 0; i < R; ++i)
        for (int j = 0; j < C; ++j)
            first[static_cast<std::size_t>(i) * rowStride + static_cast<std::size_t>(j)] = sum(i, j);
}

// Element (i, j) of s B, or of -B T.
double elementOf(const Source& source, MBM_GeneralDenseMatrix** T, unsigned numRows, unsigned i, unsigned j) {
    if (!source.usesT)
        return *source.weight * source.data[std::size_t{j} * numRows + i];
    const double* t = T[source.colBody]->data + std::size_t{j} * 4;
    double sum = 0.0;
    for (unsigned m = 0; m < 4; ++m)
        sum -= source.data[std::size_t{m} * numRows + i] * t[m];
    return sum;
}

} // namespace

void MBS_ScatterPlan::add(MBM_SparseMat_CSR3& sparse, const Place& place, const std::vector<Source>& added) {
    const auto valueAt = [&](unsigned row, unsigned col) {
        return sparse.values + sparse.lowerBound(row, col);
    };
    Target target{};
    target.first = valueAt(place.row, place.col);
    // Within a block the rows hold the same columns, or, on a diagonal, equally many; so their distance is
    // one.
    const unsigned numSparseRows = place.isTransposed ? place.numCols : place.numRows;
    const unsigned shift = place.shape == MBS_BlockShape::Diagonal ? 1 : 0;
    if (numSparseRows > 1)
        target.rowStride =
            static_cast<std::uint32_t>(valueAt(place.row + 1, place.col + shift) - target.first);
    target.numSources = static_cast<std::uint32_t>(added.size());
    target.numRows = static_cast<std::uint16_t>(place.numRows);
    target.numCols = static_cast<std::uint16_t>(place.numCols);
    target.shape = place.shape;
    target.isTransposed = place.isTransposed;
    for (const Source& source : added)
        target.usesT = target.usesT || source.usesT;
    targets.push_back(target);
    sources.insert(sources.end(), added.begin(), added.end());
}

void MBS_ScatterPlan::run(MBM_GeneralDenseMatrix** T) const {
    const Source* source = sources.data();
    for (const Target& t : targets) {
        const Source* end = source + t.numSources;
        const bool isPlain = t.shape == MBS_BlockShape::General && !t.usesT;
        // A column vector and its transpose have the same elements in the same order.
        if (isPlain && t.numRows == 4 && t.numCols == 4 && !t.isTransposed)
            writeSized<4, 4>(t.first, t.rowStride, source, end);
        else if (isPlain && t.numRows == 4 && t.numCols == 1 && !t.isTransposed)
            writeSized<4, 1>(t.first, t.rowStride, source, end);
        else if (isPlain && t.numRows == 4 && t.numCols == 1)
            writeSized<1, 4>(t.first, t.rowStride, source, end);
        else if (isPlain && t.numRows == 3 && t.numCols == 3 && !t.isTransposed)
            writeSized<3, 3>(t.first, t.rowStride, source, end);
        else
            for (unsigned j = 0; j < t.numCols; ++j)
                for (unsigned i = 0; i < t.numRows; ++i) {
                    if (t.shape == MBS_BlockShape::Diagonal && i != j)
                        continue;
                    double sum = 0.0;
                    for (const Source* s = source; s != end; ++s)
                        sum += elementOf(*s, T, t.numRows, i, j);
                    const unsigned row = t.isTransposed ? j : i;
                    const unsigned col = t.shape == MBS_BlockShape::Diagonal ? 0 : t.isTransposed ? i : j;
                    t.first[std::size_t{row} * t.rowStride + col] = sum;
                }
        source = end;
    }
}

} // namespace velmora
