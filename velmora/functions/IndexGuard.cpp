#include "velmora/functions/IndexGuard.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace velmora {

namespace {

bool isNamePart(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.';
}

bool isBlank(char c) {
    return std::isspace(static_cast<unsigned char>(c));
}

bool isPlainNumber(const std::string& text) {
    return std::ranges::all_of(
        text, [](char c) { return std::isdigit(static_cast<unsigned char>(c)) || isBlank(c); });
}

/// The word that ends right before this place, blanks between them aside; empty if there is none.
std::string wordBefore(const std::string& text, std::size_t end, std::size_t& begin) {
    while (end > 0 && isBlank(text[end - 1]))
        --end;
    begin = end;
    while (begin > 0 && isNamePart(text[begin - 1]))
        --begin;
    return text.substr(begin, end - begin);
}

/// The name at the end of a word, which a number may precede: "2e3v" is 2000 times v.
std::string nameOf(const std::string& word) {
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    std::size_t i = 0;
    const auto skip = [&](auto belongs) {
        while (i < word.size() && belongs(word[i]))
            ++i;
    };
    skip([&](char c) { return isDigit(c) || c == '.'; });
    if (i > 0 && i + 1 < word.size() && (word[i] == 'e' || word[i] == 'E') && isDigit(word[i + 1])) {
        ++i;
        skip(isDigit);
    }
    return word.substr(i);
}

/// Place of the bracket that closes the one at `open`; the end of the text if none does.
std::size_t findClosing(const std::string& text, std::size_t open) {
    int depth = 0;
    for (std::size_t i = open; i < text.size(); ++i) {
        depth += (text[i] == '[') - (text[i] == ']');
        if (depth == 0)
            return i;
    }
    return text.size();
}

/// A name with brackets behind it.
struct Brackets {
    std::string name; ///< empty if there is no name, or no closing bracket
    std::string content;
    std::size_t close = 0;      ///< place of the closing bracket
    bool isDeclaration = false; ///< of a local vector
};

Brackets readBrackets(const std::string& text, std::size_t open) {
    Brackets result;
    result.close = findClosing(text, open);
    if (result.close == text.size())
        return result;
    std::size_t begin = 0, beginOfFirst = 0;
    result.name = nameOf(wordBefore(text, open, begin));
    result.content = text.substr(open + 1, result.close - open - 1);
    result.isDeclaration = nameOf(wordBefore(text, begin, beginOfFirst)) == "var";
    return result;
}

/// Whether a whole vector is assigned behind this place: ":=", and no list of elements.
bool isVectorAssigned(const std::string& text, std::size_t place) {
    const auto next = [&](std::size_t from) { return text.find_first_not_of(" \t\n\r\f\v", from); };
    const std::size_t sign = next(place);
    if (sign == std::string::npos || text.compare(sign, 2, ":=") != 0)
        return false;
    const std::size_t value = next(sign + 2);
    return value != std::string::npos && text[value] != '{' && text[value] != '[';
}

bool isLoopWord(const std::string& word) {
    constexpr std::array words = {"for", "while", "repeat"};
    return std::ranges::find(words, word) != words.end();
}

} // namespace

std::string guardIndices(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        result += text[i];
        if (text[i] != '[')
            continue;
        const Brackets brackets = readBrackets(text, i);
        if (brackets.name.empty() || isPlainNumber(brackets.content) != brackets.isDeclaration)
            continue;
        if (!brackets.isDeclaration)
            result += "max(0, min(" + brackets.name + "[] - 1, " + guardIndices(brackets.content) + "))]";
        else if (isVectorAssigned(text, brackets.close + 1))
            result += brackets.content + "]; " + brackets.name;
        else
            continue;
        i = brackets.close;
    }
    return result;
}

std::size_t countLocalElements(const std::string& text, std::size_t most, std::size_t& place) {
    std::size_t count = 0;
    for (std::size_t i = text.find('['); i != std::string::npos; i = text.find('[', i + 1)) {
        const Brackets brackets = readBrackets(text, i);
        if (!brackets.isDeclaration || brackets.name.empty())
            continue;
        std::size_t size = isPlainNumber(brackets.content) ? 0 : most + 1;
        for (const char c : brackets.content)
            if (!isBlank(c))
                size = std::min(most + 1, 10 * size + static_cast<std::size_t>(c - '0'));
        count += size;
        if (count > most) {
            place = i + 1;
            return most + 1;
        }
    }
    return count;
}

unsigned countLoops(const std::string& text) {
    unsigned count = 0;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t end = i;
        while (end < text.size() && isNamePart(text[end]))
            ++end;
        count += isLoopWord(nameOf(text.substr(i, end - i)));
        i = std::max(end, i + 1);
    }
    return count;
}

} // namespace velmora
