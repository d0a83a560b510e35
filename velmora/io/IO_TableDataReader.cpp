#include "velmora/io/IO_TableDataReader.h"

#include "velmora/io/StringHelpers.h"

#include <algorithm>
#include <locale>
#include <sstream>

namespace velmora {

namespace {

// Characters behind a number are ignored, a piece that isn't one gives 0.0, and a number out of range the
// nearest one within it: all as the stream leaves it.
double leadingNumber(const std::string& piece) {
    std::istringstream stream(piece);
    stream.imbue(std::locale::classic());
    double number = 0.0;
    stream >> number;
    return number;
}

bool isBlank(const std::string& line) {
    return line.find_first_not_of(" \t") == std::string::npos;
}

} // namespace

IO_TableDataReader::IO_TableDataReader(std::string name, unsigned headerLines)
    : IO_FileIO(std::move(name)),
      numOfHeaderLines(headerLines) {}

bool IO_TableDataReader::readFile() {
    columns.clear();
    if (!openForReading())
        return false;
    if (!skipLines(numOfHeaderLines)) {
        appendErrorString(errorHead() + "Unexpected end of file.\n");
        close();
        return false;
    }
    if (readFirstRow()) {
        bool isLineComplete = true;
        while (isLineComplete && !isErrorOccured()) {
            isLineComplete = readTrimmedLine();
            trimString(currentLine);
            addRow(currentLine); // a last line without a line feed is a row too
        }
    }
    close();
    return !isErrorOccured();
}

// True if rows may follow.
bool IO_TableDataReader::readFirstRow() {
    const bool isLineComplete = readTrimmedLine();
    if (isBlank(currentLine)) {
        appendErrorString(errorHead() + "Unexpected empty line after header block.\n");
        return false;
    }
    trimString(currentLine);
    std::vector<std::string> pieces;
    tokenizeString(currentLine, &pieces, " ");
    for (const std::string& piece : pieces)
        columns.push_back({leadingNumber(piece)});
    return isLineComplete;
}

void IO_TableDataReader::addRow(const std::string& line) {
    if (isBlank(line))
        return;
    std::vector<std::string> pieces;
    tokenizeString(line, &pieces, " ");
    if (pieces.size() != columns.size()) {
        appendErrorString("ERROR in line number " + std::to_string(getLineCount()) + " while reading file " +
                          fileName + ".\nNumber of columns does not match prior number of columns.\n");
        return;
    }
    for (std::size_t i = 0; i < pieces.size(); ++i)
        columns[i].push_back(leadingNumber(pieces[i]));
}

bool IO_TableDataReader::readColumns(unsigned columnX, unsigned columnY, std::vector<double>* x,
                                     std::vector<double>* y) {
    if (!readFile())
        return false;
    if (columns.size() < 2) {
        appendErrorString(errorHead() + "Number of columns inside this file is less than two.\n");
        return false;
    }
    if (std::max(columnX, columnY) >= columns.size()) {
        appendErrorString(errorHead() + "One of the two column indexes is larger as the maximum available "
                                        "column index.\n");
        return false;
    }
    x->insert(x->end(), columns[columnX].begin(), columns[columnX].end());
    y->insert(y->end(), columns[columnY].begin(), columns[columnY].end());
    return true;
}

} // namespace velmora
