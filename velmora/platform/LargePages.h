#pragma once

#include "velmora/platform/Export.h"

#include <cstddef>
#include <vector>

namespace velmora {

/// Memory for arrays that an evaluation walks from end to end: begins on a cache line and, from 2 MB on, asks
/// the system for large pages, since a walk over small ones misses the address cache at every turn. The
/// advice may be ignored; the memory serves all the same. Throws std::bad_alloc.
VELMORA_EXPORT void* allocateLargePages(std::size_t bytes);
VELMORA_EXPORT void freeLargePages(void* memory) noexcept;

/// Allocator of the standard library over these two.
template <class T>
struct LargePageAllocator {
    using value_type = T;

    LargePageAllocator() = default;
    template <class U>
    LargePageAllocator(const LargePageAllocator<U>&) {} // NOLINT(google-explicit-constructor): as required

    T* allocate(std::size_t n) { return static_cast<T*>(allocateLargePages(n * sizeof(T))); }
    void deallocate(T* memory, std::size_t) noexcept { freeLargePages(memory); }

    template <class U>
    bool operator==(const LargePageAllocator<U>&) const {
        return true;
    }
};

/// Array that an evaluation walks.
template <class T>
using EvaluationArray = std::vector<T, LargePageAllocator<T>>;

} // namespace velmora
