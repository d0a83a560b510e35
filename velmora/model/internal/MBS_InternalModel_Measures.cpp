#include "velmora/bodies/MBS_Body.h"
#include "velmora/constraints/MBS_ExtConstraint.h"
#include "velmora/data_objects/MBS_DataObject.h"
#include "velmora/forces/MBS_Force.h"
#include "velmora/io/IO_DataModelBlock.h"
#include "velmora/io/StringHelpers.h"
#include "velmora/measures/MBS_Actor.h"
#include "velmora/measures/MBS_Measure.h"
#include "velmora/model/FetchAhead.h"
#include "velmora/model/internal/MBS_InternalModel.h"

#include <algorithm>

// Measures, actors and data objects: what users name by labels, read as numbers and change between steps.

namespace velmora {

namespace {

/// What the index gives for a label in any case of letters; null if nothing has it.
template <class Object>
Object* findByLabel(const std::unordered_map<std::string, Object*>& index, std::string label) {
    toLowerCase(label);
    const auto found = index.find(label);
    return found == index.end() ? nullptr : found->second;
}

} // namespace

void MBS_InternalModel::addMeasure(std::unique_ptr<MBS_Measure> measure) {
    measureByLabel.emplace(measure->label, measure.get());
    measures.push_back(std::move(measure));
}

void MBS_InternalModel::addDataObject(std::unique_ptr<MBS_DataObject> dataObject) {
    if (dataObject)
        dataObjectByLabel.emplace(dataObject->label, dataObject.get());
    dataObjects.push_back(std::move(dataObject));
}

void MBS_InternalModel::addActor(std::unique_ptr<MBS_Actor> actor) {
    actors.push_back(std::move(actor));
}

unsigned MBS_InternalModel::getNumOfActors() const {
    return static_cast<unsigned>(actors.size());
}

// One step of one actor at a time: the actors move one after the other.
bool MBS_InternalModel::isFinalStateReached() {
    return std::ranges::all_of(actors, [](const auto& actor) { return actor->isFinalStateReached(); });
}

MBS_Measure* MBS_InternalModel::getMeasureByLabel(const std::string& label) const {
    return findByLabel(measureByLabel, label);
}

MBS_DataObject* MBS_InternalModel::getDataObjectByLabel(const std::string& label) const {
    return findByLabel(dataObjectByLabel, label);
}

MBS_ModelObject* MBS_InternalModel::getObjectOfBlock(const IO_DataModelBlock* block) const {
    if (!block)
        return nullptr;
    if (block->kind == "Actor") {
        const auto actor = std::ranges::find(actors, block->uuid, &MBS_Actor::uuid);
        return actor == actors.end() ? nullptr : actor->get();
    }
    const auto found = std::ranges::find(dataObjectUUIDs, block->uuid);
    if (found == dataObjectUUIDs.end())
        return nullptr;
    return dataObjects[static_cast<std::size_t>(found - dataObjectUUIDs.begin())].get();
}

void MBS_InternalModel::modifyModelElement(IO_DataModelBlock* block) {
    if (MBS_ModelObject* object = getObjectOfBlock(block))
        object->modifyModelElement(block);
}

void MBS_InternalModel::getDataModelOfObject(P* q, IO_DataModelBlock* block) {
    if (MBS_ModelObject* object = getObjectOfBlock(block))
        object->getDataModelOfObject(q, block);
}

void MBS_InternalModel::resetModel() {
    for (const auto& measure : measures)
        measure->resetCount();
    for (const auto& constraint : constraints)
        constraint->resetStartPolynomial();
}

void MBS_InternalModel::exchangeHistory(MBS_History* history) {
    const auto visit = [&](const auto& objects) {
        for (const auto& object : objects)
            if (object)
                object->exchangeHistory(*history);
    };
    visit(dataObjects);
    visit(bodies);
    visit(measures);
    visit(constraints);
    visit(forces);
    visit(actors);
}

void MBS_InternalModel::updateMeasures(double t, const P* q, const P* qd, const P* qdd) {
    constexpr std::size_t distance = 8, measureBytes = 384; // what most measures read of themselves
    for (std::size_t i = 0; i < measures.size(); ++i) {
        if (i + distance < measures.size())
            fetch(measures[i + distance].get(), measureBytes);
        measures[i]->updateMeasure(t, q, qd, qdd);
    }
}

double MBS_InternalModel::getMeasureValueByLabel(const std::string* label) {
    const MBS_Measure* measure = label ? getMeasureByLabel(*label) : nullptr;
    return measure ? measure->measureValue : 0.0;
}

double MBS_InternalModel::getMeasureValue(unsigned index) {
    return index < measures.size() ? measures[index]->measureValue : 0.0;
}

void MBS_InternalModel::getMeasure_q(const std::string* label, double t, const P* q, const P* qd,
                                     const P* qdd, const C* multipliers, unsigned bodyIndex, double* out) {
    MBS_Measure* measure = label ? getMeasureByLabel(*label) : nullptr;
    if (!measure || !out || bodyIndex >= bodies.size())
        return;
    const std::span row(out, bodies[bodyIndex]->getNumOfDof());
    std::ranges::fill(row, 0.0); // some measures leave their row
    measure->getMeasure_q(t, q, qd, qdd, multipliers, bodyIndex, row);
}

void MBS_InternalModel::getMeasureLabel(unsigned index, std::string* label) {
    if (label)
        *label = index < measures.size() ? measures[index]->label : std::string();
}

unsigned MBS_InternalModel::getNumOfMeasures() const {
    return static_cast<unsigned>(measures.size());
}

void MBS_InternalModel::getCurrentMeasureResultFileBlock(const P*, std::vector<double*>* blocks) {
    for (std::size_t i = 0; i < measures.size(); ++i)
        *(*blocks)[i] = measures[i]->measureValue;
}

} // namespace velmora
