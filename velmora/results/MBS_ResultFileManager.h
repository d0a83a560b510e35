#pragma once

#include "velmora/platform/Export.h"

#include <memory>
#include <string>
#include <vector>

namespace velmora {

class IO_DataModelBlock;
class IO_OutputManager;
class MBS_History;
class MBS_ModelConstraintDofVector;
class MBS_ModelObjectLists;
class MBS_ModelPhysicalDofVector;
class MBS_ResultFileWriter;

/// Writes the result files that a block asks for, on a schedule of output times.
///
/// Keys of the block, all optional. Bools, default no: "WriteStateResultFile" (.srf),
/// "WriteVelocityResultFile" (.vrf), "WriteAccelerationResultFile" (.arf), "WriteForceResultFile" (.frf),
/// "WriteConstraintForceResultFile" (.crf), "WriteExtConstraintLagrangeResultFile" (.lrf),
/// "WriteMeasureResultFile" (.mrf). Doubles, the schedule: "OutputTimeBegin", "SimulationTimeEnd",
/// "OutputTimeStepSize"; without a positive "SimulationTimeEnd" every call writes a record.
///
/// A kind that an earlier manager on the same output manager has opened is appended to, without a new header.
/// Copies share the writers.
class VELMORA_EXPORT MBS_ResultFileManager {
  public:
    /// Made by MBS_Model::createResultFileManager; the files are open afterwards, unless `isErrorOccured`.
    MBS_ResultFileManager(MBS_ModelObjectLists* model, IO_OutputManager* outputManager,
                          IO_DataModelBlock* block);
    MBS_ResultFileManager(const MBS_ResultFileManager&);
    MBS_ResultFileManager& operator=(const MBS_ResultFileManager&);
    virtual ~MBS_ResultFileManager();

    virtual std::string getClassName() const { return "MBS_ResultFileManager"; }

    /// Opens every file and writes the header of those that start anew; false at the first that can't be
    /// opened.
    bool openAllResultFiles();
    /// Closes every open file.
    void closeAllResultFiles();
    /// Writes a record to each file if one is due at t; true if so. Caches of bodies and constraints must
    /// be those of q, qd.
    bool writeResultsToFile(double t, MBS_ModelPhysicalDofVector* q, MBS_ModelPhysicalDofVector* qd,
                            MBS_ModelPhysicalDofVector* qdd, MBS_ModelConstraintDofVector* multipliers);

    /// Hands all that was written over to the system; false if that fails.
    bool flushAllResultFiles();
    /// Names the next output time, by which a manager that was made alike goes on with the schedule.
    void exchangeHistory(MBS_History* history);
    /// Passes over the records that were due at t or earlier, when the schedule is prolonged.
    void skipOutputUntil(double t);

    /// Next time at which a record is due; -1.0 without a schedule.
    double getNextOutputTime() const { return nextOutputTime; }
    double getOutputTimeStepSize() const { return outputTimeStepSize; }

    /// True if any writer has failed.
    bool isErrorOccured() const;
    /// Error text of the first writer that failed.
    std::string getErrorString() const;

  private:
    bool isOutputRequested(double t) const;
    static void string2Value(const std::string* text, double* value);
    void extractSimPatternAndSaveInMembers(const std::vector<std::string>* tokens);
    void readSchedule(IO_DataModelBlock& block);

    std::vector<std::shared_ptr<MBS_ResultFileWriter>> writers;
    MBS_ModelObjectLists* model; // not owned
    double outputTimeBegin = -1.0;
    double simulationTimeEnd = -1.0;
    double outputTimeStepSize = -1.0;
    double nextOutputTime = -1.0;
    bool writeConstraintForceResultFile = false;
    bool writeExtConstraintLagrangeResultFile = false;
    bool writeForceResultFile = false;
    bool writeStateResultFile = false;
    bool writeVelocityResultFile = false;
    bool writeAccelerationResultFile = false;
    bool writeMeasureResultFile = false;
};

} // namespace velmora
