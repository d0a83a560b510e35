#include "driver/TomlValues.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace velmora::driver {

namespace {

void append(TextValue& out, const std::string& text) {
    const bool isFirst = !out.kinds.hasText && !out.kinds.hasNumber && !out.kinds.hasFlag;
    out.text += (isFirst ? "" : ", ") + text;
}

void appendNumber(TextValue& out, double number) {
    if (!std::isfinite(number))
        out.problem = "the number isn't finite";
    append(out, fmt::format("{}", number));
    out.kinds.hasNumber = true;
}

void appendText(TextValue& out, const std::string& text, bool isInList) {
    // The comma separates the entries of the list that the block gets.
    if (isInList && text.find(',') != std::string::npos)
        out.problem = "a text in a list can't hold a comma";
    append(out, text);
    out.kinds.hasText = true;
}

void appendNode(TextValue& out, const toml::node& node, bool isInList) {
    if (const auto* list = node.as_array()) {
        if (list->empty())
            out.problem = "the list is empty";
        for (const toml::node& element : *list)
            appendNode(out, element, true);
    } else if (const auto* integer = node.as_integer()) {
        append(out, fmt::format("{}", integer->get()));
        out.kinds.hasNumber = true;
    } else if (const auto* number = node.as_floating_point()) {
        appendNumber(out, number->get());
    } else if (const auto* flag = node.as_boolean()) {
        append(out, flag->get() ? "yes" : "no");
        out.kinds.hasFlag = true;
    } else if (const auto* text = node.as_string()) {
        appendText(out, text->get(), isInList);
    } else {
        out.problem = describe(node) + " where a value belongs";
    }
}

} // namespace

TextValue toText(const toml::node& value) {
    TextValue result;
    appendNode(result, value, false);
    return result;
}

std::string describe(const toml::node& value) {
    if (value.is_number())
        return "a number";
    if (value.is_string())
        return "a text";
    if (value.is_boolean())
        return "true or false";
    if (value.is_array())
        return "a list";
    return value.is_table() ? "a table" : "a date or time";
}

std::vector<TableEntry> getEntries(const toml::table& table) {
    std::vector<std::pair<toml::source_position, TableEntry>> found;
    found.reserve(table.size());
    for (const auto& [key, value] : table)
        found.push_back({key.source().begin, {std::string(key.str()), key.source().begin.line, &value}});
    std::ranges::sort(found, [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<TableEntry> entries;
    entries.reserve(found.size());
    for (auto& [position, entry] : found)
        entries.push_back(std::move(entry));
    return entries;
}

} // namespace velmora::driver
