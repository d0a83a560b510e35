#include "tests/support/ModelFixture.h"

#include <gmock/gmock.h>

namespace velmora::test {
namespace {

using Builder = ModelFixture;

/// One faulty block and the builder's text behind the block's prefix.
struct Refusal {
    const char* kind;
    const char* type;
    std::vector<std::pair<const char*, const char*>> keys;
    std::string text;
};

class Refusals : public Builder, public testing::WithParamInterface<Refusal> {};

TEST_P(Refusals, SayWhatIsWrong) {
    addRigidBody(data, "a");
    const Refusal& row = GetParam();
    IO_DataModelBlock* block = data.addBlock(row.kind, row.type, "u", "u", "");
    block->lineNumber = 9;
    for (const auto& [key, value] : row.keys)
        block->addKeyValue(key, value);
    build();
    const std::string message =
        row.text.empty() ? ""
                         : "In Block <" + std::string(row.kind) + "> prior to line number 9:\n" + row.text;
    EXPECT_EQ(model->getErrorString(), message.empty() ? "" : "\n" + message);
    EXPECT_EQ(takeMessages(), message.empty() ? "" : message + "\n");
    EXPECT_EQ(model->getNumOfBodies(), 1u); // the rest of the model is there
}

std::string missing(const std::string& key) {
    return "ERROR: Key <" + key + "> not found in read list of keys! Please check your input file!\n";
}

const std::string bodyIDsMissing = missing("BodyIDs");

INSTANTIATE_TEST_SUITE_P(
    BodiesForcesActors, Refusals,
    testing::Values(
        Refusal{"Body", "Rigid", {}, "ERROR: Type of body: Rigidnot valid!\n"},
        Refusal{"Force", "gravity", {}, "ERROR: Type of force: gravity not valid!\n"},
        Refusal{"Force", "GenericForce", {}, bodyIDsMissing + missing("ForceExpression") + "\n"},
        Refusal{
            "Force",
            "GenericTorque",
            {{"BodyIDs", "a, 0"}, {"TorqueExpression", "meaval[x]"}},
            "ERROR: Please check the expression after <TorqueExpression>\nMeasure <x> not found in model! "
            "Check for typos like disp_X instead of dispX, etc!\n\n"},
        Refusal{"Force", "ExternalSubroutine", {}, bodyIDsMissing + missing("ForceDirectionType") + "\n"},
        Refusal{"Force", "TireForce", {}, ""}, Refusal{"Force", "ModalForceSubroutine", {}, ""},
        Refusal{"Actor", "Kinematic", {}, "ERROR: Type of actor: Kinematic not valid!\n"},
        Refusal{"Actor", "KinematicActor", {}, missing("BodyID4Actor") + "\n"},
        Refusal{"DataObject", "Parameter", {}, missing("InitialValue")}, Refusal{"Other", "anything", {}, ""},
        Refusal{"Force",
                "Gravity",
                {{"GravityAccVector", "0, 0"}},
                "ERROR: In definition of key <GravityAccVector>: \nWrong number of arguments in (double 3 "
                "parameters required)!\nPlease check <0, 0> for typos! Delimiter: <, >\n"}));

const char* const wrongGroundMeasure =
    "ERROR: Check BodyIDs, either Body-Ground or Body-Body Measure is valid\n";

INSTANTIATE_TEST_SUITE_P(
    Measures, Refusals,
    testing::Values(
        Refusal{"Measure", "Speed", {}, bodyIDsMissing + "\n"},
        Refusal{"Measure", "Speed", {{"BodyIDs", "0, a"}}, wrongGroundMeasure},
        Refusal{"Measure", "Speed", {{"BodyIDs", "a, 0"}}, "ERROR: Type of measure: Speed not valid!\n"},
        Refusal{"Measure", "EP", {{"BodyIDs", "a, a"}}, "ERROR: Second BodyID must be 0!\n"},
        Refusal{"Measure",
                "EP",
                {{"BodyIDs", "a, 0"}},
                missing("EulerParameterIndex") + missing("IsStateMeasure")},
        Refusal{"Measure",
                "Translational",
                {{"BodyIDs", "a, 0"}, {"MeasureMode", "speed"}, {"MeasureCoordinate", "X"}},
                "ERROR: MeasureMode <speed> not valid!\n"},
        Refusal{"Measure",
                "Translational",
                {{"BodyIDs", "a , 0"}, {"MeasureMode", "acc"}, {"MeasureCoordinate", "XYZ"}},
                "ERROR: MeasureCoordinate <XYZ> not valid!\n"},
        Refusal{"Measure",
                "Translational",
                {{"BodyIDs", "a, b"}, {"MeasureMode", "acc"}, {"MeasureCoordinate", "X"}},
                "ERROR: Combination of MeasureMode <acc> and MeasureCoordinate <X> not valid!\n"},
        Refusal{"Measure",
                "Translational",
                {{"BodyIDs", "a, b"}, {"MeasureMode", "vel"}, {"MeasureCoordinate", "XYZ"}},
                "ERROR: Body2 not found using bodyID: b!\n"},
        Refusal{"Measure",
                "Rotational",
                {{"BodyIDs", "a, b"}, {"MeasureCoordinate", "LocalAngleVel"}},
                "ERROR: MeasureCoordinate <LocalAngleVel> not valid!\n"},
        Refusal{"Measure", "FlexTranslational", {{"BodyIDs", "a, b"}, {"MeasureMode", "x"}}, ""},
        Refusal{"Measure",
                "FlexTranslational",
                {{"BodyIDs", "a, 0"}, {"MeasureMode", "x"}},
                "ERROR: MeasureMode <x> not valid!\n"}));

INSTANTIATE_TEST_SUITE_P(
    Constraints, Refusals,
    testing::Values(
        Refusal{"Constraint", "Generic", {}, bodyIDsMissing + "\n"},
        Refusal{
            "Constraint", "Hinge", {{"BodyIDs", "a, 0"}}, "ERROR: Type of constraint <Hinge> not valid!\n"},
        Refusal{"Constraint",
                "Generic",
                {{"BodyIDs", "0, a"}, {"dxFixed", "yes"}},
                "ERROR: Check BodyIDs, either Body-Ground or Body-Body Constraint is valid\n"},
        Refusal{"Constraint",
                "Generic",
                {{"BodyIDs", "a, 0"}, {"azFixed", "on"}},
                "ERROR: In definition of key <azFixed>: \nNot able to convert < on> to bool value!\n\n\n\n"},
        Refusal{"Constraint", "Generic", {{"BodyIDs", "a, 0"}}, ""},
        Refusal{"Constraint",
                "Generic",
                {{"BodyIDs", "x, a"}, {"dzFixed", "yes"}, {"azFixed", "yes"}},
                "ERROR: Body1 not found using bodyID: x!\n"},
        Refusal{"Constraint",
                "Generic",
                {{"BodyIDs", "a, 1"}, {"dzFixed", "yes"}},
                "ERROR: Body2 not found using bodyID: 1!\n"},
        Refusal{"Constraint",
                "Generic",
                {{"BodyIDs", "a, a"}, {"azFixed", "yes"}},
                "ERROR: Body1 and Body2 are the same body: a!\n"},
        Refusal{"Constraint", "Gear", {{"BodyIDs", "0, a"}}, "ERROR: Body1 not found using bodyID: 0!\n"},
        Refusal{"Constraint",
                "TimeMotion",
                {{"BodyIDs", "a, 0"}},
                missing("PointOfApplication_Body1") + missing("Measure") + missing("MotionExpression")},
        Refusal{"Constraint",
                "Gear",
                {{"BodyIDs", "a, 0"}},
                "ERROR: Gear-Constraint can only be defined between two rigid bodies!\n"},
        Refusal{"Constraint",
                "FixRiBoFleBo",
                {{"BodyIDs", "a, none"}},
                "ERROR: please provide valid body IDs!\n"},
        Refusal{"Constraint",
                "FixRiBoFleBo",
                {{"BodyIDs", "a, a"}},
                "ERROR: second body ID must be a flexible body!\n"}));

TEST_F(Builder, UnknownTypeOfDataObjectIsThrown) {
    data.addBlock("DataObject", "Table", "u", "u", "")->lineNumber = 4;
    std::string thrown;
    try {
        build();
    } catch (const std::string& text) {
        thrown = text;
    }
    EXPECT_EQ(thrown, "In Block <DataObject> prior to line number 4:\n"
                      "ERROR: Type of DataObject: Table not valid!\n");
}

// A body with errors is left out; its text stands on the road twice, as the body's own and as the builder's.
TEST_F(Builder, FaultyBodyIsReportedAndLeftOut) {
    addRigidBody(data, "a", {{"Mass", "heavy"}, {"Inertia", "1, 2"}})->lineNumber = 3;
    addRigidBody(data, "b");
    EXPECT_EQ(build().getNumOfBodies(), 1u);
    const std::string prefix = "In Block <Body> prior to line number 3:\n";
    const std::string errors =
        prefix + "ERROR: In definition of key <Mass>: \nNot able to convert < heavy> to double value!"
                 "\n\n\nERROR: In definition of key <Inertia>: \nWrong number of arguments in (double 3 "
                 "parameters required)!\nPlease check <1, 2> for typos! Delimiter: <, >\n";
    EXPECT_EQ(model->getErrorString(), "\n" + errors + "\n" + errors + "ERROR: " + errors + "!\n");
    takeMessages();
}

TEST_F(Builder, CountersAndNamesOfSoundModels) {
    EXPECT_EQ(MBS_Model::makeModel(nullptr, &output), nullptr);
    EXPECT_TRUE(build().isFinalStateReached());
    EXPECT_EQ(model->getNumOfAllDofInModel(), 0u);
    addRigidBody(data, "a");
    addRigidBody(data, "b", {{"Mass", "0"}});
    addBlock(data, "Force", "Gravity", "g", {{"GravityAccVector", "0, 0, -9.81"}});
    build();
    EXPECT_FALSE(model->isErrorOccured());
    EXPECT_EQ(model->getNumOfPhysicalDof(), 14u);
    EXPECT_EQ(model->getNumOfInnerConstraintDof(), 2u);
    EXPECT_EQ(model->getNumOfAllDofInModel(), 16u);
    EXPECT_EQ(model->getNumOfExternalForces(), 1u);
    EXPECT_EQ(model->getNumOfZeroInertiaRigidBodies(), 1u);
    EXPECT_EQ(model->getNumOfRotDofOfBody(1), 4u);
    EXPECT_EQ(model->getNumOfRotDofOfBody(2), 0u);
    EXPECT_EQ(model->getConstraintID(0), "");
    std::string name;
    model->getModelName(&name);
    EXPECT_EQ(name, "test model");
    EXPECT_EQ(model->getClassName(), "MBS_InternalModel");
}

TEST_F(Builder, VocabularyNamesEveryTypeOnce) {
    std::vector<std::string> names;
    for (const MBS_BlockTypeInfo& row : MBS_getBlockVocabulary())
        names.push_back(std::string(row.kind) + "/" + row.type);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end());
    EXPECT_THAT(names,
                testing::IsSupersetOf({"Body/Rigid_EulerParameter_PAI", "Force/Gravity", "Constraint/Gear"}));
}

} // namespace
} // namespace velmora::test
