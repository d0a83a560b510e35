#include "velmora/model/MBS_Model.h"

#include "velmora/io/IO_DataModel.h"
#include "velmora/io/IO_OutputManager.h"

namespace velmora {

MBS_Model::MBS_Model(const IO_DataModel* dataModel, IO_OutputManager* manager)
    : outputManager(manager),
      modelName(dataModel ? dataModel->modelName : std::string()) {}

// The root of the tree names itself; only the concrete model is told apart by its name.
std::string MBS_Model::getClassName() const {
    return "MBS_Item";
}

void MBS_Model::getModelName(std::string* name) const {
    if (name != &modelName)
        *name = modelName;
}

void MBS_Model::appendErrorString(std::string message) {
    if (outputManager)
        outputManager->writeMessage(message);
    errorString += "\n" + message;
}

void MBS_Model::appendErrorString(std::string* message) {
    if (outputManager && outputManager->messageChannel && outputManager->messageChannel->isOpen)
        outputManager->messageChannel->writeText(*message + "\n");
    errorString += *message;
}

// What a model without objects answers: nothing.
void MBS_Model::resetModel() {}
void MBS_Model::exchangeHistory(MBS_History*) {}
MBS_GlobalModelMatrix* MBS_Model::createModelRelatedMatrix(unsigned, unsigned, const std::vector<unsigned>*,
                                                           const std::vector<unsigned>*,
                                                           const std::vector<unsigned>*,
                                                           const std::vector<double>*, bool) {
    return nullptr;
}
MBS_ResultFileManager* MBS_Model::createResultFileManager(IO_DataModelBlock*) {
    return nullptr;
}
void MBS_Model::modifyModelElement(IO_DataModelBlock*) {}
void MBS_Model::getDataModelOfObject(P*, IO_DataModelBlock*) {}

void MBS_Model::updateMeasures(double, const P*, const P*, const P*) {}
void MBS_Model::updateMatricesForEquationOfMotion(double, const P*, const P*, const P*) {}
void MBS_Model::updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(double, const P*, const P*,
                                                                                const P*, C*) {}
void MBS_Model::updateMatricesForJacobian(double, const P*, const P*, const P*, const C*) {}
void MBS_Model::setTimeOfLastSuccessfulStep(double) {}
void MBS_Model::updateForKinematicSolverAndComputeBbar(const P*, P*, C*) {}

void MBS_Model::getAccInertiaForces(const P*, P*) {}
void MBS_Model::getVelInertiaForces(const P*, const P*, P*) {}
void MBS_Model::getElasticForces(const P*, P*) {}
void MBS_Model::getDampingForces(const P*, P*) {}
void MBS_Model::getConstraintForces(const C*, P*) {}
void MBS_Model::getExternalForces(double, const P*, const P*, const P*, P*) {}
void MBS_Model::getExternalForcesDPar(double, const P*, const P*, const P*, const std::string*, P*) {}
void MBS_Model::getMqddDqTimesW(const P*, P*) {}
void MBS_Model::getVelInertiaForcesDqTimesW(const P*, P*) {}
void MBS_Model::getExternalForcesDqTimesW(const P*, P*) {}
void MBS_Model::getConstraintForceDqTimesW(const P*, P*) {}

double MBS_Model::getMeasureValueByLabel(const std::string*) {
    return 0.0;
}
double MBS_Model::getMeasureValue(unsigned) {
    return 0.0;
}
void MBS_Model::getMeasure_q(const std::string*, double, const P*, const P*, const P*, const C*, unsigned,
                             double*) {}
void MBS_Model::getMeasureLabel(unsigned, std::string* label) {
    if (label)
        label->clear();
}

void MBS_Model::getAndUpdateConstraints(double, const P*, const P*, const P*, C*) {}
void MBS_Model::getCqdT_Mult_Qd(const P*, const P*, const P*, C*) {}
void MBS_Model::get_C_t(double, const P*, const P*, const P*, C*) {}
void MBS_Model::get_C_t_order2(double, const P*, const P*, const P*, C*) {}

void MBS_Model::copyInitialDataIntoPhysicalDofVector(P*, P*) {}
void MBS_Model::getOmegaOfFlexDof(unsigned, MBM_DenseStandAloneVector*) {}
unsigned MBS_Model::getNumOfTransDofOfBody(unsigned) const {
    return 0;
}
unsigned MBS_Model::getNumOfRotDofOfBody(unsigned) const {
    return 0;
}
unsigned MBS_Model::getNumOfFlexDofOfBody(unsigned) const {
    return 0;
}
unsigned MBS_Model::getNumOfInnerConstraintDofOfBody(unsigned) const {
    return 0;
}
unsigned MBS_Model::getNumOfExternalConstraints() const {
    return 0;
}
unsigned MBS_Model::getNumOfConstraintDofOfConstraint(unsigned) const {
    return 0;
}
std::string MBS_Model::getConstraintID(unsigned) const {
    return {};
}
unsigned MBS_Model::getNumOfExternalForces() const {
    return 0;
}
unsigned MBS_Model::getNumOfMeasures() const {
    return 0;
}
unsigned MBS_Model::getNumOfDataObjects() const {
    return 0;
}
unsigned MBS_Model::getNumOfBodies() const {
    return 0;
}
unsigned MBS_Model::getNumOfFlexBodies() const {
    return 0;
}
unsigned MBS_Model::getNumOfZeroInertiaRigidBodies() const {
    return 0;
}
unsigned MBS_Model::getNumOfActors() const {
    return 0;
}

bool MBS_Model::isFinalStateReached() {
    return true;
}
void MBS_Model::getCurrentStateResultFileBlock(const P*, std::vector<double*>*) {}
void MBS_Model::getCurrentMeasureResultFileBlock(const P*, std::vector<double*>*) {}
void MBS_Model::getCurrentConstraintStateResultFileBlock(const P*, std::vector<double*>*) {}

} // namespace velmora
