#include "failing_allocator.h"
#include "lib_parser.h"

using namespace test_support;

TEST(Parser_Allocation, Throws_And_Leaks_Nothing_When_Memory_Is_Out)
{
    wchar_t aProgram[] = L"program", aText[] = L"-TEXT", aValue[] = L"a new value", aBytes[] = L"-bytes";
    wchar_t aHex[] = L"00112233445566778899";
    wchar_t* aArguments[] = {aProgram, aText, aValue, aBytes, aHex};
    const auto Road = [&](unsigned int nNth)
    {
        bool bResult = false;
        const Outcome outcome = Call_Failing(
            nNth,
            [&]
            {
                Lib_Parser_Param text(L"-text", PARAM_TYPE_STRING, L"default", L"text", L"A text", false);
                Lib_Parser_Param bytes(L"-bytes", PARAM_TYPE_HEX_BYTES, L"aa", L"hex", L"Bytes", false);
                const Lib_Parser_Param copy(text);
                bResult = Lib_Parser::Parse_Params(5, aArguments, 2, &text, &bytes) &&
                          copy.Get_Param() == text.Get_Param();
            });
        EXPECT_TRUE(bResult || outcome.m_bFailed);
        EXPECT_TRUE(!outcome.m_bThrown || outcome.m_bFailed);
        return outcome.m_bFailed;
    };
    EXPECT_LT(10U, Fail_Each_Allocation_Without_Loss(Road));
}
