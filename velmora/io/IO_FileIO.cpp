#include "velmora/io/IO_FileIO.h"

#include "velmora/io/StringHelpers.h"
#include "velmora/platform/FileSystem.h"

namespace velmora {

namespace {

void dropCarriageReturn(std::string& line) {
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
}

} // namespace

IO_FileIO::IO_FileIO(std::string name) : fileName(std::move(name)), directory(directoryOf(fileName)) {}

IO_FileIO::~IO_FileIO() {
    if (isOpen)
        close();
}

bool IO_FileIO::fileExists() {
    switch (queryFile(fileName)) {
    case FileStatus::Exists:
        return true;
    case FileStatus::NotFound:
        appendErrorString("File " + fileName + " not found.\n");
        return false;
    case FileStatus::InvalidName:
        appendErrorString("Invalid parameter to _stat.\n");
        return false;
    case FileStatus::OtherError:
        break;
    }
    appendErrorString("Unexpected error in _stat.\n");
    return false;
}

bool IO_FileIO::open(const char* mode) {
    if (isOpen)
        close();
    file = openFile(fileName, mode);
    isOpen = file != nullptr;
    if (!isOpen)
        appendErrorString("ERROR: Could not open file : " + fileName + "\n");
    return isOpen;
}

bool IO_FileIO::openForReading() {
    currentLine.clear();
    lineCount = 0;
    return open("r");
}

bool IO_FileIO::openForWriting() {
    return open("w");
}

bool IO_FileIO::openForAppending() {
    return open("a");
}

bool IO_FileIO::close() {
    if (!isOpen)
        return false;
    isOpen = false;
    const bool isClosed = std::fclose(file) == 0;
    file = nullptr;
    return isClosed;
}

void IO_FileIO::getPosition(std::int64_t* position) const {
    *position = positionIn(file);
}

bool IO_FileIO::isEndOfFile() {
    const bool isEnd = std::feof(file) != 0;
    if (isEnd)
        getPosition(&endPosition);
    return isEnd;
}

void IO_FileIO::readDouble(double* value) {
    double number = 0.0;
    if (std::fscanf(file, "%lf", &number) == 1)
        *value = number;
}

void IO_FileIO::writeDouble(double value) {
    std::fprintf(file, "%.12E", value);
}
void IO_FileIO::writeBlank() {
    std::fputc(' ', file);
}
void IO_FileIO::writeLineEnd() {
    std::fputc('\n', file);
}
void IO_FileIO::writeText(std::string text) {
    std::fputs(text.c_str(), file);
}

void IO_FileIO::writeLine(const std::string& text) {
    writeText(text);
    writeLineEnd();
}

bool IO_FileIO::readLine() {
    lineStart = positionIn(file);
    if (lineBufferSize > 0)
        return readBufferedLine();
    currentLine.clear();
    int c = 0;
    while ((c = std::getc(file)) != EOF && c != '\n')
        currentLine += static_cast<char>(c);
    dropCarriageReturn(currentLine);
    ++lineCount;
    return c == '\n';
}

bool IO_FileIO::readBufferedLine() {
    lineBuffer.resize(lineBufferSize);
    if (!std::fgets(lineBuffer.data(), static_cast<int>(lineBufferSize), file))
        return false;
    ++lineCount;
    currentLine = lineBuffer.data();
    if (currentLine.ends_with("\r\n"))
        currentLine.erase(currentLine.size() - 2, 1);
    return true;
}

bool IO_FileIO::readTrimmedLine() {
    if (!readLine())
        return false;
    trimString(currentLine);
    return true;
}

bool IO_FileIO::skipLines(unsigned n) {
    for (unsigned i = 0; i < n; ++i)
        if (!readTrimmedLine())
            return false;
    return true;
}

} // namespace velmora
