#include "lib_foundation.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <new>

namespace
{

class Counted_Container : public Lib_Container
{
public:
    explicit Counted_Container(int* pDestroyed) : m_pDestroyed(pDestroyed) {}
    Counted_Container(const Counted_Container&) = delete;
    Counted_Container& operator=(const Counted_Container&) = delete;
    ~Counted_Container() override { ++*m_pDestroyed; }
    void Clear() override { m_nCount = 0; }
    unsigned long long Get_Num_Elements() const override { return m_nCount; }

private:
    int* m_pDestroyed;
    unsigned long long m_nCount = 7;
};

} // namespace

TEST(Container, Is_Empty_By_Itself)
{
    Lib_Container first;
    Lib_Container second(first);
    first.Clear();
    EXPECT_EQ(0U, first.Get_Num_Elements());
    EXPECT_EQ(&second, &(second = first));
}

TEST(Container, Serves_Derived_Containers_Through_The_Base)
{
    int nDestroyed = 0;
    std::unique_ptr<Lib_Container> pContainer = std::make_unique<Counted_Container>(&nDestroyed);
    EXPECT_EQ(7U, pContainer->Get_Num_Elements());
    pContainer->Clear();
    EXPECT_EQ(0U, pContainer->Get_Num_Elements());
    pContainer.reset();
    EXPECT_EQ(1, nDestroyed);
}

TEST(Container, Allocates_Blocks_Of_Any_Size)
{
    void* pEmpty = Lib_Container::Alloc_Buffer(0);
    EXPECT_NE(nullptr, pEmpty);
    Lib_Container::Free_Buffer(pEmpty);

    void* pBlock = Lib_Container::Alloc_Buffer(100);
    ASSERT_NE(nullptr, pBlock);
    std::memset(pBlock, 1, 100);
    Lib_Container::Free_Buffer(pBlock);
    Lib_Container::Free_Buffer(nullptr);
}

TEST(Container, Refuses_The_Largest_Size_By_An_Exception_Of_Its_Own)
{
    EXPECT_THROW(Lib_Container::Alloc_Buffer(~0ULL), std::bad_array_new_length);
}
