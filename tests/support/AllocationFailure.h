// Makes every allocation through operator new on the current thread fail
// with std::bad_alloc while an AllocationFailure object is alive, so that
// tests can show what the library's entry points do when memory runs out.
#pragma once

namespace ryn::test {

class AllocationFailure {
public:
    AllocationFailure();
    ~AllocationFailure();
    AllocationFailure(const AllocationFailure &) = delete;
    AllocationFailure &operator=(const AllocationFailure &) = delete;
};

}  // namespace ryn::test
