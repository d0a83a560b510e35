#pragma once

#include "velmora/results/MBS_ResultFileWriter.h"

namespace velmora {

class MBS_Force;
class MBS_GravityForce;

/// Applied forces (.frf), one line per force beside gravity: per body the point of application, the force,
/// the body's place and the moment about it (3 each, global frame). Gravity stands in the header. Forces have
/// been evaluated at the state of the record.
class MBS_ForceResultFileWriter : public MBS_ResultFileWriter {
  public:
    MBS_ForceResultFileWriter(const std::string& name, const MBS_ModelObjectLists& source, bool append);
    std::string getClassName() const override { return "MBS_ForceResultFileWriter"; }
    void writeResults(double t, const P* q, const P* qd, const P* qdd, const C* multipliers) override;

  protected:
    std::string title() const override { return "Force Result File (.frf)"; }
    std::vector<std::string> preamble() const override;
    std::vector<std::string> topology() const override;

  private:
    std::vector<MBS_Force*> forces;            // listed; not owned
    const MBS_GravityForce* gravity = nullptr; // the last one; not owned
};

} // namespace velmora
