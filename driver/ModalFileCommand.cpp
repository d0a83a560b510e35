#include "driver/ModalFileCommand.h"

#include "driver/ModalFileChecks.h"
#include "driver/Options.h"
#include "driver/Terminal.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstdio>

namespace velmora::driver {

namespace {

constexpr std::size_t mostNodes = 40; // that are listed

void printFinding(const Finding& finding, const std::string& fileName) {
    const bool isError = finding.severity == Finding::Severity::Error;
    printToStandardError(format(finding, fileName) + "\n",
                         isError ? MessageKind::Error : MessageKind::Warning);
}

void printHead(const ModalFile& file) {
    const FeLib_MtxContent& content = file.content;
    fmt::print("{:<18}{}\n", "Units", fmt::join(content.units, ", "));
    fmt::print("{:<18}{:.9g}\n", "Mass", content.mass);
    fmt::print("{:<18}{:.6g}, {:.6g}, {:.6g}\n", "Centre of mass", content.centerOfMass[0],
               content.centerOfMass[1], content.centerOfMass[2]);
    if (const MBM_GeneralDenseMatrix* I = file.getInvariant(7); I && I->rows == 3 && I->cols == 3)
        fmt::print("{:<18}{:.6g}, {:.6g}, {:.6g}; products {:.3g}, {:.3g}, {:.3g}\n", "Inertia",
                   I->getValue(0, 0), I->getValue(1, 1), I->getValue(2, 2), I->getValue(0, 1),
                   I->getValue(0, 2), I->getValue(1, 2));
}

void printInvariants(const ModalFile& file) {
    std::vector<std::string> present;
    for (unsigned k = 1; k <= 9; ++k)
        if (const auto* m = file.getInvariant(k))
            present.push_back(fmt::format("{} ({}x{})", k, m->rows, m->cols));
    fmt::print("{:<18}{}\n", "Invariants", fmt::join(present, ", "));
    const auto yesNo = [&](unsigned k) { return file.getInvariant(k) ? "yes" : "no"; };
    fmt::print("{:<18}Is_Itf_active {}, Is_QuadraticTermOF_Itt_active {}\n", "Can serve", yesNo(5), yesNo(9));
}

void printModes(const ModalFile& file) {
    const char* const scalings[] = {"unit modal mass", "unit modal stiffness",
                                    "neither unit mass nor unit stiffness"};
    const unsigned M = file.getNumOfModes();
    fmt::print("{:<18}{}, {}\n", "Modes", M, scalings[static_cast<std::size_t>(findScaling(file))]);
    for (unsigned j = 0; j < M; ++j)
        fmt::print("{:>8}  label {:<8}{:>16.9g} Hz\n", j + 1, file.content.modes->labels[j],
                   file.content.modes->frequencies->data[j]);
}

void printNodes(const ModalFile& file) {
    const auto& nodes = file.content.nodeList->nodes;
    fmt::print("{:<18}{}\n", "Nodes", nodes.size());
    for (std::size_t i = 0; i < std::min(nodes.size(), mostNodes); ++i)
        fmt::print("{:>8}  {:>14.6g}{:>14.6g}{:>14.6g}\n", nodes[i]->label, nodes[i]->x, nodes[i]->y,
                   nodes[i]->z);
    if (nodes.size() > mostNodes)
        fmt::print("{:>8}  and {} more\n", "", nodes.size() - mostNodes);
}

} // namespace

int showModalFile(const std::string& fileName) {
    const ModalFile file(fileName);
    if (file.isRead) {
        printHead(file);
        printInvariants(file);
        printModes(file);
        printNodes(file);
        std::fflush(stdout);
    }
    if (file.isRead && file.getNumOfModes() > 0)
        return Done;
    for (const Finding& finding : collectFindings(file))
        printFinding(finding, fileName);
    return file.reader.lineNumber == 0 ? WrongUsage : ModelHasErrors;
}

int checkModalFile(const std::string& fileName) {
    const ModalFile file(fileName);
    const std::vector<Finding> findings = collectFindings(file);
    for (const Finding& finding : findings)
        printFinding(finding, fileName);
    const auto numOfErrors = std::ranges::count(findings, Finding::Severity::Error, &Finding::severity);
    if (file.reader.lineNumber == 0)
        return WrongUsage;
    fmt::print("{}: {} errors, {} warnings\n", fileName, numOfErrors,
               static_cast<std::ptrdiff_t>(findings.size()) - numOfErrors);
    return numOfErrors == 0 ? Done : ModelHasErrors;
}

} // namespace velmora::driver
