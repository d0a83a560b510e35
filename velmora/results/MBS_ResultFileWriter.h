#pragma once

#include "velmora/io/IO_FileIO.h"

#include <string>
#include <vector>

namespace velmora {

class MBS_Model;
class MBS_ModelConstraintDofVector;
class MBS_ModelObjectLists;
class MBS_ModelPhysicalDofVector;

/// Root of the writers of result files: text files of one layout, namely a header, a topology section that
/// names what each line of a record describes, and one record per output time.
///
/// A record is a line with the time alone, then one line per object, each number followed by a blank. Numbers
/// have the format "%.12E".
class MBS_ResultFileWriter : public IO_FileIO {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;

    /// `append`: the file continues an earlier run; it is opened at its end, and gets no header.
    MBS_ResultFileWriter(const std::string& name, const MBS_ModelObjectLists& source, bool append);

    std::string getClassName() const override { return "MBS_ResultFileWriter"; }
    /// False, with the error text of the opening, if the file can't be opened.
    virtual bool openFile();
    virtual void closeFile();
    /// Writes all that stands before the first record.
    virtual void writeHeader();
    /// Writes one record; body caches must be those of q and qd.
    virtual void writeResults(double t, const P* q, const P* qd, const P* qdd, const C* multipliers);

    bool appendToFile;

  protected:
    /// Title line of the file.
    virtual std::string title() const { return {}; }
    /// Lines of a section of its own behind the title; none for most files.
    virtual std::vector<std::string> preamble() const { return {}; }
    /// UUIDs of the objects that each record describes, in order.
    virtual std::vector<std::string> topology() const { return {}; }
    /// Numbers, each with a blank behind it.
    void writeNumbers(const double* numbers, unsigned count);

    const MBS_ModelObjectLists* model; // not owned
    std::string versionText, buildDate, buildId;
};

} // namespace velmora
