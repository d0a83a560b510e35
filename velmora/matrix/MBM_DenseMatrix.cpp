#include "velmora/matrix/MBM_DenseMatrix.h"

#include "velmora/matrix/RandomNumbers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace velmora {

namespace {

std::uint64_t numOfElements(const MBM_Matrix& matrix) {
    return std::uint64_t{matrix.rows} * matrix.cols;
}

} // namespace

void MBM_DenseMatrix::fillWithPattern(std::string pattern) {
    const bool random = pattern == "Random";
    if (!random && pattern != "Unit")
        return;
    RandomNumbers numbers;
    const std::size_t ld = getLeadingDimension();
    for (unsigned j = 0; j < cols; ++j)
        for (unsigned i = 0; i < rows; ++i)
            data[j * ld + i] = random ? numbers.next() : (i == j ? 1.0 : 0.0);
}

void MBM_DenseMatrix::setAllToZero() {
    const std::size_t ld = getLeadingDimension();
    for (unsigned j = 0; j < cols; ++j)
        std::fill_n(data + j * ld, rows, 0.0);
    mirrorIntoBase();
}

bool MBM_DenseMatrix::isUnitMatrix() const {
    if (rows != cols)
        return false;
    for (unsigned j = 0; j < cols; ++j)
        for (unsigned i = 0; i < rows; ++i)
            if (!(std::abs(getValue(i, j) - (i == j ? 1.0 : 0.0)) <= zeroTolerance))
                return false;
    return true;
}

MBM_DenseStandAloneMatrix::MBM_DenseStandAloneMatrix(unsigned numOfRows, unsigned numOfCols)
    : MBM_DenseMatrix(numOfRows, numOfCols) {
    if (errorCode == 0)
        allocate();
}

MBM_DenseStandAloneMatrix::MBM_DenseStandAloneMatrix(unsigned numOfRows, unsigned numOfCols, double value)
    : MBM_DenseStandAloneMatrix(numOfRows, numOfCols) {
    if (data)
        std::fill_n(data, numOfElements(*this), value);
}

MBM_DenseStandAloneMatrix::MBM_DenseStandAloneMatrix(const MBM_DenseStandAloneMatrix& other)
    : MBM_DenseMatrix(other) {
    data = nullptr;
    if (other.data && allocate())
        std::copy_n(other.data, numOfElements(*this), data);
}

MBM_DenseStandAloneMatrix& MBM_DenseStandAloneMatrix::operator=(const MBM_DenseStandAloneMatrix& other) {
    if (this == &other)
        return *this;
    const bool sameCount = numOfElements(*this) == numOfElements(other) && (data || !other.data);
    rows = other.rows;
    cols = other.cols;
    if (!sameCount) {
        errorCode = other.errorCode;
        errorString = other.errorString;
        ownedData.reset();
        data = nullptr;
        if (other.data)
            allocate();
    }
    if (data && other.data)
        std::copy_n(other.data, numOfElements(*this), data);
    return *this;
}

bool MBM_DenseStandAloneMatrix::setValue(unsigned row, unsigned col, double value) {
    const std::size_t ld = rows;
    if (isSymmetric()) {
        data[col * ld + row] = value;
        data[row * ld + col] = value;
    } else if (isSkewSymmetric()) {
        data[col * ld + row] = value;
        data[row * ld + col] = row == col ? 0.0 : -value;
    } else {
        data[col * ld + row] = value;
    }
    return true;
}

bool MBM_DenseStandAloneMatrix::setDimensions(unsigned numOfRows, unsigned numOfCols) {
    rows = numOfRows;
    cols = numOfCols;
    return allocate();
}

bool MBM_DenseStandAloneMatrix::setDimensionsAndValue(unsigned numOfRows, unsigned numOfCols, double value) {
    if (!setDimensions(numOfRows, numOfCols))
        return false;
    std::fill_n(data, numOfElements(*this), value);
    return true;
}

void MBM_DenseStandAloneMatrix::moveStorage(std::shared_ptr<double[]> place) {
    if (data)
        std::copy_n(data, numOfElements(*this), place.get());
    ownedData = std::move(place);
    data = ownedData.get();
}

bool MBM_DenseStandAloneMatrix::allocate() {
    ownedData.reset();
    data = nullptr;
    if (numOfElements(*this) > std::numeric_limits<std::uint32_t>::max()) {
        setError(1, "Matrix allocation failed: number of matrix entries is largen than the numeric limits of "
                    "unsigned int!");
        return false;
    }
    ownedData = std::shared_ptr<double[]>(std::make_unique_for_overwrite<double[]>(numOfElements(*this)));
    data = ownedData.get();
    return true;
}

MBM_DenseMatrix_ExternalDatas::MBM_DenseMatrix_ExternalDatas(unsigned numOfRows, unsigned numOfCols,
                                                             double* memory)
    : MBM_DenseMatrix(numOfRows, numOfCols) {
    data = memory;
}

MBM_DenseMatrix_ExternalDatas&
MBM_DenseMatrix_ExternalDatas::operator=(const MBM_DenseMatrix_ExternalDatas& other) {
    return this == &other ? *this : *this = static_cast<const MBM_DenseMatrix&>(other);
}

MBM_DenseMatrix_ExternalDatas& MBM_DenseMatrix_ExternalDatas::operator=(const MBM_DenseMatrix& other) {
    if (rows != other.rows || cols != other.cols) {
        setError(100,
                 "ERROR: Assign operator for MBM_DenseMatrix_ExternalDatas fails in case of non matching "
                 "dimensions!");
        return *this;
    }
    if (!data || !other.data)
        return *this;
    for (unsigned j = 0; j < cols; ++j)
        for (unsigned i = 0; i < rows; ++i)
            setValue(i, j, other.getValue(i, j));
    return *this;
}

bool MBM_DenseMatrix_ExternalDatas::setValue(unsigned row, unsigned col, double value) {
    data[static_cast<std::size_t>(col) * rows + row] = value;
    return true;
}

} // namespace velmora
