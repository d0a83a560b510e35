#include "driver/KnownDeviations.h"

#include <velmora/velmora.h>

#include <algorithm>
#include <cctype>

namespace velmora::driver {

namespace {

using Place = EquationNames::Place;

std::string toLower(std::string text) {
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

std::string textOf(const IO_DataModelBlock& block, const char* key) {
    const auto found = std::ranges::find(block.keys, key);
    return found == block.keys.end() ? ""
                                     : block.values[static_cast<std::size_t>(found - block.keys.begin())];
}

std::vector<std::string> idsOf(const IO_DataModelBlock& block) {
    IO_DataModelBlock probe(block); // a failed read leaves its text on the block
    std::vector<std::string> ids;
    if (probe.isKeyInBlock("BodyIDs"))
        probe.getValue("BodyIDs", &ids);
    return ids;
}

std::string expressionOf(const IO_DataModelBlock& load) {
    return toLower(textOf(load, "ForceExpression") + textOf(load, "TorqueExpression"));
}

/// Why the rows of a measure may differ from what they derive; empty if they may not.
std::string findReasonInMeasure(const IO_DataModelBlock& measure) {
    const std::string coordinate = textOf(measure, "MeasureCoordinate"),
                      mode = textOf(measure, "MeasureMode");
    const std::vector<std::string> ids = idsOf(measure);
    if (mode == "acc" || coordinate == "LocalAngleVel")
        return "accelerations and local angular velocities aren't differentiated";
    if (coordinate == "Angle")
        return "rows of angles are exact while the vector lies in its plane, of unit length";
    if (mode == "disp" && coordinate != "XYZ" && ids.size() > 1 && ids[1] != "0")
        return "rows of differences in the frame of a body are exact for Euler parameters of norm 1";
    return {};
}

bool isNamedIn(const IO_DataModelBlock& load, const std::string& measure) {
    if (expressionOf(load).find("[" + measure + "]") != std::string::npos)
        return true;
    for (std::size_t k = 0; k < load.keys.size(); ++k)
        if (load.keys[k].starts_with("Measure_") && toLower(load.values[k]) == measure)
            return true;
    return false;
}

/// What a load leaves out beside its measures.
std::string findReasonInLoad(const IO_DataModelBlock& load, bool isOwnBlock) {
    const std::vector<std::string> ids = idsOf(load);
    const bool isOnOneBody = ids.size() > 1 && ids[1] == "0";
    const bool hasGlobalFrame =
        load.type == "GenericForce" ||
        (load.type == "ExternalSubroutine" && textOf(load, "ForceDirectionType") == "SpaceFixed");
    if (hasGlobalFrame && isOnOneBody && isOwnBlock)
        return "a force on one body has blocks for measured bodies alone";
    if (load.type == "RigidContact" && toLower(textOf(load, "IsNumericJacobiRequired")) == "no")
        return "the contact is told to leave its derivatives out";
    return {};
}

/// A function of one variable with a measure in its argument.
bool hasMeasureInFunction(const std::string& expression) {
    for (const char* word : {"spl[", "step["})
        for (std::size_t i = expression.find(word); i != std::string::npos;
             i = expression.find(word, i + 1)) {
            const std::size_t end = std::min(expression.find(',', i), expression.size());
            if (expression.substr(i, end - i).find("meaval[") != std::string::npos)
                return true;
        }
    return false;
}

} // namespace

KnownDeviations::KnownDeviations(IO_DataModel& dataModel, const EquationNames& equationNames)
    : names(equationNames),
      bodies(dataModel.getBlocksOfKind("Body")),
      joints(dataModel.getBlocksOfKind("Constraint")),
      loads(dataModel.getBlocksOfKind("Force")) {
    for (IO_DataModelBlock* block : dataModel.getBlocksOfKind("Measure"))
        measures.emplace(toLower(block->label), block);
}

bool KnownDeviations::isBodyOf(const IO_DataModelBlock& block, const Place& place) const {
    const std::vector<std::string> ids = idsOf(block);
    return place.kind == Place::Coordinate && place.owner < bodies.size() &&
           std::ranges::find(ids, bodies[place.owner]->uuid) != ids.end();
}

std::string KnownDeviations::findReason(unsigned code, const Place& row, const Place& col) const {
    if (code == ExternalForce_q || code == ExternalForce_qd)
        return findReasonInLoads(row, col);
    if (code == ExternalConstraintForce_q || code == ConstraintJacobian || code == ConstraintJacobianT)
        return findReasonInJoints(code, row, col);
    return {};
}

std::string KnownDeviations::findReasonInLoads(const Place& row, const Place& col) const {
    for (const IO_DataModelBlock* load : loads) {
        if (!isBodyOf(*load, row))
            continue;
        std::string reason = findReasonInLoad(*load, row.owner == col.owner && row.kind == col.kind);
        if (!reason.empty())
            return reason;
        if (hasMeasureInFunction(expressionOf(*load)))
            return "measures in the argument of a function aren't reached";
        for (const auto& [label, measure] : measures) {
            if (!isBodyOf(*measure, col) || !isNamedIn(*load, label))
                continue;
            reason = findReasonInMeasure(*measure);
            if (!reason.empty())
                return reason;
        }
    }
    return {};
}

std::string KnownDeviations::findReasonInJoints(unsigned code, const Place& row, const Place& col) const {
    if (row.kind == Place::Constraint) {
        const IO_DataModelBlock* joint = names.getConstraintBlock(row.owner);
        return joint ? findReasonInJoint(code, *joint) : "";
    }
    for (const IO_DataModelBlock* joint : joints) {
        if (!isBodyOf(*joint, col) || !isBodyOf(*joint, row))
            continue;
        std::string reason = findReasonInJoint(code, *joint);
        if (!reason.empty())
            return reason;
    }
    return {};
}

std::string KnownDeviations::findReasonInJoint(unsigned code, const IO_DataModelBlock& joint) const {
    if (joint.type == "Gear" && code == ExternalConstraintForce_q)
        return "a gear that starts turned has no second derivatives";
    if (joint.type == "FixRiBoFleBo" && code == ExternalConstraintForce_q)
        return "a weld to a flexible body has no second derivatives";
    if (joint.type != "TimeMotion")
        return {};
    const auto found = measures.find(toLower(textOf(joint, "Measure")));
    return found == measures.end() ? "" : findReasonInMeasure(*found->second);
}

} // namespace velmora::driver
