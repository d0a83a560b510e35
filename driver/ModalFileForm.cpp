#include "driver/ModalFileForm.h"

#include <array>
#include <cstdint>

namespace velmora::driver {

namespace {

using Matrix = MBM_GeneralDenseMatrix;

struct Size {
    std::uint64_t rows, cols;
};

void checkReading(ModalFindings& out) {
    const ModalFile& file = out.file;
    const FeLib_AdamsMtxFileReader& reader = file.reader;
    const bool isInBlocks =
        !file.isRead && std::ranges::any_of(reader.blockLines, [](unsigned line) { return line > 0; });
    if (!file.isRead || !reader.errorString.empty())
        out.findings.push_back(
            {Finding::Severity::Error, isInBlocks ? reader.lineNumber : 0, reader.errorString});
    if (!file.isRead || file.getNumOfModes() > 0)
        return;
    for (const char* block : {"SELNOD", "SELMOD", "T_MODE", "R_MODE"})
        if (file.getLine(block) == 0)
            out.error("", "no block {}: without it the file has no modes", block);
    if (!out.hasErrors())
        out.error("", "SELNOD, SELMOD, T_MODE and R_MODE don't fit one another: the file has no modes");
}

// N = kg m / s^2 = Mg mm / s^2: mixed, forces and stiffnesses are off by powers of ten.
void checkUnits(ModalFindings& out) {
    const auto warn = [&out](const std::string& text) {
        out.findings.push_back({Finding::Severity::Warning, 1, text});
    };
    const std::vector<std::string>& units = out.file.content.units;
    if (std::ranges::all_of(units, &std::string::empty))
        return warn("the first line names no units");
    for (const std::string& unit : units)
        if (unit.ends_with("not valid!"))
            warn(unit);
    const bool isMegagram = units[0] == "MEGAGRAM", isMillimeter = units[1] == "MILLIMETER";
    if (isMegagram != isMillimeter && (units[0] == "KILOGRAM" || units[1] == "METER"))
        warn(fmt::format("the units {} and {} don't fit the unit NEWTON of forces", units[0], units[1]));
    else if (isMegagram && isMillimeter)
        warn("the units aren't SI units, and nothing converts them: the model must have them too");
}

void checkMatrix(ModalFindings& out, const std::string& block, const Matrix* m, Size size, bool isNeeded) {
    if (!m && out.file.getLine(block) > 0)
        return out.error(block, "dropped, since it hasn't {} columns", size.cols);
    if (!m && isNeeded)
        return out.error("", "no block {}", block);
    if (!m)
        return;
    if (m->rows != size.rows || m->cols != size.cols)
        out.error(block, "{} x {} where {} modes ask for {} x {}", m->rows, m->cols, out.file.getNumOfModes(),
                  size.rows, size.cols);
}

void checkMatrices(ModalFindings& out) {
    const ModalFile& file = out.file;
    const std::uint64_t M = file.getNumOfModes();
    const std::array<Size, 9> sizes{
        {{1, 1}, {1, 3}, {3, M}, {3, M}, {3 * M, M}, {M, M}, {3, 3}, {M, 9}, {3 * M * M, 3}}};
    for (unsigned k = 1; k <= 9; ++k)
        checkMatrix(out, fmt::format("INVAR{}", k), file.getInvariant(k), sizes[k - 1],
                    k == 1 || (k >= 6 && k <= 8));
    checkMatrix(out, "GENSTIFF", file.content.genStiff.get(), {M, M}, true);
    for (const auto& [name, key] :
         {std::pair("INVAR5", "Is_Itf_active"), {"INVAR9", "Is_QuadraticTermOF_Itt_active"}})
        if (file.getLine(name) == 0)
            out.warn("", "no block {}: a body of this file can't have {}", name, key);
}

} // namespace

bool checkForm(ModalFindings& findings) {
    checkReading(findings);
    if (!findings.file.isRead)
        return false;
    checkUnits(findings);
    if (findings.file.getNumOfModes() == 0)
        return false;
    checkMatrices(findings);
    return !findings.hasErrors();
}

} // namespace velmora::driver
