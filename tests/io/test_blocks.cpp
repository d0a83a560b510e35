#include "velmora/io/IO_DataModel.h"
#include "velmora/io/StringHelpers.h"

#include <gmock/gmock.h>

#include <fstream>

namespace velmora {
namespace {

using testing::ElementsAre;

const std::string prefix = "In Block <Body> prior to line number 17:\n";

class Block : public testing::Test {
  protected:
    Block() { block.lineNumber = 17; }

    /// Errors since the last call, without the prefix.
    std::string takeErrors() {
        std::string text;
        block.getErrorString(&text);
        EXPECT_EQ(text.substr(0, prefix.size()), prefix);
        block.errorString.clear();
        return text.substr(prefix.size());
    }

    IO_DataModelBlock block{"Body", "uuid", "Label", "folder"};
};

std::string failed(const std::string& text, const std::string& type) {
    return "ERROR: In definition of key <k>: \nNot able to convert < " + text + "> to " + type +
           " value!\n\n\n";
}

std::string wrongCount(const std::string& text, unsigned count) {
    return "ERROR: In definition of key <k>: \nWrong number of arguments in (double " +
           std::to_string(count) + " parameters required)!\nPlease check <" + text +
           "> for typos! Delimiter: <, >\n";
}

TEST_F(Block, SingleValuesConvertWholeTextsOrLeaveTheOutputAlone) {
    block.addKeyValue("k", "");
    const auto read = [&](const std::string& text, auto value) {
        block.replaceValue("k", text);
        block.getValue("k", &value);
        return value;
    };
    const auto readDouble = [&](const std::string& text) {
        double value = -7.0;
        block.replaceValue("k", text);
        block.getValue("k", &value, Double);
        return value;
    };
    EXPECT_TRUE(read("YES", false));
    EXPECT_FALSE(read("No", true));
    EXPECT_EQ(read("-12", 0), -12);
    EXPECT_EQ(read("12", 0U), 12U);
    EXPECT_EQ(readDouble(" 1.5e-3"), 1.5e-3);
    EXPECT_EQ(takeErrors(), "");

    EXPECT_TRUE(read("on", true));
    EXPECT_EQ(takeErrors(), failed("on", "bool"));
    EXPECT_EQ(read("12x", 3), 3);
    EXPECT_EQ(takeErrors(), failed("12x", "int"));
    EXPECT_EQ(read("-1", 3U), 3U);
    EXPECT_EQ(takeErrors(), failed("-1", "unsigned int"));
    for (const std::string text : {"1.5 ", "", "1,5", "one"}) {
        EXPECT_EQ(readDouble(text), -7.0);
        EXPECT_EQ(takeErrors(), failed(text, "double"));
    }
}

TEST_F(Block, ListsAreSplitAtCommas) {
    block.addKeyValue("k", "");
    const auto read = [&](const std::string& text, unsigned code) {
        std::vector<double> values(9, -7.0);
        block.replaceValue("k", text);
        block.getValue("k", values.data(), code);
        return std::vector(values.begin(), values.begin() + 3);
    };
    EXPECT_THAT(read("1.5 ,\t2.5", DoubleVector2), ElementsAre(1.5, 2.5, -7.0));
    EXPECT_THAT(read("1, 2, 3, 4, 5, 6, 7, 8, 9", DoubleMatrix3x3), ElementsAre(1, 2, 3));
    EXPECT_EQ(takeErrors(), "");
    EXPECT_THAT(read("3", DoubleVector3), ElementsAre(-7, -7, -7));
    EXPECT_EQ(takeErrors(), wrongCount("3", 3));
    EXPECT_THAT(read("1,2,3,4", DoubleVector3), ElementsAre(-7, -7, -7));
    EXPECT_EQ(takeErrors(), wrongCount("1,2,3,4", 3));
    EXPECT_THAT(read("1,x,3", DoubleVector3), ElementsAre(1, -7, 3));
    EXPECT_EQ(takeErrors(), failed("x", "double"));
    read("1,2,3,4,5,6,7,8", DoubleMatrix3x3);
    EXPECT_EQ(takeErrors(), wrongCount("1,2,3,4,5,6,7,8", 9));

    double five[5] = {};
    block.replaceValue("k", "1,2,3,4,5");
    block.getValueArray("k", five, 5);
    EXPECT_THAT(five, ElementsAre(1, 2, 3, 4, 5));
    block.getValueArray("k", five, 4);
    EXPECT_EQ(takeErrors(), wrongCount("1,2,3,4,5", 4));
    block.replaceValue("k", "1, 2");
    block.getValueArray("k", five, 1);
    EXPECT_EQ(takeErrors(), failed("1, 2", "undef")); // one number is neither split nor trimmed
}

TEST_F(Block, TextPairsKeepWhatTheyGet) {
    block.addKeyValue("k", "");
    const auto read = [&](const std::string& text) {
        std::vector<std::string> pair{"old"};
        block.replaceValue("k", text);
        block.getValue("k", &pair);
        return pair;
    };
    EXPECT_THAT(read(" a , 0 "), ElementsAre("a", "0"));
    EXPECT_THAT(read("a"), ElementsAre("", "a"));
    EXPECT_THAT(read("a,b,c,d"), ElementsAre("a", "b", "c,d"));
    EXPECT_EQ(takeErrors(), "");
}

TEST_F(Block, MissingKeysAndWrongProgramCodeAreReported) {
    double value = 0.0;
    std::string text;
    block.getValue("K", &value, Double);
    EXPECT_EQ(takeErrors(), "ERROR: Key <K> not found in read list of keys! Please check your input file!\n");
    block.addKeyValue("k", "1");
    block.getValue("k", &value, String);
    EXPECT_EQ(takeErrors(),
              "ERROR: In definition of key <k>: \nSupplied input for getValue <string> not valid! "
              "Check program code!\n\n");
    block.getValue("k", static_cast<bool*>(nullptr));
    EXPECT_EQ(takeErrors(),
              "ERROR: In definition of key <k>: \nSupplied input for getValue <bool> not valid! "
              "Check program code!\n\n");
    block.getValue("k", &text, 99);
    EXPECT_THAT(takeErrors(), testing::HasSubstr("<undef>"));
}

TEST_F(Block, FirstOfTwoEqualKeysWins) {
    block.addKeyValue("k", "first");
    block.addKeyValue("k", "second");
    block.replaceValue("other", "x");
    std::string text;
    block.getValue("k", &text, String);
    EXPECT_EQ(text, "first");
    EXPECT_EQ(block.numOfKeys, 2u);
    EXPECT_FALSE(block.isKeyInBlock("K"));
}

TEST_F(Block, FilePathsFallBackToTheBaseDirectory) {
    std::ofstream("here.txt") << "1\n";
    block.addKeyValue("k", "here.txt");
    std::string path;
    block.getValue("k", &path, FilePath);
    EXPECT_EQ(path, "here.txt");
    block.replaceValue("k", "elsewhere.txt");
    block.getValue("k", &path, FilePath);
    EXPECT_EQ(path, "folder/elsewhere.txt");
    block.baseDirectory = "";
    block.getValue("k", &path, FilePath);
    EXPECT_EQ(path, "elsewhere.txt");
}

TEST(DataModel, BlocksAreFoundByKindInInputOrder) {
    IO_DataModel data("m");
    data.addBlock("Body", "t", "1", "", "");
    data.addBlock("Force", "t", "2", "", "");
    data.addBlock("Body", "t", "3", "", "");
    EXPECT_EQ(data.getNumOfBlocks("Body"), 2u);
    EXPECT_EQ(data.getNumOfBlocks("Actor"), 0u);
    EXPECT_EQ(data.getBlock("Body", 1)->uuid, "3");
    EXPECT_EQ(data.getBlock("Body", 2), nullptr);
}

TEST(Strings, AreTrimmedAndSplit) {
    const auto trimmed = [](std::string text) {
        trimString(text);
        return text;
    };
    EXPECT_EQ(trimmed(" \ta b\t "), "a b");
    EXPECT_EQ(trimmed(" \n\t"), "");
    EXPECT_EQ(trimmed("\nx"), "\nx");

    std::vector<std::string> pieces;
    tokenizeString(",a,,  ,b ", &pieces, ",");
    EXPECT_THAT(pieces, ElementsAre("a", "", "b"));

    pieces.clear();
    const std::vector<unsigned> widths{2, 3}, tooWide{2, 4};
    EXPECT_TRUE(splitByWidths("ab cd", &pieces, &widths));
    EXPECT_THAT(pieces, ElementsAre("ab", " cd"));
    EXPECT_FALSE(splitByWidths("ab cd", &pieces, &tooWide));

    std::string left = "l", right = "r";
    EXPECT_FALSE(splitAtDelimiter("abc", "=", &left, &right));
    EXPECT_EQ(left + right, "lr");
    EXPECT_TRUE(splitAtDelimiter(" a = b = c", "=", &left, &right));
    EXPECT_EQ(left + "|" + right, "a|b = c");
}

} // namespace
} // namespace velmora
