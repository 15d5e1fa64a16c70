#ifndef QNLIB_TEST_FAILING_ALLOCATOR_H
#define QNLIB_TEST_FAILING_ALLOCATOR_H

// The global allocator of the test program, replaced by one that counts and that fails on demand. It serves
// what is linked into the program itself, so such a program links the static library. All threads share one
// count.

#include <gtest/gtest.h>

#include <new>

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

/// What came of a call whose nth allocation was to fail.
struct Outcome
{
    bool m_bFailed = false; ///< the allocation was asked for
    bool m_bThrown = false; ///< std::bad_alloc left the call
};

/// Calls with the nth allocation failing.
template <class Call>
Outcome Call_Failing(unsigned int nNth, const Call& call)
{
    Outcome outcome;
    const Failing_Allocation failure(nNth);
    try
    {
        call();
    }
    catch (const std::bad_alloc&)
    {
        outcome.m_bThrown = true;
    }
    outcome.m_bFailed = failure.Has_Failed();
    return outcome;
}

/// Calls `road` with 1, 2 and so on until it answers false; the result is the number of calls that answered
/// true. The road makes its setting, calls the operation under test by Call_Failing, checks what is left of a
/// failed one, and answers whether it failed.
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
