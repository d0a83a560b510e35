#pragma once

#include <cstddef>

namespace velmora {

/// Asks the memory system for this memory, without waiting for it.
inline void fetch(const void* begin, std::size_t numOfBytes) {
#if defined(__GNUC__)
    for (std::size_t k = 0; k < numOfBytes; k += 64) // a cache line
        __builtin_prefetch(static_cast<const char*>(begin) + k);
#else
    static_cast<void>(begin);
    static_cast<void>(numOfBytes);
#endif
}

/// Calls `work` on each object of a list of pointers. Objects that lie scattered in memory, with members that
/// do so too, are waited for line after line; so each is asked beforehand to fetch what it will read, by
/// `ask(object, step)` for the steps 0, 1, 2, of which each may read what the one before has fetched, and
/// step 0 the object itself.
template <class Objects, class Ask, class Work>
void forEachFetchedAhead(const Objects& objects, Ask ask, Work work) {
    constexpr std::size_t distance = 2; // in objects, from step to step
    constexpr std::size_t objectBytes = 640;
    const std::size_t n = objects.size();
    for (std::size_t i = 0; i < n; ++i) {
        if (i + 4 * distance < n)
            fetch(objects[i + 4 * distance].get(), objectBytes);
        for (unsigned step = 0; step < 3; ++step)
            if (i + (3 - step) * distance < n)
                ask(*objects[i + (3 - step) * distance], step);
        work(*objects[i]);
    }
}

} // namespace velmora
