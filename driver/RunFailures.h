#pragma once

#include "driver/HHTSystem.h"
#include "driver/Redundancy.h"

#include <string>

namespace velmora::driver {

/// Tells a singular position from one nearby, and another choice of equations from the present one.
constexpr double nearlySameEquation = 1.0e-2;

/// Why a run can't go on, in the user's words: time, step, and what `Diagnostics` and `Redundancy` find.
class RunFailures {
  public:
    /// Nothing is owned; all must outlive the object. The redundancy is that of the run so far.
    RunFailures(HHTSystem* equations, const EquationNames* equationNames, const Redundancy* found,
                IO_DataModel* input)
        : system(equations),
          names(equationNames),
          redundancy(found),
          dataModel(input) {}

    /// Of a step of length h that ended so at the state `trial`; `last` is the state before it, or null at
    /// the start. Leaves the system at another state.
    std::string describe(StepResult result, const HHTState& trial, const HHTState* last, double h) const;
    /// Of a step of length h to the time t whose local error is so many times what is allowed, whatever h.
    std::string describeInaccuracy(double error, double t, double h) const;
    /// Of an equation that was left out.
    std::string describe(const Redundancy::Violation& violation, double t) const;

  private:
    std::string describeSingularPosition(const HHTState& state) const;

    HHTSystem* system;
    const EquationNames* names;
    const Redundancy* redundancy;
    IO_DataModel* dataModel;
};

} // namespace velmora::driver
