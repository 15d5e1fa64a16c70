#include "byte_text.h"
#include "failing_allocator.h"
#include "lib_platform.h"
#include "lib_protected.h"
#include "lib_strings.h"
#include "protected_probe.h"
#include "test_text.h"

#include <optional>

using namespace test_support;

namespace
{

/// What loads the cipher has been paid for before anything fails.
class Protected_Allocation : public testing::Test
{
protected:
    void SetUp() override { EXPECT_EQ("x", To_Text(Lib_Protected_Buffer(1, "x"))); }

    /// Changes an object that holds "before" while each allocation fails in turn; then it holds what the
    /// failure is to leave, and without failure the result.
    template <class Class, class Change>
    static void Check(const std::string& failed, const std::string& result, Change change)
    {
        EXPECT_LT(0u, Fail_Each_Allocation_Without_Loss(
                          [&](unsigned int nNth)
                          {
                              std::optional<Class> object(Content<Class>("before"));
                              const Outcome outcome = Call_Failing(nNth, [&] { change(*object); });
                              EXPECT_FALSE(outcome.m_bThrown);
                              EXPECT_EQ(outcome.m_bFailed ? failed : result, Read(*object));
                              return outcome.m_bFailed;
                          }));
    }

    /// The same with an object that is made of the arguments: it is empty then, or has the content.
    template <class Class, class... Arguments>
    static void Check_New(const std::string& content, const Arguments&... arguments)
    {
        EXPECT_LT(0u, Fail_Each_Allocation_Without_Loss(
                          [&](unsigned int nNth)
                          {
                              std::optional<Class> made;
                              const Outcome outcome = Call_Failing(nNth, [&] { made.emplace(arguments...); });
                              EXPECT_EQ(outcome.m_bFailed ? "" : content, Read(*made));
                              return outcome.m_bFailed;
                          }));
    }

    static std::string Read(const Lib_Protected_Buffer& buffer) { return To_Text(buffer); }
    static std::string Read(const Lib_Protected_String& secret)
    {
        const Lib_StringA strText(secret.Get_String());
        return {strText.GetA(), strText.GetA() + strText.Get_Length()}; // an empty one has a null pointer
    }
    template <class Class>
    static auto Content(const char* pText)
    {
        if constexpr (std::is_same_v<Class, Lib_Protected_Buffer>)
            return To_Buffer(pText);
        else
            return Lib_String(pText);
    }
};

} // namespace

TEST_F(Protected_Allocation, A_New_Object_Has_Nothing_Or_All)
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

TEST_F(Protected_Allocation, A_Change_Leaves_Nothing_Or_The_Content_Or_Is_Whole)
{
    using Buffer = Lib_Protected_Buffer;
    const std::string after = "after, and in more than one block";
    const Lib_Buffer plain = To_Buffer(after);
    const Buffer source(plain);
    Check<Buffer>("", after, [&](Buffer& buffer) { buffer = plain; });
    Check<Buffer>("", "after", [&](Buffer& buffer) { buffer.Attach_Copy("after", 5); });
    Check<Buffer>("before", after, [&](Buffer& buffer) { buffer = source; });
    Check<Buffer>("before", "before" + after, [&](Buffer& buffer) { buffer.Append(plain); });
    Check<Buffer>("before", "beforeaf", [&](Buffer& buffer) { buffer.Append("af", 2); });
    Check<Buffer>("before", "erofeb", [&](Buffer& buffer) { buffer.Make_Reverse(); });

    using String = Lib_Protected_String;
    const Lib_String strAfter(after.c_str());
    const String secret(strAfter);
    Check<String>("", after, [&](String& string) { string = strAfter; });
    Check<String>("before", after, [&](String& string) { string = secret; });
}

TEST_F(Protected_Allocation, What_Cannot_Be_Read_Equals_Nothing)
{
    const Lib_Protected_Buffer buffer(To_Buffer("content"));
    const Lib_Buffer same = To_Buffer("content");
    const Lib_Buffer longer = To_Buffer("longer content");
    for (unsigned int nNth = 1; nNth <= 2; ++nNth)
    {
        bool bEmpty = true;
        EXPECT_TRUE(Call_Failing(nNth, [&] { bEmpty = buffer.Is_Equals(nullptr, 0); }).m_bFailed);
        EXPECT_FALSE(bEmpty);
    }
    bool bTrue = true;
    Call_Failing(1, [&] { bTrue = buffer == same; });
    EXPECT_FALSE(bTrue);
    Call_Failing(2, [&] { bTrue = buffer < longer; });
    EXPECT_FALSE(bTrue);
    Call_Failing(1, [&] { bTrue = Lib_Buffer(buffer).Get_Size() != 0; });
    EXPECT_FALSE(bTrue);
    EXPECT_TRUE(buffer == same && buffer < longer);
}

TEST_F(Protected_Allocation, What_Cannot_Be_Read_Leaves_The_Target)
{
    Lib_Buffer prepared;
    Open_Buffer::st_Prepare_Buffer_To_Encipher(To_Buffer("content"), prepared);
    const Open_Buffer buffer(To_Buffer("content"));
    const auto check = [](unsigned int nAllocations, const Lib_Buffer& image, auto read)
    {
        const auto road = [&](unsigned int nNth)
        {
            Lib_Buffer plain = To_Buffer("before");
            const bool bFailed = Call_Failing(nNth, [&] { read(image, plain); }).m_bFailed;
            EXPECT_EQ(bFailed ? "before" : "content", To_Text(plain));
            return bFailed;
        };
        EXPECT_EQ(nAllocations, Fail_Each_Allocation_Without_Loss(road));
    };
    check(1, prepared, Open_Buffer::st_Extract_Data_From_Deciphered_Buffer);
    check(2, buffer.m_Image, Open_Buffer::st_Decipher_Data);
}

TEST_F(Protected_Allocation, Base64_Leaves_The_Output)
{
    constexpr unsigned long FORM = CRYPT_STRING_BASE64;
    const Lib_Buffer input = To_Buffer("Zm9v");
    const auto* pInput = static_cast<const unsigned char*>(input.Get_Ptr());
    const std::string text("Zm9v");
    const auto check = [](auto convert)
    {
        const auto road = [&](unsigned int nNth)
        {
            Lib_Buffer output = To_Buffer("before");
            bool bDone = false;
            const bool bFailed = Call_Failing(nNth, [&] { bDone = convert(output); }).m_bFailed;
            EXPECT_NE(bFailed, bDone);
            EXPECT_EQ(bFailed, To_Text(output) == "before");
            return bFailed;
        };
        EXPECT_LT(0u, Fail_Each_Allocation_Without_Loss(road));
    };
    check([&](Lib_Buffer& output) { return base64_encode(input, output, FORM); });
    check([&](Lib_Buffer& output) { return base64_encode(pInput, 4, output, FORM); });
    check([&](Lib_Buffer& output) { return base64_decode(input, output, FORM); });
    check([&](Lib_Buffer& output) { return base64_decode(text, output, FORM); });
    check([](Lib_Buffer& output) { return base64_encode(output, output, FORM); });
    check([](Lib_Buffer& output) { return base64_decode(output, output, FORM); });
}
