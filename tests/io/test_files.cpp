#include "velmora/io/IO_OutputManager.h"
#include "velmora/io/IO_TableDataReader.h"
#include "velmora/platform/FileSystem.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

namespace velmora {
namespace {

using testing::ElementsAre;

void write(const std::string& name, const std::string& content) {
    std::ofstream(name, std::ios::binary) << content;
}

std::string contentOf(const std::string& name) {
    std::ostringstream text;
    text << std::ifstream(name, std::ios::binary).rdbuf();
    return text.str();
}

TEST(Files, LinesEndWithEitherKindOfLineEnd) {
    write("lines.txt", "one\r\n  two \nlast");
    IO_FileIO file("lines.txt");
    ASSERT_TRUE(file.openForReading());
    EXPECT_TRUE(file.readLine());
    EXPECT_EQ(file.currentLine, "one");
    EXPECT_TRUE(file.readTrimmedLine());
    EXPECT_EQ(file.currentLine, "two");
    EXPECT_FALSE(file.readLine());
    EXPECT_EQ(file.currentLine, "last");
    EXPECT_EQ(file.getLineCount(), 3u);
    EXPECT_TRUE(file.isEndOfFile());
    EXPECT_EQ(file.endPosition, 16);
    EXPECT_TRUE(file.close());
    EXPECT_FALSE(file.close());
}

TEST(Files, BufferedLinesFollowTheSizeOfTheBuffer) {
    write("buffered.txt", "abcdef\r\na line of more characters\r\n");
    IO_FileIO file("buffered.txt");
    ASSERT_TRUE(file.openForReading());
    for (const auto& [size, line] :
         {std::pair(4U, "abc"), {6U, "def\n"}, {64U, "a line of more characters\n"}}) {
        file.lineBufferSize = size;
        EXPECT_TRUE(file.readLine());
        EXPECT_EQ(file.currentLine, line);
    }
    EXPECT_FALSE(file.readLine());
    EXPECT_EQ(file.getLineCount(), 3u);
}

TEST(Files, NumbersKeepTwelveDigits) {
    IO_FileIO file("numbers.txt");
    ASSERT_TRUE(file.openForWriting());
    file.writeDouble(12.3456789012);
    file.writeBlank();
    file.writeDouble(-1e-300);
    file.writeLineEnd();
    file.close();
    EXPECT_EQ(contentOf("numbers.txt"), "1.234567890120E+01 -1.000000000000E-300\n");
    ASSERT_TRUE(file.openForReading());
    double a = 0.0, b = 0.0, none = 5.0;
    file.readDouble(&a);
    file.readDouble(&b);
    file.readDouble(&none);
    EXPECT_EQ(a, 12.3456789012);
    EXPECT_EQ(b, -1e-300);
    EXPECT_EQ(none, 5.0);
}

TEST(Files, WhatCannotBeOpenedIsNamed) {
    std::filesystem::create_directory("a_folder");
    IO_FileIO missing("no/such.txt"), folder("a_folder");
    EXPECT_FALSE(missing.openForReading());
    EXPECT_FALSE(missing.fileExists());
    EXPECT_EQ(missing.errorString, "ERROR: Could not open file : no/such.txt\nFile no/such.txt not found.\n");
    EXPECT_FALSE(folder.openForReading());
    EXPECT_EQ(folder.errorString, "ERROR: Could not open file : a_folder\n");
}

TEST(Files, NamesWithEitherSeparator) {
    std::filesystem::create_directory("a_folder");
    write("a_folder/x.txt", "1");
    IO_FileIO file("a_folder\\x.txt");
    EXPECT_EQ(file.directory, "a_folder");
    EXPECT_TRUE(file.openForReading());
    EXPECT_TRUE(file.fileExists());
    EXPECT_EQ(IO_FileIO("plain.txt").directory, "");
    EXPECT_EQ(IO_FileIO("a\\b/c.txt").directory, "a\\b");
    EXPECT_EQ(joinPath("", "x"), "x");
}

std::string columnsDiffer(int line) {
    return "ERROR in line number " + std::to_string(line) +
           " while reading file t.txt.\nNumber of columns does not match prior number of columns.\n";
}

struct TableCase {
    const char* content;
    unsigned headerLines;
    std::string error; // behind "ERROR while reading file t.txt.\n" unless it begins with "ERROR"
    std::vector<double> y;
};

// Without it a case's name would hold the bytes of its pointers.
void PrintTo(const TableCase& c, std::ostream* out) {
    *out << c.headerLines << " header lines";
}

// Cases may run side by side: each has a folder of its own.
class Tables : public testing::TestWithParam<TableCase> {
  protected:
    Tables() {
        std::string folder = testing::UnitTest::GetInstance()->current_test_info()->name();
        std::ranges::replace(folder, '/', '_');
        std::filesystem::create_directory(folder);
        std::filesystem::current_path(folder);
    }
    ~Tables() override { std::filesystem::current_path(start); }

  private:
    std::filesystem::path start = std::filesystem::current_path();
};

TEST_P(Tables, AreReadOrRefused) {
    const TableCase& c = GetParam();
    write("t.txt", c.content);
    IO_TableDataReader reader("t.txt", c.headerLines);
    std::vector<double> x, y;
    EXPECT_EQ(reader.readColumns(1, 0, &x, &y), c.error.empty());
    const bool isWhole = c.error.empty() || c.error.starts_with("ERROR");
    EXPECT_EQ(reader.errorString, isWhole ? c.error : "ERROR while reading file t.txt.\n" + c.error);
    EXPECT_EQ(y, c.y);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Tables,
    testing::Values(TableCase{"1 2\n3 4\n", 0, "", {1, 3}}, TableCase{"1 2\n3   4", 0, "", {1, 3}},
                    TableCase{"h\r\n1 2\r\n\r\n3 4\r\n", 1, "", {1, 3}},
                    TableCase{"1 2\n3x y\n  \n", 0, "", {1, 3}},
                    TableCase{"1 2\n-1e999 4 \t", 0, "", {1, std::numeric_limits<double>::lowest()}},
                    TableCase{"h\n", 2, "Unexpected end of file.\n", {}},
                    TableCase{"h\n\n1 2\n", 1, "Unexpected empty line after header block.\n", {}},
                    TableCase{"", 0, "Unexpected empty line after header block.\n", {}},
                    TableCase{"h\n1 2\n3 4 5\n", 1, columnsDiffer(3), {}},
                    TableCase{"1 2\n3", 0, columnsDiffer(2), {}},
                    TableCase{"1\n2\n", 0, "Number of columns inside this file is less than two.\n", {}}),
    [](const auto& tableCase) { return "case" + std::to_string(tableCase.index); });

TEST(Table, ColumnIndexPastTheEnd) {
    write("t.txt", "1 2\n");
    IO_TableDataReader reader("t.txt", 0);
    std::vector<double> x, y;
    EXPECT_FALSE(reader.readColumns(0, 2, &x, &y));
    EXPECT_EQ(reader.errorString,
              "ERROR while reading file t.txt.\nOne of the two column indexes is larger as the "
              "maximum available column index.\n");
}

TEST(Messages, GoToConsoleAndFile) {
    std::filesystem::remove("run.msg");
    IO_OutputManager manager("", "run");
    manager.messageChannel->writeToFile = true;
    testing::internal::CaptureStdout();
    manager.writeMessage("ERROR: one");
    manager.messageChannel->echoToConsole = false;
    manager.writeMessage("two");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ERROR: one\n"); // no colour outside a terminal
    EXPECT_EQ(contentOf("run.msg"), "ERROR: one\ntwo\n");
    EXPECT_FALSE(manager.messageChannel->isOpen);
}

} // namespace
} // namespace velmora
