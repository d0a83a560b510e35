#pragma once

#include "velmora/global_matrix/MBS_ContributionCodes.h"
#include "velmora/platform/Export.h"

#include <memory>
#include <string>
#include <vector>

namespace velmora {

class MBM_GeneralDenseMatrix;
class MBM_SparseMat_CSR3;
class MBS_ModelObjectLists;
class MBS_ConstraintCell_Map_Procedure;
class MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure;
class MBS_ScatterPlan;

/// The sparse matrix that a solver factorises, described by the solver itself: J = sum over contributions k
/// of s_k B(code_k), each placed in one cell of a grid of block rows and block columns.
///
/// A block row or column has the size of the physical vector (bodies in model order) or of the constraint
/// vector (inner equations of all bodies, then external constraints). The pattern is the union of the blocks
/// that exist and is settled at construction; a refresh is a pure scatter. Constraint cells hold one
/// contribution each, physical cells any number. Time and memory are linear in the occupied blocks.
///
/// Copies share the sparse matrix and everything that refreshes it.
class VELMORA_EXPORT MBS_GlobalModelMatrix {
  public:
    /// Made by MBS_Model::createModelRelatedMatrix. The four lists are copied. Lists of unequal length, an
    /// unknown code, an index outside the grid, a block row or column without contribution, several
    /// contributions in a constraint cell and mixed kinds in a cell are reported through the model; the
    /// matrix then has no contributions and an empty sparse matrix.
    MBS_GlobalModelMatrix(MBS_ModelObjectLists* model, unsigned numBlockRows, unsigned numBlockCols,
                          const std::vector<unsigned>* types, const std::vector<unsigned>* rows,
                          const std::vector<unsigned>* cols, const std::vector<double>* scalingValues,
                          bool isModifiedHHT);
    MBS_GlobalModelMatrix(const MBS_GlobalModelMatrix&);
    MBS_GlobalModelMatrix& operator=(const MBS_GlobalModelMatrix&);
    virtual ~MBS_GlobalModelMatrix();

    /// Refreshes all values from the blocks, which must be up to date (MBS_Model::updateMatricesForJacobian).
    /// Physical cells stay untouched if the matrix was made for the modified HHT form. Values are 1.0 before
    /// the first update.
    void update();
    /// The same for a matrix made for the modified HHT form. `T` holds one 4x4 matrix per body: the
    /// rotational columns of the codes 104, 107 and 109 enter as -B T[b] in place of s_k B.
    void updateForModifiedHHT(MBM_GeneralDenseMatrix** T);

    /// The matrix itself, owned by this object.
    MBM_SparseMat_CSR3* getPointerToSparseJacobian() const { return sparseMatrix.get(); }

    /// Sets one weight, effective at the next update; false for an index past the end.
    bool setScalingValue_i(unsigned index, double value);
    /// Sets all weights; false, and nothing changed, if the length doesn't fit.
    bool setScalingValues(const std::vector<double>& values);

  private:
    bool checkInputDataAndStoreInMembers(const std::vector<unsigned>& types,
                                         const std::vector<unsigned>& rows, const std::vector<unsigned>& cols,
                                         const std::vector<double>& weights);
    std::string findInputError(const std::vector<unsigned>& types, const std::vector<unsigned>& rows,
                               const std::vector<unsigned>& cols, const std::vector<double>& weights) const;
    void defineGlobalRowAndColOffset();
    void constructAllMapProcedures();
    void createSparseMatrix();
    void initAllMappers();

    std::shared_ptr<MBM_SparseMat_CSR3> sparseMatrix;
    unsigned numBlockRows;
    unsigned numBlockCols;
    std::vector<unsigned> contributionTypes, contributionRows, contributionCols;
    std::shared_ptr<std::vector<double>> scalingValues; // map procedures hold pointers to its elements
    std::vector<unsigned> rowOffsets, colOffsets;       // start of each block row and column, then the total
    std::vector<unsigned> cellKinds;                    // per cell an MBS_CellKind
    std::vector<std::vector<unsigned>> cellContributionLists;
    bool isModifiedHHT;
    MBS_ModelObjectLists* model; // not owned
    std::vector<std::shared_ptr<MBS_PhysicalDOF_x_PhysicalDOF_Map_Procedure>> physicalProcedures;
    std::vector<std::shared_ptr<MBS_ConstraintCell_Map_Procedure>> constraintProcedures;
    std::shared_ptr<MBS_ScatterPlan> plan; // of all cells
};

} // namespace velmora
