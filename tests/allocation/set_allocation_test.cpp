#include "failing_allocator.h"
#include "lib_foundation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <stdexcept>

using test_support::Fail_Each_Allocation_Without_Loss;
using test_support::Failing_Allocation;
using test_support::Outstanding_Bytes;

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

TEST(Set_Allocation, Takes_A_Node_And_Its_Value_And_Gives_Both_Back)
{
    const long long nBefore = Outstanding_Bytes();
    Set set;
    set.Insert(1);
    EXPECT_EQ(nBefore + 32, Outstanding_Bytes());
    set.Insert(1);
    EXPECT_EQ(nBefore + 32, Outstanding_Bytes()) << "an equal element takes nothing";
    set.Remove(1);
    EXPECT_EQ(nBefore, Outstanding_Bytes());
    Fill(set);
    set.Clear();
    EXPECT_EQ(nBefore, Outstanding_Bytes());
}

TEST(Set_Allocation, Leaves_The_Set_As_It_Was_When_Memory_Is_Out)
{
    const unsigned int nFailed = Fail_Each_Allocation_Without_Loss(
        [](unsigned int nNth)
        {
            Set set;
            Fill(set);
            const long long nBefore = Outstanding_Bytes();
            const Failing_Allocation failure(nNth);
            try
            {
                set.Insert(45);
            }
            catch (const std::bad_alloc&)
            {
                EXPECT_EQ(nBefore, Outstanding_Bytes());
                EXPECT_EQ(9U, set.Get_Num_Elements());
            }
            return failure.Has_Failed();
        });
    EXPECT_EQ(2U, nFailed);

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
    const unsigned int nFailed = Fail_Each_Allocation_Without_Loss(
        [](unsigned int nNth)
        {
            LibT_Array<int, 2> array;
            LibT_Array<int, 2> copy;
            int nAdded = 0;
            const Failing_Allocation failure(nNth);
            try
            {
                for (; nAdded < 5; ++nAdded)
                    array.Add(nAdded);
                copy = array;
            }
            catch (const std::bad_alloc&)
            {
                EXPECT_EQ(static_cast<unsigned long long>(nAdded), array.Get_Num_Elements());
                EXPECT_EQ(0U, copy.Get_Num_Elements());
            }
            for (int i = 0; i < nAdded; ++i)
                EXPECT_EQ(i, array[static_cast<unsigned long long>(i)]);
            return failure.Has_Failed();
        });
    EXPECT_EQ(4U, nFailed);
}
