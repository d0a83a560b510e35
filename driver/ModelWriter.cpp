#include "driver/ModelWriter.h"

#include "driver/ModelContents.h"
#include "driver/TomlValues.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <toml++/toml.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <span>
#include <sstream>

namespace velmora::driver {

namespace {

namespace fs = std::filesystem;

/// A piece of the text, from its first to behind its last byte, and what stands in its place.
struct Edit {
    std::size_t begin = 0, end = 0;
    std::string text;
};

/// The text of a file with the places of its values.
class TextPlaces {
  public:
    explicit TextPlaces(const std::string& wholeText) : text(wholeText) {
        for (std::size_t i = 0; i < text.size(); ++i)
            if (text[i] == '\n')
                lines.push_back(i + 1);
    }
    /// First byte of a line, counted from 1; the end of the text behind the last line.
    std::size_t getLine(unsigned line) const { return line <= lines.size() ? lines[line - 1] : text.size(); }
    /// Columns count characters of UTF-8.
    std::size_t getPlace(const toml::source_position& position) const {
        std::size_t place = getLine(position.line);
        for (unsigned column = 1; column < position.column && place < text.size(); ++column)
            do
                ++place;
            while (place < text.size() && (static_cast<unsigned char>(text[place]) & 0xC0U) == 0x80U);
        return place;
    }

  private:
    const std::string& text;
    std::vector<std::size_t> lines{0};
};

/// Name of the same file as seen from another folder.
std::string moveName(const std::string& name, const fs::path& from, const fs::path& to) {
    std::error_code error;
    const fs::path target = fs::absolute(from / name, error);
    const fs::path moved = error ? fs::path() : fs::relative(target, fs::absolute(to), error);
    return error || moved.empty() ? target.string() : moved.generic_string();
}

std::string quote(const std::string& text) {
    std::ostringstream stream;
    stream << toml::value<std::string>(text);
    return stream.str();
}

/// Changes the names of files in one block.
void addNameEdits(const toml::table& block, std::string_view kind, const TextPlaces& places,
                  const fs::path& from, const fs::path& to, std::vector<Edit>& edits) {
    const std::string type = block["type"].value_or(std::string());
    for (const MBS_BlockTypeInfo& info : MBS_getBlockVocabulary())
        for (const MBS_KeyInfo& key : info.keys) {
            if (info.kind != kind || info.type != type || key.role != MBS_KeyRole::File)
                continue;
            const toml::node* value = block.get(key.name);
            const std::string name = value ? value->value_or(std::string()) : std::string();
            if (!name.empty() && fs::path(name).is_relative())
                edits.push_back({places.getPlace(value->source().begin), places.getPlace(value->source().end),
                                 quote(moveName(name, from, to))});
        }
}

/// Takes out [[Start]] tables, whole lines, up to their last values.
void addStartEdits(const toml::array& starts, const TextPlaces& places, std::vector<Edit>& edits) {
    for (const toml::node& element : starts) {
        unsigned last = element.source().begin.line;
        if (const auto* table = element.as_table())
            for (const auto& [key, value] : *table)
                last = std::max(last, value.source().end.line);
        edits.push_back({places.getLine(element.source().begin.line), places.getLine(last + 1), ""});
    }
}

std::vector<Edit> findEdits(const toml::table& document, const TextPlaces& places, const fs::path& from,
                            const fs::path& to) {
    std::vector<Edit> edits;
    const bool isElsewhere = !fs::equivalent(from, to);
    for (const auto& [kind, node] : document) {
        const toml::array* blocks = node.as_array();
        if (blocks && kind.str() == "Start")
            addStartEdits(*blocks, places, edits);
        else if (blocks && isElsewhere)
            for (const toml::node& block : *blocks)
                if (const auto* table = block.as_table())
                    addNameEdits(*table, kind.str(), places, from, to, edits);
    }
    std::ranges::sort(edits, {}, &Edit::begin);
    return edits;
}

std::string applyEdits(const std::vector<Edit>& edits, const std::string& text) {
    std::string edited;
    std::size_t done = 0;
    for (const Edit& edit : edits) {
        edited.append(text, done, edit.begin - done).append(edit.text);
        done = edit.end;
    }
    return edited.append(text, done);
}

std::string describeStarts(const ModelFile& file, const MBS_Model& model,
                           const MBS_ModelPhysicalDofVector& q) {
    std::string text;
    const auto bodies = file.dataModel->getBlocksOfKind("Body");
    for (unsigned body = 0; body < bodies.size(); ++body) {
        const std::span<const double> coordinates(q.bodyData(body), q.bodyDof[body]->size);
        text += fmt::format("\n[[Start]]\nuuid = {}\nPosition = [{}]\nEulerParameters = [{}]\n",
                            quote(bodies[body]->uuid), fmt::join(coordinates.subspan(0, 3), ", "),
                            fmt::join(coordinates.subspan(3, 4), ", "));
        if (model.getNumOfFlexDofOfBody(body) > 0)
            text += fmt::format("ModalCoordinates = [{}]\n", fmt::join(coordinates.subspan(7), ", "));
    }
    return text;
}

} // namespace

std::string writeModelAt(const ModelFile& file, const MBS_Model& model, const MBS_ModelPhysicalDofVector& q,
                         const std::string& fileName, const std::string& remark) {
    const auto getFolder = [](const std::string& name) {
        const fs::path folder = fs::path(name).parent_path();
        return folder.empty() ? fs::path(".") : folder;
    };
    std::error_code error;
    if (fs::equivalent(file.fileName, fileName, error))
        return fmt::format("<{}> is the model itself, which is not written over", fileName);
    std::ifstream source(file.fileName, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(source), {}};
    if (!source.is_open() || source.bad())
        return fmt::format("<{}> can't be read any more", file.fileName);
    std::string edited;
    try {
        const toml::table document = toml::parse(std::string_view(text), std::string_view(file.fileName));
        edited = applyEdits(
            findEdits(document, TextPlaces(text), getFolder(file.fileName), getFolder(fileName)), text);
    } catch (const std::exception& failure) { // the file, or a folder, has changed since it was read
        return fmt::format("<{}>: {}", fileName, failure.what());
    }
    if (!edited.empty() && edited.back() != '\n')
        edited += '\n';
    std::ofstream stream(fileName, std::ios::binary | std::ios::trunc);
    stream << "# " << remark << '\n' << edited << describeStarts(file, model, q);
    stream.close();
    return stream ? std::string() : fmt::format("<{}> can't be written", fileName);
}

} // namespace velmora::driver
