#pragma once

#include "velmora/platform/Export.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace velmora {

/// A line-oriented text file: the base of every reader and writer. Lines may end with a line feed, with or
/// without a carriage return before it. Errors are collected as text; nothing throws, and `errorString` is
/// never cleared.
class VELMORA_EXPORT IO_FileIO {
  public:
    /// Touches no file.
    explicit IO_FileIO(std::string name);
    IO_FileIO(const IO_FileIO&) = delete;
    IO_FileIO& operator=(const IO_FileIO&) = delete;
    /// Closes a file that is still open.
    virtual ~IO_FileIO();

    virtual std::string getClassName() const { return "IO_FileIO"; }
    virtual bool isErrorOccured() const { return !errorString.empty(); }

    /// "File name not found.", "Invalid parameter to _stat." or "Unexpected error in _stat.", each with a
    /// line feed, are recorded if it doesn't.
    bool fileExists();
    /// "ERROR: Could not open file : " and the name are recorded on failure, here and in the next two.
    bool openForReading();
    bool openForWriting();
    bool openForAppending();
    /// False if no file is open or closing fails.
    bool close();

    void getPosition(std::int64_t* position) const;
    /// True at the end of the file, whose position is then kept.
    bool isEndOfFile();

    /// One number; white space of any kind separates numbers. A failed read leaves the value alone.
    void readDouble(double* value);
    /// A number with the format "%.12E".
    void writeDouble(double value);
    void writeBlank();
    void writeLineEnd();
    void writeText(std::string text);
    /// The text and a line feed.
    void writeLine(const std::string& text);

    /// Reads `currentLine`. False at the end of the file: a last line without a line feed stands in
    /// `currentLine` all the same.
    bool readLine();
    /// The same; a line that was read is trimmed.
    bool readTrimmedLine();
    /// Lines read since the file was opened for reading.
    unsigned getLineCount() const { return lineCount; }
    /// n times `readTrimmedLine`; false at the first that fails.
    bool skipLines(unsigned n);

    void appendErrorString(std::string text) { errorString += text; }

    bool isOpen = false;
    std::string currentLine;
    std::string fileName;
    std::string directory; ///< of `fileName`; empty if it has none
    unsigned lineCount = 0;
    std::string errorString;
    std::FILE* file = nullptr; ///< owned while `isOpen`
    std::int64_t endPosition = 0;
    std::int64_t lineStart = 0; ///< position at which the last line began
    /// 0: lines of any length, without their line feed. Otherwise a read takes at most one character less
    /// than this, keeps the line feed, and fails only if nothing is left.
    unsigned lineBufferSize = 0;
    std::vector<char> lineBuffer;

  private:
    bool open(const char* mode);
    bool readBufferedLine();
};

} // namespace velmora
