#pragma once

#include "velmora/matrix/MBM_Vector.h"
#include "velmora/platform/Export.h"

#include <memory>
#include <string>
#include <vector>

namespace velmora {

class MBS_Model;

/// Root of the vectors that carry state between a solver and the model.
class VELMORA_EXPORT MBS_ModelDofVector {
  public:
    virtual ~MBS_ModelDofVector() = default;
    virtual std::string getClassName() const { return "MBS_ModelDofVector"; }

  protected:
    MBS_ModelDofVector() = default;
    MBS_ModelDofVector(const MBS_ModelDofVector&) = default;
    MBS_ModelDofVector& operator=(const MBS_ModelDofVector&) = default;
};

/// One entry per physical degree of freedom: positions q, velocities qd, accelerations qdd, generalised
/// forces.
///
/// Bodies stand in model order; within a body come 3 translations (global frame), 4 Euler parameters, then
/// the modal coordinates. All views look into the one contiguous array of `dofVector`; nothing is ever
/// copied. Values are undefined until somebody has written them.
class VELMORA_EXPORT MBS_ModelPhysicalDofVector : public MBS_ModelDofVector {
  public:
    using View = std::unique_ptr<MBM_DenseSubVector>;

    /// Structure of one body with 3, 4 and 0 degrees of freedom.
    MBS_ModelPhysicalDofVector();
    /// Structure of the model's bodies.
    explicit MBS_ModelPhysicalDofVector(MBS_Model* model);
    /// One count per body and kind; all three lists have the length of the first.
    MBS_ModelPhysicalDofVector(const std::vector<unsigned>* trans, const std::vector<unsigned>* rot,
                               const std::vector<unsigned>* flex);
    /// Same structure and values, with views into its own storage.
    MBS_ModelPhysicalDofVector(const MBS_ModelPhysicalDofVector& other);
    /// Copies values element by element; both must have the same structure, nothing is reallocated.
    MBS_ModelPhysicalDofVector& operator=(const MBS_ModelPhysicalDofVector& other);
    ~MBS_ModelPhysicalDofVector() override = default;

    std::string getClassName() const override { return "MBS_ModelPhysicalDofVector"; }

    /// Drops everything and takes the structure of the model's bodies. All pointers into the vector end.
    void adaptStructureToModel(MBS_Model* model);
    /// The same from `numOfBodies` entries of each array; the second and third argument aren't used.
    void adaptStructureToModel(unsigned numOfBodies, unsigned, unsigned, const unsigned* trans,
                               const unsigned* rot, const unsigned* flex);

    /// Length of the whole vector.
    unsigned getNumOfDof() const { return dofVector->size; }

    /// First coordinate of a body: translations at +0, Euler parameters at +3, modal coordinates at +7.
    double* bodyData(unsigned body) { return dofVector->data + bodyOffset[body]; }
    const double* bodyData(unsigned body) const { return dofVector->data + bodyOffset[body]; }

    std::unique_ptr<MBM_DenseStandAloneVector> dofVector; ///< the whole vector
    std::vector<View> bodyDof;                            ///< per body: all its coordinates
    std::vector<View> transDof;                           ///< per body: translations; null if it has none
    std::vector<View> rotDof;                             ///< per body: Euler parameters; null if it has none
    std::vector<View> flexDof;        ///< per body: modal coordinates; null if it has none
    std::vector<unsigned> bodyOffset; ///< per body: place of its first coordinate in `dofVector`

  private:
    void allocateAllFields(const std::vector<unsigned>& trans, const std::vector<unsigned>& rot,
                           const std::vector<unsigned>& flex);
    void destroyAllFieldsAndSetToNULL();
};

/// One entry per constraint equation: multipliers, residuals and their time derivatives.
///
/// First the inner equations of all bodies in body order, then the equations of all external constraints in
/// constraint order. A half without equations builds nothing.
class VELMORA_EXPORT MBS_ModelConstraintDofVector : public MBS_ModelDofVector {
  public:
    using View = std::unique_ptr<MBM_DenseSubVector>;

    /// Structure of one body with one inner equation and one constraint with one equation.
    MBS_ModelConstraintDofVector();
    /// Structure of the model, with one constraint ID per external equation.
    explicit MBS_ModelConstraintDofVector(MBS_Model* model);
    /// Inner equations per body, equations per constraint.
    MBS_ModelConstraintDofVector(const std::vector<unsigned>* inner, const std::vector<unsigned>* external);
    /// Same structure and values; `constraintDofIDs` and `model` aren't copied.
    MBS_ModelConstraintDofVector(const MBS_ModelConstraintDofVector& other);
    /// Copies values element by element; both must have the same structure, nothing is reallocated.
    MBS_ModelConstraintDofVector& operator=(const MBS_ModelConstraintDofVector& other);
    ~MBS_ModelConstraintDofVector() override = default;

    std::string getClassName() const override { return "MBS_ModelConstraintDofVector"; }

    /// Drops everything and takes the structure of the model; `constraintDofIDs` stay as they are.
    void adaptStructureToModel(MBS_Model* model);
    /// The same from arrays of counts.
    void adaptStructureToModel(unsigned numOfBodies, unsigned numOfConstraints, const unsigned* inner,
                               const unsigned* external);

    /// Length of the whole vector; 0 if there are no equations.
    unsigned getNumOfConstraints() const { return dofVector ? dofVector->size : 0; }
    /// Number of inner equations.
    unsigned getNumOfInternalConstraints() const { return innerConstraints ? innerConstraints->size : 0; }
    /// Number of external equations.
    unsigned getNumOfExternalConstraints() const {
        return externalConstraints ? externalConstraints->size : 0;
    }

    /// The inner equation of a body. Every body of a model has one, and these stand first.
    double& innerEquationOfBody(unsigned body) { return dofVector->data[body]; }
    const double& innerEquationOfBody(unsigned body) const { return dofVector->data[body]; }
    /// First equation of an external constraint.
    double* equationsOfConstraint(unsigned constraint) {
        return dofVector->data + constraintOffset[constraint];
    }
    const double* equationsOfConstraint(unsigned constraint) const {
        return dofVector->data + constraintOffset[constraint];
    }

    std::unique_ptr<MBM_DenseStandAloneVector> dofVector; ///< the whole vector; null without equations
    View innerConstraints;                                ///< all inner equations; null if there are none
    std::vector<View> bodyInnerConstraints;               ///< per body; null entry if it has none
    View externalConstraints;                             ///< all external equations; null if there are none
    std::vector<View> constraintDof;                      ///< per constraint; null entry if it has none
    std::vector<unsigned> constraintOffset;               ///< per constraint: its first place in `dofVector`
    MBS_Model* model = nullptr;                           ///< not owned
    std::vector<std::string> constraintDofIDs;            ///< per external equation: UUID of its constraint

  private:
    void allocateAllFields(const std::vector<unsigned>& inner, const std::vector<unsigned>& external);
    void destroyAllFieldsAndSetToNULL();
};

} // namespace velmora
