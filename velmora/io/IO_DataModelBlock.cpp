#include "velmora/io/IO_DataModelBlock.h"

#include "velmora/io/StringHelpers.h"
#include "velmora/platform/FileSystem.h"

#include <algorithm>
#include <array>

namespace velmora {

namespace {

/// What the messages say of a value code.
struct ValueType {
    const char* name;
    const char* elementType;
    unsigned count;
};

// Indexed by code. Text pairs, file paths and arrays have no name of their own.
constexpr std::array<ValueType, 17> valueTypes = {{
    {"undef", "undef", 1},
    {"bool", "bool", 1},
    {"int", "int", 1},
    {"int-array length 2", "int", 2},
    {"int-array length 3", "int", 3},
    {"unsigned int", "unsigned int", 1},
    {"unsigned-int-array length 2", "unsigned int", 2},
    {"unsigned-int-array length 3", "unsigned int", 3},
    {"double", "double", 1},
    {"string", "string", 1},
    {"undef", "undef", 2},
    {"double vector length 2", "double", 2},
    {"double vector length 3", "double", 3},
    {"double vector length 4", "double", 4},
    {"double matrix 3x3", "double", 9},
    {"undef", "undef", 1},
    {"undef", "undef", 0},
}};

const ValueType& typeOf(unsigned code) {
    return valueTypes[code < valueTypes.size() ? code : 0];
}

bool isDoubleCode(unsigned code) {
    return code == Double || (code >= DoubleVector2 && code <= DoubleMatrix3x3);
}

// Splits at commas until `maxCommas` are used up; pieces are trimmed, the last one holds the rest.
std::vector<std::string> splitList(const std::string& text, unsigned maxCommas) {
    std::vector<std::string> pieces;
    std::string rest = text, left, right;
    while (pieces.size() < maxCommas && splitAtDelimiter(rest, ",", &left, &right)) {
        pieces.push_back(left);
        rest = right;
    }
    pieces.push_back(rest);
    return pieces;
}

} // namespace

IO_DataModelBlock::IO_DataModelBlock(std::string blockKind, std::string blockUuid, std::string blockLabel,
                                     std::string directory)
    : kind(std::move(blockKind)),
      baseDirectory(std::move(directory)),
      uuid(std::move(blockUuid)),
      label(std::move(blockLabel)) {}

void IO_DataModelBlock::addKeyValue(std::string key, std::string value) {
    keys.push_back(std::move(key));
    values.push_back(std::move(value));
    ++numOfKeys;
}

const std::string* IO_DataModelBlock::findValue(const std::string& key) const {
    const auto found = std::ranges::find(keys, key);
    return found == keys.end() ? nullptr : &values[static_cast<std::size_t>(found - keys.begin())];
}

bool IO_DataModelBlock::isKeyInBlock(const std::string& key) const {
    return findValue(key) != nullptr;
}

void IO_DataModelBlock::replaceValue(const std::string& key, std::string value) {
    const auto found = std::ranges::find(keys, key);
    if (found != keys.end())
        values[static_cast<std::size_t>(found - keys.begin())] = std::move(value);
}

void IO_DataModelBlock::getErrorString(std::string* text) const {
    *text =
        "In Block <" + kind + "> prior to line number " + std::to_string(lineNumber) + ":\n" + errorString;
}

// The part that all reads share: the text of the value, or null and a reported error.
const std::string* IO_DataModelBlock::beginRead(std::string key, const void* output, unsigned code,
                                                bool isCodeTaken) {
    currentKey = std::move(key);
    if (!output || !isCodeTaken) {
        reportProgramCode(code);
        return nullptr;
    }
    const std::string* text = findValue(currentKey);
    if (!text)
        errorString +=
            "ERROR: Key <" + currentKey + "> not found in read list of keys! Please check your input file!\n";
    return text;
}

void IO_DataModelBlock::reportProgramCode(unsigned code) {
    errorString += "ERROR: In definition of key <" + currentKey + ">: \nSupplied input for getValue <" +
                   typeOf(code).name + "> not valid! Check program code!\n\n";
}

void IO_DataModelBlock::reportFailedConversion(const std::string& text, unsigned code) {
    errorString += "ERROR: In definition of key <" + currentKey + ">: \nNot able to convert < " + text +
                   "> to " + typeOf(code).elementType + " value!\n\n\n";
}

void IO_DataModelBlock::reportWrongCount(const std::string& text, unsigned count) {
    errorString += "ERROR: In definition of key <" + currentKey +
                   ">: \nWrong number of arguments in (double " + std::to_string(count) +
                   " parameters required)!\nPlease check <" + text + "> for typos! Delimiter: <, >\n";
}

void IO_DataModelBlock::getValue(std::string key, bool* value) {
    if (const std::string* text = beginRead(std::move(key), value, Bool, true))
        if (!stringToBool(*text, value))
            reportFailedConversion(*text, Bool);
}

void IO_DataModelBlock::getValue(std::string key, int* value) {
    if (const std::string* text = beginRead(std::move(key), value, Int, true))
        if (!stringToInt(*text, value))
            reportFailedConversion(*text, Int);
}

void IO_DataModelBlock::getValue(std::string key, unsigned* value) {
    if (const std::string* text = beginRead(std::move(key), value, Unsigned, true))
        if (!stringToUnsigned(*text, value))
            reportFailedConversion(*text, Unsigned);
}

void IO_DataModelBlock::readDoubles(const std::string& text, double* output, unsigned code, unsigned count) {
    const std::vector<std::string> pieces =
        count == 1 ? std::vector<std::string>{text} : splitList(text, count);
    if (pieces.size() != count)
        return reportWrongCount(text, count);
    for (std::size_t i = 0; i < count; ++i)
        if (!stringToDouble(pieces[i], output + i))
            reportFailedConversion(pieces[i], code);
}

void IO_DataModelBlock::getValue(std::string key, double* output, unsigned code) {
    if (const std::string* text = beginRead(std::move(key), output, code, isDoubleCode(code)))
        readDoubles(*text, output, code, typeOf(code).count);
}

void IO_DataModelBlock::getValueArray(std::string key, double* output, unsigned count) {
    if (const std::string* text = beginRead(std::move(key), output, DoubleArray, count > 0))
        readDoubles(*text, output, DoubleArray, count);
}

void IO_DataModelBlock::getValue(std::string key, std::string* value, unsigned code) {
    const bool isCodeTaken = code == String || code == FilePath;
    const std::string* text = beginRead(std::move(key), value, code, isCodeTaken);
    if (!text)
        return;
    const bool isRelative = code == FilePath && !canOpenForReading(*text);
    *value = isRelative ? joinPath(baseDirectory, *text) : *text;
}

void IO_DataModelBlock::getValue(std::string key, std::vector<std::string>* output) {
    const std::string* text = beginRead(std::move(key), output, StringPair, true);
    if (!text)
        return;
    *output = splitList(*text, 2);
    if (output->size() == 1)
        output->insert(output->begin(), std::string());
}

} // namespace velmora
