#include "velmora/model/internal/MBS_ModelBuilder.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/bodies/MBS_BodyTypes.h"
#include "velmora/constraints/MBS_ConstraintTypes.h"
#include "velmora/constraints/MBS_ExtConstraint.h"
#include "velmora/data_objects/MBS_DataObject.h"
#include "velmora/data_objects/MBS_DataObjectTypes.h"
#include "velmora/external_forces/MBS_ExternalForceTypes.h"
#include "velmora/forces/MBS_Force.h"
#include "velmora/forces/MBS_ForceTypes.h"
#include "velmora/io/IO_DataModel.h"
#include "velmora/measures/MBS_Actor.h"
#include "velmora/measures/MBS_Measure.h"
#include "velmora/measures/MBS_MeasureTypes.h"
#include "velmora/model/internal/MBS_InternalModel.h"

#include <algorithm>
#include <array>

namespace velmora {

namespace {

template <class Row>
const Row* findType(std::span<const Row> rows, const std::string& type) {
    const auto found = std::ranges::find_if(rows, [&](const Row& row) { return type == row.type; });
    return found == rows.end() ? nullptr : &*found;
}

/// Null if nothing measures this.
const MBS_MeasureChoice* findMeasure(const std::string& type, bool isToGround, const std::string& mode,
                                     const std::string& coordinate) {
    const auto rows = MBS_measureChoices();
    const auto found = std::ranges::find_if(rows, [&](const MBS_MeasureChoice& row) {
        return row.type == type && row.isToGround == isToGround && row.mode == mode &&
               row.coordinate == coordinate;
    });
    return found == rows.end() ? nullptr : &*found;
}

std::string errorTextOf(const IO_DataModelBlock& block) {
    std::string text;
    block.getErrorString(&text);
    return text;
}

} // namespace

void MBS_ModelBuilder::buildAll() {
    using Step = void (MBS_ModelBuilder::*)(Block&);
    const std::array<std::pair<const char*, Step>, 6> steps = {{
        {"DataObject", &MBS_ModelBuilder::buildDataObject},
        {"Body", &MBS_ModelBuilder::buildBody},
        {"Measure", &MBS_ModelBuilder::buildMeasure},
        {"Constraint", &MBS_ModelBuilder::buildConstraint},
        {"Force", &MBS_ModelBuilder::buildForce},
        {"Actor", &MBS_ModelBuilder::buildActor},
    }};
    for (const auto& [kind, build] : steps) {
        for (std::size_t i = 0; i < data.blocks.size(); ++i)
            if (data.blockKinds[i] == kind && data.blocks[i])
                (this->*build)(*data.blocks[i]);
        if (build == &MBS_ModelBuilder::buildBody)
            model.groupBodies(); // whatever comes later keeps pointers into them
        if (build == &MBS_ModelBuilder::buildConstraint)
            model.groupConstraints();
    }
}

void MBS_ModelBuilder::refuse(const Block& block, const std::string& text) {
    model.reportError(errorTextOf(block) + text);
}

void MBS_ModelBuilder::refuseUnavailable(Block& block, const std::string& what) {
    refuse(block, "ERROR: Type of " + what + ": " + block.type + " is not available in this build!\n");
}

bool MBS_ModelBuilder::reportReadErrors(Block& block) {
    if (!block.isErrorOccured())
        return false;
    refuse(block, "\n");
    return true;
}

bool MBS_ModelBuilder::readBodyIDs(Block& block, std::vector<std::string>& ids) {
    block.getValue("BodyIDs", &ids);
    if (reportReadErrors(block))
        return false;
    ids.resize(std::max<std::size_t>(ids.size(), 2));
    return true;
}

void MBS_ModelBuilder::buildDataObject(Block& block) {
    model.announceDataObject(block.uuid);
    const MBS_DataObjectType* row = findType(MBS_dataObjectTypes(), block.type);
    if (!row)
        throw errorTextOf(block) + "ERROR: Type of DataObject: " + block.type + " not valid!\n";
    auto dataObject = row->create(&block, &model);
    model.addDataObject(dataObject->isErrorOccured() ? nullptr : std::move(dataObject));
}

void MBS_ModelBuilder::buildBody(Block& block) {
    const MBS_BodyType* row = findType(MBS_bodyTypes(), block.type);
    if (!row)
        return refuse(block, "ERROR: Type of body: " + block.type + "not valid!\n");
    if (!row->create)
        return refuseUnavailable(block, "body");
    auto body = row->create(&block, &model, model.getNumOfBodies());
    if (body->isErrorOccured())
        return refuse(block, "ERROR: " + body->getErrorString() + "!\n");
    model.addBody(std::move(body));
}

void MBS_ModelBuilder::buildMeasure(Block& block) {
    std::vector<std::string> ids;
    if (!readBodyIDs(block, ids))
        return;
    if (ids[0] == "0")
        return refuse(block, "ERROR: Check BodyIDs, either Body-Ground or Body-Body Measure is valid\n");
    const bool isToGround = ids[1] == "0";
    if (block.type == "Translational")
        return buildTranslationalMeasure(block, isToGround);
    if (block.type == "Rotational")
        return buildRotationalMeasure(block, isToGround);
    if (block.type == "FlexTranslational")
        return buildFlexTranslationalMeasure(block, isToGround);
    if (block.type != "EP")
        return refuse(block, "ERROR: Type of measure: " + block.type + " not valid!\n");
    if (!isToGround)
        return refuse(block, "ERROR: Second BodyID must be 0!\n");
    addMeasure(block, findMeasure(block.type, true, "", ""));
}

void MBS_ModelBuilder::addMeasure(Block& block, const MBS_MeasureChoice* choice) {
    if (!choice->create)
        return refuseUnavailable(block, "measure");
    auto measure = choice->create(&block, &model, model);
    if (!measure->isErrorOccured())
        model.addMeasure(std::move(measure));
}

void MBS_ModelBuilder::buildTranslationalMeasure(Block& block, bool isToGround) {
    std::string coordinate, mode;
    block.getValue("MeasureCoordinate", &coordinate, IO_ValueCode::String);
    block.getValue("MeasureMode", &mode, IO_ValueCode::String);
    if (reportReadErrors(block))
        return;
    if (const auto* choice = findMeasure(block.type, isToGround, mode, coordinate))
        return addMeasure(block, choice);
    if (!isToGround)
        return refuse(block, "ERROR: Combination of MeasureMode <" + mode + "> and MeasureCoordinate <" +
                                 coordinate + "> not valid!\n");
    if (findMeasure(block.type, isToGround, mode, "X")) // the mode is one of the three
        return refuse(block, "ERROR: MeasureCoordinate <" + coordinate + "> not valid!\n");
    refuse(block, "ERROR: MeasureMode <" + mode + "> not valid!\n");
}

void MBS_ModelBuilder::buildRotationalMeasure(Block& block, bool isToGround) {
    std::string coordinate;
    block.getValue("MeasureCoordinate", &coordinate, IO_ValueCode::String);
    if (const auto* choice = findMeasure(block.type, isToGround, "", coordinate))
        return addMeasure(block, choice);
    refuse(block, "ERROR: MeasureCoordinate <" + coordinate + "> not valid!\n");
}

void MBS_ModelBuilder::buildFlexTranslationalMeasure(Block& block, bool isToGround) {
    std::string mode;
    block.getValue("MeasureMode", &mode, IO_ValueCode::String);
    if (reportReadErrors(block) || !isToGround)
        return;
    if (const auto* choice = findMeasure(block.type, isToGround, mode, ""))
        return addMeasure(block, choice);
    refuse(block, "ERROR: MeasureMode <" + mode + "> not valid!\n");
}

void MBS_ModelBuilder::buildConstraint(Block& block) {
    std::vector<std::string> ids;
    if (!readBodyIDs(block, ids))
        return;
    if (block.type == "Generic")
        return buildGenericConstraint(block, ids);
    if (block.type == "FixRiBoFleBo" && !areBodiesOfWeld(block, ids))
        return;
    const MBS_ConstraintType* row = findType(MBS_constraintTypes(), block.type);
    if (!row)
        return refuse(block, "ERROR: Type of constraint <" + block.type + "> not valid!\n");
    if (block.type == "Gear" && ids[1] == "0")
        return refuse(block, "ERROR: Gear-Constraint can only be defined between two rigid bodies!\n");
    if (!row->create)
        return refuseUnavailable(block, "constraint");
    addConstraint(row->create(&block, &model, model, model.getNumOfExternalConstraints(), ids[1] == "0"),
                  true);
}

bool MBS_ModelBuilder::addConstraint(std::unique_ptr<MBS_ExtConstraint> constraint, bool isForResults) {
    if (constraint->isErrorOccured())
        return false;
    model.addConstraint(std::move(constraint), isForResults);
    return true;
}

void MBS_ModelBuilder::buildGenericConstraint(Block& block, const std::vector<std::string>& ids) {
    std::vector<const MBS_GenericFix*> fixes;
    for (const MBS_GenericFix& fix : MBS_genericFixes()) {
        bool isFixed = false;
        if (block.isKeyInBlock(fix.key))
            block.getValue(fix.key, &isFixed);
        if (isFixed)
            fixes.push_back(&fix);
    }
    if (reportReadErrors(block))
        return;
    if (ids[0] == "0")
        return refuse(block, "ERROR: Check BodyIDs, either Body-Ground or Body-Body Constraint is valid\n");
    for (const MBS_GenericFix* fix : fixes)
        if (!addConstraint(fix->create(&block, &model, model, model.getNumOfExternalConstraints(), fix->axis,
                                       ids[1] == "0"),
                           false))
            return;
}

// False, with a text, unless a rigid and a flexible body are there, in this order.
bool MBS_ModelBuilder::areBodiesOfWeld(const Block& block, const std::vector<std::string>& ids) {
    const MBS_Body* first = model.getBodyByUUID(ids[0]);
    const MBS_Body* second = model.getBodyByUUID(ids[1]);
    const char* text = nullptr;
    if (!first || !second)
        text = "ERROR: please provide valid body IDs!\n";
    else if (first->getClassName() != "MBS_RigidBody_EulerP_PAI")
        text = "ERROR: first body ID must be a rigid body!\n";
    else if (second->getClassName() != "MBS_FlexBody_Full")
        text = "ERROR: second body ID must be a flexible body!\n";
    if (text)
        refuse(block, text);
    return !text;
}

void MBS_ModelBuilder::buildForce(Block& block) {
    const MBS_ForceType* row = findType(MBS_forceTypes(), block.type);
    if (!row)
        row = findType(MBS_externalForceTypes(), block.type);
    if (!row)
        return refuse(block, "ERROR: Type of force: " + block.type + " not valid!\n");
    if (row->status == MBS_TypeStatus::CreatesNothing)
        return;
    if (!row->create)
        return refuseUnavailable(block, "force");
    auto force = row->create(&block, &model, model);
    if (!force->isErrorOccured())
        model.addForce(std::move(force));
}

void MBS_ModelBuilder::buildActor(Block& block) {
    if (block.type != "KinematicActor")
        return refuse(block, "ERROR: Type of actor: " + block.type + " not valid!\n");
    auto actor = std::make_unique<MBS_Actor>(&block, &model, model);
    if (!actor->isErrorOccured())
        model.addActor(std::move(actor));
}

} // namespace velmora
