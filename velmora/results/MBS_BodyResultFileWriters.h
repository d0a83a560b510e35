#pragma once

#include "velmora/results/MBS_ResultFileWriter.h"

namespace velmora {

class MBS_Body;

/// Root of the writers with one line per body.
class MBS_BodyResultFileWriter : public MBS_ResultFileWriter {
  public:
    using MBS_ResultFileWriter::MBS_ResultFileWriter;
    void writeResults(double t, const P* q, const P* qd, const P* qdd, const C* multipliers) override;

  protected:
    std::vector<std::string> topology() const override;
    /// Writes the numbers of one body.
    virtual void writeBody(const MBS_Body& body, const P* q, const P* qd, const P* qdd) = 0;
    /// Writes the modal part of a vector over the degrees of freedom as physical amplitudes; nothing for a
    /// rigid body.
    void writeAmplitudes(const MBS_Body& body, const P* v);
};

/// States (.srf): r (3, global frame), rotation matrix (9, column after column), modal amplitudes.
class MBS_StateResultFileWriter : public MBS_BodyResultFileWriter {
  public:
    using MBS_BodyResultFileWriter::MBS_BodyResultFileWriter;
    std::string getClassName() const override { return "MBS_StateResultFileWriter"; }

  protected:
    std::string title() const override { return "State Result File (.srf)"; }
    void writeBody(const MBS_Body& body, const P* q, const P* qd, const P* qdd) override;
};

/// Velocities (.vrf): dr/dt (3, global frame), angular velocity (3, body frame), rates of the modal
/// amplitudes.
class MBS_VelocityResultFileWriter : public MBS_BodyResultFileWriter {
  public:
    using MBS_BodyResultFileWriter::MBS_BodyResultFileWriter;
    std::string getClassName() const override { return "MBS_VelocityResultFileWriter"; }

  protected:
    std::string title() const override { return "Velocity Result File (.vrf)"; }
    void writeBody(const MBS_Body& body, const P* q, const P* qd, const P* qdd) override;
};

/// Accelerations (.arf): d2r/dt2 (3, global frame), angular acceleration (3, body frame), second
/// derivatives of the modal amplitudes.
class MBS_AccelerationResultFileWriter : public MBS_BodyResultFileWriter {
  public:
    using MBS_BodyResultFileWriter::MBS_BodyResultFileWriter;
    std::string getClassName() const override { return "MBS_AccelerationResultFileWriter"; }

  protected:
    std::string title() const override { return "Acceleration Result File (.arf)"; }
    void writeBody(const MBS_Body& body, const P* q, const P* qd, const P* qdd) override;
};

} // namespace velmora
