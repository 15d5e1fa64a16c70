#include "byte_text.h"
#include "lib_platform.h"
#include "lib_protected.h"
#include "test_text.h"

#include <random>

using namespace test_support;

namespace
{

constexpr unsigned long PLAIN = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;

std::string Encoded(const std::string& bytes, unsigned long nFlags)
{
    Lib_Buffer output;
    EXPECT_TRUE(base64_encode(To_Buffer(bytes), output, nFlags));
    return To_Text(output);
}

std::string Decoded(const std::string& text, unsigned long nFlags)
{
    Lib_Buffer output = To_Buffer("old content");
    EXPECT_TRUE(base64_decode(text, output, nFlags)) << text;
    return To_Text(output);
}

void Expect_Refused(const std::string& text, unsigned long nFlags)
{
    SCOPED_TRACE(text);
    Lib_Buffer output = To_Buffer("old content");
    EXPECT_FALSE(base64_decode(text, output, nFlags));
    EXPECT_FALSE(base64_decode(To_Buffer(text), output, nFlags));
    EXPECT_EQ("old content", To_Text(output));
}

std::string With_Nul(std::string text) { return text + '\0'; }

} // namespace

TEST(Base64, Has_The_Known_Texts)
{
    for (const auto& [pBytes, pText] :
         {std::pair("f", "Zg=="), std::pair("fo", "Zm8="), std::pair("foo", "Zm9v"),
          std::pair("foob", "Zm9vYg=="), std::pair("fooba", "Zm9vYmE="), std::pair("foobar", "Zm9vYmFy")})
    {
        EXPECT_EQ(With_Nul(pText), Encoded(pBytes, PLAIN));
        EXPECT_EQ(pBytes, Decoded(pText, CRYPT_STRING_BASE64));
    }
    EXPECT_EQ(With_Nul("+/+/\r\n"), Encoded("\xFB\xFF\xBF", CRYPT_STRING_BASE64));
    EXPECT_EQ(With_Nul("AAAA\n"), Encoded(std::string(3, '\0'), CRYPT_STRING_BASE64 | CRYPT_STRING_NOCR));
}

TEST(Base64, Breaks_Lines_After_64_Characters)
{
    const std::string line(64, 'A');
    EXPECT_EQ(With_Nul(line + "\r\n"), Encoded(std::string(48, '\0'), CRYPT_STRING_BASE64));
    EXPECT_EQ(With_Nul("-----BEGIN CERTIFICATE-----\n" + line + "\n-----END CERTIFICATE-----\n"),
              Encoded(std::string(48, '\0'), CRYPT_STRING_BASE64HEADER | CRYPT_STRING_NOCR));
    EXPECT_EQ(With_Nul(line + line + "AA=="), Encoded(std::string(97, '\0'), PLAIN));
    if (Windows_Target)
        GTEST_SKIP() << "Wine leaves out the break before a short last line.";
    EXPECT_EQ(With_Nul(line + "\r\nAA==\r\n"), Encoded(std::string(49, '\0'), CRYPT_STRING_BASE64));
}

TEST(Base64, Gives_Back_What_Was_Encoded_In_Each_Form)
{
    std::minstd_rand random(3);
    for (const unsigned long nForm : {CRYPT_STRING_BASE64HEADER, CRYPT_STRING_BASE64, CRYPT_STRING_BINARY,
                                      CRYPT_STRING_BASE64REQUESTHEADER, CRYPT_STRING_BASE64X509CRLHEADER})
    {
        for (const unsigned long nEnd : {0UL, 0UL + CRYPT_STRING_NOCRLF, 0UL + CRYPT_STRING_NOCR})
        {
            for (std::size_t nSize = 1; nSize < 200; nSize += 1 + random() % 4)
            {
                std::string bytes(nSize, '\0');
                for (char& character : bytes)
                    character = static_cast<char>(random());
                std::string text = Encoded(bytes, nForm | nEnd);
                if (nForm != CRYPT_STRING_BINARY)
                {
                    ASSERT_EQ('\0', text.back());
                    text.pop_back();
                }
                ASSERT_EQ(bytes, Decoded(text, nForm)) << text;
            }
        }
    }
}

TEST(Base64, Takes_Pointers_And_Buffers_Alike)
{
    Lib_Buffer output(1000);
    const unsigned char bytes[] = {'a', 'n', 'y'};
    ASSERT_TRUE(base64_encode(bytes, 3, output, PLAIN));
    EXPECT_EQ(With_Nul("YW55"), To_Text(output)) << "exactly as long as the text and its NUL";
    output.Set_Size(4);
    ASSERT_TRUE(base64_decode(output, output, CRYPT_STRING_BASE64)) << "into itself";
    EXPECT_EQ("any", To_Text(output));
    ASSERT_TRUE(base64_encode(output, output, PLAIN));
    EXPECT_EQ(With_Nul("YW55"), To_Text(output));
}

TEST(Base64, Leaves_The_Output_When_The_Platform_Refuses)
{
    for (const char* pText : {"", "Z=g=", "Zg=", "\xE9", "Zm9vYmFy!"})
        Expect_Refused(pText, CRYPT_STRING_BASE64);
    Expect_Refused(With_Nul("Zm9v"), CRYPT_STRING_BASE64);
    Expect_Refused("Zm9v", CRYPT_STRING_BASE64HEADER);
    Expect_Refused("-----BEGIN X-----\r\nZm9v\r\n", CRYPT_STRING_BASE64HEADER);
    Expect_Refused("Zm9v", 0x77);

    Lib_Buffer output = To_Buffer("old content");
    EXPECT_FALSE(base64_encode(Lib_Buffer(), output, PLAIN));
    EXPECT_FALSE(base64_encode(To_Buffer("x"), output, CRYPT_STRING_ANY));
    EXPECT_EQ(To_Buffer("old content"), output);
}

TEST(Base64, Reads_Nothing_Through_A_Pointer_With_No_Size)
{
    char text[] = "QUJD";
    Lib_Buffer input;
    input.Attach(text, 0);
    Lib_Buffer output = To_Buffer("old");
    Lib_Buffer other = To_Buffer("old");
    EXPECT_EQ(base64_decode(std::string(), other, PLAIN), base64_decode(input, output, PLAIN));
    EXPECT_EQ(To_Text(other), To_Text(output));
}

TEST(Base64, Refuses_Input_Of_4_GiB)
{
    // The sizes lie; what is there must not be read. On the platform only their low 32 bits would count.
    char text[] = "Zm9v";
    Lib_Buffer output = To_Buffer("old content");
    Lib_Buffer input;
    input.Attach(text, 0x100000004);
    EXPECT_FALSE(base64_decode(input, output, PLAIN));
    EXPECT_FALSE(base64_encode(input, output, PLAIN));
    EXPECT_FALSE(base64_encode(reinterpret_cast<unsigned char*>(text), 0x100000000, output, PLAIN));
    void* pBlock = nullptr;
    unsigned long long nSize = 0;
    input.Detach(&pBlock, &nSize);
    EXPECT_EQ("old content", To_Text(output));
}
