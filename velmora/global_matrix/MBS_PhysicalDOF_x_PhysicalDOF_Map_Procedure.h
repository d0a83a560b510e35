#pragma once

#include "velmora/global_matrix/MBS_ScatterPlan.h"

#include <array>
#include <string>
#include <vector>

namespace velmora {

class MBM_DenseMatrix;
class MBS_GeneralBodyBodyMatrix;
class MBS_ModelObjectLists;

/// Owns one physical x physical cell of a global matrix: the body pairs that occur in it, the shape of each
/// of their places, and the scatter of all sources into the sparse matrix.
///
/// The shape of a place is the union of the shapes of its sources; a place that only diagonal blocks reach is
/// diagonal. Example, codes 101 and 105 on a rigid body: tt diagonal (3 entries), rr full 4x4.
class MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure {
  public:
    /// `rowOffset`, `colOffset`: zero-based start of the cell. One pointer to its weight per code.
    MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure(const MBS_ModelObjectLists& model, unsigned rowOffset,
                                                unsigned colOffset, const std::vector<unsigned>& types,
                                                const std::vector<const double*>& scalingPointers,
                                                bool isModifiedHHT);
    MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure(const MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure&) = delete;
    MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure&
    operator=(const MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure&) = delete;
    virtual ~MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure();

    virtual std::string getClassName() const { return "MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure"; }

    /// Appends the one-based (row, column) pairs of all places.
    void addPattern(std::vector<unsigned>& rows, std::vector<unsigned>& cols) const;
    /// Adds to the plan of the finished sparse matrix all places of the cell.
    void initMappers(MBM_SparseMat_CSR3& sparse, MBS_ScatterPlan& plan);

  private:
    /// A block object that belongs in the cell.
    struct Contribution {
        const MBS_GeneralBodyBodyMatrix* matrix; // not owned
        unsigned type;
        const double* weight;
        bool hasValues;            // false: it shapes the pattern alone
        bool isTransposed = false; // it enters as its transpose

        const MBM_DenseMatrix* block(unsigned k) const; // what enters place k, as it is stored
        const std::array<unsigned, 3>& rowDof() const;
        const std::array<unsigned, 3>& colDof() const;
    };
    /// A body pair that occurs, with what is added into it; its places in row-major order of the kinds.
    struct Pair {
        unsigned rowBody, colBody;
        std::vector<Contribution> contributions;
        std::array<MBS_BlockShape, 9> shapes{};
    };
    struct PairMap;

    static void collectBodies(const MBS_ModelObjectLists& model, unsigned type, const double* weight,
                              PairMap& pairMap);
    static void collectConstraints(const MBS_ModelObjectLists& model, unsigned type, const double* weight,
                                   PairMap& pairMap);
    static void collectForces(const MBS_ModelObjectLists& model, unsigned type, const double* weight,
                              PairMap& pairMap);
    /// Place k of a pair: position in the sparse matrix, size there, and shape.
    MBS_ScatterPlan::Place placeOf(const Pair& pair, unsigned k) const;
    std::vector<MBS_ScatterPlan::Source> sourcesOf(const Pair& pair, unsigned k) const;

    unsigned rowOffset, colOffset;
    bool isModifiedHHT;
    std::vector<unsigned> bodyOffset; // per body: first coordinate within the physical vector
    std::vector<Pair> pairs;          // row-major in (row body, column body)
};

} // namespace velmora
