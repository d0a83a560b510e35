#pragma once

#include "velmora/global_matrix/MBS_ScatterPlan.h"

#include <string>
#include <vector>

namespace velmora {

class MBM_DenseMatrix;
class MBS_General_CqT;
class MBS_ModelObjectLists;

/// Owns one cell of physical by constraint degrees of freedom, in either order: the transposed constraint
/// Jacobians that stand in it and their scatter. Objects of inner constraints come first. There is one entry
/// per object that exists, so the cost is linear in bodies and constraints.
class MBS_ConstraintCell_Map_Procedure {
  public:
    MBS_ConstraintCell_Map_Procedure(const MBS_ConstraintCell_Map_Procedure&) = delete;
    MBS_ConstraintCell_Map_Procedure& operator=(const MBS_ConstraintCell_Map_Procedure&) = delete;
    virtual ~MBS_ConstraintCell_Map_Procedure();

    virtual std::string getClassName() const = 0;
    /// Appends the one-based (row, column) pairs of all objects.
    virtual void addPattern(std::vector<unsigned>& rows, std::vector<unsigned>& cols) const = 0;
    /// Adds to the plan of the finished sparse matrix all places of the cell.
    void initMappers(MBM_SparseMat_CSR3& sparse, MBS_ScatterPlan& plan) const;
    /// equations = Cq coordinates with all objects, unweighted; both are arrays over the whole vectors.
    /// Equations that no object reaches keep their value.
    void multiplyCq(const double* coordinates, double* equations) const;

  protected:
    /// One object and its place within the cell.
    struct Entry {
        const MBS_General_CqT* cqT; // not owned
        unsigned physicalOffset;    // first coordinate of its body in the physical vector
        unsigned constraintOffset;  // first equation in the constraint vector
    };

    /// True if the parts enter as Cq: equations in the rows.
    virtual bool isTransposed() const = 0;
    /// `isTimeDerivative`: the objects are d(Cq')/dt. Offsets: zero-based start of the cell.
    MBS_ConstraintCell_Map_Procedure(unsigned rowOffset, unsigned colOffset, bool isTimeDerivative,
                                     const double* scalingPointer, const MBS_ModelObjectLists& model);

    unsigned rowOffset, colOffset;
    const double* scalingPointer; // into the weights of the global matrix
    std::vector<Entry> entries;

  private:
    /// Equations over the coordinates of one kind of one body.
    struct Part {
        unsigned dof, equation; // zero-based, within the cell
        unsigned rows, cols;    // coordinates, equations
        MBS_BlockShape shape;
        const double* data;
    };

    /// All parts of all objects. Neighbouring equations whose elements are neighbours too become one part.
    std::vector<Part> collectParts(const MBM_SparseMat_CSR3& sparse) const;
    bool isContinuation(const MBM_SparseMat_CSR3& sparse, const Part& part, const Part& next) const;
};

/// Codes 201 and 202: coordinates in the rows.
class MBS_PhysicalDOF_x_ConstraintDOF_Map_Procedure : public MBS_ConstraintCell_Map_Procedure {
  public:
    MBS_PhysicalDOF_x_ConstraintDOF_Map_Procedure(unsigned rowOffset, unsigned colOffset, unsigned type,
                                                  const double* scalingPointer,
                                                  const MBS_ModelObjectLists& model);
    std::string getClassName() const override { return "MBS_PhysicalDOF_x_ConstraintDOF_Map_Procedure"; }
    void addPattern(std::vector<unsigned>& rows, std::vector<unsigned>& cols) const override;
    bool isTransposed() const override { return false; }
};

/// Codes 301 and 302: equations in the rows.
class MBS_ConstraintDOF_x_PhysicalDOF_Map_Procedure : public MBS_ConstraintCell_Map_Procedure {
  public:
    MBS_ConstraintDOF_x_PhysicalDOF_Map_Procedure(unsigned rowOffset, unsigned colOffset, unsigned type,
                                                  const double* scalingPointer,
                                                  const MBS_ModelObjectLists& model);
    std::string getClassName() const override { return "MBS_ConstraintDOF_x_PhysicalDOF_Map_Procedure"; }
    void addPattern(std::vector<unsigned>& rows, std::vector<unsigned>& cols) const override;
    bool isTransposed() const override { return true; }
};

} // namespace velmora
