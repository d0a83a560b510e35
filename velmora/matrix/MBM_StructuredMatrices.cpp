#include "velmora/matrix/MBM_StructuredMatrices.h"

#include "velmora/matrix/RandomNumbers.h"

#include <algorithm>

namespace velmora {

void symmetrizeField(unsigned n, unsigned leadingDimension, double* data, const std::string& mode) {
    const bool average = mode == "Average";
    const bool lowerRules = mode == "Lower2Upper";
    if (!average && !lowerRules && mode != "Upper2Lower")
        return;
    const std::size_t ld = leadingDimension;
    for (unsigned j = 1; j < n; ++j) {
        for (unsigned i = 0; i < j; ++i) {
            double& upper = data[j * ld + i];
            double& lower = data[i * ld + j];
            const double value = average ? (upper + lower) * 0.5 : (lowerRules ? lower : upper);
            upper = value;
            lower = value;
        }
    }
}

MBM_SymmetricDenseMatrix::MBM_SymmetricDenseMatrix(unsigned n, double value)
    : MBM_DenseStandAloneMatrix(n, n, value) {}

MBM_SymmetricDenseMatrix::MBM_SymmetricDenseMatrix(const MBM_DenseMatrix& source, const std::string& mode)
    : MBM_DenseStandAloneMatrix(source.rows, source.cols) {
    if (source.errorCode != 0)
        setError(source.errorCode, source.errorString.c_str());
    else if (rows != cols)
        setError(17, "Symmetric matrix definition with different numbers of rows and columns");
    if (errorCode != 0 || !data || !source.data)
        return;
    const std::size_t ld = source.getLeadingDimension();
    for (unsigned j = 0; j < cols; ++j)
        std::copy_n(source.data + j * ld, rows, data + static_cast<std::size_t>(j) * rows);
    symmetrizeField(rows, rows, data, mode);
}

void MBM_SymmetricDenseMatrix::fillWithPattern(std::string pattern) {
    MBM_DenseMatrix::fillWithPattern(std::move(pattern));
    symmetrizeField(rows, rows, data, "Upper2Lower");
}

bool MBM_SymmetricDenseMatrix::setSquareDimensionAndValue(unsigned n, double value) {
    return setDimensionsAndValue(n, n, value);
}

bool MBM_SymmetricDenseMatrix::setSquareDimension(unsigned n) {
    return setDimensions(n, n);
}

MBM_DiagonalDenseMatrix::MBM_DiagonalDenseMatrix(unsigned n, double value)
    : MBM_DenseStandAloneMatrix(n, n, 0.0) {
    if (data)
        for (unsigned i = 0; i < n; ++i)
            MBM_DiagonalDenseMatrix::setValue(i, i, value);
}

bool MBM_DiagonalDenseMatrix::setValue(unsigned row, unsigned col, double value) {
    if (row != col)
        return false;
    data[(static_cast<std::size_t>(rows) + 1) * row] = value;
    return true;
}

void MBM_DiagonalDenseMatrix::fillWithPattern(std::string pattern) {
    const bool random = pattern == "Random";
    if (!random && pattern != "Unit")
        return;
    RandomNumbers numbers;
    setAllToZero();
    for (unsigned i = 0; i < rows; ++i)
        setValue(i, i, random ? numbers.next() : 1.0);
}

bool MBM_DiagonalDenseMatrix::setSquareDimensionAndValue(unsigned n, double value) {
    if (!setDimensionsAndValue(n, n, 0.0))
        return false;
    for (unsigned i = 0; i < n; ++i)
        setValue(i, i, value);
    return true;
}

bool MBM_DiagonalDenseMatrix::setSquareDimension(unsigned n) {
    return setDimensionsAndValue(n, n, 0.0);
}

MBM_SkewSymmetricDenseMatrix::MBM_SkewSymmetricDenseMatrix(unsigned n, double value)
    : MBM_DenseStandAloneMatrix(n, n, value) {
    if (data)
        takeLowerTriangle();
}

void MBM_SkewSymmetricDenseMatrix::fillWithPattern(std::string pattern) {
    if (pattern != "Random")
        return;
    MBM_DenseMatrix::fillWithPattern(std::move(pattern));
    takeLowerTriangle();
}

bool MBM_SkewSymmetricDenseMatrix::setSquareDimensionAndValue(unsigned n, double value) {
    if (!setDimensionsAndValue(n, n, value))
        return false;
    takeLowerTriangle();
    return true;
}

bool MBM_SkewSymmetricDenseMatrix::setSquareDimension(unsigned n) {
    return setDimensions(n, n);
}

void MBM_SkewSymmetricDenseMatrix::takeLowerTriangle() {
    const std::size_t ld = rows;
    for (unsigned j = 0; j < rows; ++j) {
        for (unsigned i = 0; i < j; ++i)
            data[j * ld + i] = -data[i * ld + j];
        data[j * ld + j] = 0.0;
    }
}

} // namespace velmora
