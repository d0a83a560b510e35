#pragma once

#include "driver/SimulationSettings.h"

#include <functional>
#include <memory>

namespace velmora {
class IO_DataModel;
class MBS_History;
class MBS_Model;
class MBS_ResultFileManager;
} // namespace velmora

namespace velmora::driver {

struct HHTState;

/// What a run calls on its way; each may be empty.
struct SimulationHooks {
    /// After each accepted step, with its end time and length.
    std::function<void(double t, double step)> progress = {};
    /// Where a record of results is due, with measures of this time.
    std::function<void(double t)> record = {};
    /// At a restart point: after the first step that ends at a multiple of the interval or later, at the
    /// end of the run, and where it is stopped. `Simulation::exchangeHistory` may be called then.
    std::function<void(double t)> save = {};
    /// After each step; true stops the run there.
    std::function<bool()> isStopWanted = {};
};

/// Integrates the equations of motion of a model from time 0 to the end time by the HHT method in index-3
/// form, with steps of fixed or error-controlled length, and writes results on the way.
class Simulation {
  public:
    /// The model must be free of errors. `dataModel` gives the names in diagnostics; it is the one that the
    /// model was made of. `results` may be null. All three are not owned and must outlive the simulation.
    Simulation(MBS_Model* model, IO_DataModel* dataModel, MBS_ResultFileManager* results,
               const SimulationSettings& settings, SimulationHooks hooks = {});
    Simulation(const Simulation&) = delete;
    Simulation& operator=(const Simulation&) = delete;
    ~Simulation();

    /// Runs from the initial state. A failure is told in the outcome; the results up to it are written. One
    /// run per object.
    RunOutcome run();
    /// Goes on from a restart point of a run of the same model, with the same settings but for the end time
    /// and the interval of restart points: with the same end time as that run itself did, to the last bit.
    RunOutcome resume(MBS_History& history);

    /// Names all that the rest of the run depends on; as long as `save` is called.
    void exchangeHistory(MBS_History& history);

    /// Where a run that succeeded has ended.
    const HHTState& getState() const;

  private:
    class Impl;
    std::unique_ptr<Impl> impl;
};

} // namespace velmora::driver
