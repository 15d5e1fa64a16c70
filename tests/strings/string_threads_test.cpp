#include "other_thread.h"
#include "string_probe.h"

using namespace test_support;

template <class String>
class String_Threads : public testing::Test
{
};
TYPED_TEST_SUITE(String_Threads, Both_Widths);

// Meant for the thread sanitizer above all.
TYPED_TEST(String_Threads, Share_One_Block_And_The_Empty_One)
{
    using Char = Char_Of<TypeParam>;
    constexpr int nThreads = 8;
    const Open<TypeParam> source(T("shared text"));
    std::vector<Open<TypeParam>> own(nThreads, source);
    On_Threads(nThreads,
               [&](std::size_t nThread)
               {
                   Open<TypeParam>& text = own[nThread];
                   const auto ch = static_cast<Char>('a' + nThread);
                   for (int i = 0; i < 2000; ++i)
                   {
                       const TypeParam copy(text);
                       TypeParam written(copy);
                       ASSERT_EQ(7, copy.Find(T("text")));
                       written.Set_At(0, ch);
                       ASSERT_EQ(ch, written.Get_At(0));
                       TypeParam empty = written.Left(0);
                       empty.Release_Buffer(), empty.TrimRight(), empty = TypeParam(), empty.Lock_Buffer();
                       written = empty + copy;
                       ASSERT_TRUE(written == source);
                       text.Format(T("%s"), T("shared text")); // leaves the block and comes back to it
                       text = source;
                   }
               });
    EXPECT_EQ(nThreads + 1, source.Get_Holders());
    own.clear();
    EXPECT_EQ(1, source.Get_Holders());
    EXPECT_TEXT_EQ(T("shared text"), source);
}
