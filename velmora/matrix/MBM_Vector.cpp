#include "velmora/matrix/MBM_Vector.h"

#include "velmora/matrix/RandomNumbers.h"

#include <algorithm>
#include <cstdint>

namespace velmora {

MBM_Vector::MBM_Vector(unsigned numOfEntries) : size(numOfEntries) {
    if (size == 0)
        setError(16, "Vector definition with dimension 0");
}

void MBM_Vector::setError(int code, const char* text) {
    errorCode = code;
    errorString = text;
}

void MBM_DenseVector::fillWithPattern(std::string pattern) {
    if (pattern == "Unit") {
        std::fill_n(data, size, 1.0);
    } else if (pattern == "Random") {
        RandomNumbers numbers;
        std::generate_n(data, size, [&numbers] { return numbers.next(); });
    }
}

MBM_DenseStandAloneVector::MBM_DenseStandAloneVector(unsigned numOfEntries, double value)
    : MBM_DenseVector(numOfEntries) {
    if (errorCode == 0)
        MBM_DenseStandAloneVector::setSizeAndValue(numOfEntries, value);
}

MBM_DenseStandAloneVector::MBM_DenseStandAloneVector(const MBM_DenseStandAloneVector& other)
    : MBM_DenseVector(other) {
    data = nullptr;
    if (other.data) {
        MBM_DenseStandAloneVector::setSize(size);
        std::copy_n(other.data, size, data);
    }
}

MBM_DenseStandAloneVector& MBM_DenseStandAloneVector::operator=(const MBM_DenseStandAloneVector& other) {
    if (this == &other)
        return *this;
    if (size != other.size || (!data && other.data)) {
        errorCode = other.errorCode;
        errorString = other.errorString;
        size = other.size;
        ownedData.reset();
        data = nullptr;
        if (other.data)
            setSize(size);
    }
    if (data && other.data)
        std::copy_n(other.data, size, data);
    return *this;
}

bool MBM_DenseStandAloneVector::setSizeAndValue(unsigned n, double value) {
    MBM_DenseStandAloneVector::setSize(n);
    std::fill_n(data, n, value);
    return true;
}

bool MBM_DenseStandAloneVector::setSize(unsigned n) {
    ownedData.reset();
    ownedData = std::make_unique_for_overwrite<double[]>(n);
    data = ownedData.get();
    size = n;
    return true;
}

MBM_DenseVectorExternalField::MBM_DenseVectorExternalField(unsigned numOfEntries, double* memory)
    : MBM_DenseVector(numOfEntries) {
    data = memory;
}

MBM_DenseSubVector::MBM_DenseSubVector(unsigned numOfEntries) : MBM_DenseVector(numOfEntries) {}

MBM_DenseSubVector::MBM_DenseSubVector(unsigned numOfEntries, unsigned firstEntry, MBM_DenseVector& base)
    : MBM_DenseVector(numOfEntries),
      baseVector(&base),
      offset(firstEntry) {
    if (errorCode != 0)
        return;
    if (std::uint64_t{size} + offset > base.size)
        setError(15, "Dimensions of subvector exceed surrounding base vector");
    else if (base.data)
        data = base.data + offset;
}

} // namespace velmora
