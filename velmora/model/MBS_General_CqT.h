#pragma once

#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/platform/Export.h"

#include <memory>
#include <string>
#include <vector>

namespace velmora {

class MBS_ModelPhysicalDofVector;

/// Transposed Jacobian of one constraint with respect to the coordinates of one body, in three optional
/// parts: rows are the coordinates of a kind, columns the equations. A null part is structurally zero.
class VELMORA_EXPORT MBS_General_CqT {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using Part = std::unique_ptr<MBM_DenseMatrix>;

    /// Makes a general matrix of zeros for each kind with a non-zero count.
    MBS_General_CqT(unsigned transDof, unsigned rotDof, unsigned flexDof, unsigned constraintDof);
    MBS_General_CqT(const MBS_General_CqT&) = delete;
    MBS_General_CqT& operator=(const MBS_General_CqT&) = delete;
    virtual ~MBS_General_CqT();

    virtual std::string getClassName() const { return "MBS_General_CqT"; }

    /// Recomputes all present parts at the state; pointers that a class doesn't read may be null.
    virtual void update(double time, const P* q, const P* qd, const P* qdd);

    /// Appends the one-based (row, column) pairs of all parts as they are stored: coordinates in the rows.
    void addPatternOfCqT(std::vector<unsigned>& rows, std::vector<unsigned>& cols, unsigned rowOffset,
                         unsigned colOffset) const;
    /// The same with rows and columns exchanged: equations in the rows.
    void addPatternOfCq(std::vector<unsigned>& rows, std::vector<unsigned>& cols, unsigned rowOffset,
                        unsigned colOffset) const;

    Part tPart; ///< transDof x constraintDof
    Part rPart; ///< rotDof x constraintDof
    Part fPart; ///< flexDof x constraintDof
    unsigned transDof, rotDof, flexDof, constraintDof;
    std::string errorString;
};

} // namespace velmora
