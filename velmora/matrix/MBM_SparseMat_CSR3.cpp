#include "velmora/matrix/MBM_SparseMat_CSR3.h"

#include "velmora/platform/blas.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <vector>

namespace velmora {

namespace {

constexpr std::size_t notFound = std::numeric_limits<std::size_t>::max();

} // namespace

MBM_SparseMat_CSR3::MBM_SparseMat_CSR3(unsigned numOfRows, unsigned numOfCols, std::uint64_t numOfEntries,
                                       const unsigned* rowNumbers, const unsigned* colNumbers)
    : MBM_SparseMatrix(numOfRows, numOfCols) {
    // The last row position is one above the number of entries.
    constexpr std::uint64_t limit = std::numeric_limits<std::int32_t>::max() - 1;
    if (numOfEntries > limit || rows > limit || cols > limit) {
        setError(18,
                 "Sparse matrix definition: number of rows, columns or non-zeros is larger than the numeric "
                 "limits of int!");
        return;
    }
    assert(std::all_of(rowNumbers, rowNumbers + numOfEntries, [this](unsigned i) { return i - 1 < rows; }));
    assert(std::all_of(colNumbers, colNumbers + numOfEntries, [this](unsigned j) { return j - 1 < cols; }));
    numNonZeros = static_cast<unsigned>(numOfEntries);
    allocate();
    if (numNonZeros == 0)
        return;
    const std::vector<double> ones(numNonZeros, 1.0);
    // The interface takes signed integers; signed and unsigned of one size may share memory.
    const auto asSigned = [](auto* numbers) { return static_cast<int*>(static_cast<void*>(numbers)); };
    const auto asConstSigned = [](const unsigned* numbers) {
        return static_cast<const int*>(static_cast<const void*>(numbers));
    };
    blas::mkl_dcsrcoo(static_cast<int>(rows), static_cast<int>(numNonZeros), values, asSigned(colIndices),
                      asSigned(rowIndex), ones.data(), asConstSigned(rowNumbers), asConstSigned(colNumbers));
}

void MBM_SparseMat_CSR3::allocate() {
    // Values begin at a multiple of their own size.
    const std::size_t integers = (std::size_t{numNonZeros} + rows + 2) / 2 * 2;
    storage = std::make_unique<std::byte[]>(integers * sizeof(unsigned) + numNonZeros * sizeof(double));
    rowIndex = static_cast<unsigned*>(static_cast<void*>(storage.get())) + numNonZeros;
    std::fill_n(rowIndex, std::size_t{rows} + 1, 1U);
    if (numNonZeros == 0)
        return;
    colIndices = rowIndex - numNonZeros;
    values = static_cast<double*>(static_cast<void*>(storage.get() + integers * sizeof(unsigned)));
}

double MBM_SparseMat_CSR3::getValue(unsigned row, unsigned col) const {
    const std::size_t place = find(row, col);
    return place == notFound ? 0.0 : values[place];
}

bool MBM_SparseMat_CSR3::setValue(unsigned row, unsigned col, double value) {
    const std::size_t place = find(row, col);
    if (place == notFound)
        return false;
    values[place] = value;
    return true;
}

std::size_t MBM_SparseMat_CSR3::lowerBound(unsigned row, unsigned col) const {
    const unsigned* first = colIndices + (rowIndex[row] - 1);
    const unsigned* last = colIndices + (rowIndex[row + 1] - 1);
    return static_cast<std::size_t>(std::lower_bound(first, last, col + 1) - colIndices);
}

std::size_t MBM_SparseMat_CSR3::find(unsigned row, unsigned col) const {
    const std::size_t place = lowerBound(row, col);
    return place + 1 < rowIndex[row + 1] && colIndices[place] == col + 1 ? place : notFound;
}

} // namespace velmora
