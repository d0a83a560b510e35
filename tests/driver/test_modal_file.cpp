#include "driver/ModalFileChecks.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <functional>

namespace velmora::driver {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// The modal file of an example, for changes of single numbers.
class ModalText {
  public:
    ModalText() {
        std::ifstream file(VELMORA_EXAMPLES "/rotating_beam.mtx");
        for (std::string line; std::getline(file, line);)
            lines.push_back(line);
    }
    /// Number k of a block, in the order of the file; 24 characters behind a label, if there is one.
    void set(const std::string& block, std::size_t k, double value) {
        const std::size_t first = lineOf(block), width = 24;
        const std::size_t label = block.starts_with("SEL") ? 8 : 0;
        for (std::size_t i = first; i < lines.size(); ++i) {
            const std::size_t count = (lines[i].size() - label) / width;
            if (k < count) {
                std::array<char, 32> text{};
                std::snprintf(text.data(), text.size(), "%24.16E", value);
                lines[i].replace(label + width * k, width, text.data());
                return;
            }
            k -= count;
        }
    }
    /// From 1.
    std::size_t lineOf(const std::string& block) const {
        const auto line =
            std::ranges::find_if(lines, [&](const std::string& l) { return l.starts_with(block + " FULL"); });
        return static_cast<std::size_t>(line - lines.begin()) + 1;
    }
    void rename(const std::string& block) { lines[lineOf(block) - 1].insert(0, "X"); }

    std::vector<std::string> findings(const char* lineEnd = "\n") const {
        const std::string path = testing::TempDir() + "velmora_test_modal_file.mtx";
        {
            std::ofstream file(path, std::ios::binary);
            for (const std::string& line : lines)
                file << line << lineEnd;
        }
        std::vector<std::string> texts;
        for (const Finding& finding : collectFindings(ModalFile(path)))
            texts.push_back(format(finding, "m"));
        std::filesystem::remove(path);
        return texts;
    }

    std::vector<std::string> lines;
};

struct Fault {
    const char* name;
    std::function<void(ModalText&)> make;
    const char* block; // that the finding names, with its line; empty for none
    const char* text;
    bool isWarning = false;

    friend void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.name; }
};

class ModalFaults : public testing::TestWithParam<Fault> {};

TEST_P(ModalFaults, AreNamedWithTheLineOfTheirBlock) {
    const Fault& fault = GetParam();
    ModalText file;
    ASSERT_THAT(file.findings(), ElementsAre());
    fault.make(file);
    const std::string block = fault.block;
    const std::string place = block.empty() ? "m" : "m:" + std::to_string(file.lineOf(block));
    const std::string expected = place + (fault.isWarning ? ": warning: " : ": error: ") +
                                 (block.empty() ? "" : block + ": ") + fault.text;
    EXPECT_THAT(file.findings(), testing::Contains(HasSubstr(expected)));
}

// Mode 1 becomes a translation of all nodes.
void makeRigid(ModalText& file) {
    for (std::size_t node = 0; node < 9; ++node)
        for (std::size_t axis = 0; axis < 3; ++axis) {
            file.set("T_MODE", 90 * axis + 10 * node, axis == 0 ? 0.7 : 0.0);
            file.set("R_MODE", 90 * axis + 10 * node, 0.0);
        }
}

// Numbers stand row after row: element (i, j) of a matrix with ten columns at 10 i + j. The labels below
// begin with what is wrong.
INSTANTIATE_TEST_SUITE_P(
    All, ModalFaults,
    testing::Values(
        Fault{"Mass", [](auto& f) { f.set("INVAR1", 0, -2.0); }, "INVAR1", "the mass is -2"},
        Fault{"Center", [](auto& f) { f.set("INVAR2", 1, 0.01); }, "INVAR2",
              "the centre of mass is 0.01 away from the origin, where the kernel takes it to be", true},
        Fault{"Momentum", [](auto& f) { f.set("INVAR3", 12, 0.5); }, "INVAR3",
              "mode 3 moves the centre of mass, which the kernel leaves out", true},
        Fault{"Moment", [](auto& f) { f.set("INVAR4", 4, 0.5); }, "INVAR8",
              "mode 5 doesn't agree with INVAR4: "},
        Fault{"Coupling", [](auto& f) { f.set("INVAR5", 21, 0.5); }, "INVAR5",
              "not skew: modes 2 and 1, axis z"},
        Fault{"ModalMass", [](auto& f) { f.set("INVAR6", 0, 1.01); }, "INVAR6",
              "neither the modal mass nor the stiffness is a unit matrix to ten digits"},
        Fault{"ModalMassAndFrequency", [](auto& f) { f.set("INVAR6", 0, 1.01); }, "SELMOD",
              "mode 1 has 13.09 Hz, but GENSTIFF and INVAR6 make it 13.0251 Hz"},
        Fault{"Moments", [](auto& f) { f.set("INVAR7", 0, 2.0); }, "INVAR7",
              "no body has these moments: 2 is more than the sum of the other two"},
        Fault{"Symmetry", [](auto& f) { f.set("INVAR7", 1, 0.1); }, "INVAR7",
              "not symmetric: elements (2, 1) and (1, 2) are "},
        Fault{"Units",
              [](auto& f) {
                  f.set("INVAR7", 4, 720.0);
                  f.set("INVAR7", 8, 720.0);
              },
              "INVAR7", "the radius of gyration is 18.2574, and no node is farther from the origin than 1",
              true},
        Fault{"SquareInertia", [](auto& f) { f.set("INVAR9", 0, 3.0); }, "INVAR9",
              "modes 1 and 1: the trace is "},
        Fault{"SquareSymmetry", [](auto& f) { f.set("INVAR9", 10, 0.3); }, "INVAR9",
              "modes 1 and 2 aren't the transpose of modes 2 and 1"},
        Fault{"Stiffness", [](auto& f) { f.set("GENSTIFF", 1, 5e4); }, "GENSTIFF",
              "not symmetric: elements (2, 1) and (1, 2) are "},
        Fault{"RigidFrequency", [](auto& f) { f.set("SELMOD", 3, 0.0); }, "SELMOD",
              "mode 4 has the frequency 0 Hz: a rigid mode that was left in?"},
        Fault{"RigidMode", makeRigid, "T_MODE", "mode 1 moves all nodes like a rigid body"},
        Fault{"Labels", [](auto& f) { f.lines[f.lineOf("SELNOD")].replace(0, 8, "       5"); }, "SELNOD",
              "two nodes have the label 5; joints would take the later one"},
        Fault{"NoModes", [](auto& f) { f.rename("T_MODE"); }, "",
              "no block T_MODE: without it the file has no modes"},
        Fault{"NoSquareInertia", [](auto& f) { f.rename("INVAR9"); }, "",
              "no block INVAR9: a body of this file can't have Is_QuadraticTermOF_Itt_active", true},
        Fault{"PhysicsBesidesWarnings",
              [](auto& f) {
                  f.rename("INVAR9");
                  f.set("INVAR1", 0, -2.0);
              },
              "INVAR1", "the mass is -2"},
        Fault{"NodesTwice",
              [](auto& f) {
                  const auto first = f.lines.begin() + static_cast<std::ptrdiff_t>(f.lineOf("SELNOD")) - 1;
                  const std::vector<std::string> nodes(first, first + 10);
                  f.lines.insert(first, nodes.begin(), nodes.end());
              },
              "", "SELNOD, SELMOD, T_MODE and R_MODE don't fit one another: the file has no modes"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ModalFileReading, TellsTheLineWhereItStops) {
    ModalText file;
    const std::size_t line = file.lineOf("INVAR8") + 2;
    file.lines[line - 1] = "what is this?";
    const std::string place = "m:" + std::to_string(line);
    EXPECT_THAT(file.findings(), ElementsAre(place + ": error: INVAR8: error when reading block"));
    file.lines.resize(line - 1);
    EXPECT_THAT(file.findings(), ElementsAre(HasSubstr("INVAR8: error when reading block")));
    file.lines.resize(1);
    EXPECT_THAT(file.findings(), ElementsAre("m: error: FeLib_AdamsMtxFileReader: head of file not valid!"));
    file.lines.clear();
    EXPECT_THAT(file.findings(), ElementsAre("m: error: FeLib_AdamsMtxFileReader: head of file not valid!"));
    ModalText other;
    EXPECT_THAT(other.findings("\r\n"), ElementsAre());
    other.set("INVAR8", 3, std::nan(""));
    EXPECT_THAT(other.findings(), ElementsAre(HasSubstr("INVAR8: error when reading block")));
}

TEST(ModalFileReading, WarnsOfUnits) {
    for (const auto& [units, text] :
         {std::pair("ADAMSMAT2 KILOGRAM yard SECOND NEWTON", "Unit of length not valid!"),
          {"KILOGRAM METER SECOND NEWTON", "the first line names no units"},
          {"ADAMSMAT2 KILOGRAM MILLIMETER SECOND NEWTON",
           "the units KILOGRAM and MILLIMETER don't fit the unit NEWTON of forces"},
          {"ADAMSMAT2 MEGAGRAM MILLIMETER SECOND NEWTON",
           "the units aren't SI units, and nothing converts them: the model must have them too"}}) {
        ModalText file;
        file.lines[0] = units;
        EXPECT_THAT(file.findings(), ElementsAre(std::string("m:1: warning: ") + text));
    }
}

} // namespace
} // namespace velmora::driver
