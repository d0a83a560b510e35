#pragma once

#include "velmora/matrix/FixedSize.h"

#include <vector>

namespace velmora {

/// Matrix of 3 rows by M modes with the rows side by side in memory, since the dense products over the modes
/// make rows and everything else walks along them.
class ModalRows {
  public:
    explicit ModalRows(unsigned numOfModes) : M(numOfModes), elements(std::size_t{3} * numOfModes, 0.0) {}

    double* row(unsigned axis) { return elements.data() + std::size_t{axis} * M; }
    const double* row(unsigned axis) const { return elements.data() + std::size_t{axis} * M; }
    Vec3 column(unsigned mode) const { return {{row(0)[mode], row(1)[mode], row(2)[mode]}}; }
    void setColumn(unsigned mode, const Vec3& v) {
        for (unsigned axis = 0; axis < 3; ++axis)
            row(axis)[mode] = v(static_cast<int>(axis));
    }
    unsigned numOfModes() const { return M; }

    /// R x, x with M entries.
    Vec3 operator*(const double* x) const {
        Vec3 y;
        for (unsigned axis = 0; axis < 3; ++axis)
            for (unsigned j = 0; j < M; ++j)
                y(static_cast<int>(axis)) += row(axis)[j] * x[j];
        return y;
    }

    /// y += s R' v, y with M entries.
    void addTransposedProduct(double s, const Vec3& v, double* y) const {
        const Vec3 sv = s * v;
        for (unsigned j = 0; j < M; ++j)
            y[j] += row(0)[j] * sv(0) + row(1)[j] * sv(1) + row(2)[j] * sv(2);
    }

  private:
    unsigned M;
    std::vector<double> elements;
};

} // namespace velmora
