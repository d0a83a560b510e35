#include "velmora/platform/Prefetch.h"

#if defined(__linux__)
#include <sys/mman.h>

#include <cstdint>
#endif

namespace velmora {

#if defined(__linux__)
void adviseLargePages(void* memory, std::size_t numBytes) {
    constexpr std::uintptr_t pageSize = 4096;
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    const std::uintptr_t begin = (address + pageSize - 1) / pageSize * pageSize;
    const std::uintptr_t end = (address + numBytes) / pageSize * pageSize;
    if (begin < end) // a refusal costs speed alone
        static_cast<void>(
            madvise(static_cast<char*>(memory) + (begin - address), end - begin, MADV_HUGEPAGE));
}
#else
void adviseLargePages(void*, std::size_t) {}
#endif

} // namespace velmora
