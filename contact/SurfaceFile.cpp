#include "contact/SurfaceFile.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <string_view>

namespace velmora::contact {
namespace {

constexpr std::size_t stlHeadBytes = 84, stlTriangleBytes = 50;
/// Keeps all counts within 32 bits.
constexpr std::streamoff largestFile = std::streamoff{1} << 32U;
/// Beyond it squares of areas leave the range of numbers.
constexpr double largestCoordinate = 1e50;

/// The words of a line of text, taken from the left.
class Words {
  public:
    explicit Words(std::string_view line) : rest(line) {}

    /// Empty at the end of the line.
    std::string_view next() {
        const std::size_t begin = std::min(rest.find_first_not_of(blanks), rest.size());
        rest.remove_prefix(begin);
        const std::string_view word = rest.substr(0, rest.find_first_of(blanks));
        rest.remove_prefix(word.size());
        return word;
    }

  private:
    static constexpr const char* blanks = " \t\r\f\v";
    std::string_view rest;
};

/// The lines of a text, with their numbers.
class Lines {
  public:
    explicit Lines(std::string_view text) : rest(text) {}

    bool next(std::string_view& line) {
        if (rest.empty())
            return false;
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        ++number;
        return true;
    }
    std::string place() const { return "line " + std::to_string(number); }

  private:
    std::string_view rest;
    std::size_t number = 0;
};

template <class T>
std::optional<T> toNumber(std::string_view word) {
    if (word.size() > 1 && word[0] == '+' && word[1] != '-')
        word.remove_prefix(1);
    T number{};
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size())
        return std::nullopt;
    return number;
}

void checkCoordinates(const Vec3& x, const std::string& place) {
    for (const double value : x)
        if (!(std::abs(value) < largestCoordinate))
            throw InputError(place + ": a coordinate is no finite number");
}

Vec3 readCoordinates(Words& words, const Lines& lines) {
    Vec3 x{};
    for (double& value : x) {
        const std::string_view word = words.next();
        const std::optional<double> number = toNumber<double>(word);
        if (!number)
            throw InputError(lines.place() + ": a vertex takes three numbers, <" +
                             std::string(word.substr(0, 40)) + "> is none");
        value = *number;
    }
    checkCoordinates(x, lines.place());
    return x;
}

std::uint32_t readCorner(std::string_view word, std::size_t numVertices, const Lines& lines) {
    const std::optional<long long> number = toNumber<long long>(word.substr(0, word.find('/')));
    const auto count = static_cast<long long>(numVertices);
    if (!number)
        throw InputError(lines.place() + ": a face takes numbers of vertices, <" +
                         std::string(word.substr(0, 40)) + "> is none");
    if (*number == 0 || *number > count || *number < -count)
        throw InputError(lines.place() + ": the face asks for vertex " + std::to_string(*number) + " where " +
                         std::to_string(count) + " are defined");
    return static_cast<std::uint32_t>(*number > 0 ? *number - 1 : count + *number);
}

void addFace(SurfaceMesh& mesh, Words& words, const Lines& lines) {
    std::vector<std::uint32_t> corners;
    for (std::string_view word = words.next(); !word.empty() && word[0] != '#'; word = words.next())
        corners.push_back(readCorner(word, mesh.vertices.size(), lines));
    if (corners.size() < 3)
        throw InputError(lines.place() + ": a face has at least 3 corners, this one has " +
                         std::to_string(corners.size()));
    for (std::size_t i = 2; i < corners.size(); ++i) {
        mesh.triangles.push_back({corners[0], corners[i - 1], corners[i]});
        mesh.places.push_back(lines.place());
    }
}

SurfaceMesh readObj(std::string_view text) {
    SurfaceMesh mesh;
    Lines lines(text);
    for (std::string_view line; lines.next(line);) {
        Words words(line);
        const std::string_view keyword = words.next();
        if (keyword == "v")
            mesh.vertices.push_back(readCoordinates(words, lines));
        else if (keyword == "f")
            addFace(mesh, words, lines);
    }
    return mesh;
}

void addTriangle(SurfaceMesh& mesh, const std::string& place) {
    const auto last = static_cast<std::uint32_t>(mesh.vertices.size());
    mesh.triangles.push_back({last - 3, last - 2, last - 1});
    mesh.places.push_back(place);
}

SurfaceMesh readTextStl(std::string_view text) {
    SurfaceMesh mesh;
    Lines lines(text);
    std::size_t corners = 0;
    bool isEnded = false;
    for (std::string_view line; lines.next(line);) {
        Words words(line);
        const std::string_view keyword = words.next();
        if (keyword == "facet")
            corners = 0;
        isEnded = isEnded || keyword == "endsolid";
        if (keyword == "vertex") {
            mesh.vertices.push_back(readCoordinates(words, lines));
            ++corners;
        }
        if (keyword == "endfacet") {
            if (corners != 3)
                throw InputError(lines.place() + ": the facet has " + std::to_string(corners) +
                                 " vertices in place of 3");
            addTriangle(mesh, lines.place());
        }
    }
    if (!isEnded || mesh.vertices.size() != 3 * mesh.triangles.size())
        throw InputError("the file ends before its solid does");
    return mesh;
}

SurfaceMesh readBinaryStl(std::string_view bytes, std::size_t numTriangles) {
    static_assert(sizeof(float) == 4 && std::numeric_limits<float>::is_iec559);
    SurfaceMesh mesh;
    for (std::size_t t = 0; t < numTriangles; ++t) {
        const std::string place = "triangle " + std::to_string(t + 1);
        float values[12]; // the normal, then three vertices
        std::memcpy(values, bytes.data() + stlHeadBytes + t * stlTriangleBytes, sizeof values);
        for (unsigned corner = 1; corner < 4; ++corner) {
            const float* x = values + std::size_t{3} * corner;
            mesh.vertices.push_back({x[0], x[1], x[2]});
            checkCoordinates(mesh.vertices.back(), place);
        }
        addTriangle(mesh, place);
    }
    return mesh;
}

/// Text begins with "solid", but so do some binary files: the length decides first.
SurfaceMesh readStl(std::string_view bytes) {
    std::uint32_t count = 0;
    if (bytes.size() >= stlHeadBytes)
        std::memcpy(&count, bytes.data() + stlHeadBytes - sizeof count, sizeof count);
    const std::size_t needed = stlHeadBytes + stlTriangleBytes * std::size_t{count};
    if (bytes.size() >= stlHeadBytes && bytes.size() == needed)
        return readBinaryStl(bytes, count);
    if (Words(bytes.substr(0, 80)).next().substr(0, 5) == "solid")
        return readTextStl(bytes);
    if (bytes.size() < stlHeadBytes)
        throw InputError(
            "the file is neither a text that begins with \"solid\" nor as long as a binary head");
    throw InputError("the file announces " + std::to_string(count) + " triangles in " +
                     std::to_string(needed) + " bytes, but has " + std::to_string(bytes.size()));
}

std::string readBytes(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        throw InputError("there is no such file");
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    if (size > largestFile)
        throw InputError("the file is longer than 4 GiB");
    std::string bytes(static_cast<std::size_t>(std::max<std::streamoff>(size, 0)), '\0');
    if (!file.seekg(0) || !file.read(bytes.data(), size))
        throw InputError("the file can't be read");
    return bytes;
}

SurfaceMesh readAnyKind(const std::string& path) {
    std::string kind = std::filesystem::path(path).extension().string();
    std::transform(kind.begin(), kind.end(), kind.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (kind != ".obj" && kind != ".stl")
        throw InputError("the name ends neither in .obj nor in .stl");
    const std::string bytes = readBytes(path);
    return kind == ".obj" ? readObj(bytes) : readStl(bytes);
}

} // namespace

SurfaceMesh readSurface(const std::string& path) {
    try {
        SurfaceMesh mesh = readAnyKind(path);
        mergeEqualVertices(mesh);
        checkClosed(mesh);
        return mesh;
    } catch (const InputError& error) {
        throw InputError("surface <" + path + ">: " + error.what());
    } catch (const std::bad_alloc&) {
        throw InputError("surface <" + path + ">: it is larger than the memory");
    }
}

} // namespace velmora::contact
