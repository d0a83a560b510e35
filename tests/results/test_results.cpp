#include "tests/support/FlexibleBody.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

namespace velmora::test {
namespace {

std::vector<std::string> linesOf(const std::string& name) {
    std::vector<std::string> lines;
    std::ifstream file(name);
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

const std::string dashes(35, '-');

class Results : public ModelFixture {
  protected:
    Results() {
        for (const char* extension : {"srf", "vrf", "arf", "frf", "crf", "lrf", "mrf"})
            std::filesystem::remove(std::string("test.") + extension);
        addRigidBody(data, "first");
        addRigidBody(data, "second");
    }

    std::unique_ptr<MBS_ResultFileManager> makeManager(Keys keys) {
        IO_DataModel other("results");
        return std::unique_ptr<MBS_ResultFileManager>(
            model->createResultFileManager(addBlock(other, "Results", "", "r", keys)));
    }

    /// Times at which a record is written, among those asked for.
    std::vector<double> recordTimes(MBS_ResultFileManager& manager, const std::vector<double>& asked) {
        MBS_ModelPhysicalDofVector q(model.get()), qd(q), qdd(q);
        MBS_ModelConstraintDofVector lambda(model.get());
        model->copyInitialDataIntoPhysicalDofVector(&q, &qd);
        model->updateMatricesForEquationOfMotion(0.0, &q, &qd, &qdd);
        std::fill_n(qdd.dofVector->data, qdd.getNumOfDof(), 0.25);
        std::fill_n(lambda.dofVector->data, lambda.getNumOfConstraints(), -2.5);
        std::vector<double> written;
        for (const double t : asked)
            if (manager.writeResultsToFile(t, &q, &qd, &qdd, &lambda))
                written.push_back(t);
        return written;
    }
};

TEST_F(Results, FilesHaveHeaderTopologyAndRecords) {
    build();
    {
        const auto manager = makeManager({{"WriteStateResultFile", "yes"},
                                          {"WriteVelocityResultFile", "YES"},
                                          {"WriteAccelerationResultFile", "yes"},
                                          {"WriteForceResultFile", "yes"},   // no force: no file
                                          {"WriteMeasureResultFile", "yes"}, // no measure: no file
                                          {"WriteConstraintForceResultFile", "no"}});
        EXPECT_FALSE(manager->isErrorOccured());
        EXPECT_EQ(recordTimes(*manager, {0.5, 0.5}).size(), 2u); // no schedule: every call writes
    }
    const std::vector<std::string> lines = linesOf("test.vrf");
    ASSERT_EQ(lines.size(), 24u);
    EXPECT_THAT(std::vector(lines.begin(), lines.begin() + 4),
                testing::ElementsAre(dashes, "Velmora Version", dashes, "0.1.0"));
    EXPECT_THAT(std::vector(lines.begin() + 5, lines.begin() + 9),
                testing::ElementsAre(dashes, "Header", dashes, "test model"));
    EXPECT_TRUE(std::regex_match(
        lines[9], std::regex("[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9]\\d \\d\\d:\\d\\d:\\d\\d \\d{4}")))
        << lines[9];
    EXPECT_THAT(std::vector(lines.begin() + 10, lines.begin() + 19),
                testing::ElementsAre("Velocity Result File (.vrf)", dashes, "Topology", dashes,
                                     "first second", dashes, "Data", dashes, "5.000000000000E-01"));
    EXPECT_THAT(lines[19], testing::StartsWith("5.000000000000E-01 2.500000000000E-01 -1.250000000000E-01 "));
    EXPECT_TRUE(lines[19].ends_with("E+00 ") || lines[19].ends_with("E-01 ")) << lines[19];
    EXPECT_EQ(lines[19], lines[20]);
    const auto numbersIn = [](const std::string& line) { return std::count(line.begin(), line.end(), ' '); };
    EXPECT_EQ(numbersIn(lines[19]), 6);
    EXPECT_EQ(numbersIn(linesOf("test.arf").back()), 6);
    EXPECT_EQ(numbersIn(linesOf("test.srf").back()), 12);
    // The rotation stands column after column.
    EXPECT_THAT(
        linesOf("test.srf").back(),
        testing::HasSubstr("3.600000000000E-01 4.800000000000E-01 -8.000000000000E-01 -8.000000000000E-01"));
    EXPECT_FALSE(std::filesystem::exists("test.frf") || std::filesystem::exists("test.mrf"));
}

TEST_F(Results, ModalCoordinatesAreWrittenAsPhysicalAmplitudes) {
    const PointBody points;
    addFlexibleBody(data, "third", writeModalFile(points.file()));
    build();
    recordTimes(*makeManager({{"WriteStateResultFile", "yes"},
                              {"WriteVelocityResultFile", "yes"},
                              {"WriteAccelerationResultFile", "yes"}}),
                {1.0});
    for (const auto& [file, count] : {std::pair("test.srf", 14), {"test.vrf", 8}, {"test.arf", 8}}) {
        const auto lines = linesOf(file);
        std::istringstream line(lines.back());
        const std::vector<double> numbers{std::istream_iterator<double>(line), {}};
        ASSERT_EQ(numbers.size(), static_cast<std::size_t>(count)) << file;
        const double coordinate = file == std::string("test.arf") ? 0.25 : 0.0;
        for (unsigned j = 0; j < 2; ++j)
            EXPECT_NEAR(numbers[numbers.size() - 2 + j], coordinate / (2.0 * M_PI * PointBody::frequency(j)),
                        1e-12);
    }
}

TEST_F(Results, ConstraintsHaveALineEach) {
    addBlock(data, "Constraint", "Generic", "support", {{"BodyIDs", "first, 0"}, {"dxFixed", "yes"}});
    addBlock(data, "Constraint", "Generic", "joint", {{"BodyIDs", "first, second"}, {"azFixed", "yes"}});
    build();
    recordTimes(*makeManager({{"WriteConstraintForceResultFile", "yes"},
                              {"WriteExtConstraintLagrangeResultFile", "yes"}}),
                {1.0});
    const auto forces = linesOf("test.crf"), multipliers = linesOf("test.lrf");
    ASSERT_EQ(forces.size(), 21u);
    EXPECT_EQ(forces[10], "Constraint Result File (.crf)");
    EXPECT_EQ(forces[14], "support joint");
    const auto numbersIn = [](const std::string& line) { return std::count(line.begin(), line.end(), ' '); };
    EXPECT_EQ(numbersIn(forces[19]), 12); // one body
    EXPECT_EQ(numbersIn(forces[20]), 24); // two bodies
    ASSERT_EQ(multipliers.size(), 21u);
    EXPECT_THAT(std::vector(multipliers.begin() + 10, multipliers.begin() + 15),
                testing::ElementsAre("External Constraints Lagrange Multipliers Result File (.lrf)", dashes,
                                     "Topology", dashes, "support joint"));
    EXPECT_THAT(std::vector(multipliers.begin() + 18, multipliers.end()),
                testing::ElementsAre("1.000000000000E+00", "-2.500000000000E+00 ", "-2.500000000000E+00 "));
}

// Values belong to the record's state, whatever the solver has updated last.
TEST_F(Results, MeasuresHaveALineEach) {
    const Keys keys = {{"BodyIDs", "second, 0"},
                       {"MeasureCoordinate", "X"},
                       {"MeasureLocation_Body1", "0.1, -0.2, 0.3"},
                       {"MeasureLocation_Body2", "0, 0, 0"}};
    for (const char* mode : {"disp", "vel"})
        addBlock(data, "Measure", "Translational", mode, keys)->addKeyValue("MeasureMode", mode);
    build();
    recordTimes(*makeManager({{"WriteMeasureResultFile", "yes"}}), {1.0});
    const auto lines = linesOf("test.mrf");
    EXPECT_THAT(std::vector(lines.begin() + 10, lines.end()),
                testing::ElementsAre("Measures Result File (.mrf)", dashes, "Topology", dashes, "disp vel",
                                     dashes, "Data", dashes, "1.000000000000E+00", "1.000000000000E-01 ",
                                     "5.000000000000E-01 "));
}

TEST_F(Results, ForcesHaveALineEachBesideGravity) {
    addBlock(data, "Force", "GenericForce", "push",
             {{"BodyIDs", "first, 0"},
              {"ForceExpression", "3"},
              {"PointOfApplication_Body1", "0.1, -0.2, 1.3"},
              {"PointOfApplication_Body2", "0, 0, 0"},
              {"ForceDirectionType", "SpaceFixed"},
              {"ForceDirection", "1, 0, 0"}});
    for (const bool hasGravity : {false, true}) {
        if (hasGravity)
            addBlock(data, "Force", "Gravity", "g", {{"GravityAccVector", "0.125, -9.8100001, 9810"}});
        build();
        output.resultKinds.clear(); // a run of its own
        {
            const auto manager = makeManager({{"WriteForceResultFile", "yes"}});
            MBS_ModelPhysicalDofVector q(model.get()), qd(q), Q(q);
            model->copyInitialDataIntoPhysicalDofVector(&q, &qd);
            model->updateMatricesForEquationOfMotion(0.0, &q, &qd, &qd);
            model->getExternalForces(0.0, &q, &qd, nullptr, &Q);
            manager->writeResultsToFile(1.0, &q, &qd, &qd, nullptr);
        }
        const auto lines = linesOf("test.frf");
        std::vector<std::string> expected = {"Force Result File (.frf)",
                                             dashes,
                                             "Gravity Off",
                                             dashes,
                                             "Topology",
                                             dashes,
                                             "push",
                                             dashes,
                                             "Data",
                                             dashes,
                                             "1.000000000000E+00"};
        if (hasGravity) {
            expected[2] = "Gravity On (with acceleration:)";
            expected.insert(expected.begin() + 3, "0.125 -9.81 9810");
        }
        ASSERT_EQ(lines.size(), 11 + expected.size());
        EXPECT_EQ(std::vector(lines.begin() + 10, lines.end() - 1), expected);
        const std::string zero = " 0.000000000000E+00";
        EXPECT_THAT(lines.back(), testing::HasSubstr(" 3.000000000000E+00" + zero + zero + " "));
        EXPECT_EQ(std::count(lines.back().begin(), lines.back().end(), ' '), 24);
    }
}

TEST_F(Results, ScheduleDecidesWhenARecordIsDue) {
    build();
    const auto manager = makeManager({{"WriteStateResultFile", "yes"},
                                      {"OutputTimeBegin", "0.0"},
                                      {"SimulationTimeEnd", "0.25"},
                                      {"OutputTimeStepSize", "0.1"}});
    EXPECT_EQ(manager->getOutputTimeStepSize(), 0.1);
    EXPECT_THAT(recordTimes(*manager, {-0.1, 0.0, 0.05, 0.1 - 5e-11, 0.15, 0.2, 0.24, 0.25}),
                testing::ElementsAre(0.0, 0.1 - 5e-11, 0.2, 0.25));
    EXPECT_EQ(manager->getNextOutputTime(), 0.25);
    EXPECT_EQ(makeManager({{"WriteStateResultFile", "no"}})->getNextOutputTime(), -1.0);
}

TEST_F(Results, SecondManagerOnOneOutputManagerAppends) {
    build();
    recordTimes(*makeManager({{"WriteStateResultFile", "yes"}}), {1.0});
    const std::size_t length = linesOf("test.srf").size();
    recordTimes(*makeManager({{"WriteStateResultFile", "yes"}}), {1.0});
    EXPECT_EQ(linesOf("test.srf").size(), length + 3);
}

TEST_F(Results, CopiesShareTheWriters) {
    build();
    auto first = makeManager({{"WriteStateResultFile", "yes"}});
    const MBS_ResultFileManager copy(*first);
    first.reset();
    MBS_ResultFileManager second(copy);
    EXPECT_EQ(recordTimes(second, {1.0}).size(), 1u);
    second.closeAllResultFiles();
    EXPECT_EQ(linesOf("test.srf").size(), 18u + 3);
}

TEST_F(Results, WhatCannotBeWrittenIsTold) {
    output.directory = "no_such_folder";
    for (const char* uuid : {"g1", "g2"}) // a second gravity counts as a force to be shown
        addBlock(data, "Force", "Gravity", uuid, {{"GravityAccVector", "0, 0, -9.81"}});
    build();
    const auto manager = makeManager({{"WriteStateResultFile", "yes"}});
    EXPECT_TRUE(manager->isErrorOccured());
    EXPECT_EQ(manager->getErrorString(),
              "ERROR: Could not open file : no_such_folder/test.srf\nCould not open result "
              "file to write. Check path and/or free disc space");
    output.directory = "";
    makeManager({{"WriteForceResultFile", "yes"}, {"OutputTimeBegin", "soon"}});
    const std::string prefix = "In Block <Results> prior to line number 0:\n";
    EXPECT_EQ(
        takeMessages(),
        prefix +
            "ERROR: In definition of key <OutputTimeBegin>: \nNot able to convert < soon> to double value!"
            "\n\n\n\n");
}

} // namespace
} // namespace velmora::test
