#include "failing_allocator.h"
#include "lib_parser.h"

#include <gtest/gtest.h>

#include <new>

using test_support::Failing_Allocation;
using test_support::Outstanding_Bytes;

TEST(Parser_Allocation, Throws_And_Leaks_Nothing_When_Memory_Is_Out)
{
    wchar_t aProgram[] = L"program", aText[] = L"-TEXT", aValue[] = L"a new value", aBytes[] = L"-bytes";
    wchar_t aHex[] = L"00112233445566778899";
    wchar_t* aArguments[] = {aProgram, aText, aValue, aBytes, aHex};

    const auto Parse = [&]
    {
        Lib_Parser_Param text(L"-text", PARAM_TYPE_STRING, L"default", L"text", L"A text", false);
        Lib_Parser_Param bytes(L"-bytes", PARAM_TYPE_HEX_BYTES, L"aa", L"hex", L"Bytes", false);
        const Lib_Parser_Param copy(text);
        return Lib_Parser::Parse_Params(5, aArguments, 2, &text, &bytes) &&
               copy.Get_Param() == text.Get_Param();
    };
    const auto Road = [&](unsigned int nNth)
    {
        const long long nBefore = Outstanding_Bytes();
        bool bResult = false;
        const Failing_Allocation failure(nNth);
        try
        {
            bResult = Parse();
        }
        catch (const std::bad_alloc&)
        {
            EXPECT_TRUE(failure.Has_Failed());
        }
        EXPECT_EQ(nBefore, Outstanding_Bytes());
        EXPECT_TRUE(bResult || failure.Has_Failed());
        return failure.Has_Failed();
    };
    EXPECT_LT(10U, test_support::Fail_Each_Allocation(Road));
}
