#pragma once

namespace velmora::driver {

/// While it lives, the first signal to interrupt (Ctrl-C) or terminate the program is noted, so that a run
/// can end in good order; the second one ends the program. Signals that the program was told to ignore stay
/// ignored. One at a time.
class StopRequest {
  public:
    StopRequest();
    StopRequest(const StopRequest&) = delete;
    StopRequest& operator=(const StopRequest&) = delete;
    ~StopRequest();

    /// Whether a signal has come.
    bool isMade() const;
};

} // namespace velmora::driver
