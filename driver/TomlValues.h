#pragma once

#include "driver/ModelContents.h"

#include <toml++/toml.h>

#include <string>
#include <vector>

namespace velmora::driver {

/// A TOML value as the text that a block takes.
struct TextValue {
    std::string text;
    ValueKinds kinds;
    std::string problem; ///< why the value can't be taken; empty if it can
};

/// Numbers become their shortest text that reads back to the same number, true and false become yes and no,
/// texts stand as they are, lists are flattened in order and joined by ", ". Tables, dates, numbers that
/// aren't finite, empty lists, and texts with a comma inside a list are problems.
TextValue toText(const toml::node& value);

/// What a value is, for messages: "a number", "a text", "true or false", "a list", "a table", "a date or
/// time".
std::string describe(const toml::node& value);

/// One key of a table. Nothing is owned; the table must outlive it.
struct TableEntry {
    std::string key;
    unsigned line = 0; ///< of the key
    const toml::node* value = nullptr;
};

/// The entries of a table in the order of the file.
std::vector<TableEntry> getEntries(const toml::table& table);

} // namespace velmora::driver
