#pragma once

namespace velmora::driver {

/// Runs the program: reads the command line and carries the command out. Returns an ExitCode (Options.h).
int runProgram(int argc, const char* const* argv);

} // namespace velmora::driver
