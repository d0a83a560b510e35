#include "tests/matrix/DenseForms.h"
#include "velmora/matrix/MBM_Math.h"
#include "velmora/matrix/MBM_Vector.h"

#include <gtest/gtest.h>

#include <limits>

namespace velmora::test {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
/// Rounding of a few dozen operations on numbers around 1; Laderman's sums cancel.
constexpr double tolerance = 2e-14;
constexpr double weights[] = {0.0, 1.0, -1.0, 2.5};
constexpr unsigned shapes[][2] = {{1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 5},
                                  {3, 4}, {4, 3}, {3, 1}, {4, 1}, {1, 7}};

void expectNear(const MBM_DenseMatrix& actual, const Table& expected, const Operand& written) {
    ASSERT_EQ(actual.rows, expected.rows);
    for (unsigned i = 0; i < expected.rows; ++i)
        for (unsigned j = 0; j < expected.cols; ++j)
            ASSERT_NEAR(actual.getValue(i, j), expected(i, j), tolerance) << "at " << i << ", " << j;
    ASSERT_EQ(written.damageAroundView(), 0U);
}

void fillWithNaN(MBM_DenseMatrix& M) {
    for (unsigned j = 0; j < M.cols; ++j)
        std::fill_n(M.data + j * M.getLeadingDimension(), M.rows, nan);
}

/// Suite over the form of the first operand.
class DenseFormTest : public testing::TestWithParam<Form> {
  protected:
    /// Calls check(transpose, alpha, beta) for all combinations.
    static void forAllWeights(const std::function<void(bool, double, double)>& check) {
        for (const bool transpose : {false, true})
            for (const double alpha : weights)
                for (const double beta : weights)
                    check(transpose, alpha, beta);
    }
    /// Calls check(rows, cols) for the shapes that the form can have.
    static void forAllShapes(const std::function<void(unsigned, unsigned)>& check) {
        for (const auto& [rows, cols] : shapes)
            if (rows == cols || !isSquareForm(GetParam()))
                check(rows, cols);
    }
};

TEST_P(DenseFormTest, MatVecMult) {
    forAllShapes([](unsigned rows, unsigned cols) {
        const Operand A(GetParam(), rows, cols, 0.3);
        forAllWeights([&](bool transpose, double alpha, double beta) {
            const Table op = Table::of(*A).op(transpose);
            MBM_DenseStandAloneVector x(op.cols), y(op.rows, beta == 0.0 ? nan : 0.7);
            Table column{op.cols, 1};
            for (unsigned i = 0; i < x.size; ++i)
                column(i, 0) = x.data[i] = std::cos(1.0 + i);
            MBM_Math::matVecMult(*A, x, y, transpose, alpha, beta);
            const Table expected = product(alpha, op, column);
            for (unsigned i = 0; i < y.size; ++i)
                ASSERT_NEAR(y.data[i], expected(i, 0) + beta * 0.7, tolerance)
                    << rows << "x" << cols << " " << transpose << " " << alpha << " " << beta;
            MBM_Math::matVecMult(*A, x, y, transpose, alpha, nan);
            for (unsigned i = 0; i < y.size; ++i)
                ASSERT_TRUE(std::isnan(y.data[i]));
        });
    });
}

// Sizes at which a product is computed in pieces of rows, of columns and of both.
TEST(Products, LargeMatVecMultIsWhole) {
    for (const auto& [rows, cols] : {std::pair(9000U, 7U), {150U, 150U}, {7U, 9000U}, {700U, 300U}}) {
        MBM_GeneralDenseMatrix A(rows, cols);
        for (unsigned k = 0; k < rows * cols; ++k)
            A.data[k] = k % 17 - 8.0;
        for (const bool transpose : {false, true}) {
            MBM_DenseStandAloneVector x(transpose ? rows : cols), y(transpose ? cols : rows, 0.5);
            for (unsigned i = 0; i < x.size; ++i)
                x.data[i] = i % 5 - 2.0;
            MBM_Math::matVecMult(A, x, y, transpose, 2.0, 3.0);
            for (unsigned i = 0; i < y.size; ++i) {
                double sum = 0.0;
                for (unsigned k = 0; k < x.size; ++k)
                    sum += (transpose ? A.getValue(k, i) : A.getValue(i, k)) * x.data[k];
                ASSERT_EQ(y.data[i], 2.0 * sum + 1.5) << rows << "x" << cols << " " << transpose;
            }
        }
    }
}

TEST_P(DenseFormTest, MatMatMult) {
    forAllShapes([](unsigned rows, unsigned cols) {
        const Operand A(GetParam(), rows, cols, 0.3);
        for (const bool tA : {false, true})
            for (const bool tB : {false, true})
                for (const Form formB : allForms)
                    for (const Form formC : writableForms)
                        for (const unsigned n : {1U, 3U, 4U}) {
                            const unsigned m = tA ? cols : rows, k = tA ? rows : cols;
                            if ((isSquareForm(formB) && k != n) || (isSquareForm(formC) && m != n))
                                continue;
                            const Operand B(formB, tB ? n : k, tB ? k : n, 1.1), C(formC, m, n, 0.0);
                            for (const double alpha : weights) {
                                fillWithNaN(*C);
                                MBM_Math::matMatMult(*A, *B, *C, tA, tB, alpha);
                                expectNear(*C, product(alpha, Table::of(*A).op(tA), Table::of(*B).op(tB)), C);
                            }
                        }
    });
}

TEST_P(DenseFormTest, MatMatSum) {
    forAllShapes([](unsigned rows, unsigned cols) {
        const Operand A(GetParam(), rows, cols, 0.3);
        forAllWeights([&](bool tA, double alpha, double beta) {
            const unsigned m = tA ? cols : rows, n = tA ? rows : cols;
            for (const bool tB : {false, true})
                for (const Form formB : allForms)
                    for (const Form formC : writableForms) {
                        if (m != n && (isSquareForm(formB) || isSquareForm(formC)))
                            continue;
                        const Operand B(formB, tB ? n : m, tB ? m : n, 1.1), C(formC, m, n, 0.0);
                        fillWithNaN(*C);
                        MBM_Math::matMatSum(*A, *B, *C, tA, tB, alpha, beta);
                        expectNear(*C, sum(alpha, Table::of(*A).op(tA), beta, Table::of(*B).op(tB)), C);
                    }
        });
    });
}

TEST_P(DenseFormTest, CopyScaleAndClear) {
    forAllShapes([](unsigned rows, unsigned cols) {
        const Operand A(GetParam(), rows, cols, 0.3);
        for (const bool transpose : {false, true}) {
            const Operand B(Form::WideView, transpose ? cols : rows, transpose ? rows : cols, 0.0);
            MBM_Math::matCopyScaled(*A, *B, 2.5, transpose);
            expectNear(*B, sum(2.5, Table::of(*A).op(transpose), 0.0, Table::of(*B)), B);
        }
        const Table before = Table::of(*A);
        MBM_Math::matMatSum(*A, *A, *A, false, false, 1.0, 0.5);
        MBM_Math::matInPlaceScaling(*A, -2.0);
        expectNear(*A, sum(-3.0, before, 0.0, before), A);
        (*A).setAllToZero();
        expectNear(*A, Table{rows, cols}, A);
    });
}

TEST_P(DenseFormTest, FillWithPattern) {
    const bool skew = GetParam() == Form::Skew;
    const Operand A(GetParam(), 4, 4, 0.3);
    (*A).fillWithPattern("Unit");
    EXPECT_NE((*A).isUnitMatrix(), skew);
    (*A).fillWithPattern("Random");
    const Table random = Table::of(*A);
    (*A).fillWithPattern("random");
    expectNear(*A, random, A);
    EXPECT_FALSE((*A).isUnitMatrix());
    for (unsigned i = 0; i < 4; ++i)
        for (unsigned j = 0; j < 4; ++j) {
            EXPECT_LE(std::abs(random(i, j)), 1.0);
            EXPECT_EQ(random(i, j), (*A).data[j * (*A).getLeadingDimension() + i]);
            if ((*A).isSymmetric() || skew) {
                EXPECT_EQ(random(i, j), skew ? -random(j, i) : random(j, i));
            }
        }
}

INSTANTIATE_TEST_SUITE_P(AllForms, DenseFormTest, testing::ValuesIn(allForms));

TEST(MBM_Math, VecVecSumScaled) {
    for (const double alpha : weights)
        for (const double beta : weights) {
            MBM_DenseStandAloneVector x(6, 3.0), y(6, beta == 0.0 && alpha == 0.0 ? nan : 0.7);
            MBM_Math::vecVecSumScaled(x, y, alpha, beta);
            for (unsigned i = 0; i < 6; ++i)
                ASSERT_NEAR(y.data[i], alpha * 3.0 + (beta == 0.0 ? 0.0 : beta * 0.7), tolerance);
        }
}

TEST(MBM_Math, TransposeAndTwoPi) {
    const Operand A(Form::General, 3, 4, 0.3), B(Form::MirroredView, 3, 3, 0.0);
    MBM_GDSubM_of_GDM head(3, 3, 0, 1, *A);
    MBM_Math::matTranspose(head, *B);
    expectNear(*B, Table::of(head).op(true), B);
    double frequencies[] = {1.0, 0.5, 7.0};
    MBM_Math::vecScaleBy2Pi(2, frequencies);
    EXPECT_DOUBLE_EQ(frequencies[0], 2.0 * std::acos(-1.0));
    EXPECT_DOUBLE_EQ(frequencies[1], std::acos(-1.0));
    EXPECT_EQ(frequencies[2], 7.0);
}

} // namespace
} // namespace velmora::test
