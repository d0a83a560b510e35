#pragma once

#include <optional>
#include <string>

namespace velmora::driver {

/// What the program answers to the system that called it.
enum ExitCode : int {
    Done = 0,
    ModelHasErrors = 1,
    WrongUsage = 2, ///< also: a file that can't be read, a results folder that can't be made
    SolverFailed = 3,
    Stopped = 4 ///< by a signal
};

/// What the user asked of `eigen`.
struct EigenOptions {
    std::string place = "start";  ///< about which state: "start", "static", or a time of the run in seconds
    std::string frame = "global"; ///< axes of small motions: "global" or "body"
    unsigned numOfModes = 20;
    double target = 0.0; ///< Hz; modes near it are wanted
};

/// What the user asked for.
struct Options {
    std::string modelFile;
    std::string resultDirectory;           ///< of `run` and `static`; empty: results/<stem of the model file>
    std::optional<double> endTime;         ///< of `run`, in seconds; overrides the model file's
    std::optional<double> restartInterval; ///< of `run`, in seconds: restart files are wanted
    std::string restartFile;               ///< of `run`: from which it goes on; empty: from the start
    double time = 0.0;                     ///< of `static`, in seconds: of motions and forces
    bool isQuiet = false;                  ///< of `run` and `static`: neither progress nor summary
    bool checksDerivatives = false;        ///< of `check`
    EigenOptions eigen;
    bool isLenient = false; ///< findings of the strict checks are warnings
};

} // namespace velmora::driver
