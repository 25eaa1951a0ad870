#include "support/AllocationFailure.h"

#include <cstdlib>
#include <new>

namespace {
thread_local bool failing = false;
}  // namespace

namespace ryn::test {
AllocationFailure::AllocationFailure() { failing = true; }
AllocationFailure::~AllocationFailure() { failing = false; }
}  // namespace ryn::test

// The replaceable allocation functions of the test program. The array and
// non-throwing forms of the standard library call these.
void *operator new(std::size_t size) {
    if (failing) throw std::bad_alloc();
    if (void *memory = std::malloc(size == 0 ? 1 : size)) return memory;
    throw std::bad_alloc();
}
void operator delete(void *memory) noexcept { std::free(memory); }
void operator delete(void *memory, std::size_t) noexcept { std::free(memory); }
