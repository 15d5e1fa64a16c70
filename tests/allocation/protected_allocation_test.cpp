#include "failing_allocator.h"
#include "lib_foundation.h"
#include "lib_platform.h"
#include "lib_protected.h"

#include <gtest/gtest.h>

#include <string>

using test_support::Fail_Each_Allocation;
using test_support::Failing_Allocation;

namespace
{

Lib_Buffer To_Buffer(const std::string& text)
{
    Lib_Buffer buffer;
    buffer.Attach_Copy(text.data(), text.size());
    return buffer;
}

std::string To_Text(const Lib_Buffer& buffer)
{
    return {static_cast<const char*>(buffer.Get_Ptr()), static_cast<std::size_t>(buffer.Get_Size())};
}

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

} // namespace

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
