#pragma once

#include "velmora/results/MBS_ResultFileWriter.h"

namespace velmora {

class MBS_ExtConstraint;

/// Root of the writers with one line per external constraint.
class MBS_ConstraintsResultFileWriter : public MBS_ResultFileWriter {
  public:
    using MBS_ResultFileWriter::MBS_ResultFileWriter;
    void writeResults(double t, const P* q, const P* qd, const P* qdd, const C* multipliers) override;

  protected:
    std::vector<std::string> topology() const override;
    /// Writes the numbers of one constraint.
    virtual void writeConstraint(MBS_ExtConstraint& constraint, const P* q, const P* qd, const P* qdd,
                                 const C* multipliers) = 0;
};

/// Constraint forces (.crf): per body of the constraint its joint point, the force on it, the point once
/// more, and the moment about the point (3 each, global frame).
class MBS_ConstraintResultFileWriter : public MBS_ConstraintsResultFileWriter {
  public:
    using MBS_ConstraintsResultFileWriter::MBS_ConstraintsResultFileWriter;
    std::string getClassName() const override { return "MBS_ConstraintResultFileWriter"; }

  protected:
    std::string title() const override { return "Constraint Result File (.crf)"; }
    void writeConstraint(MBS_ExtConstraint& constraint, const P* q, const P* qd, const P* qdd,
                         const C* multipliers) override;
};

/// Multipliers of external constraints (.lrf), all of a constraint on its line.
class MBS_ExtConstraintsLagrangeResultFileWriter : public MBS_ConstraintsResultFileWriter {
  public:
    using MBS_ConstraintsResultFileWriter::MBS_ConstraintsResultFileWriter;
    std::string getClassName() const override { return "MBS_ExtConstraintsLagrangeResultFileWriter"; }

  protected:
    std::string title() const override {
        return "External Constraints Lagrange Multipliers Result File (.lrf)";
    }
    void writeConstraint(MBS_ExtConstraint& constraint, const P* q, const P* qd, const P* qdd,
                         const C* multipliers) override;
};

} // namespace velmora
