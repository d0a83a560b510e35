#include "driver/ConstraintRank.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

namespace velmora::driver {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

SparseRows makeRows(const std::vector<std::vector<double>>& dense) {
    SparseRows rows;
    rows.numOfColumns = static_cast<unsigned>(dense.front().size());
    for (const std::vector<double>& row : dense) {
        for (unsigned i = 0; i < row.size(); ++i) {
            if (row[i] == 0.0)
                continue;
            rows.columns.push_back(i);
            rows.values.push_back(row[i]);
        }
        rows.starts.push_back(static_cast<unsigned>(rows.values.size()));
    }
    return rows;
}

TEST(ConstraintRank, NamesTheLaterEquationsWithTheirCombination) {
    const ConstraintRank found = findRank(makeRows({{1, 2, 0, 0, 0},
                                                    {0, 1e4, 1e4, 0, 0},
                                                    {2, 6, 2, 0, 0},        // 2 r0 + 2e-4 r1
                                                    {0, 0, 0, 3, 1},        //
                                                    {0, 0, 0, 0, 0},        // says nothing
                                                    {0, 0, 0, 3, 1 + 1e-9}, // r3
                                                    {0, 0, 0, 3, 1.001}}));
    EXPECT_EQ(found.rank, 4U);
    ASSERT_EQ(found.dependent.size(), 3U);
    EXPECT_EQ(found.dependent[0].equation, 2U);
    EXPECT_THAT(found.dependent[0].combination,
                ElementsAre(Pair(0U, DoubleNear(2.0, 1e-12)), Pair(1U, DoubleNear(2e-4, 1e-16))));
    EXPECT_EQ(found.dependent[1].equation, 4U);
    EXPECT_THAT(found.dependent[1].combination, IsEmpty());
    EXPECT_EQ(found.dependent[2].equation, 5U);
    EXPECT_THAT(found.dependent[2].combination, ElementsAre(Pair(3U, DoubleNear(1.0, 1e-6))));
}

TEST(ConstraintRank, OfRandomRowsIsTheNumberOfTheirGenerators) {
    std::mt19937 engine(5);
    std::uniform_real_distribution<double> random(-1.0, 1.0);
    const unsigned size = 40, rank = 23;
    std::vector<std::vector<double>> dense;
    for (unsigned i = 0; i < rank; ++i)
        std::ranges::generate(dense.emplace_back(size), [&] { return random(engine); });
    for (unsigned i = rank; i < 35; ++i) {
        dense.emplace_back(size, 0.0);
        for (unsigned k = 0; k < rank; k += 3)
            for (unsigned column = 0; column < size; ++column)
                dense[i][column] += static_cast<double>(i + k) * dense[k][column];
    }
    const ConstraintRank found = findRank(makeRows(dense));
    EXPECT_EQ(found.rank, rank);
    for (const DependentEquation& equation : found.dependent) {
        EXPECT_GE(equation.equation, rank);
        EXPECT_EQ(equation.combination.size(), 8U);
        for (const auto& [row, coefficient] : equation.combination)
            EXPECT_NEAR(coefficient, equation.equation + row, 1e-9);
    }
    EXPECT_EQ(findRank(SparseRows{}).rank, 0U);
}

} // namespace
} // namespace velmora::driver
