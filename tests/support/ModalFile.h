#pragma once

#include <array>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace velmora::test {

using Elements = std::function<double(unsigned row, unsigned col)>;
using Vector = std::array<double, 3>;

inline std::string number(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%25.17E", value);
    return text.data();
}

inline std::string label(unsigned value) {
    const std::string digits = std::to_string(value);
    return std::string(8 - digits.size(), ' ') + digits;
}

inline std::string sizes(unsigned rows, unsigned cols, unsigned values) {
    return std::to_string(rows) + " " + std::to_string(cols) + " " + std::to_string(values);
}

/// All values of a matrix, perLine in a line, the records being its rows or columns.
inline std::string fullBlock(const std::string& name, unsigned rows, unsigned cols, const Elements& at,
                             bool byColumns = false, unsigned perLine = 3) {
    std::string text = name + " FULL " + (byColumns ? "CORDER " : "RORDER ") +
                       sizes(rows, cols, rows * cols) + " ( " + std::to_string(perLine) + "E25.17 )\n";
    const unsigned length = byColumns ? rows : cols;
    for (unsigned record = 0; record < (byColumns ? cols : rows); ++record)
        for (unsigned k = 0; k < length; ++k) {
            text += byColumns ? number(at(k, record)) : number(at(record, k));
            if ((k + 1) % perLine == 0 || k + 1 == length)
                text += '\n';
        }
    return text;
}

/// Non-zero values of a matrix.
inline std::string sparseBlock(const std::string& name, unsigned rows, unsigned cols, const Elements& at) {
    std::string lines;
    unsigned count = 0;
    for (unsigned j = 0; j < cols; ++j)
        for (unsigned i = 0; i < rows; ++i)
            if (at(i, j) != 0.0) {
                lines += label(i + 1) + label(j + 1) + number(at(i, j)) + "\n";
                ++count;
            }
    return name + " SPARSE " + sizes(rows, cols, count) + " ( 2I8 E25.17 )\n" + lines;
}

/// A body of point masses with mode shapes of any kind, and the modal file that describes it. INVAR6 is the
/// unit matrix, whatever the shapes are.
struct PointBody {
    std::vector<unsigned> labels{7, 3, 12}; // of the points
    unsigned numOfModes = 2;

    unsigned points() const { return static_cast<unsigned>(labels.size()); }
    static double mass(unsigned point) { return 1.0 + 0.3 * point; }
    static double frequency(unsigned mode) { return 0.4 + 1.1 * mode; }
    static Vector position(unsigned point) { return wave(3.1 * point + 0.2); }
    static Vector shape(unsigned point, unsigned mode) { return wave(1.7 * point + 0.9 * mode + 5.0); }
    static Vector turn(unsigned point, unsigned mode) { return wave(0.7 * point + 2.3 * mode - 1.0); }
    static Vector wave(double x) { return {std::sin(x), std::cos(2.0 * x), std::sin(3.0 * x + 0.5)}; }

    double sum(const std::function<double(unsigned point)>& term) const {
        double total = 0.0;
        for (unsigned p = 0; p < points(); ++p)
            total += mass(p) * term(p);
        return total;
    }

    /// Element (r, c) of skew(u) skew(v) = v u' - (u . v) I.
    static double skewSkew(const Vector& u, const Vector& v, unsigned r, unsigned c) {
        return v[r] * u[c] - (r == c ? u[0] * v[0] + u[1] * v[1] + u[2] * v[2] : 0.0);
    }
    static double cross(const Vector& u, const Vector& v, unsigned c) {
        return u[(c + 1) % 3] * v[(c + 2) % 3] - u[(c + 2) % 3] * v[(c + 1) % 3];
    }

    /// Rows and columns of invariant 5 to 9.
    std::pair<unsigned, unsigned> sizeOfInvariant(unsigned number) const {
        const unsigned M = numOfModes;
        const std::array<std::pair<unsigned, unsigned>, 5> all{
            {{3 * M, M}, {M, M}, {3, 3}, {M, 9}, {3 * M * M, 3}}};
        return all[number - 5];
    }

    /// Elements of invariant 5 to 9.
    Elements invariant(unsigned number) const {
        return [this, number, M = numOfModes](unsigned i, unsigned j) {
            if (number == 6)
                return i == j ? 1.0 : 0.0;
            return sum([number, M, i, j](unsigned p) {
                switch (number) {
                case 5:
                    return cross(shape(p, i / 3), shape(p, j), i % 3);
                case 7:
                    return -skewSkew(position(p), position(p), i, j);
                case 8:
                    return skewSkew(position(p), shape(p, i), j / 3, j % 3);
                default:
                    return skewSkew(shape(p, i / 3 / M), shape(p, i / 3 % M), i % 3, j);
                }
            });
        };
    }

    std::string invariantBlock(unsigned number) const {
        const auto [rows, cols] = sizeOfInvariant(number);
        const std::string name = "INVAR" + std::to_string(number);
        return number == 6 ? sparseBlock(name, rows, cols, invariant(6))
                           : fullBlock(name, rows, cols, invariant(number), false, number == 5 ? cols : 3);
    }

    std::vector<std::pair<std::string, std::string>> blocks() const {
        const unsigned M = numOfModes, nodeColumns = points() * M;
        std::string nodes = "SELNOD FULL RORDER " + sizes(points(), 5, 5 * points()) + " ( I8 3E25.17 I8 )\n";
        for (unsigned p = 0; p < points(); ++p) {
            const Vector x = position(p);
            nodes += label(labels[p]) + number(x[0]) + number(x[1]) + number(x[2]) + "       6\n";
        }
        std::string modes = "SELMOD FULL RORDER " + sizes(M, 2, 2 * M) + " ( I8 E25.17 )\n";
        for (unsigned j = 0; j < M; ++j)
            modes += label(7 + j) + number(frequency(j)) + "\n";
        std::vector<std::pair<std::string, std::string>> all{
            {"SELNOD", nodes},
            {"SELMOD", modes},
            {"INVAR1",
             fullBlock("INVAR1", 1, 1, [this](auto, auto) { return sum([](auto) { return 1.0; }); })},
            {"INVAR2", fullBlock("INVAR2", 1, 3, [](auto, auto j) { return 1e-4 * j; })}};
        for (unsigned k = 5; k <= 9; ++k)
            all.emplace_back("INVAR" + std::to_string(k), invariantBlock(k));
        all.emplace_back("GENSTIFF", fullBlock("GENSTIFF", M, M, stiffness));
        all.emplace_back("T_MODE", fullBlock("T_MODE", 3, nodeColumns, translations(), true));
        all.emplace_back("R_MODE", fullBlock("R_MODE", 3, nodeColumns, rotations()));
        return all;
    }

    static double stiffness(unsigned i, unsigned j) {
        return i == j ? std::pow(2.0 * M_PI * frequency(i), 2) : 0.0;
    }
    Elements translations() const {
        return [M = numOfModes](unsigned c, unsigned k) { return shape(k / M, k % M)[c]; };
    }
    Elements rotations() const {
        return [M = numOfModes](unsigned c, unsigned k) { return turn(k / M, k % M)[c]; };
    }

    /// The file, with some blocks replaced or, where the new text is empty, left out.
    std::string file(const std::vector<std::pair<std::string, std::string>>& changes = {}) const {
        std::string text =
            "ADAMSMAT2 units: kilogram Millimeter second newton\n5 NAMES\nSELNOD SELMOD\nother\n";
        for (const auto& [name, block] : blocks()) {
            const std::string* used = &block;
            for (const auto& change : changes)
                if (change.first == name)
                    used = &change.second;
            text += *used;
        }
        return text;
    }
};

} // namespace velmora::test
