#include "byte_text.h"
#include "failing_allocator.h"
#include "lib_platform.h"
#include "lib_protected.h"
#include "lib_strings.h"
#include "test_text.h"

#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <string>

using test_support::Fail_Each_Allocation;
using test_support::Failing_Allocation;
using test_support::To_Buffer;
using test_support::To_Text;

namespace
{

/// What loads the cipher has been paid for before anything fails.
void Warm_Up() { EXPECT_EQ("x", To_Text(Lib_Protected_Buffer(1, "x"))); }

/// Changes an object that holds "before" while each allocation fails in turn; then it holds what the failure
/// is to leave, and without failure the result.
template <class Change>
void Check(const std::string& failed, const std::string& result, Change change)
{
    Warm_Up();
    Lib_Protected_Buffer buffer;
    const unsigned int nFailures = Fail_Each_Allocation(
        [&](unsigned int nNth)
        {
            buffer = To_Buffer("before");
            bool bFailed = false;
            {
                const Failing_Allocation failure(nNth);
                change(buffer);
                bFailed = failure.Has_Failed();
            }
            EXPECT_EQ(bFailed ? failed : result, To_Text(buffer));
            return bFailed;
        });
    EXPECT_GT(nFailures, 0u);
}

std::string Read(const Lib_Protected_Buffer& buffer) { return To_Text(buffer); }

std::string Read(const Lib_Protected_String& secret)
{
    const Lib_StringA strText(secret.Get_String());
    return {strText.GetA(), strText.GetA() + strText.Get_Length()}; // an empty one has a null pointer
}

/// Makes an object of the arguments while each allocation fails in turn: it is empty then, or has the
/// content.
template <class Class, class... Arguments>
void Check_New(const std::string& content, const Arguments&... arguments)
{
    Warm_Up();
    const unsigned int nFailures = test_support::Fail_Each_Allocation_Without_Loss(
        [&](unsigned int nNth)
        {
            std::optional<Class> made;
            bool bFailed = false;
            {
                const Failing_Allocation failure(nNth);
                made.emplace(arguments...);
                bFailed = failure.Has_Failed();
            }
            EXPECT_EQ(bFailed ? "" : content, Read(*made));
            return bFailed;
        });
    EXPECT_GT(nFailures, 0u);
}

} // namespace

TEST(Protected_Allocation, A_New_Object_Has_Nothing_Or_All)
{
    const std::string content = "in more than one block of the cipher";
    const Lib_Buffer plain = To_Buffer(content);
    Check_New<Lib_Protected_Buffer>(content, plain);
    Check_New<Lib_Protected_Buffer>(content, content.size(), content.data());
    Check_New<Lib_Protected_Buffer>(content, Lib_Protected_Buffer(plain));
    const Lib_String strText(content.c_str());
    Check_New<Lib_Protected_String>(content, strText);
    Check_New<Lib_Protected_String>(content, Lib_Protected_String(strText));
}

TEST(Protected_Allocation, A_String_Is_Replaced_And_Read_Whole_Or_Not_At_All)
{
    Warm_Up();
    const Lib_String strBefore(L"before");
    const Lib_String strAfter(L"after, and in more than one block");
    const Lib_Protected_String source(strAfter);
    for (const bool bCopy : {false, true})
    {
        const unsigned int nFailures = Fail_Each_Allocation(
            [&](unsigned int nNth)
            {
                Lib_Protected_String secret(strBefore);
                bool bFailed = false;
                {
                    const Failing_Allocation failure(nNth);
                    bCopy ? secret = source : secret = strAfter;
                    bFailed = failure.Has_Failed();
                }
                const Lib_String strLeft = bCopy ? strBefore : Lib_String();
                EXPECT_TEXT_EQ(bFailed ? strLeft : strAfter, secret.Get_String());
                return bFailed;
            });
        EXPECT_GT(nFailures, 0u);
    }
    EXPECT_EQ(3u, Fail_Each_Allocation(
                      [&](unsigned int nNth)
                      {
                          Lib_String strRead;
                          bool bFailed = false;
                          try
                          {
                              const Failing_Allocation failure(nNth);
                              strRead = source.Get_String();
                              bFailed = failure.Has_Failed();
                          }
                          catch (const std::bad_alloc&)
                          {
                              bFailed = true;
                          }
                          EXPECT_TEXT_EQ(bFailed ? Lib_String() : strAfter, strRead);
                          return bFailed;
                      }));
}

TEST(Protected_Allocation, Replacing_The_Content_Leaves_Nothing_Or_All)
{
    const Lib_Buffer plain = To_Buffer("after, and in more than one block");
    Check("", To_Text(plain), [&](Lib_Protected_Buffer& buffer) { buffer = plain; });
    Check("", "after", [&](Lib_Protected_Buffer& buffer) { buffer.Attach_Copy("after", 5); });
    const Lib_Protected_Buffer source(plain);
    Check("before", To_Text(plain), [&](Lib_Protected_Buffer& buffer) { buffer = source; });
}

TEST(Protected_Allocation, Changing_The_Content_Leaves_It_Or_Changes_All)
{
    const std::string part = " and behind it some more";
    Check("before", "before" + part, [&](Lib_Protected_Buffer& buffer) { buffer.Append(To_Buffer(part)); });
    Check("before", "before" + part,
          [&](Lib_Protected_Buffer& buffer) { buffer.Append(part.data(), part.size()); });
    Check("before", "erofeb", [&](Lib_Protected_Buffer& buffer) { buffer.Make_Reverse(); });
}

TEST(Protected_Allocation, What_Cannot_Be_Read_Equals_Nothing)
{
    Warm_Up();
    const Lib_Protected_Buffer buffer(To_Buffer("content"));
    const Lib_Buffer same = To_Buffer("content");
    const Lib_Buffer longer = To_Buffer("longer content");
    EXPECT_EQ(2u, Fail_Each_Allocation(
                      [&](unsigned int nNth)
                      {
                          const Failing_Allocation failure(nNth);
                          const bool bEmpty = buffer.Is_Equals(nullptr, 0);
                          const bool bSeen = failure.Has_Failed();
                          EXPECT_FALSE(bEmpty);
                          return bSeen;
                      }));
    {
        const Failing_Allocation failure(1);
        EXPECT_FALSE(buffer == same);
    }
    {
        const Failing_Allocation failure(2);
        EXPECT_FALSE(buffer < longer);
    }
    {
        const Failing_Allocation failure(1);
        EXPECT_EQ(0u, Lib_Buffer(buffer).Get_Size());
    }
    EXPECT_TRUE(buffer == same && buffer < longer);
}

TEST(Protected_Allocation, Base64_Leaves_The_Output)
{
    const Lib_Buffer input = To_Buffer("Zm9v");
    for (int nWay = 0; nWay < 4; ++nWay)
    {
        Lib_Buffer output;
        const unsigned int nFailures = Fail_Each_Allocation(
            [&](unsigned int nNth)
            {
                output = To_Buffer("before");
                const std::string strInput("Zm9v");
                const auto* pInput = static_cast<const unsigned char*>(input.Get_Ptr());
                bool bDone = false;
                bool bFailed = false;
                {
                    const Failing_Allocation failure(nNth);
                    switch (nWay)
                    {
                    case 0:
                        bDone = base64_encode(input, output, CRYPT_STRING_BASE64);
                        break;
                    case 1:
                        bDone = base64_encode(pInput, 4, output, CRYPT_STRING_BASE64);
                        break;
                    case 2:
                        bDone = base64_decode(input, output, CRYPT_STRING_BASE64);
                        break;
                    default:
                        bDone = base64_decode(strInput, output, CRYPT_STRING_BASE64);
                    }
                    bFailed = failure.Has_Failed();
                }
                EXPECT_NE(bFailed, bDone) << nWay;
                EXPECT_EQ(bFailed, To_Text(output) == "before") << nWay;
                return bFailed;
            });
        EXPECT_EQ(nWay % 2 == 0 ? 1u : 2u, nFailures) << nWay;
    }
}
