#pragma once

#include <string>
#include <vector>

namespace velmora {

/// What the header line of a block of a modal file says about the lines behind it:
///
///     name FULL order rows columns values ( format )
///     name SPARSE rows columns values ( format )
///
/// The last real format rEw.d gives r fields a line and w characters a field. One format stands for a plain
/// matrix, several for one with a label in front of each row.
struct MtxBlockHeader {
    enum class Kind { Plain, Labelled, Sparse };

    Kind kind = Kind::Plain;
    bool isColumnOrder = false; ///< values run down the columns
    unsigned rows = 0;
    unsigned cols = 0;
    unsigned numOfValues = 0; ///< records of a sparse block; 0 for others
    unsigned repeat = 1;      ///< r, for a plain block; at least 1
    unsigned width = 0;       ///< w, at least 1

    /// The parts of a line between blanks. False, with the header in pieces, if they are no header. In a list
    /// of nodes a count of DOF stands behind the real format.
    bool parse(const std::vector<std::string>& tokens, bool isNodeList);

  private:
    bool parseAttributes(const std::vector<std::string>& attributes);
    bool parseFormat(const std::vector<std::string>& formats, bool isNodeList);
};

} // namespace velmora
