#include "AllocationCounter.h"

#include <cstdlib>
#include <new>

namespace {
unsigned long numOfAllocations = 0;
} // namespace

unsigned long velmora::driver::getNumOfAllocations() {
    return numOfAllocations;
}

void* operator new(std::size_t size) {
    ++numOfAllocations;
    if (void* memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
