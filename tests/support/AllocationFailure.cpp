#include "support/AllocationFailure.h"

#include <cstdlib>
#include <new>

namespace {
thread_local bool failing = false;

void *allocate(std::size_t size) {
    if (failing) return nullptr;
    return std::malloc(size == 0 ? 1 : size);
}
void *allocateOrThrow(std::size_t size) {
    if (void *memory = allocate(size)) return memory;
    throw std::bad_alloc();
}
}  // namespace

namespace ryn::test {
AllocationFailure::AllocationFailure() { failing = true; }
AllocationFailure::~AllocationFailure() { failing = false; }
}  // namespace ryn::test

// Every replaceable allocation function of the test program, so that none of
// them reaches the default (or a sanitizer's) allocator with another pairing.
void *operator new(std::size_t size) { return allocateOrThrow(size); }
void *operator new[](std::size_t size) { return allocateOrThrow(size); }
void *operator new(std::size_t size, const std::nothrow_t &) noexcept { return allocate(size); }
void *operator new[](std::size_t size, const std::nothrow_t &) noexcept { return allocate(size); }
void operator delete(void *memory) noexcept { std::free(memory); }
void operator delete[](void *memory) noexcept { std::free(memory); }
void operator delete(void *memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void *memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void *memory, const std::nothrow_t &) noexcept { std::free(memory); }
void operator delete[](void *memory, const std::nothrow_t &) noexcept { std::free(memory); }
