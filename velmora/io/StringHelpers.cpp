#include "velmora/io/StringHelpers.h"

#include <algorithm>
#include <cctype>
#include <locale>
#include <sstream>

namespace velmora {

namespace {

// Success needs both: the extraction worked, and nothing is left in the stream.
template <class T>
bool extractWhole(const std::string& text, T* value) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    T number{};
    if (!(stream >> number) || stream.peek() != std::istringstream::traits_type::eof())
        return false;
    *value = number;
    return true;
}

} // namespace

void trimString(std::string& text) {
    const auto first = text.find_first_not_of(" \t");
    const auto last = text.find_last_not_of(" \t");
    text = first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
    if (text == "\n")
        text.clear();
}

void toLowerCase(std::string& text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

bool splitAtDelimiter(std::string text, std::string delimiter, std::string* left, std::string* right) {
    const auto place = text.find(delimiter);
    if (place == std::string::npos)
        return false;
    *left = text.substr(0, place);
    *right = place < text.size() ? text.substr(place + 1) : std::string();
    trimString(*left);
    trimString(*right);
    return true;
}

void tokenizeString(const std::string& text, std::vector<std::string>* pieces, const std::string& delimiter) {
    if (delimiter.empty())
        return;
    for (std::size_t begin = 0; begin < text.size();) {
        const auto end = std::min(text.find(delimiter, begin), text.size());
        if (end > begin) {
            pieces->push_back(text.substr(begin, end - begin));
            trimString(pieces->back());
        }
        begin = end + delimiter.size();
    }
}

bool splitByWidths(const std::string& text, std::vector<std::string>* pieces,
                   const std::vector<unsigned>* widths) {
    std::size_t begin = 0;
    for (const unsigned width : *widths) {
        if (width > text.size() - begin)
            return false;
        pieces->push_back(text.substr(begin, width));
        begin += width;
    }
    return true;
}

bool stringToBool(std::string text, bool* value) {
    toLowerCase(text);
    if (text != "yes" && text != "no")
        return false;
    *value = text == "yes";
    return true;
}

bool stringToInt(const std::string& text, int* value) {
    return extractWhole(text, value);
}

bool stringToUnsigned(const std::string& text, unsigned* value) {
    int number = 0;
    if (!extractWhole(text, &number) || number < 0)
        return false;
    *value = static_cast<unsigned>(number);
    return true;
}

bool stringToDouble(const std::string& text, double* value) {
    return extractWhole(text, value);
}

} // namespace velmora
