#pragma once

#include "velmora/matrix/MBM_StructuredMatrices.h"
#include "velmora/matrix/MBM_SubMatrices.h"

#include <cmath>
#include <functional>
#include <memory>
#include <ostream>
#include <vector>

namespace velmora::test {

/// Plain matrix of the oracle, and the naive operations on it.
struct Table {
    unsigned rows, cols;
    std::vector<double> values = std::vector<double>(rows * cols);

    double& operator()(unsigned i, unsigned j) { return values[i * cols + j]; }
    double operator()(unsigned i, unsigned j) const { return values[i * cols + j]; }

    static Table make(unsigned rows, unsigned cols,
                      const std::function<double(unsigned, unsigned)>& element) {
        Table table{rows, cols};
        for (unsigned i = 0; i < rows; ++i)
            for (unsigned j = 0; j < cols; ++j)
                table(i, j) = element(i, j);
        return table;
    }
    static Table of(const MBM_DenseMatrix& M) {
        return make(M.rows, M.cols, [&M](unsigned i, unsigned j) { return M.getValue(i, j); });
    }
    Table op(bool transpose) const {
        return transpose ? make(cols, rows, [this](unsigned i, unsigned j) { return (*this)(j, i); }) : *this;
    }
};

inline Table sum(double alpha, const Table& A, double beta, const Table& B) {
    return Table::make(A.rows, A.cols,
                       [&](unsigned i, unsigned j) { return alpha * A(i, j) + beta * B(i, j); });
}

inline Table product(double alpha, const Table& A, const Table& B) {
    return Table::make(A.rows, B.cols, [&](unsigned i, unsigned j) {
        double value = 0.0;
        for (unsigned k = 0; k < A.cols; ++k)
            value += A(i, k) * B(k, j);
        return alpha * value;
    });
}

/// Every kind of dense matrix that the system knows.
enum class Form {
    General,
    External,
    ColumnRange,
    WideView,
    Symmetric,
    SymmetricView,
    MirroredView,
    Diagonal,
    Skew
};

inline constexpr Form allForms[] = {Form::General,      Form::External,  Form::ColumnRange,
                                    Form::WideView,     Form::Symmetric, Form::SymmetricView,
                                    Form::MirroredView, Form::Diagonal,  Form::Skew};
inline constexpr Form writableForms[] = {Form::General, Form::External, Form::ColumnRange, Form::WideView,
                                         Form::MirroredView};

inline bool isSquareForm(Form form) {
    return form >= Form::Symmetric;
}

/// A matrix of the given form, with what it looks into. Elements are a fixed unsymmetric pattern as far as
/// the form can hold it; the base around a view holds the guard value.
struct Operand {
    static constexpr double guard = -77.0;

    Operand(Form form, unsigned rows, unsigned cols, double seed) : memory(rows * cols) {
        const unsigned n = rows;
        switch (form) {
        case Form::General:
            matrix = std::make_unique<MBM_GeneralDenseMatrix>(rows, cols);
            break;
        case Form::External:
            matrix = std::make_unique<MBM_DenseMatrix_ExternalDatas>(rows, cols, memory.data());
            break;
        case Form::ColumnRange:
            base = std::make_unique<MBM_GeneralDenseMatrix>(rows, cols + 2, guard);
            matrix = std::make_unique<MBM_GDSubM_of_GDM>(rows, cols, 0, 1, *base);
            break;
        case Form::WideView:
            base = std::make_unique<MBM_GeneralDenseMatrix>(rows + 3, cols + 2, guard);
            matrix = std::make_unique<MBM_GDSubM_of_GDM>(rows, cols, 2, 1, *base);
            break;
        case Form::Symmetric:
            matrix = std::make_unique<MBM_SymmetricDenseMatrix>(n);
            break;
        case Form::SymmetricView:
            base = std::make_unique<MBM_SymmetricDenseMatrix>(n + 3, guard);
            matrix = std::make_unique<MBM_SDSubM_of_SDM>(n, n, 2, 2, *base);
            break;
        case Form::MirroredView:
            base = std::make_unique<MBM_SymmetricDenseMatrix>(2 * n + 1, guard);
            matrix = std::make_unique<MBM_GDSubM_of_SDM>(n, n, n + 1, 0, *base);
            break;
        case Form::Diagonal:
            matrix = std::make_unique<MBM_DiagonalDenseMatrix>(n);
            break;
        case Form::Skew:
            matrix = std::make_unique<MBM_SkewSymmetricDenseMatrix>(n);
            break;
        }
        for (unsigned i = 0; i < rows; ++i)
            for (unsigned j = 0; j < cols; ++j)
                matrix->setValue(i, j, std::sin(seed + 1.7 * i + 0.6 * j * j));
    }
    MBM_DenseMatrix& operator*() const { return *matrix; }

    /// Number of base elements that are neither the view's, nor its image's, nor the guard value.
    unsigned damageAroundView() const {
        const auto* view = dynamic_cast<const MBM_DenseSubMatrix*>(matrix.get());
        if (!view)
            return 0;
        unsigned count = 0;
        for (unsigned i = 0; i < base->rows; ++i)
            for (unsigned j = 0; j < base->cols; ++j) {
                const auto inside = [view](unsigned r, unsigned c) {
                    return r - view->rowOffset < view->rows && c - view->colOffset < view->cols;
                };
                const double value = base->getValue(i, j);
                if (view->isGeneralSubMatrixOfSymmetric() && inside(j, i))
                    count += value != base->getValue(j, i);
                else if (!inside(i, j))
                    count += value != guard;
            }
        return count;
    }

    std::vector<double> memory;
    std::unique_ptr<MBM_DenseMatrix> base, matrix;
};

} // namespace velmora::test
