#pragma once

#include <cmath>
#include <concepts>
#include <limits>
#include <span>
#include <vector>

namespace velmora {

/// What stays behind in objects between evaluations, or between steps of a solver (counted turns, directions
/// that hold on), as plain numbers. An object names each of its own once; they are appended to a list, or
/// taken back from one in the same order.
class MBS_History {
  public:
    /// Appends to `numbers`, which isn't owned.
    explicit MBS_History(std::vector<double>* numbers) : saved(numbers) {}
    /// Takes back from `numbers`, which aren't owned, from the first on.
    explicit MBS_History(std::span<const double> numbers) : rest(numbers) {}

    void exchange(double& value) {
        if (saved)
            saved->push_back(value);
        else
            value = next(value);
    }
    void exchange(std::span<double> values) {
        for (double& value : values)
            exchange(value);
    }
    /// A whole number or a flag. What is taken back has to lie in the range of its type, and below 2^53.
    template <std::integral T>
    void exchange(T& value) {
        constexpr double exact = 9007199254740992.0; // above it not every whole number is a double
        double number = static_cast<double>(value);
        exchange(number);
        isSound = isSound && std::fabs(number) < exact && number == std::floor(number) &&
                  number >= static_cast<double>(std::numeric_limits<T>::min()) &&
                  number <= static_cast<double>(std::numeric_limits<T>::max());
        if (isSound)
            value = static_cast<T>(number);
    }
    /// A list whose length is part of the history.
    template <class T>
    void exchange(std::vector<T>& values) {
        auto size = values.size();
        exchange(size);
        if (!saved) {
            isSound = isSound && size <= rest.size();
            values.resize(isSound ? size : 0);
        }
        for (T& value : values)
            exchange(value);
    }

    /// True if values come from the list, as far as it is sound up to here.
    bool isTakingBack() const { return !saved && isSound; }
    /// Ends a taking back that can't be right.
    void refuse() { isSound = false; }
    /// Whether all numbers fitted what the objects asked for, and none is left.
    bool isWhole() const { return isSound && rest.empty(); }

  private:
    double next(double otherwise) {
        isSound = isSound && !rest.empty();
        if (!isSound)
            return otherwise;
        const double value = rest.front();
        rest = rest.subspan(1);
        return value;
    }

    std::vector<double>* saved = nullptr; // null while taking back
    std::span<const double> rest;
    bool isSound = true;
};

} // namespace velmora
