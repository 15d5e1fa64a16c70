#include "failing_allocator.h"
#include "string_probe.h"

#include <functional>
#include <memory>
#include <new>

using namespace test_support;

namespace
{

/// Built before the module's own dynamic initialisation: needs nothing that runs then.
struct Early
{
    Lib_String m_strText{L"early "};
    Lib_StringA m_strNumber;

    Early()
    {
        const Lib_String copy(m_strText);
        m_strText += L"text";
        m_strText.Insert(0, copy);
        m_strNumber.Format("%d %s", m_strText.Replace(L"early", L"E"), "found");
    }
};

[[gnu::init_priority(101)]] Early s_Early;

template <class String>
class String_Allocation : public testing::Test
{
protected:
    enum class After
    {
        Unchanged,
        Empty
    };

    /// Makes every allocation of a change fail, on a private, a shared and a locked string, and expects what
    /// the string then holds, that the other holder has its text, and that nothing is lost.
    static void Expect_After_Failure(After after, const std::function<void(String&)>& change)
    {
        for (const char* pState : {"private", "shared", "locked"})
        {
            SCOPED_TRACE(pState);
            const unsigned int nFailed = Fail_Each_Allocation_Without_Loss(
                [&](unsigned int nNth) { return Has_Failed(after, change, *pState, nNth); });
            EXPECT_GE(nFailed, 1U) << "the change has to allocate";
        }
    }

private:
    static bool Has_Failed(After after, const std::function<void(String&)>& change, char chState,
                           unsigned int nNth)
    {
        using Char = Char_Of<String>;
        String text(T("abcdef"));
        const String other(chState == 's' ? text : String());
        if (chState == 'l')
            text.Lock_Buffer();
        bool bThrown = false;
        bool bFailed = false;
        {
            const Failing_Allocation failure(nNth);
            try
            {
                change(text);
            }
            catch (const std::bad_alloc&)
            {
                bThrown = true;
            }
            bFailed = failure.Has_Failed();
        }
        EXPECT_EQ(bFailed, bThrown);
        EXPECT_TEXT_EQ(chState == 's' ? T("abcdef") : T(""), other);
        if (bThrown)
        {
            EXPECT_TEXT_EQ(after == After::Empty ? T("") : T("abcdef"), text);
        }
        return bFailed;
    }
};
TYPED_TEST_SUITE(String_Allocation, Both_Widths);

} // namespace

TYPED_TEST(String_Allocation, Leaves_The_Text_To_An_Edit_That_Fails)
{
    using Char = Char_Of<TypeParam>;
    using S = TypeParam;
    const auto Expect_Unchanged = [](auto change)
    { TestFixture::Expect_After_Failure(TestFixture::After::Unchanged, change); };
    Expect_Unchanged([](S& s) { s += T("x"); });
    Expect_Unchanged([](S& s) { s.Get_Buffer(7); });
    Expect_Unchanged([](S& s) { s.Get_Buffer_Set_Length(7)[6] = 'x'; });
    Expect_Unchanged([](S& s) { s.Insert(3, T("xyz")); });
    Expect_Unchanged([](S& s) { s.Insert(3, Char('x')); });
    Expect_Unchanged([](S& s) { s.Replace(T("c"), T("xyz")); });
    Expect_Unchanged([](S& s) { s.Format(T("%s %f %d"), T("text"), 1.5, 3); });
    Expect_Unchanged([](S& s) { (s + s).Mid(1).Insert(0, T("x")); });
    Expect_Unchanged([](S& s) { TypeParam(s).Set_At(0, 'x'), TypeParam(T("x")) += T("y"); });
}

TYPED_TEST(String_Allocation, Empties_The_String_When_An_Assignment_Fails)
{
    using Char = Char_Of<TypeParam>;
    using S = TypeParam;
    const auto Expect_Empty = [](auto change)
    { TestFixture::Expect_After_Failure(TestFixture::After::Empty, change); };
    Expect_Empty([](S& s) { s = T("a longer text"); });
    S locked(T("a longer text"));
    locked.Lock_Buffer();
    Expect_Empty([&locked](S& s) { s = locked; });
}

TYPED_TEST(String_Allocation, Detaches_Or_Leaves_A_Shared_String_As_It_Is)
{
    using Char = Char_Of<TypeParam>;
    using S = TypeParam;
    for (void (*edit)(S&) :
         {+[](S& s) { s.Set_At(0, 'x'); }, +[](S& s) { s.Remove(Char('a')); }, +[](S& s) { s.Delete(0, 1); },
          +[](S& s) { s.Make_Upper(); }, +[](S& s) { s.Make_Reverse(); }, +[](S& s) { s.TrimLeft(); },
          +[](S& s) { s.Trim_Right(Char('f')); }, +[](S& s) { s.Replace(T("ab"), T("c")); },
          +[](S& s) { s.Replace(Char('a'), Char('b')); }, +[](S& s) { s.Release_Buffer(2); },
          +[](S& s) { s.Lock_Buffer(); }})
    {
        Open<S> text(T("abcdef"));
        const Open<S> other(text);
        {
            const Failing_Allocation failure(1);
            EXPECT_THROW(edit(text), std::bad_alloc);
        }
        EXPECT_TEXT_EQ(T("abcdef"), text);
        EXPECT_EQ(2, other.Get_Holders());
        edit(text);
        EXPECT_EQ(1, other.Get_Holders());
    }
}

TYPED_TEST(String_Allocation, Costs_Nothing_Where_A_Block_Can_Be_Shared_Or_Reused)
{
    using Char = Char_Of<TypeParam>;
    const Char* const pNull = nullptr;
    TypeParam text(T("abcdef"));
    text.Get_Buffer(20);
    const unsigned long long nCount = Allocation_Count();
    {
        const TypeParam none, null(pNull), empty(T("")), copy(text), whole(text.Left(6)), rest(text.Mid(9));
        TypeParam assigned;
        assigned = text;
    }
    text.Insert(0, T("xx")), text.Replace(T("a"), T("aaa")), text += T("y"), text = T("short");
    text.TrimRight(), text.Remove(0, 1), text.Make_Upper(), text = TypeParam();
    EXPECT_EQ(nCount, Allocation_Count());
    EXPECT_EQ(20U, text.Get_Alloc_Length());
    EXPECT_TRUE(Lib_StringA(L"").Is_Empty());
    EXPECT_EQ(nCount, Allocation_Count());
}

TEST(List_Allocation, Split_Leaves_A_List_And_Parse_Leaves_The_Pointer)
{
    EXPECT_LE(5U, Fail_Each_Allocation_Without_Loss(
                      [](unsigned int nNth)
                      {
                          int nMark = 0;
                          Lib_Strings* pList = reinterpret_cast<Lib_Strings*>(&nMark);
                          const Failing_Allocation failure(nNth);
                          try
                          {
                              Lib_Split_String(L"first,second,third", L',', pList);
                          }
                          catch (const std::bad_alloc&)
                          {
                              EXPECT_NE(reinterpret_cast<Lib_Strings*>(&nMark), pList);
                          }
                          const std::unique_ptr<Lib_Strings> list(pList);
                          const wchar_t* const expected[] = {L"first", L"second", L"third"};
                          for (unsigned long long i = 0; list != nullptr && i < list->Get_Num_Elements(); ++i)
                              EXPECT_TEXT_EQ(expected[i], list->Get_At(i));
                          return failure.Has_Failed();
                      }));
    EXPECT_LE(5U, Fail_Each_Allocation_Without_Loss(
                      [](unsigned int nNth)
                      {
                          Lib_Strings_Table* pTable = nullptr;
                          const Failing_Allocation failure(nNth);
                          try
                          {
                              Lib_Parse_String(L"key=value other=more", pTable);
                          }
                          catch (const std::bad_alloc&)
                          {
                              EXPECT_EQ(nullptr, pTable);
                          }
                          delete pTable;
                          return failure.Has_Failed();
                      }));
}

TEST(List_Allocation, Utilities_Lose_Nothing)
{
    const std::vector<wchar_t> wide(400, L'\x20AC');
    std::vector<unsigned char> narrow(400, 'a');
    Lib_String strHex(L"010203");
    const std::vector<std::function<void(Lib_String&, Lib_Buffer&)>> roads = {
        [&](Lib_String& s, Lib_Buffer&) { Lib_UTF8_Buffer_To_WString(narrow.data(), 400, s); },
        [&](Lib_String&, Lib_Buffer& b) { Lib_WString_To_UTF8_Buffer(wide.data(), 400, b); },
        [&](Lib_String& s, Lib_Buffer&) { Lib_Write_Buffer(400, narrow.data(), s, L':'); },
        [&](Lib_String&, Lib_Buffer& b) { Lib_Read_Buffer(strHex, b, 0); },
        [](Lib_String& s, Lib_Buffer&) { s = Lib_Increment_String(L"name41"); },
        [](Lib_String& s, Lib_Buffer&) { s = Lib_Combine_Path(L"left", L"right"); },
        [](Lib_String& s, Lib_Buffer&) { s = Lib_String("narrow"); },
        [](Lib_String&, Lib_Buffer& b) { b = Lib_StringW(L"wide").GetA(); },
    };
    for (const auto& road : roads)
    {
        const auto fail = [&](unsigned int nNth)
        {
            Lib_String strOutput(L"before");
            Lib_Buffer output(2);
            const Failing_Allocation failure(nNth);
            try
            {
                road(strOutput, output);
            }
            catch (const std::bad_alloc&)
            {
            }
            return failure.Has_Failed();
        };
        EXPECT_LE(1U, Fail_Each_Allocation_Without_Loss(fail));
    }
}

TEST(Static_Initialisation, Finds_The_Strings_Ready)
{
    EXPECT_TEXT_EQ(L"E E text", s_Early.m_strText);
    EXPECT_TEXT_EQ("2 found", s_Early.m_strNumber);
}
