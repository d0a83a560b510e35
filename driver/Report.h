#pragma once

#include "driver/Simulation.h"

#include <chrono>
#include <string>
#include <vector>

namespace velmora::driver {

/// One line on standard error that follows a run and is overwritten in place, a few times per second.
class ProgressLine {
  public:
    /// `endTime` in seconds. A line that isn't wanted writes nothing.
    ProgressLine(double endTime, bool isWanted);
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine() { clear(); }

    /// After a step that ended at time t.
    void update(double t, double step);
    /// Takes the line off the terminal.
    void clear();

  private:
    using Clock = std::chrono::steady_clock;
    double endTime;
    bool isWanted;
    bool isShown = false;
    Clock::time_point nextUpdate = Clock::now();
};

/// Text of the closing summary, with a line feed at its end: what the run cost, how well energy and angular
/// momentum were kept, and which files hold its results.
std::string summarize(const RunOutcome& outcome, const std::vector<std::string>& resultFiles);

} // namespace velmora::driver
