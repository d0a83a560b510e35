#pragma once

#include <fstream>
#include <string>

namespace velmora {
class MBS_Model;
} // namespace velmora

namespace velmora::driver {

/// A file of all measures as comma-separated values (RFC 4180): a line with "t" and the labels, then a line
/// per record, with the shortest numbers that read back to the same.
class MeasureTable {
  public:
    /// Opens the file and writes the first line; a file that is continued is opened at its end. The model
    /// isn't owned.
    MeasureTable(MBS_Model* model, std::string fileName, bool isContinued = false);

    /// Writes the present values of the measures as a record.
    void write(double t);
    /// Hands what was written over to the system; false if that fails.
    bool flush();
    /// Closes the file; false if it couldn't be written as a whole.
    bool close();

    const std::string& getFileName() const { return fileName; }

  private:
    MBS_Model* model; // not owned
    std::string fileName;
    std::ofstream stream;
};

} // namespace velmora::driver
