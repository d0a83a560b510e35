#pragma once

#include "velmora/model/MBS_Model.h"
#include "velmora/model/MBS_ModelLookUp.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace velmora {

class MBS_Actor;
class MBS_BodyGroup;
class MBS_History;
class MBS_ModelObject;

/// The concrete model: owns all objects, in the order of their blocks, and answers the solver by walking
/// them. Lists are filled once and never change. It knows the roots of the families, not their concrete
/// classes.
class MBS_InternalModel final : public MBS_Model, public MBS_ModelObjectLists {
  public:
    MBS_InternalModel(IO_DataModel* dataModel, IO_OutputManager* manager);
    ~MBS_InternalModel() override;

    std::string getClassName() const override { return "MBS_InternalModel"; }

    // Lists and look-ups.
    MBS_Body* getBodyByUUID(const std::string& uuid) const override;
    const std::vector<std::unique_ptr<MBS_Body>>& getBodies() const override { return bodies; }
    MBS_Measure* getMeasureByLabel(const std::string& label) const override;
    MBS_DataObject* getDataObjectByLabel(const std::string& label) const override;
    const std::vector<std::unique_ptr<MBS_Measure>>& getMeasures() const override { return measures; }
    const std::vector<std::unique_ptr<MBS_ExtConstraint>>& getConstraints() const override {
        return constraints;
    }
    const std::vector<std::unique_ptr<MBS_Force>>& getForces() const override { return forces; }
    const MBS_Model& getModel() const override { return *this; }
    void reportError(std::string message) override { appendErrorString(std::move(message)); }

    // What the builder adds; each takes the next index of its list.
    void addBody(std::unique_ptr<MBS_Body> body);
    const std::vector<std::shared_ptr<MBS_ConstraintGroup>>& getConstraintGroups() const override {
        return constraintGroups;
    }
    /// `isForResults`: its joint frame stands in the block of constraint states.
    void addConstraint(std::unique_ptr<MBS_ExtConstraint> constraint, bool isForResults);
    void addForce(std::unique_ptr<MBS_Force> force);
    void addMeasure(std::unique_ptr<MBS_Measure> measure);
    /// Counts a data object by its UUID before it is made; a null keeps the place of one that couldn't be.
    void announceDataObject(const std::string& uuid) { dataObjectUUIDs.push_back(uuid); }
    void addDataObject(std::unique_ptr<MBS_DataObject> dataObject);
    void addActor(std::unique_ptr<MBS_Actor> actor);
    void sumUpDof();
    /// Gathers neighbouring bodies of one class into groups. Once, when all bodies are there and nothing
    /// else.
    void groupBodies();
    /// Gathers the constraints of each class into groups. Once, when all constraints are there.
    void groupConstraints();

    MBS_GlobalModelMatrix*
    createModelRelatedMatrix(unsigned numBlockRows, unsigned numBlockCols, const std::vector<unsigned>* types,
                             const std::vector<unsigned>* rows, const std::vector<unsigned>* cols,
                             const std::vector<double>* scalingValues, bool isModifiedHHT) override;
    MBS_ResultFileManager* createResultFileManager(IO_DataModelBlock* block) override;

    void resetModel() override;
    void exchangeHistory(MBS_History* history) override;
    void modifyModelElement(IO_DataModelBlock* block) override;
    void getDataModelOfObject(P* q, IO_DataModelBlock* block) override;

    void updateMeasures(double t, const P* q, const P* qd, const P* qdd) override;
    double getMeasureValueByLabel(const std::string* label) override;
    double getMeasureValue(unsigned index) override;
    void getMeasure_q(const std::string* label, double t, const P* q, const P* qd, const P* qdd,
                      const C* multipliers, unsigned bodyIndex, double* out) override;
    void getMeasureLabel(unsigned index, std::string* label) override;
    unsigned getNumOfMeasures() const override;
    void getCurrentMeasureResultFileBlock(const P* q, std::vector<double*>* blocks) override;

    void updateMatricesForEquationOfMotion(double t, const P* q, const P* qd, const P* qdd) override;
    void updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(double t, const P* q, const P* qd,
                                                                         const P* qdd, C* out) override;
    void updateMatricesForJacobian(double t, const P* q, const P* qd, const P* qdd,
                                   const C* multipliers) override;
    void setTimeOfLastSuccessfulStep(double t) override;
    void updateForKinematicSolverAndComputeBbar(const P* q, P* out, C* residual) override;

    void getAccInertiaForces(const P* qdd, P* out) override;
    void getVelInertiaForces(const P* q, const P* qd, P* out) override;
    void getElasticForces(const P* q, P* out) override;
    void getDampingForces(const P* qd, P* out) override;
    void getConstraintForces(const C* multipliers, P* out) override;
    void getExternalForces(double t, const P* q, const P* qd, const P* qdd, P* out) override;
    void getExternalForcesDPar(double t, const P* q, const P* qd, const P* qdd, const std::string* label,
                               P* out) override;
    void getMqddDqTimesW(const P* w, P* out) override;
    void getVelInertiaForcesDqTimesW(const P* w, P* out) override;
    void getExternalForcesDqTimesW(const P* w, P* out) override;
    void getConstraintForceDqTimesW(const P* w, P* out) override;

    void getAndUpdateConstraints(double t, const P* q, const P* qd, const P* qdd, C* out) override;
    void getCqdT_Mult_Qd(const P* q, const P* qd, const P* qdd, C* out) override;
    void get_C_t(double t, const P* q, const P* qd, const P* qdd, C* out) override;
    void get_C_t_order2(double t, const P* q, const P* qd, const P* qdd, C* out) override;

    void copyInitialDataIntoPhysicalDofVector(P* q, P* qd) override;
    unsigned getNumOfTransDofOfBody(unsigned bodyIndex) const override;
    unsigned getNumOfRotDofOfBody(unsigned bodyIndex) const override;
    unsigned getNumOfFlexDofOfBody(unsigned bodyIndex) const override;
    void getOmegaOfFlexDof(unsigned bodyIndex, MBM_DenseStandAloneVector* omega) override;
    unsigned getNumOfInnerConstraintDofOfBody(unsigned bodyIndex) const override;
    unsigned getNumOfExternalConstraints() const override;
    unsigned getNumOfConstraintDofOfConstraint(unsigned constraintIndex) const override;
    std::string getConstraintID(unsigned constraintIndex) const override;
    unsigned getNumOfExternalForces() const override;
    unsigned getNumOfDataObjects() const override;
    unsigned getNumOfBodies() const override;
    unsigned getNumOfFlexBodies() const override;
    unsigned getNumOfZeroInertiaRigidBodies() const override;
    unsigned getNumOfActors() const override;
    bool isFinalStateReached() override;
    void getCurrentStateResultFileBlock(const P* q, std::vector<double*>* blocks) override;
    void getCurrentConstraintStateResultFileBlock(const P* q, std::vector<double*>* blocks) override;

  private:
    void getNormResiduals(const P* q, C* out);
    /// Actor or, of any other kind, data object of a block's UUID; null if there is none.
    MBS_ModelObject* getObjectOfBlock(const IO_DataModelBlock* block) const;

    std::vector<std::unique_ptr<MBS_Body>> bodies;
    std::vector<std::shared_ptr<MBS_BodyGroup>> bodyGroups;
    std::vector<MBS_Body*> flexBodies;
    std::unordered_map<std::string, MBS_Body*> bodyByUUID; // first body of a UUID wins
    std::vector<std::unique_ptr<MBS_Actor>> actors;
    std::vector<std::unique_ptr<MBS_ExtConstraint>> constraints;
    std::vector<std::shared_ptr<MBS_ConstraintGroup>> constraintGroups;
    std::vector<MBS_ExtConstraint*> jointsForResults;
    std::vector<std::unique_ptr<MBS_Force>>
        forces; // destroyed before the constraints, these before the bodies
    std::vector<std::unique_ptr<MBS_Measure>> measures;
    std::unordered_map<std::string, MBS_Measure*> measureByLabel; // first measure of a label wins
    std::vector<std::string> dataObjectUUIDs;
    std::vector<std::unique_ptr<MBS_DataObject>> dataObjects; // parallel to their UUIDs; may hold nulls
    std::unordered_map<std::string, MBS_DataObject*> dataObjectByLabel; // first one of a label wins
};

} // namespace velmora
