#include "failing_allocator.h"
#include "string_probe.h"

#include <functional>
#include <memory>

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
    /// Makes every allocation of a change fail, on a private, a shared and a locked "abcdef", and expects
    /// what the string then holds, that the other holder has its text, and that nothing is lost.
    static void Expect_After_Failure(const Char_Of<String>* pLeft, void (*change)(String&))
    {
        using Char = Char_Of<String>;
        for (const std::string state : {"private", "shared", "locked"})
        {
            SCOPED_TRACE(state);
            const auto road = [&](unsigned int nNth)
            {
                String text(T("abcdef"));
                const String other(state == "shared" ? text : String());
                if (state == "locked")
                    text.Lock_Buffer();
                const Outcome outcome = Call_Failing(nNth, [&] { change(text); });
                EXPECT_EQ(outcome.m_bFailed, outcome.m_bThrown);
                EXPECT_TEXT_EQ(state == "shared" ? T("abcdef") : T(""), other);
                EXPECT_TRUE(!outcome.m_bThrown || text == pLeft);
                return outcome.m_bFailed;
            };
            EXPECT_LT(0U, Fail_Each_Allocation_Without_Loss(road)) << "the change has to allocate";
        }
    }
};
TYPED_TEST_SUITE(String_Allocation, Both_Widths);

} // namespace

TYPED_TEST(String_Allocation, Leaves_The_Text_To_An_Edit_That_Fails)
{
    using Char = Char_Of<TypeParam>;
    using S = TypeParam;
    const auto Expect_Unchanged = [](auto change) { TestFixture::Expect_After_Failure(T("abcdef"), change); };
    Expect_Unchanged([](S& s) { s += T("x"); });
    Expect_Unchanged([](S& s) { s.Get_Buffer_Set_Length(7)[6] = 'x'; });
    Expect_Unchanged([](S& s) { s.Insert(3, T("xyz")); });
    Expect_Unchanged([](S& s) { s.Replace(T("c"), T("xyz")); });
    Expect_Unchanged([](S& s) { s.Format(T("%s %f %d"), T("text"), 1e20, 3); });
    Expect_Unchanged([](S& s) { (s + s).Mid(1).Insert(0, T("x")); });
    Expect_Unchanged([](S& s) { TypeParam(s).Set_At(0, 'x'), TypeParam(T("x")) += T("y"); });
}

TYPED_TEST(String_Allocation, Empties_The_String_When_An_Assignment_Fails)
{
    using Char = Char_Of<TypeParam>;
    TestFixture::Expect_After_Failure(T(""), [](TypeParam& s) { s = T("a longer text"); });
}

TYPED_TEST(String_Allocation, Detaches_Or_Leaves_A_Shared_String_As_It_Is)
{
    using Char = Char_Of<TypeParam>;
    using S = TypeParam;
    for (void (*edit)(S&) :
         {+[](S& s) { s.Set_At(0, 'x'); }, +[](S& s) { s.Remove(Char('a')); }, +[](S& s) { s.Delete(0, 1); },
          +[](S& s) { s.Make_Upper(); }, +[](S& s) { s.Trim_Right(Char('f')); },
          +[](S& s) { s.Replace(T("ab"), T("c")); }, +[](S& s) { s.Release_Buffer(2); },
          +[](S& s) { s.Lock_Buffer(); }})
    {
        Open<S> text(T("abcdef"));
        const Open<S> other(text);
        EXPECT_TRUE(Call_Failing(1, [&] { edit(text); }).m_bThrown);
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
    text.Format(T("%.2f"), 1.5);
    EXPECT_EQ(nCount, Allocation_Count());
    EXPECT_EQ(20U, text.Get_Alloc_Length());
    EXPECT_TRUE(Lib_StringA(L"").Is_Empty());
    EXPECT_EQ(nCount, Allocation_Count());
}

TEST(List_Allocation, Split_Leaves_A_List_And_Parse_Leaves_The_Pointer)
{
    const auto split = [](unsigned int nNth)
    {
        Lib_Strings* pList = nullptr;
        const bool bFailed =
            Call_Failing(nNth, [&] { Lib_Split_String(L"first,second,third", L',', pList); }).m_bFailed;
        const std::unique_ptr<Lib_Strings> list(pList);
        const wchar_t* const expected[] = {L"first", L"second", L"third"};
        for (unsigned long long i = 0; list != nullptr && i < list->Get_Num_Elements(); ++i)
            EXPECT_TEXT_EQ(expected[i], list->Get_At(i));
        return bFailed;
    };
    EXPECT_LE(5U, Fail_Each_Allocation_Without_Loss(split));
    const auto parse = [](unsigned int nNth)
    {
        Lib_Strings_Table* pTable = nullptr;
        const bool bFailed =
            Call_Failing(nNth, [&] { Lib_Parse_String(L"a=value b=more", pTable); }).m_bFailed;
        EXPECT_EQ(bFailed, pTable == nullptr);
        delete pTable;
        return bFailed;
    };
    EXPECT_LE(5U, Fail_Each_Allocation_Without_Loss(parse));
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
            return Call_Failing(nNth, [&] { road(strOutput, output); }).m_bFailed;
        };
        EXPECT_LE(1U, Fail_Each_Allocation_Without_Loss(fail));
    }
}

TEST(Static_Initialisation, Finds_The_Strings_Ready)
{
    EXPECT_TEXT_EQ(L"E E text", s_Early.m_strText);
    EXPECT_TEXT_EQ("2 found", s_Early.m_strNumber);
}
