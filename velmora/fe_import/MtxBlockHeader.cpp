#include "velmora/fe_import/MtxBlockHeader.h"

#include "velmora/io/StringHelpers.h"

#include <algorithm>

namespace velmora {

bool MtxBlockHeader::parse(const std::vector<std::string>& tokens, bool isNodeList) {
    const auto open = std::find(tokens.begin() + 1, tokens.end(), "(");
    const auto close = std::find(open, tokens.end(), ")");
    return close != tokens.end() && parseAttributes({tokens.begin() + 1, open}) &&
           parseFormat({open + 1, close}, isNodeList);
}

bool MtxBlockHeader::parseAttributes(const std::vector<std::string>& attributes) {
    const bool isFull = !attributes.empty() && attributes[0] == "FULL";
    const bool isSparse = !attributes.empty() && attributes[0] == "SPARSE";
    if (!isFull && !isSparse)
        return false;
    if (isFull) {
        if (attributes.size() < 2 || (attributes[1] != "RORDER" && attributes[1] != "CORDER"))
            return false;
        isColumnOrder = attributes[1] == "CORDER";
    }
    std::vector<unsigned> numbers;
    for (std::size_t i = isFull ? 2 : 1; i < attributes.size(); ++i)
        if (!stringToUnsigned(attributes[i], &numbers.emplace_back()))
            return false;
    if (numbers.size() < (isFull ? 2 : 3))
        return false;
    kind = isFull ? Kind::Plain : Kind::Sparse;
    rows = numbers[0];
    cols = numbers[1];
    numOfValues = isFull ? 0 : numbers[2];
    return true;
}

bool MtxBlockHeader::parseFormat(const std::vector<std::string>& formats, bool isNodeList) {
    const std::size_t place = isNodeList ? 2 : 1; // from the end
    if (formats.size() < place)
        return false;
    if (kind != Kind::Sparse && formats.size() > 1)
        kind = Kind::Labelled;
    const std::string& format = formats[formats.size() - place];
    const auto mark = format.find('E');
    const auto point = format.find('.', mark);
    if (mark == std::string::npos || point == std::string::npos ||
        !stringToUnsigned(format.substr(mark + 1, point - mark - 1), &width) || width == 0)
        return false;
    if (kind != Kind::Plain || mark == 0)
        return true;
    return stringToUnsigned(format.substr(0, mark), &repeat) && repeat > 0;
}

} // namespace velmora
