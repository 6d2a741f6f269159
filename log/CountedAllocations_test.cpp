// The operators stand alone here: where the compiler sees through them, it takes their pairing with
// the allocator's for a mistake.
#include "log/CountedAllocations_test.hpp"

#include <cstdlib>
#include <new>

namespace {
thread_local long allocations = 0;
} // namespace

long tav::allocationsOfThisThread() { return allocations; }

void* operator new(std::size_t size) {
    ++allocations;
    if (void* memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    ++allocations;
    return std::malloc(size == 0 ? 1 : size);
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
