#pragma once

#include "driver/RunIdentity.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmora::driver {

/// A restart point of a run, kept in a TOML file.
///
/// Keys: `format` (1), `version` of the program, `time` in seconds, `run` (a list of pairs, the run's
/// identity), `results` (a list of pairs, file name and size in bytes), `history` (a text of hexadecimal
/// numbers of 16 digits, the bits of one double each; the sign bit comes first), `fingerprint` of all these.
struct RestartFile {
    struct ResultFile {
        std::string name;       ///< without directory
        std::uint64_t size = 0; ///< bytes that were written up to the restart point
    };

    double time = 0.0;
    RunIdentity identity;
    std::vector<ResultFile> results;
    std::vector<double> history; ///< of the simulation

    /// Writes the file beside its place and moves it there, so that a killed program leaves the old or the
    /// new one; false if that fails.
    bool write(const std::string& fileName) const;
};

/// A file as `RestartFile::write` leaves it; none, with the name of the file and the reason in `error`, for
/// anything else.
std::optional<RestartFile> readRestartFile(const std::string& fileName, std::string& error);

} // namespace velmora::driver
