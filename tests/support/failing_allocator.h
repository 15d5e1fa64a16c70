#ifndef QNLIB_TEST_FAILING_ALLOCATOR_H
#define QNLIB_TEST_FAILING_ALLOCATOR_H

// The global allocator of the test program, replaced by one that counts and that fails on demand. It serves
// what is linked into the program itself, so such a program links the static library. All threads share one
// count.

#include <gtest/gtest.h>

namespace test_support
{

/// Allocations that succeeded since the program began.
unsigned long long Allocation_Count();

/// Bytes that were asked for and are not released yet.
long long Outstanding_Bytes();

/// While it lives, the nth allocation from its making on fails (1 is the next), and only that one. One at a
/// time.
class Failing_Allocation
{
public:
    explicit Failing_Allocation(unsigned int nNth);
    Failing_Allocation(const Failing_Allocation&) = delete;
    Failing_Allocation& operator=(const Failing_Allocation&) = delete;
    ~Failing_Allocation();

    /// Whether the nth allocation has been asked for.
    bool Has_Failed() const;
};

/// Calls `road` with 1, 2 and so on until it answers false; the result is the number of calls that answered
/// true. The road makes its setting, puts a Failing_Allocation around the operation under test, checks what
/// is left of a failed one, and answers Has_Failed().
template <class Road>
unsigned int Fail_Each_Allocation(const Road& road)
{
    constexpr unsigned int nMost = 10000;
    for (unsigned int nNth = 1; nNth <= nMost; ++nNth)
    {
        SCOPED_TRACE(testing::Message() << "allocation " << nNth << " fails");
        if (!road(nNth) || testing::Test::HasFatalFailure())
        {
            return nNth - 1;
        }
    }
    ADD_FAILURE() << "the road allocates without end";
    return nMost;
}

/// The same for a road that must lose no memory, whether it fails or not.
template <class Road>
unsigned int Fail_Each_Allocation_Without_Loss(const Road& road)
{
    return Fail_Each_Allocation(
        [&](unsigned int nNth)
        {
            const long long nBefore = Outstanding_Bytes();
            const bool bFailed = road(nNth);
            EXPECT_EQ(nBefore, Outstanding_Bytes());
            return bFailed;
        });
}

} // namespace test_support

#endif
