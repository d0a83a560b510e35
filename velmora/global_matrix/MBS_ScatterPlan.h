#pragma once

#include "velmora/matrix/FixedSize.h"
#include "velmora/platform/LargePages.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace velmora {

class MBM_GeneralDenseMatrix;
class MBM_SparseMat_CSR3;

/// Shape of a place that dense blocks are summed into.
enum class MBS_BlockShape : std::uint8_t {
    Absent,
    Diagonal, ///< the main diagonal alone stands in the sparse matrix
    General
};

/// Precomputed scatter of weighted sums of dense blocks into a sparse matrix: a flat list of places, each
/// with its sources, so that a refresh walks memory forwards, reads each source once and writes each sparse
/// value once. No search, no allocation. What many places have in common (size, shape, weights) is a pattern
/// and stands in the list once.
///
/// Example: with sources M (weight s1) and K (weight s2) the place of a 4x4 block becomes s1 M + s2 K,
/// written row by row where its rows begin in the values of the sparse matrix.
class MBS_ScatterPlan {
  public:
    /// One dense block, column-major without gaps, and where its weight stands.
    struct Source {
        const double* data;
        const double* weight;
        std::uint32_t colBody;     ///< for the modified HHT form: index of T
        bool usesT;                ///< enters as -B T, and not with its weight
        bool isTransposed = false; ///< enters as its transpose
    };
    /// Where element (0, 0) goes, zero-based, and the size there.
    struct Place {
        unsigned row, col;
        unsigned numRows, numCols;
        MBS_BlockShape shape;
        bool isConstraintCell; ///< part of Cq or its transpose
    };
    /// Which places a run writes.
    enum class Cells { All, Constraints };

    /// Adds a place of the sparse matrix with its sources, which all have its size or its transpose's. All of
    /// the block must be in the pattern, and the rows of a block equally long. All places are of one matrix.
    void add(MBM_SparseMat_CSR3& sparse, const Place& place, const std::vector<Source>& sources);
    /// Brings the places into the order in which they stand in the sparse matrix, so that a run passes over
    /// it once. To be called after the last `add`.
    void sort();
    /// Writes the places. `T` holds a 4x4 matrix per body; null unless a source uses it.
    void run(Cells cells, MBM_GeneralDenseMatrix** T) const;

  private:
    /// How a place is written.
    enum class Route : std::uint8_t;
    struct Pattern {
        Route route;
        std::vector<const double*> weights;
        std::vector<bool> usesT, isTransposed;
        unsigned numRows, numCols; // in the sparse matrix
        MBS_BlockShape shape;
        bool isConstraintCell;

        bool isLike(const Pattern& other) const;
        Route findRoute() const;
        // Each writes one place: `first` is its element (0, 0) among the sparse values, `rowStride` the
        // distance of its rows there. `writeTransposed` is for sources of size R x C.
        template <int R, int C>
        void writeSized(double* first, std::size_t rowStride, const double* const* data) const;
        template <int R, int C>
        void writeTransposed(double* first, std::size_t rowStride, const double* const* data) const;
        template <int R, int C>
        Mat<R, C> weightedSum(const double* const* data) const;
        template <int N>
        void writeDiagonal(double* first, std::size_t rowStride, const double* const* data) const;
        /// Element (i, j) of source k, as it enters.
        double element(const double* const* data, std::size_t k, std::size_t i, std::size_t j) const;
        void writeAnySize(double* first, std::size_t rowStride, const double* const* data) const;
        void writeWithT(double* first, std::size_t rowStride, const double* const* data,
                        const MBM_GeneralDenseMatrix& T) const;
    };
    struct Target {
        std::uint32_t first;     // index of element (0, 0) among the sparse values
        std::uint32_t rowStride; // distance of the block's rows among them
        std::uint32_t pattern;
    };

    std::uint32_t findPattern(const Place& place, const std::vector<Source>& added);

    double* values = nullptr; // of the sparse matrix
    std::vector<Pattern> patterns;
    EvaluationArray<Target> targets;
    EvaluationArray<const double*> sources; // those of each target, one target after the other
    std::vector<std::uint32_t> bodiesOfT;   // of each target that uses T, in turn
};

} // namespace velmora
