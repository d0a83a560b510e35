#include "driver/NearName.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace velmora::driver {

namespace {

bool isSameLetter(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

} // namespace

// Row i of the table of distances between the first i letters of a and the first j of b; three rows are kept.
unsigned getEditDistance(std::string_view a, std::string_view b) {
    std::vector<unsigned> beforeLast(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
    std::iota(last.begin(), last.end(), 0U);
    for (std::size_t i = 1; i <= a.size(); ++i) {
        row[0] = static_cast<unsigned>(i);
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const unsigned replaced = last[j - 1] + (isSameLetter(a[i - 1], b[j - 1]) ? 0U : 1U);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            const bool isSwapped =
                i > 1 && j > 1 && isSameLetter(a[i - 1], b[j - 2]) && isSameLetter(a[i - 2], b[j - 1]);
            if (isSwapped)
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
        beforeLast.swap(last);
        last.swap(row);
    }
    return last[b.size()];
}

std::string findNearName(std::string_view text, const std::vector<std::string>& names) {
    const std::string* nearest = nullptr;
    unsigned shortest = static_cast<unsigned>(std::max<std::size_t>(1, text.size() / 3)) + 1;
    for (const std::string& name : names) {
        const unsigned distance = getEditDistance(text, name);
        // A name of one or two letters is near to every other one.
        if (distance < shortest && distance < std::max(text.size(), name.size())) {
            shortest = distance;
            nearest = &name;
        }
    }
    return nearest ? *nearest : std::string();
}

std::string suggestNearName(std::string_view text, const std::vector<std::string>& names) {
    const std::string name = findNearName(text, names);
    return name.empty() ? name : "; did you mean <" + name + ">?";
}

} // namespace velmora::driver
