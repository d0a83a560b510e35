#pragma once

#include "velmora/matrix/MBM_DenseMatrix.h"

#include <memory>
#include <string>
#include <vector>

namespace velmora {

class MBM_SparseMat_CSR3;
class MBS_BodyBodyMatrixInstance;
class MBS_GeneralBodyBodyMatrix;
class MBS_GeneralBodyBodyMatrixMapperCSR3;
class MBS_ModelObjectLists;

/// Owns one physical x physical cell of a global matrix: one dense accumulator per body pair that occurs, and
/// the scatter of each into the sparse matrix.
///
/// The shape of an accumulator is the union of the shapes of its sources; a place that only diagonal blocks
/// reach is diagonal. Example, codes 101 and 105 on a rigid body: tt diagonal (3 entries), rr full 4x4.
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

    /// Appends the one-based (row, column) pairs of all accumulators.
    void addPattern(std::vector<unsigned>& rows, std::vector<unsigned>& cols) const;
    void initMappers(MBM_SparseMat_CSR3& sparse);
    /// Clears, accumulates all sources with their weights and scatters. `T` (4x4 per body) is for the
    /// modified HHT form, and null otherwise.
    void refresh(MBM_GeneralDenseMatrix** T);

  private:
    /// One body pair that occurs.
    struct Pair {
        unsigned rowBody;
        unsigned colBody;
        std::unique_ptr<MBS_BodyBodyMatrixInstance> instance;
        std::unique_ptr<MBS_GeneralBodyBodyMatrixMapperCSR3> mapper;
    };
    /// One dense block of one source and the block that it is added into; both lie in one run of memory.
    struct BlockSum {
        const MBM_DenseMatrix* source;
        MBM_DenseMatrix* target;
        const double* weight;
        unsigned colBody;
        bool usesT; ///< rotational columns of a derivative with respect to qd, in the modified HHT form
    };
    struct Source;
    struct Plan;

    static void collectBodySources(const MBS_ModelObjectLists& model, unsigned type, const double* weight,
                                   Plan& plan);
    static void collectForceSources(const MBS_ModelObjectLists& model, unsigned type, const double* weight,
                                    Plan& plan);
    void createInstances(const MBS_ModelObjectLists& model, const Plan& plan, bool isModifiedHHT);
    void addBlockSums(const Source& source, MBS_BodyBodyMatrixInstance& instance, bool isModifiedHHT);
    void addWithT(const BlockSum& sum, const MBM_GeneralDenseMatrix& T);

    unsigned rowOffset, colOffset;
    std::vector<unsigned> bodyOffset;          // per body: first coordinate within the physical vector
    std::vector<Pair> pairs;                   // row-major in (row body, column body)
    std::vector<BlockSum> blockSums;           // grouped by pair
    MBM_GeneralDenseMatrix scratch{1, 1, 0.0}; // of the modified HHT form; large enough for each source
};

} // namespace velmora
