#include "velmora/platform/LargePages.h"

#include <cstdlib>
#include <limits>
#include <new>

#ifdef _WIN32
#include <malloc.h>
#else
#include <sys/mman.h>
#endif

namespace velmora {

namespace {

constexpr std::size_t cacheLine = 64;
constexpr std::size_t largePage = std::size_t{2} << 20;

std::size_t roundUp(std::size_t bytes, std::size_t unit) {
    if (bytes > std::numeric_limits<std::size_t>::max() - unit)
        throw std::bad_alloc();
    return (bytes + unit - 1) / unit * unit;
}

} // namespace

void* allocateLargePages(std::size_t bytes) {
    const std::size_t alignment = bytes < largePage ? cacheLine : largePage;
    const std::size_t size = roundUp(bytes == 0 ? 1 : bytes, alignment);
#ifdef _WIN32
    void* memory = _aligned_malloc(size, alignment);
#else
    void* memory = std::aligned_alloc(alignment, size);
#endif
    if (!memory)
        throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
    if (alignment == largePage)
        static_cast<void>(madvise(memory, size, MADV_HUGEPAGE)); // a refusal changes nothing
#endif
    return memory;
}

void freeLargePages(void* memory) noexcept {
#ifdef _WIN32
    _aligned_free(memory);
#else
    std::free(memory);
#endif
}

} // namespace velmora
