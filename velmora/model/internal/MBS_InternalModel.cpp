#include "velmora/model/internal/MBS_InternalModel.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/bodies/MBS_BodyByBodyGroup.h"
#include "velmora/constraints/MBS_ExtConstraint.h"
#include "velmora/constraints/MBS_OneByOneGroup.h"
#include "velmora/data_objects/MBS_DataObject.h"
#include "velmora/forces/MBS_Force.h"
#include "velmora/global_matrix/MBS_GlobalModelMatrix.h"
#include "velmora/io/IO_DataModel.h"
#include "velmora/measures/MBS_Actor.h"
#include "velmora/measures/MBS_Measure.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/results/MBS_ResultFileManager.h"

#include <algorithm>

// The model's structure: building, counting, looking up. What it computes stands in
// MBS_InternalModel_Evaluation.cpp.

namespace velmora {

MBS_InternalModel::MBS_InternalModel(IO_DataModel* dataModel, IO_OutputManager* manager)
    : MBS_Model(dataModel, manager) {}

MBS_InternalModel::~MBS_InternalModel() {
    forces.clear();
    constraints.clear();
    measures.clear();
    actors.clear();
    bodies.clear();
    dataObjects.clear(); // last: expressions refer to them
}

MBS_Body* MBS_InternalModel::getBodyByUUID(const std::string& uuid) const {
    const auto found = bodyByUUID.find(uuid);
    return found == bodyByUUID.end() ? nullptr : found->second;
}

void MBS_InternalModel::addBody(std::unique_ptr<MBS_Body> body) {
    bodyByUUID.emplace(body->uuid, body.get());
    if (!body->isRigidBody())
        flexBodies.push_back(body.get());
    bodies.push_back(std::move(body));
}

void MBS_InternalModel::addConstraint(std::unique_ptr<MBS_ExtConstraint> constraint, bool isForResults) {
    if (isForResults)
        jointsForResults.push_back(constraint.get());
    constraints.push_back(std::move(constraint));
}

void MBS_InternalModel::addForce(std::unique_ptr<MBS_Force> force) {
    forces.push_back(std::move(force));
}

void MBS_InternalModel::groupBodies() {
    const std::span all(bodies);
    for (std::size_t first = 0, end = 0; first < all.size(); first = end) {
        const std::string className = all[first]->getClassName();
        while (end < all.size() && all[end]->getClassName() == className)
            ++end;
        auto group = all[first]->makeGroup(all.subspan(first, end - first));
        if (!group) {
            std::vector<MBS_Body*> members;
            for (const auto& body : all.subspan(first, end - first))
                members.push_back(body.get());
            group = std::make_shared<MBS_BodyByBodyGroup>(std::move(members));
        }
        bodyGroups.push_back(std::move(group));
    }
}

void MBS_InternalModel::groupConstraints() {
    std::vector<std::pair<std::string, std::vector<MBS_ExtConstraint*>>> classes;
    for (const auto& constraint : constraints) {
        const std::string name = constraint->getClassName();
        auto found = std::ranges::find(classes, name, &decltype(classes)::value_type::first);
        if (found == classes.end())
            found = classes.insert(found, {name, {}});
        found->second.push_back(constraint.get());
    }
    for (const auto& [name, members] : classes) {
        auto group = members.front()->makeGroup(members);
        if (!group)
            group = std::make_shared<MBS_OneByOneGroup>(members);
        constraintGroups.push_back(std::move(group));
    }
}

void MBS_InternalModel::sumUpDof() {
    for (const auto& body : bodies) {
        numOfPhysicalDof += body->getNumOfDof();
        numOfInnerConstraintDof += body->numInnerConstraintDof;
    }
    for (const auto& constraint : constraints)
        numOfExternalConstraintDof += constraint->numOfConstraintDof;
    numOfAllDofInModel = numOfPhysicalDof + numOfExternalConstraintDof + numOfInnerConstraintDof;
}

MBS_GlobalModelMatrix* MBS_InternalModel::createModelRelatedMatrix(
    unsigned numBlockRows, unsigned numBlockCols, const std::vector<unsigned>* types,
    const std::vector<unsigned>* rows, const std::vector<unsigned>* cols,
    const std::vector<double>* scalingValues, bool isModifiedHHT) {
    return new MBS_GlobalModelMatrix(this, numBlockRows, numBlockCols, types, rows, cols, scalingValues,
                                     isModifiedHHT);
}

MBS_ResultFileManager* MBS_InternalModel::createResultFileManager(IO_DataModelBlock* block) {
    return new MBS_ResultFileManager(this, outputManager, block);
}

unsigned MBS_InternalModel::getNumOfTransDofOfBody(unsigned i) const {
    return i < bodies.size() ? bodies[i]->numTransDof : 0;
}
unsigned MBS_InternalModel::getNumOfRotDofOfBody(unsigned i) const {
    return i < bodies.size() ? bodies[i]->numRotDof : 0;
}
unsigned MBS_InternalModel::getNumOfFlexDofOfBody(unsigned i) const {
    return i < bodies.size() ? bodies[i]->numFlexDof : 0;
}
void MBS_InternalModel::getOmegaOfFlexDof(unsigned i, MBM_DenseStandAloneVector* omega) {
    const auto* frequencies = i < bodies.size() ? bodies[i]->getOmegaOfModes() : nullptr;
    if (!frequencies)
        return;
    omega->setSize(static_cast<unsigned>(frequencies->size()));
    std::ranges::copy(*frequencies, omega->data);
}
unsigned MBS_InternalModel::getNumOfInnerConstraintDofOfBody(unsigned i) const {
    return i < bodies.size() ? bodies[i]->numInnerConstraintDof : 0;
}

unsigned MBS_InternalModel::getNumOfExternalConstraints() const {
    return static_cast<unsigned>(constraints.size());
}
unsigned MBS_InternalModel::getNumOfConstraintDofOfConstraint(unsigned i) const {
    return i < constraints.size() ? constraints[i]->numOfConstraintDof : 0;
}
std::string MBS_InternalModel::getConstraintID(unsigned i) const {
    return i < constraints.size() ? constraints[i]->uuid : std::string();
}

unsigned MBS_InternalModel::getNumOfExternalForces() const {
    return static_cast<unsigned>(forces.size());
}
unsigned MBS_InternalModel::getNumOfDataObjects() const {
    return static_cast<unsigned>(dataObjectUUIDs.size());
}
unsigned MBS_InternalModel::getNumOfBodies() const {
    return static_cast<unsigned>(bodies.size());
}
unsigned MBS_InternalModel::getNumOfFlexBodies() const {
    return static_cast<unsigned>(
        std::ranges::count_if(bodies, [](const auto& body) { return !body->isRigidBody(); }));
}
unsigned MBS_InternalModel::getNumOfZeroInertiaRigidBodies() const {
    return static_cast<unsigned>(
        std::ranges::count_if(bodies, [](const auto& body) { return body->isZeroInertiaBody(); }));
}

} // namespace velmora
