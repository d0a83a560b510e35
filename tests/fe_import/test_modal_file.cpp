#include "tests/support/ModalFile.h"
#include "velmora/fe_import/FeLib_AdamsMtxFileReader.h"
#include "velmora/fe_import/FeLib_FeModes.h"
#include "velmora/fe_import/FeLib_FeNodeList.h"
#include "velmora/fe_import/FeLib_FeNodeMappers.h"
#include "velmora/fe_import/FeLib_MtxContent.h"
#include "velmora/fe_import/FeLib_MtxConverter.h"
#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/matrix/MBM_Vector.h"

#include <gmock/gmock.h>

#include <fstream>

namespace velmora {
namespace {

using test::fullBlock;
using test::PointBody;
using testing::ElementsAre;

struct Reading {
    explicit Reading(const std::string& text) {
        // Tests may run side by side: each has a file of its own.
        const std::string name = std::string(testing::UnitTest::GetInstance()->current_test_info()->name());
        const std::string fileName = "read_" + name.substr(0, name.find('/')) + "_" +
                                     std::to_string(std::hash<std::string>()(text)) + ".mtx";
        std::ofstream(fileName, std::ios::binary) << text;
        FeLib_AdamsMtxFileReader reader(fileName);
        isRead = reader.readMtxFile(&content);
        error = reader.errorString;
        EXPECT_EQ(reader.isErrorOccured(), !error.empty());
        EXPECT_FALSE(reader.isOpen);
        std::remove(fileName.c_str());
    }

    bool isRead = false;
    std::string error;
    FeLib_MtxContent content;
};

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

void expectWholeBody(const FeLib_MtxContent& content) {
    const PointBody body;
    EXPECT_THAT(content.units, ElementsAre("KILOGRAM", "MILLIMETER", "SECOND", "NEWTON"));
    EXPECT_NEAR(content.mass, 3.9, 1e-15);
    EXPECT_THAT(content.centerOfMass, ElementsAre(0.0, 1e-4, 2e-4));
    ASSERT_TRUE(content.modes && content.modes->shapes && content.genStiff && content.getInvariant(9));
    EXPECT_THAT(content.modes->labels, ElementsAre(7u, 8u));
    EXPECT_FALSE(content.nodeList->isSorted);
    EXPECT_EQ(content.nodeSubset->nodes, content.nodeList->nodes);
    EXPECT_EQ(content.getInvariant(3), nullptr);
    EXPECT_EQ(content.getInvariant(6)->getValue(1, 1), 1.0);
    EXPECT_EQ(content.getInvariant(9)->rows, 12u);
    for (unsigned node = 0; node < 3; ++node) {
        EXPECT_EQ(content.nodeIndexMapper->getNodeIndex(body.labels[node]), node);
        EXPECT_EQ(content.nodeList->nodes[node]->z, PointBody::position(node)[2]);
        MBM_GeneralDenseMatrix shapes(1, 1);
        content.modes->addNodeShapes(body.labels[node], shapes);
        ASSERT_TRUE(shapes.rows == 6 && shapes.cols == 2);
        for (unsigned mode = 0; mode < 2; ++mode) {
            EXPECT_EQ(content.modes->frequencies->data[mode], PointBody::frequency(mode));
            for (unsigned c = 0; c < 3; ++c) {
                EXPECT_EQ(shapes.getValue(c, mode), PointBody::shape(node, mode)[c]);
                EXPECT_EQ(shapes.getValue(3 + c, mode), PointBody::turn(node, mode)[c]);
            }
        }
    }
}

class Writings : public testing::TestWithParam<std::string> {};

TEST_P(Writings, GiveTheSameBody) {
    const Reading reading(GetParam());
    EXPECT_TRUE(reading.isRead);
    EXPECT_EQ(reading.error, "");
    expectWholeBody(reading.content);
}

std::string shuffledFile() {
    auto blocks = PointBody().blocks();
    std::swap(blocks[1], blocks.back()); // the modes are complete with the last block
    std::string text = "ADAMSMAT2 KILOGRAM MILLIMETER SECOND NEWTON\n1\nNames\n";
    for (const auto& block : blocks)
        text += "! a comment, then a block\n\n SELNOD behind a blank\n" + block.second;
    return text;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Writings,
    testing::Values(PointBody().file(), replaced(PointBody().file(), "\n", "\r\n"),
                    replaced(PointBody().file(), " FULL ", "   FULL  "),
                    replaced(PointBody().file(), " )", "   )"),
                    replaced(PointBody().file(), "3E25.17", "5E25.17"), // three a line all the same
                    replaced(PointBody().file(), "( E25", "( 1E25"), shuffledFile(),
                    PointBody().file().substr(0, PointBody().file().size() - 1), // no line feed at the end
                    PointBody().file() + "INVAR2 FULL RORDER 1 2 2 ( 3E2.1 )\n 1 2\n"), // dropped
    [](const auto& writing) { return "case" + std::to_string(writing.index); });

TEST(ModalFile, RowsBreakAfterThreeValues) {
    const auto at = [](unsigned i, unsigned j) { return 10.0 * i + j; };
    const Reading reading("head\n1\n\n" + fullBlock("INVAR3", 3, 7, at) +
                          fullBlock("INVAR4", 7, 3, at, true) + "INVAR8 SPARSE 4 5 0 ( 2I8 E9.3 )\n" +
                          fullBlock("INVAR5", 2, 5, at, false, 5));
    EXPECT_EQ(reading.error, "");
    EXPECT_THAT(reading.content.units, ElementsAre("", "", "", ""));
    for (const unsigned number : {3u, 4u, 5u})
        for (unsigned i = 0; i < reading.content.getInvariant(number)->rows; ++i)
            for (unsigned j = 0; j < reading.content.getInvariant(number)->cols; ++j)
                EXPECT_EQ(reading.content.getInvariant(number)->getValue(i, j), at(i, j));
    EXPECT_EQ(reading.content.getInvariant(8)->getValue(3, 4), 0.0);
}

TEST(ModalFile, UnknownUnitsLeaveTexts) {
    EXPECT_THAT(Reading("ADAMSMAT2 megagram meter\n1\n\n").content.units,
                ElementsAre("MEGAGRAM", "METER", "Unit of time not valid!", "Unit of force not valid!"));
    EXPECT_THAT(Reading("ADAMSMAT2\n1\n\n").content.units,
                testing::Contains("Unit of mass not valid!").Times(1));
    EXPECT_THAT(Reading("ADAMSMAT2\n1\n\n").content.units,
                testing::Contains("Unit of length not valid!").Times(1));
    EXPECT_THAT(Reading("adamsmat2 KILOGRAM\n1\n\n").content.units, ElementsAre("", "", "", ""));
}

TEST(ModalFile, HeadsThatCannotBeRead) {
    for (const char* text : {"", "\n", "ADAMSMAT2\n", "ADAMSMAT2\n\nx\n", "ADAMSMAT2\n0\n",
                             "ADAMSMAT2\n-4\nx\n", "ADAMSMAT2\nmany\nx\n", "ADAMSMAT2\n5 NAMES\nx\n",
                             "ADAMSMAT2\n2147483647\nx\n", "ADAMSMAT2\n99999999999\nx\n"}) {
        const Reading reading(text);
        EXPECT_FALSE(reading.isRead) << text;
        EXPECT_EQ(reading.error, "FeLib_AdamsMtxFileReader: head of file not valid!") << text;
    }
    FeLib_AdamsMtxFileReader reader("no_such.mtx");
    FeLib_MtxContent content;
    EXPECT_FALSE(reader.readMtxFile(&content));
    EXPECT_EQ(reader.errorString, "ERROR: Could not open file : no_such.mtx\n");
}

TEST(ModalFile, BlocksThatCannotBeRead) {
    for (const char* block : {"INVAR1",
                              "INVAR1 FULL",
                              "INVAR1 DENSE 1 1 1 ( E4.1 )\n 1.0",
                              "INVAR1 FULL SORDER 1 1 1 ( E4.1 )\n 1.0",
                              "INVAR1 FULL RORDER 1 ( E4.1 )\n 1.0",
                              "INVAR1 FULL RORDER 1 x 1 ( E4.1 )\n 1.0",
                              "INVAR1 FULL RORDER -1 1 1 ( E4.1 )\n 1.0",
                              "INVAR1 FULL RORDER 0 1 1 ( E4.1 )\n 1.0",
                              "INVAR1 FULL RORDER 1 1 1 ( )\n 1.0",
                              "INVAR1 FULL RORDER 1 1 1 ( E4.1)\n 1.0",
                              "INVAR1 FULL RORDER 1 1 1 ( F4.1 )\n 1.0",
                              "INVAR1 FULL RORDER 1 1 1 ( E41 )\n 1.0",
                              "INVAR1 FULL RORDER 1 1 1 ( 0E4.1 )\n 1.0",
                              "INVAR1 FULL RORDER 1 1 1 ( 1PE4.1 )\n 1.0",
                              "INVAR1 FULL RORDER 1 1 1 ( E0.1 )\n 1.0",
                              "INVAR1 FULL RORDER 1 1 1 ( E-4.1 )\n 1.0",
                              "INVAR1 FULL RORDER 1 1 1 ( E2000000000.1 )\n 1.0",
                              "INVAR1 FULL RORDER 1 1 1 ( E4.1 )\n1.0",
                              "INVAR1 FULL RORDER 1 1 1 ( E4.1 )\n",
                              "INVAR1 FULL RORDER 2 1 2 ( E4.1 )\n 1.0\n 2.",
                              "INVAR1 FULL RORDER 1 1 1 ( E4.1 )\n nan",
                              "INVAR1 FULL RORDER 1 1 1 ( E4.1 )\n inf",
                              "INVAR1 FULL RORDER 1 1 1 ( E5.1 )\n1.D+2",
                              "INVAR1 FULL RORDER 1 1 1 ( E5.1 )\n1E999",
                              "INVAR1 FULL RORDER 1 1 1 ( E4.1 )\n    ",
                              "INVAR1 FULL RORDER 2000000000 2000000000 1 ( E1.1 )\n1",
                              "INVAR1 FULL CORDER 2147483647 1 1 ( E1.1 )\n1",
                              "INVAR1 SPARSE 2 2 ( 2I8 E4.1 )\n",
                              "INVAR1 SPARSE 2 2 -1 ( 2I8 E4.1 )\n",
                              "INVAR1 SPARSE 2 2 2 ( 2I8 E4.1 )\n       1       1 1.0\n",
                              "INVAR1 SPARSE 2000000000 2000000000 0 ( 2I8 E4.1 )\n",
                              "INVAR1 SPARSE 40000 40000 0 ( 2I8 E4.1 )\n",
                              "INVAR1 SPARSE 2 2 1 ( 2I8 E4.1 )\n       3       1 1.0\n",
                              "INVAR1 SPARSE 2 2 1 ( 2I8 E4.1 )\n       1       3 1.0\n",
                              "INVAR1 SPARSE 2 2 1 ( 2I8 E4.1 )\n       0       1 1.0\n",
                              "INVAR1 SPARSE 2 2 1 ( 2I8 E4.1 )\n       1      -1 1.0\n",
                              "INVAR5 FULL RORDER 1 2 2 ( 3E4.1 )\n 1.0 2.0 3.0",
                              "INVAR5 FULL RORDER 1 2 2 ( E4.1 )\n 1.0\n 2.0",
                              "SELNOD FULL RORDER 1 3 3 ( 3E4.1 )\n 1.0 2.0 3.0",
                              "SELNOD SPARSE 1 3 0 ( 2I8 E4.1 I8 )\n",
                              "SELNOD FULL RORDER 1 3 3 ( I8 2E4.1 I8 )\n       1 1.0 2.0 3.0",
                              "SELNOD FULL RORDER 1 4 4 ( I8 3E4.1 I8 )\n      -1 1.0 2.0 3.0",
                              "SELNOD FULL RORDER 2000000000 4 4 ( I8 3E4.1 I8 )\n       1 1.0 2.0 3.0",
                              "SELMOD FULL RORDER 1 1 1 ( I8 E4.1 )\n       1 1.0",
                              "SELMOD FULL RORDER 1 2 2 ( I8 E4.1 )\n       1"}) {
        const Reading reading("ADAMSMAT2\n1\n\n" + std::string(block) + "\nR_MODE\n");
        EXPECT_FALSE(reading.isRead) << block;
        EXPECT_EQ(reading.error, std::string(block).substr(0, 6) + ": error when reading block") << block;
    }
}

TEST(ModalFile, BlocksOfModesMustFitOneAnother) {
    const auto zero = [](unsigned, unsigned) { return 0.0; };
    const auto errorWith = [](const char* name, const std::string& block) {
        const Reading reading(PointBody().file({{name, block}}));
        EXPECT_TRUE(reading.isRead);
        EXPECT_EQ(reading.content.modes, nullptr);
        return reading.error;
    };
    const std::string head = "AdamsMtxFileReader: size ";
    EXPECT_EQ(errorWith("T_MODE", fullBlock("T_MODE", 3, 7, zero)),
              head + "(columns) of block T_MODE inconsistent");
    EXPECT_EQ(errorWith("R_MODE", fullBlock("R_MODE", 3, 5, zero)),
              head + "(columns) of block R_MODE inconsistent");
    EXPECT_EQ(errorWith("T_MODE", fullBlock("T_MODE", 2, 6, zero)),
              head + "(rows) of block T_MODE inconsistent");
    EXPECT_EQ(errorWith("R_MODE", fullBlock("R_MODE", 4, 6, zero)),
              head + "(rows) of block R_MODE inconsistent");
    EXPECT_EQ(errorWith("SELNOD", ""), head + "(columns) of block T_MODE inconsistent");
    EXPECT_EQ(Reading(PointBody().file() + fullBlock("SELMOD", 3, 1, zero)).error,
              head + "(rows) of block SELMOD inconsistent");
}

// True if the file gives a body; otherwise somebody must have said why not.
bool givesBody(const std::string& text) {
    Reading reading(text);
    EXPECT_TRUE(reading.isRead || !reading.error.empty()) << text;
    if (!reading.isRead || !reading.error.empty())
        return false;
    FeLib_MtxConverter converter(&reading.content, {0.01});
    const bool isConverted = converter.convert(true, true);
    EXPECT_TRUE(isConverted || !converter.errorString.empty()) << text;
    return converter.errorString.empty() && converter.isValid();
}

TEST(ModalFile, NoPartOfAFileGivesABody) {
    const std::string whole = PointBody().file();
    EXPECT_TRUE(givesBody(whole));
    for (std::size_t length = 0; length + 1 < whole.size(); length += length % 80 < 60 ? 7 : 1)
        ASSERT_FALSE(givesBody(whole.substr(0, length))) << length;
    for (const auto& [name, block] : PointBody().blocks())
        EXPECT_EQ(givesBody(PointBody().file({{name, ""}})), name == "INVAR1" || name == "INVAR2") << name;
}

TEST(ModalFile, AnyByteMayBeWrong) {
    const std::string whole = PointBody().file();
    for (std::size_t place = 0; place < whole.size(); place += 7)
        for (const char wrong : {'9', '-', '\n', '\0'}) {
            std::string text = whole;
            text[place] = wrong;
            givesBody(text);
        }
}

TEST(NodeMappers, LabelsNeedNotBeDenseOrSorted) {
    for (const auto& labels : {std::vector<unsigned>{7, 3, 12}, {7, 3, 4000000000}}) { // table, hash map
        FeLib_FeNodeContainer list(3);
        for (const unsigned label : labels)
            list.add(std::make_unique<FeLib_FeNode>(label, 0.0, 0.0, 0.0));
        list.nodes[1]->dofFlags = {false, true, true, false, false, true};
        EXPECT_FALSE(list.isSorted);
        const FeLib_FeNodeLabel2NodeIndexMapper indices(list);
        EXPECT_EQ(indices.minLabel, 3u);
        EXPECT_EQ(indices.maxLabel, labels[2]);
        EXPECT_EQ(indices.nodeIndices.size(), labels[2] - 2u);
        for (const unsigned absent : {0u, 2u, 5u, 13u, 0xffffffffu})
            EXPECT_EQ(indices.getNodeIndex(absent), 0xffffffffu);
        EXPECT_EQ(indices.getNodeIndex(labels[2]), 2u);

        const FeLib_FeNodeDofVecPattern pattern(list);
        EXPECT_EQ(pattern.size, 15u);
        const FeLib_FeNodeLabel2DofVecIndexMapper rows(pattern, list);
        EXPECT_EQ(rows.undefinedRow, 25u);
        EXPECT_THAT(*rows.findRecord(3), ElementsAre(25, 6, 7, 25, 25, 8));
        EXPECT_THAT(*rows.findRecord(labels[2]), ElementsAre(9, 10, 11, 12, 13, 14));
        EXPECT_EQ(rows.findRecord(5), nullptr);

        FeLib_FeModes modes(list);
        auto phi = std::make_unique<MBM_GeneralDenseMatrix>(15u, 1u, 0.5);
        phi->setValue(7, 0, 2.0);
        EXPECT_TRUE(modes.setShapes(std::move(phi), {1}));
        MBM_GeneralDenseMatrix M(1, 1, 4.0);
        modes.addNodeShapes(5, M);
        EXPECT_EQ(M.getValue(0, 0), 4.0);
        modes.addNodeShapes(3, M);
        EXPECT_EQ(M.rows, 3u);
        EXPECT_EQ(M.getValue(1, 0), 2.0);
    }
    EXPECT_EQ(FeLib_FeNodeLabel2NodeIndexMapper(FeLib_FeNodeContainer(0)).nodeIndices.size(), 1u);
}

} // namespace
} // namespace velmora
