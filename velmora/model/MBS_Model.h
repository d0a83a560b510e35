#pragma once

#include "velmora/model/MBS_Item.h"

#include <vector>

namespace velmora {

class IO_DataModel;
class IO_DataModelBlock;
class IO_OutputManager;
class MBM_DenseStandAloneVector;
class MBS_GlobalModelMatrix;
class MBS_History;
class MBS_ModelConstraintDofVector;
class MBS_ModelPhysicalDofVector;
class MBS_ResultFileManager;

/// The mechanical model as a solver sees it. `makeModel` gives the concrete model; this class alone answers
/// every question with "nothing".
///
/// Equations of motion: M qdd + Cq' lambda + F_elastic + F_damping - Q_velInertia - Q_external = 0, C(q, t) =
/// 0. Update operations refresh caches in bodies, constraints and forces; get operations combine what the
/// last update left. What has to be called before what stands at each operation. A model serves one thread at
/// a time.
class VELMORA_EXPORT MBS_Model : public MBS_Item {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;

    /// Builds the model of all blocks: data objects, bodies, measures, constraints, forces, actors, in this
    /// order. Null for a null data model. The model comes back also when objects failed: test
    /// `isErrorOccured`. The caller deletes it, after everything made from it. Throws a `std::string` for an
    /// unknown type of a "DataObject" block.
    static MBS_Model* makeModel(IO_DataModel* dataModel, IO_OutputManager* outputManager);

    /// An empty model with the data model's name (empty for a null pointer).
    MBS_Model(const IO_DataModel* dataModel, IO_OutputManager* outputManager);
    /// Copies hold name, counters and error text, none of the objects.
    MBS_Model(const MBS_Model&) = default;
    MBS_Model& operator=(const MBS_Model&) = default;

    unsigned getNumOfAllDofInModel() const { return numOfAllDofInModel; }
    unsigned getNumOfPhysicalDof() const { return numOfPhysicalDof; }
    unsigned getNumOfInnerConstraintDof() const { return numOfInnerConstraintDof; }
    unsigned getNumOfExternalConstraintDof() const { return numOfExternalConstraintDof; }
    /// Copies the model's name into the text.
    void getModelName(std::string* name) const;

    std::string getClassName() const override;

  protected:
    /// Sends message and line feed to the message channel, appends line feed and message to the error text.
    void appendErrorString(std::string message) override;
    /// Writes message and line feed to the message file if it is open, appends the message alone.
    void appendErrorString(std::string* message) override;

  public:
    ~MBS_Model() override = default;

    /// Takes what accumulates along a run (turns of angles, start polynomials) back to the initial state.
    virtual void resetModel();

    /// Appends to the history, or takes back from it, the numbers by which evaluations to come depend on
    /// those before: turns of angles, start polynomials, directions that hold on, what user libraries
    /// remember. A model that was made and changed alike and takes them back goes on as this one does, after
    /// an update at the same state.
    virtual void exchangeHistory(MBS_History* history);

    /// A sparse matrix J = sum s_k B(code_k) on a grid of block rows and columns: per contribution a code, a
    /// block row, a block column and a weight. The caller deletes it before the model. With `isModifiedHHT`
    /// the physical part is refreshed by `updateForModifiedHHT` alone.
    virtual MBS_GlobalModelMatrix*
    createModelRelatedMatrix(unsigned numBlockRows, unsigned numBlockCols, const std::vector<unsigned>* types,
                             const std::vector<unsigned>* rows, const std::vector<unsigned>* cols,
                             const std::vector<double>* scalingValues, bool isModifiedHHT);
    /// Writers of the result files that the block asks for, opened. The caller deletes them before the model.
    virtual MBS_ResultFileManager* createResultFileManager(IO_DataModelBlock* block);

    /// Changes an actor or data object, found by the block's kind and UUID.
    virtual void modifyModelElement(IO_DataModelBlock* block);
    /// Reads an actor's or data object's present data back into the block.
    virtual void getDataModelOfObject(P* q, IO_DataModelBlock* block);

    /// Refreshes the values of all measures; body caches must be those of this state.
    virtual void updateMeasures(double t, const P* q, const P* qd, const P* qdd);
    /// Refreshes body kinematics, mass matrices and the Jacobians of the inner constraints.
    virtual void updateMatricesForEquationOfMotion(double t, const P* q, const P* qd, const P* qdd);
    /// The same, then measures, then the residual of all constraints into `out`, then their Jacobians.
    virtual void updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(double t, const P* q,
                                                                                 const P* qd, const P* qdd,
                                                                                 C* out);
    /// Refreshes all derivative blocks at the state of the last residual; needs `getExternalForces` at this
    /// state before. `multipliers` are those that enter d(Cq' lambda)/dq.
    virtual void updateMatricesForJacobian(double t, const P* q, const P* qd, const P* qdd,
                                           const C* multipliers);
    /// To be called after an accepted step.
    virtual void setTimeOfLastSuccessfulStep(double t);
    /// Position-level solve at time 0: caches, right-hand side B-bar of the actors into `out`, constraint
    /// residual into `residual`.
    virtual void updateForKinematicSolverAndComputeBbar(const P* q, P* out, C* residual);

    /// out = M qdd, with the mass matrix of the last update.
    virtual void getAccInertiaForces(const P* qdd, P* out);
    /// Quadratic velocity vector of the bodies; needs `updateMatricesForEquationOfMotion`.
    virtual void getVelInertiaForces(const P* q, const P* qd, P* out);
    virtual void getElasticForces(const P* q, P* out);
    virtual void getDampingForces(const P* qd, P* out);
    /// out = Cq' lambda over all equations; needs the residual of this state.
    virtual void getConstraintForces(const C* multipliers, P* out);
    /// Applied forces; needs the residual (or `updateMeasures`) of this state.
    virtual void getExternalForces(double t, const P* q, const P* qd, const P* qdd, P* out);
    /// Derivative of the applied forces with respect to the parameter with this label.
    virtual void getExternalForcesDPar(double t, const P* q, const P* qd, const P* qdd,
                                       const std::string* label, P* out);

    /// out = (d(M qdd)/dq)' w; this and the next three need `updateMatricesForJacobian`.
    virtual void getMqddDqTimesW(const P* w, P* out);
    /// out = (dQ_velInertia/dq)' w.
    virtual void getVelInertiaForcesDqTimesW(const P* w, P* out);
    /// out = (dQ_external/dq)' w.
    virtual void getExternalForcesDqTimesW(const P* w, P* out);
    /// out = (d(Cq' lambda)/dq)' w.
    virtual void getConstraintForceDqTimesW(const P* w, P* out);

    /// Value of the first measure with this label (any case), as last updated; 0.0 if there is none.
    virtual double getMeasureValueByLabel(const std::string* label);
    virtual double getMeasureValue(unsigned index);
    /// Row of derivatives of a measure with respect to the coordinates of one body.
    virtual void getMeasure_q(const std::string* label, double t, const P* q, const P* qd, const P* qdd,
                              const C* multipliers, unsigned bodyIndex, double* out);
    virtual void getMeasureLabel(unsigned index, std::string* label);

    /// Residual of all constraints: the norm of each body's Euler parameters, then the external ones.
    virtual void getAndUpdateConstraints(double t, const P* q, const P* qd, const P* qdd, C* out);
    /// out = (dCq/dt) qd, the velocity term of the constraints at acceleration level.
    virtual void getCqdT_Mult_Qd(const P* q, const P* qd, const P* qdd, C* out);
    /// First partial time derivative of the constraints: Cq qd + C_t = 0.
    virtual void get_C_t(double t, const P* q, const P* qd, const P* qdd, C* out);
    /// Second time term: Cq qdd + (dCq/dt) qd + get_C_t_order2 = 0.
    virtual void get_C_t_order2(double t, const P* q, const P* qd, const P* qdd, C* out);

    /// Initial positions and velocities of all bodies.
    virtual void copyInitialDataIntoPhysicalDofVector(P* q, P* qd);
    /// Natural circular frequencies of a flexible body's modes; nothing for a rigid one.
    virtual void getOmegaOfFlexDof(unsigned bodyIndex, MBM_DenseStandAloneVector* omega);

    // Counts. An index past the end gives 0 or an empty text.
    virtual unsigned getNumOfTransDofOfBody(unsigned bodyIndex) const;
    virtual unsigned getNumOfRotDofOfBody(unsigned bodyIndex) const;
    virtual unsigned getNumOfFlexDofOfBody(unsigned bodyIndex) const;
    virtual unsigned getNumOfInnerConstraintDofOfBody(unsigned bodyIndex) const;
    virtual unsigned getNumOfExternalConstraints() const;
    virtual unsigned getNumOfConstraintDofOfConstraint(unsigned constraintIndex) const;
    virtual std::string getConstraintID(unsigned constraintIndex) const;
    virtual unsigned getNumOfExternalForces() const;
    virtual unsigned getNumOfMeasures() const;
    virtual unsigned getNumOfDataObjects() const;
    virtual unsigned getNumOfBodies() const;
    virtual unsigned getNumOfFlexBodies() const;
    virtual unsigned getNumOfZeroInertiaRigidBodies() const;
    virtual unsigned getNumOfActors() const;

    /// True if every actor has reached its target; true without actors.
    virtual bool isFinalStateReached();
    /// Per body twelve doubles: position, rotation matrix column after column.
    virtual void getCurrentStateResultFileBlock(const P* q, std::vector<double*>* blocks);
    /// Per measure one double.
    virtual void getCurrentMeasureResultFileBlock(const P* q, std::vector<double*>* blocks);
    /// Per joint twelve doubles: joint point, joint axes column after column.
    virtual void getCurrentConstraintStateResultFileBlock(const P* q, std::vector<double*>* blocks);

  protected:
    friend class MBS_ModelObject;

    unsigned numOfPhysicalDof = 0;
    unsigned numOfExternalConstraintDof = 0;
    unsigned numOfInnerConstraintDof = 0;
    unsigned numOfAllDofInModel = 0;
    IO_OutputManager* outputManager; // not owned
    std::string modelName;
};

} // namespace velmora
