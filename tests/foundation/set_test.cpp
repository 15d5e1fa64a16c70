#include "lib_foundation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <vector>

namespace
{

using Set = LibT_Set<int>;

/// The walk tells the whole shape: what is less than its node comes right behind it.
template <class T>
std::vector<T> Walk(const LibT_Set<T>& set)
{
    std::vector<T> walk;
    typename LibT_Set<T>::Iterator iterator;
    for (iterator.Start(set); !iterator.Is_End(); iterator.Next())
    {
        walk.push_back(*iterator.m_pNode->m_pValue);
    }
    EXPECT_FALSE(iterator.Next()) << "it stays at the end";
    EXPECT_EQ(0U, iterator.m_nPending);
    return walk;
}

using Values = std::vector<int>;

/// A tree that is one long branch, which insertion would need far too long for.
class Branch : public LibT_Set<int>
{
public:
    Branch(unsigned int nLength, bool bLesser)
    {
        for (unsigned int i = 0; i < nLength; ++i)
        {
            auto* const pNode = static_cast<Node*>(Alloc_Buffer(sizeof(Node)));
            auto* const pValue = static_cast<int*>(Alloc_Buffer(sizeof(int)));
            *pNode = bLesser ? Node{nullptr, m_pRoot, pValue} : Node{m_pRoot, nullptr, pValue};
            m_pRoot = pNode;
        }
    }
};

} // namespace

TEST(Set, Hangs_Elements_In_The_Order_Of_Their_Arrival)
{
    Set set;
    EXPECT_EQ(Values(), Walk(set));
    for (const int n : {5, 3, 8, 1, 4, 3, 5})
        set.Insert(n);
    EXPECT_EQ((Values{5, 3, 1, 4, 8}), Walk(set));
    const Lib_Container& container = set;
    EXPECT_EQ(5U, container.Get_Num_Elements());
    set.Clear();
    EXPECT_EQ(0U, container.Get_Num_Elements());
}

TEST(Set, Puts_One_Child_In_The_Place_Of_A_Removed_Element)
{
    const struct
    {
        Values m_Arrivals;
        int m_nRemoved;
        Values m_Walk;
    } rows[] = {
        {{5, 3, 8, 1, 4, 7, 9},
         5,
         {8, 7, 3, 1, 4, 9}}, // of the root, and of a greater child, the greater one
        {{10, 15, 20, 12, 18}, 15, {10, 20, 18, 12}},
        {{5, 3, 1, 4}, 5, {3, 1, 4}},
        {{10, 15, 12, 11}, 15, {10, 12, 11}},
        {{10, 5, 3, 4, 7, 6}, 5, {10, 3, 4, 7, 6}}, // of a lesser child the lesser one
        {{10, 5, 7, 6}, 5, {10, 7, 6}},
    };
    for (const auto& row : rows)
    {
        Set set;
        for (const int n : row.m_Arrivals)
            set.Insert(n);
        set.Remove(row.m_nRemoved);
        EXPECT_EQ(row.m_Walk, Walk(set));
    }
}

TEST(Set, Removes_By_A_Reference_Into_Itself)
{
    Set set;
    set.Insert(1);
    set.Insert(2);
    Set::Iterator iterator;
    iterator.Start(set);
    set.Remove(*iterator.m_pNode->m_pValue);
    EXPECT_EQ(Values{2}, Walk(set));
}

TEST(Set, Holds_What_A_Model_Holds_Through_Random_Changes)
{
    std::minstd_rand engine(7);
    Set set;
    std::set<int> model;
    for (int nRound = 0; nRound < 3000; ++nRound)
    {
        const int nValue = static_cast<int>(engine() % 100);
        if (engine() % 2 == 0)
        {
            set.Insert(nValue);
            model.insert(nValue);
        }
        else
        {
            set.Remove(nValue);
            model.erase(nValue);
        }
        Values walk = Walk(set);
        ASSERT_EQ(model.size(), set.Get_Num_Elements());

        Set twin; // elements that arrive in the order of a walk make the same tree, if it is one in order
        for (const int n : walk)
            twin.Insert(n);
        ASSERT_EQ(walk, Walk(twin));
        std::sort(walk.begin(), walk.end());
        ASSERT_EQ(Values(model.begin(), model.end()), walk);
    }
}

TEST(Set, Orders_Pointers_By_Their_Unsigned_Address)
{
    const auto At = [](unsigned long long nAddress) { return reinterpret_cast<int*>(nAddress); };
    LibT_Set<int*> set;
    for (int* p : {At(64), At(~0ULL), At(8)})
        set.Insert(p);
    EXPECT_EQ((std::vector<int*>{At(64), At(8), At(~0ULL)}), Walk(set));
}

TEST(Set, Counts_And_Clears_A_Degenerate_Tree_Of_Any_Depth)
{
    for (const bool bLesser : {false, true})
    {
        Branch branch(1000000, bLesser);
        EXPECT_EQ(1000000U, branch.Get_Num_Elements());
        branch.Clear();
        EXPECT_EQ(0U, branch.Get_Num_Elements());
    }
}

TEST(Set_Iterator, Starts_Again_And_Stops)
{
    Set set;
    for (const int n : {5, 3, 8, 1, 4})
        set.Insert(n);
    Set::Iterator iterator;
    EXPECT_FALSE(iterator.Next());
    iterator.Start(set);
    EXPECT_TRUE(iterator.Next());
    EXPECT_TRUE(iterator.Next());
    EXPECT_EQ(2U, iterator.m_nPending) << "8 and 4 wait";
    EXPECT_EQ(4, *iterator.m_Pending[1]->m_pValue);

    iterator.Stop();
    EXPECT_TRUE(iterator.Is_End());
    EXPECT_FALSE(iterator.Next());
    EXPECT_EQ(2U, iterator.m_Pending.Get_Num_Elements()) << "Stop leaves the buffer";

    iterator.Start(set);
    EXPECT_EQ(5, *iterator.m_pNode->m_pValue);
    EXPECT_EQ(0U, iterator.m_Pending.Get_Size());
}

TEST(Array, Grows_And_Copies)
{
    LibT_Array<int, 4> array;
    for (int i = 0; i < 20; ++i)
        array.Add(i);
    LibT_Array<int, 4> copy(array);
    array[19] = -1;
    copy.Add(20);
    for (int i = 0; i <= 20; ++i)
        ASSERT_EQ(i, copy[static_cast<unsigned long long>(i)]);
    const Lib_Container& container = copy;
    EXPECT_EQ(21U, container.Get_Num_Elements());
    array.Clear();
    copy = array;
    EXPECT_EQ(0U, container.Get_Num_Elements());
}
