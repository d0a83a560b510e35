#pragma once

#include "velmora/results/MBS_ResultFileWriter.h"

namespace velmora {

/// Measures (.mrf): the value of each measure at the record's state, one line per measure. Each is updated
/// for it, so that angles count their turns here too.
class MBS_MeasureResultFileWriter : public MBS_ResultFileWriter {
  public:
    using MBS_ResultFileWriter::MBS_ResultFileWriter;
    std::string getClassName() const override { return "MBS_MeasureResultFileWriter"; }
    void writeResults(double t, const P* q, const P* qd, const P* qdd, const C* multipliers) override;

  protected:
    std::string title() const override { return "Measures Result File (.mrf)"; }
    std::vector<std::string> topology() const override;
};

} // namespace velmora
