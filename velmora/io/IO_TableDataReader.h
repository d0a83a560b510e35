#pragma once

#include "velmora/io/IO_FileIO.h"

#include <vector>

namespace velmora {

/// A table of numbers in columns: header lines to skip, then one row a line, numbers separated by blanks.
/// Blank lines between rows are skipped. A piece that isn't a number counts as 0.0.
class VELMORA_EXPORT IO_TableDataReader : public IO_FileIO {
  public:
    IO_TableDataReader(std::string name, unsigned headerLines);
    std::string getClassName() const override { return "IO_TableDataReader"; }

    /// Reads the whole table into `columns`; false, with the reason in `errorString`, if the file can't be
    /// opened, ends within the header, has an empty line after it, or changes its number of columns.
    bool readFile();
    /// Reads the table and appends two of its columns, counted from 0, to x and y.
    bool readColumns(unsigned columnX, unsigned columnY, std::vector<double>* x, std::vector<double>* y);

    std::vector<std::vector<double>> columns; ///< per column of the file, all of one length
    unsigned numOfHeaderLines;

  private:
    bool readFirstRow();
    void addRow(const std::string& line);
    std::string errorHead() const { return "ERROR while reading file " + fileName + ".\n"; }
};

} // namespace velmora
