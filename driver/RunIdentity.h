#pragma once

#include <string>
#include <utility>
#include <vector>

namespace velmora::driver {

struct ModelFile;
struct SimulationSettings;

/// What decides about the course of a run, as names and texts: settings but for the end time, blocks,
/// changes, starts and wanted results. Order and form of the model file don't count beyond the order of the
/// blocks, nor do files that it names.
using RunIdentity = std::vector<std::pair<std::string, std::string>>;

RunIdentity makeRunIdentity(const ModelFile& file, const SimulationSettings& settings);

/// The first difference as a sentence without a full stop, such as "<tolerance> was 1e-06 and is 1e-07 now";
/// empty if there is none.
std::string describeDifference(const RunIdentity& before, const RunIdentity& now);

/// Number by which texts of any length are told apart (FNV-1a of 64 bits; Fowler, Noll, Vo).
class Fingerprint {
  public:
    /// The end of a text counts, too: "ab", "c" isn't "a", "bc".
    void add(const std::string& text);
    /// In 16 hexadecimal digits.
    std::string getText() const;

  private:
    unsigned long long number = 0xcbf29ce484222325;
};

} // namespace velmora::driver
