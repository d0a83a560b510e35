#pragma once

#include "driver/ModalFile.h"
#include "driver/ModelContents.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace velmora::driver {

/// Findings about the blocks of one modal file, each with the line of its block.
class ModalFindings {
  public:
    /// The file must outlive the object.
    explicit ModalFindings(const ModalFile& modalFile) : file(modalFile) {}

    /// The block may be empty: then the finding belongs to the file as such.
    template <class... Values>
    void error(const std::string& block, fmt::format_string<Values...> text, Values&&... values) {
        add(Finding::Severity::Error, block, fmt::format(text, std::forward<Values>(values)...));
    }
    template <class... Values>
    void warn(const std::string& block, fmt::format_string<Values...> text, Values&&... values) {
        add(Finding::Severity::Warning, block, fmt::format(text, std::forward<Values>(values)...));
    }
    bool hasErrors() const {
        return std::ranges::find(findings, Finding::Severity::Error, &Finding::severity) != findings.end();
    }

    const ModalFile& file;
    std::vector<Finding> findings;

  private:
    void add(Finding::Severity severity, const std::string& block, const std::string& text) {
        findings.push_back({severity, file.getLine(block), (block.empty() ? "" : block + ": ") + text});
    }
};

/// What can be said before any number is taken for what it means: what the reader reports, units, missing
/// blocks and sizes. False if the file has no modes or errors of this kind.
bool checkForm(ModalFindings& findings);

} // namespace velmora::driver
