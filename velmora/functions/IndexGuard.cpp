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

bool isLoopWord(const std::string& word) {
    constexpr std::array words = {"for", "while", "repeat"};
    return std::ranges::find(words, word) != words.end();
}

} // namespace

std::string guardIndices(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t close = text[i] == '[' ? findClosing(text, i) : text.size();
        std::size_t begin = 0, beginOfFirst = 0;
        const std::string name = close < text.size() ? nameOf(wordBefore(text, i, begin)) : "";
        const std::string content = close < text.size() ? text.substr(i + 1, close - i - 1) : "";
        const bool isIndex =
            !name.empty() && !isPlainNumber(content) && wordBefore(text, begin, beginOfFirst) != "var";
        if (!isIndex) {
            result += text[i];
            continue;
        }
        result += "[max(0, min(" + name + "[] - 1, " + guardIndices(content) + "))]";
        i = close;
    }
    return result;
}

unsigned countLoops(const std::string& text) {
    unsigned count = 0;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t end = i;
        while (end < text.size() && isNamePart(text[end]))
            ++end;
        count += isLoopWord(text.substr(i, end - i));
        i = std::max(end, i + 1);
    }
    return count;
}

} // namespace velmora
