#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/matrix/MBM_MatrixMapper.h"
#include "velmora/matrix/MBM_SparseMat_CSR3.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <random>
#include <vector>

namespace velmora {
namespace {

/// Pattern in coordinates, one-based; blocks are put in column after column, as the system does.
struct Pattern {
    std::vector<unsigned> rowNumbers, colNumbers;

    void addBlock(unsigned row, unsigned col, unsigned rows, unsigned cols) {
        for (unsigned j = 0; j < cols; ++j)
            for (unsigned i = 0; i < rows; ++i)
                addEntry(row + i, col + j);
    }
    void addEntry(unsigned row, unsigned col) {
        rowNumbers.push_back(row + 1);
        colNumbers.push_back(col + 1);
    }
    MBM_SparseMat_CSR3 matrix(unsigned rows, unsigned cols) const {
        return {rows, cols, rowNumbers.size(), rowNumbers.data(), colNumbers.data()};
    }
};

TEST(MBM_SparseMat_CSR3, EmptyPattern) {
    MBM_SparseMat_CSR3 matrix = Pattern().matrix(4, 4);
    EXPECT_EQ(std::vector<unsigned>(matrix.rowIndex, matrix.rowIndex + 5), std::vector<unsigned>(5, 1));
    EXPECT_EQ(matrix.colIndices, nullptr);
    EXPECT_EQ(matrix.values, nullptr);
    EXPECT_EQ(matrix.getValue(3, 2), 0.0);
    EXPECT_FALSE(matrix.setValue(3, 2, 1.0));
}

TEST(MBM_SparseMat_CSR3, RandomPatternAgainstDenseTable) {
    std::mt19937 random(7);
    for (const unsigned rows : {1U, 6U, 7U}) {
        std::vector<unsigned> places(rows * 9);
        std::iota(places.begin(), places.end(), 0U);
        std::shuffle(places.begin(), places.end(), random);
        places.resize(rows * 4);
        Pattern pattern;
        for (const unsigned place : places)
            pattern.addEntry(place / 9, place % 9);
        MBM_SparseMat_CSR3 matrix = pattern.matrix(rows, 9);
        EXPECT_EQ(std::count(matrix.values, matrix.values + matrix.numNonZeros, 1.0), rows * 4);
        EXPECT_EQ(matrix.rowIndex[rows], rows * 4 + 1);
        for (unsigned place = 0; place < rows * 9; ++place) {
            const unsigned i = place / 9, j = place % 9;
            const bool stored = std::count(places.begin(), places.end(), place) == 1;
            EXPECT_EQ(matrix.getValue(i, j), stored ? 1.0 : 0.0);
            EXPECT_EQ(matrix.setValue(i, j, 100.0 + place), stored);
            EXPECT_EQ(matrix.getValue(i, j), stored ? 100.0 + place : 0.0);
        }
        for (unsigned i = 0; i < rows; ++i)
            EXPECT_TRUE(std::is_sorted(matrix.colIndices + matrix.rowIndex[i] - 1,
                                       matrix.colIndices + matrix.rowIndex[i + 1] - 1, std::less_equal<>()));
    }
}

TEST(MBM_SparseMat_CSR3, TooManyEntries) {
    const MBM_SparseMat_CSR3 matrix(9, 9, 2147483647U, nullptr, nullptr);
    EXPECT_EQ(matrix.errorCode, 18);
    EXPECT_EQ(matrix.errorString,
              "Sparse matrix definition: number of rows, columns or non-zeros is larger than the "
              "numeric limits of int!");
    EXPECT_EQ(matrix.storage, nullptr);
}

/// Block of a wider matrix: element (i, j) is 10 i + j + 1.
MBM_GeneralDenseMatrix numberedBlock(unsigned rows, unsigned cols) {
    MBM_GeneralDenseMatrix block(rows, cols);
    for (unsigned i = 0; i < rows; ++i)
        for (unsigned j = 0; j < cols; ++j)
            block.setValue(i, j, 10.0 * i + j + 1.0);
    return block;
}

TEST(MBM_MatrixMapper, RectanglesPlainAndTransposed) {
    Pattern pattern;
    pattern.addBlock(0, 5, 3, 2);
    pattern.addBlock(1, 1, 2, 3);
    pattern.addEntry(0, 0);
    MBM_SparseMat_CSR3 sparse = pattern.matrix(3, 8);
    const MBM_GeneralDenseMatrix block = numberedBlock(2, 3);
    MBM_Dense_2_CSR3_Mapper transposed(block, sparse, 0, 5, true), plain(block, sparse, 1, 1, false);
    for (const double scale : {2.0, 2.0, 0.0, -1.0}) {
        plain.mapValues(3.0);
        transposed.mapValues(scale);
        for (unsigned i = 0; i < 2; ++i)
            for (unsigned j = 0; j < 3; ++j) {
                EXPECT_EQ(sparse.getValue(j, 5 + i), scale * block.getValue(i, j));
                EXPECT_EQ(sparse.getValue(1 + i, 1 + j), 3.0 * block.getValue(i, j));
            }
    }
    EXPECT_EQ(sparse.getValue(0, 0), 1.0);
    EXPECT_EQ(sparse.numNonZeros, 13U);
}

TEST(MBM_MatrixMapper, MainDiagonal) {
    Pattern pattern;
    for (unsigned i = 0; i < 3; ++i)
        pattern.addEntry(2 + i, 2 + i);
    pattern.addEntry(2, 0);
    MBM_SparseMat_CSR3 sparse = pattern.matrix(5, 5);
    const MBM_GeneralDenseMatrix block = numberedBlock(3, 3);
    MBM_DenseMatMainDiag_2_CSR3_Mapper(block, sparse, 2, 2).mapValues(2.0);
    EXPECT_EQ(std::vector<double>(sparse.values, sparse.values + 4), (std::vector<double>{1, 2, 24, 46}));
    EXPECT_EQ(sparse.getValue(2, 3), 0.0);
}

} // namespace
} // namespace velmora
