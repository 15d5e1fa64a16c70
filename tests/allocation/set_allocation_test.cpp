#include "failing_allocator.h"
#include "lib_foundation.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

using namespace test_support;

namespace
{

using Set = LibT_Set<long long>;

void Fill(Set& set)
{
    for (const long long n : {50, 30, 80, 10, 40, 5, 20, 60, 90})
        set.Insert(n);
}

class Refusing_Copies
{
public:
    Refusing_Copies() = default;
    Refusing_Copies(const Refusing_Copies& source) : m_nCopies_Left(source.m_nCopies_Left - 1)
    {
        if (m_nCopies_Left < 0)
        {
            throw std::runtime_error("no copy");
        }
    }
    bool operator<(const Refusing_Copies&) const { return true; }

private:
    int m_nCopies_Left = 1; // for the argument of Insert
};

} // namespace

TEST(Set_Allocation, Leaves_The_Set_As_It_Was_When_Memory_Is_Out)
{
    const unsigned int nFailed = Fail_Each_Allocation_Without_Loss(
        [](unsigned int nNth)
        {
            Set set;
            Fill(set);
            const long long nBefore = Outstanding_Bytes();
            const Outcome outcome = Call_Failing(nNth, [&] { set.Insert(45); });
            EXPECT_EQ(outcome.m_bFailed, outcome.m_bThrown);
            EXPECT_EQ(outcome.m_bFailed ? 9U : 10U, set.Get_Num_Elements());
            set.Remove(45);
            EXPECT_EQ(nBefore, Outstanding_Bytes());
            return outcome.m_bFailed;
        });
    EXPECT_EQ(2U, nFailed) << "a node and its value";

    LibT_Set<Refusing_Copies> refusing;
    const long long nBefore = Outstanding_Bytes();
    const Refusing_Copies element;
    EXPECT_THROW(refusing.Insert(element), std::runtime_error);
    EXPECT_EQ(nBefore, Outstanding_Bytes());
    EXPECT_EQ(0U, refusing.Get_Num_Elements());
}

TEST(Set_Allocation, Skips_Nothing_On_A_Walk_Whose_Memory_Fails)
{
    Set set;
    Fill(set);
    const long long expected[] = {50, 30, 10, 5, 20, 40, 80, 60, 90};
    unsigned int nThrown = 0;
    const unsigned int nFailed = Fail_Each_Allocation_Without_Loss(
        [&](unsigned int nNth)
        {
            long long walk[9] = {};
            std::size_t nLength = 0;
            const Failing_Allocation failure(nNth);
            Set::Iterator iterator;
            iterator.Start(set);
            while (!iterator.Is_End() && nLength < 9)
            {
                const Set::Node* const pHere = iterator.m_pNode;
                walk[nLength++] = *pHere->m_pValue;
                try
                {
                    iterator.Next();
                }
                catch (const std::bad_alloc&)
                {
                    ++nThrown;
                    EXPECT_EQ(pHere, iterator.m_pNode) << "it stays, so that Next can be tried again";
                    iterator.Next();
                }
            }
            EXPECT_TRUE(iterator.Is_End());
            const bool bFailed = failure.Has_Failed();
            EXPECT_TRUE(std::ranges::equal(expected, walk));
            return bFailed;
        });
    EXPECT_EQ(4U, nThrown) << "one for each node with two subtrees";
    EXPECT_EQ(6U, nFailed) << "and pops that found no smaller block went on with the larger one";
}

TEST(Array_Allocation, Keeps_Its_Elements_When_Memory_Is_Out)
{
    const auto add = [](unsigned int nNth)
    {
        LibT_Array<int, 2> array;
        int nAdded = 0;
        const Outcome outcome = Call_Failing(nNth,
                                             [&]
                                             {
                                                 for (; nAdded < 5; ++nAdded)
                                                     array.Add(nAdded);
                                             });
        EXPECT_EQ(static_cast<unsigned long long>(nAdded), array.Get_Num_Elements());
        for (int i = 0; i < nAdded; ++i)
            EXPECT_EQ(i, array[static_cast<unsigned long long>(i)]);
        return outcome.m_bFailed;
    };
    EXPECT_EQ(3U, Fail_Each_Allocation_Without_Loss(add));
}
