#include "driver/RestartFile.h"

#include "driver/TextFile.h"

#include <velmora/velmora.h>

#include <fmt/format.h>
#include <toml++/toml.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace velmora::driver {

namespace {

constexpr std::int64_t presentFormat = 1;
constexpr std::size_t digitsPerNumber = 16;
constexpr std::size_t numbersPerLine = 6;

std::string toHexadecimal(const std::vector<double>& numbers) {
    std::string text;
    text.reserve(numbers.size() * (digitsPerNumber + 1));
    for (std::size_t i = 0; i < numbers.size(); ++i)
        fmt::format_to(std::back_inserter(text), "{:016x}{}", std::bit_cast<std::uint64_t>(numbers[i]),
                       (i + 1) % numbersPerLine == 0 ? '\n' : ' ');
    return text;
}

bool fromHexadecimal(const std::string& text, std::vector<double>* numbers) {
    numbers->reserve(text.size() / (digitsPerNumber + 1));
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at != end;) {
        std::uint64_t bits = 0;
        const auto [rest, error] = std::from_chars(at, end, bits, 16);
        if (error != std::errc() || rest - at != digitsPerNumber || rest == end ||
            (*rest != ' ' && *rest != '\n'))
            return false;
        numbers->push_back(std::bit_cast<double>(bits));
        at = rest + 1;
    }
    return true;
}

std::string getFingerprint(const RestartFile& file, const std::string& history) {
    Fingerprint fingerprint;
    fingerprint.add(fmt::format("{}", file.time));
    for (const auto& [name, value] : file.identity) {
        fingerprint.add(name);
        fingerprint.add(value);
    }
    for (const auto& [name, size] : file.results) {
        fingerprint.add(name);
        fingerprint.add(fmt::format("{}", size));
    }
    fingerprint.add(history);
    return fingerprint.getText();
}

/// Calls `take` with the two values of each pair of a list; false if it isn't a list of pairs or `take` is
/// false.
template <class Take>
bool readPairs(const toml::node_view<const toml::node>& list, Take take) {
    if (!list.is_array())
        return false;
    for (const toml::node& node : *list.as_array()) {
        const toml::array* pair = node.as_array();
        if (!pair || pair->size() != 2 || !take((*pair)[0], (*pair)[1]))
            return false;
    }
    return true;
}

/// All but format and version; false if something is missing or of another kind.
bool readContents(const toml::table& document, RestartFile& file) {
    const auto takeIdentity = [&](const toml::node& name, const toml::node& value) {
        if (!name.is_string() || !value.is_string())
            return false;
        file.identity.emplace_back(name.as_string()->get(), value.as_string()->get());
        return true;
    };
    const auto takeResult = [&](const toml::node& name, const toml::node& size) {
        if (!name.is_string() || !size.is_integer() || size.as_integer()->get() < 0)
            return false;
        file.results.push_back(
            {name.as_string()->get(), static_cast<std::uint64_t>(size.as_integer()->get())});
        return true;
    };
    const toml::node_view time = document["time"], history = document["history"],
                          fingerprint = document["fingerprint"];
    if (!time.is_floating_point() || !history.is_string() || !fingerprint.is_string() ||
        !readPairs(document["run"], takeIdentity) || !readPairs(document["results"], takeResult))
        return false;
    file.time = time.as_floating_point()->get();
    const std::string& text = history.as_string()->get();
    return std::isfinite(file.time) && fingerprint.as_string()->get() == getFingerprint(file, text) &&
           fromHexadecimal(text, &file.history);
}

} // namespace

bool RestartFile::write(const std::string& fileName) const {
    const std::string numbers = toHexadecimal(history);
    toml::array run, files;
    for (const auto& [name, value] : identity)
        run.push_back(toml::array{name, value});
    for (const auto& [name, size] : results)
        files.push_back(toml::array{name, static_cast<std::int64_t>(size)});
    const toml::table document{{"format", presentFormat},
                               {"version", getVersionText()},
                               {"time", time},
                               {"run", std::move(run)},
                               {"results", std::move(files)},
                               {"history", numbers},
                               {"fingerprint", getFingerprint(*this, numbers)}};
    const std::string newName = fileName + ".new";
    std::ofstream stream(newName, std::ios::binary);
    // Names may hold anything: only strings with escapes take all of it.
    constexpr auto plainStrings =
        toml::toml_formatter::default_flags & ~toml::format_flags::allow_literal_strings;
    stream << toml::toml_formatter(document, plainStrings) << "\n";
    stream.close();
    std::error_code error;
    if (stream)
        std::filesystem::rename(newName, fileName, error);
    return stream && !error;
}

std::optional<RestartFile> readRestartFile(const std::string& fileName, std::string& error) {
    const std::optional<std::string> text = readText(fileName, error);
    if (!text)
        return std::nullopt;
    RestartFile file;
    try {
        const toml::table document = toml::parse(std::string_view(*text), std::string_view(fileName));
        const auto format = document["format"].value<std::int64_t>();
        const auto version = document["version"].value<std::string>();
        if (!format || !version)
            error = fileName + ": isn't a restart file";
        else if (*format != presentFormat || *version != getVersionText())
            error = fmt::format("{}: was written in format {} by version {} of the program, and this is "
                                "format {} of version {}",
                                fileName, *format, *version, presentFormat, getVersionText());
        else if (!readContents(document, file))
            error = fileName + ": the restart file is damaged";
    } catch (const toml::parse_error& failure) {
        error = fmt::format("{}:{}: isn't a restart file, or is damaged: {}", fileName,
                            failure.source().begin.line, failure.description());
    }
    return error.empty() ? std::optional(std::move(file)) : std::nullopt;
}

} // namespace velmora::driver
