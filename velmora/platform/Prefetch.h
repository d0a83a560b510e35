#pragma once

#include <cstddef>

namespace velmora {

/// Asks for the cache lines of a piece of memory that is about to be used. Never faults, whatever the
/// address.
inline void prefetch(const void* memory, std::size_t numBytes) {
#if defined(__GNUC__)
    const char* line = static_cast<const char*>(memory);
    for (std::size_t offset = 0; offset < numBytes; offset += 64)
        __builtin_prefetch(line + offset, 1);
#else
    static_cast<void>(memory);
    static_cast<void>(numBytes);
#endif
}

/// Asks the operating system to back a large array by large pages; a hint, to be given before its first use.
void adviseLargePages(void* memory, std::size_t numBytes);

} // namespace velmora
