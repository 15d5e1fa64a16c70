#include "lib_platform.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

// Bytes as text in the platform's forms, against texts known and with targets that end where they must.

namespace
{

constexpr DWORD WRITTEN_FORMS[] = {CRYPT_STRING_BASE64HEADER, CRYPT_STRING_BASE64,
                                   CRYPT_STRING_BINARY,       CRYPT_STRING_BASE64REQUESTHEADER,
                                   CRYPT_STRING_HEX,          CRYPT_STRING_HEXASCII,
                                   CRYPT_STRING_HEXADDR,      CRYPT_STRING_HEXASCIIADDR,
                                   CRYPT_STRING_HEXRAW,       CRYPT_STRING_BASE64X509CRLHEADER};

const BYTE* Bytes_Of(const std::string& bytes) { return reinterpret_cast<const BYTE*>(bytes.data()); }

/// The text, written into a block of exactly the size that the counting call asked for.
std::string Write(const std::string& bytes, DWORD flags)
{
    const auto size = static_cast<DWORD>(bytes.size());
    DWORD needed = 0;
    EXPECT_TRUE(CryptBinaryToStringA(Bytes_Of(bytes), size, flags, nullptr, &needed));
    const auto text = std::make_unique<char[]>(needed);
    DWORD count = needed;
    EXPECT_TRUE(CryptBinaryToStringA(Bytes_Of(bytes), size, flags, text.get(), &count));
    const bool binary = (flags & 0xFF) == CRYPT_STRING_BINARY;
    EXPECT_EQ(needed, binary ? count : count + 1);
    EXPECT_TRUE(binary || text[count] == '\0');
    return {text.get(), count};
}

struct Reading
{
    std::string bytes;
    DWORD skipped = 77;
    DWORD form = 77;
};

/// The bytes, from a block that ends with the text into one that ends with them; none if the text is refused,
/// which must leave everything alone.
std::optional<Reading> Read(const std::string& text, DWORD flags)
{
    const auto source = std::make_unique<char[]>(text.size());
    std::copy(text.begin(), text.end(), source.get());
    const auto length = static_cast<DWORD>(text.size());
    Reading result;
    DWORD needed = 55;
    SetLastError(ERROR_SUCCESS);
    if (!CryptStringToBinaryA(source.get(), length, flags, nullptr, &needed, &result.skipped, &result.form))
    {
        EXPECT_EQ(ERROR_INVALID_DATA, GetLastError());
        const BYTE before[8] = {1, 2, 3};
        BYTE target[8] = {1, 2, 3};
        DWORD count = sizeof(target);
        EXPECT_FALSE(CryptStringToBinaryA(source.get(), length, flags, target, &count, nullptr, nullptr));
        EXPECT_EQ(0, std::memcmp(before, target, 8));
        EXPECT_TRUE(count == 8 && needed == 55 && result.skipped == 77 && result.form == 77);
        return std::nullopt;
    }
    const auto target = std::make_unique<BYTE[]>(needed);
    DWORD count = needed;
    EXPECT_TRUE(CryptStringToBinaryA(source.get(), length, flags, target.get(), &count, nullptr, nullptr));
    EXPECT_EQ(needed, count);
    result.bytes.assign(reinterpret_cast<char*>(target.get()), count);
    return result;
}

using Texts = std::initializer_list<std::string>;

void Expect_Read(const std::string& bytes, const Texts& texts, DWORD flags)
{
    for (const std::string& text : texts)
    {
        const auto reading = Read(text, flags);
        ASSERT_TRUE(reading.has_value()) << text;
        EXPECT_EQ(bytes, reading->bytes) << text;
    }
}

void Expect_Refused(const Texts& texts, DWORD flags)
{
    for (const std::string& text : texts)
        EXPECT_FALSE(Read(text, flags).has_value()) << text;
}

std::string Random_Bytes(std::minstd_rand& random, std::size_t size)
{
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random() >> 3);
    return bytes;
}

} // namespace

TEST(Crypt_String, Writes_The_Hex_Forms)
{
    const std::string bytes = "ABCDEFGHIJKLMNOP\n\x7F~";
    EXPECT_EQ("41 42 43 44 45 46 47 48  49 4a 4b 4c 4d 4e 4f 50\r\n0a 7f 7e\r\n",
              Write(bytes, CRYPT_STRING_HEX));
    EXPECT_EQ("41 42 43 44 45 46 47 48  49 4a 4b 4c 4d 4e 4f 50   ABCDEFGHIJKLMNOP\n"
              "0a 7f 7e                                           ..~\n",
              Write(bytes, CRYPT_STRING_HEXASCII | CRYPT_STRING_NOCR));
    EXPECT_EQ("0000\t41 42 43 44 45 46 47 48  49 4a 4b 4c 4d 4e 4f 50\r\n0010\t0a 7f 7e\r\n",
              Write(bytes, CRYPT_STRING_HEXADDR));
    EXPECT_EQ("0000\t41 42 43   ABC", Write("ABC", CRYPT_STRING_HEXASCIIADDR | CRYPT_STRING_NOCRLF));
    EXPECT_EQ("41 42 43 44 45 46 47 48 49", Write("ABCDEFGHI", CRYPT_STRING_HEX | CRYPT_STRING_NOCRLF));
    EXPECT_EQ("4142ff", Write("AB\xFF", CRYPT_STRING_HEXRAW | CRYPT_STRING_NOCRLF));
    EXPECT_NE(std::string::npos, Write(std::string(65552, 'x'), CRYPT_STRING_HEXADDR).find("\r\n10000\t78"));
}

TEST(Crypt_String, Reads_What_It_Writes_Strictly_Too)
{
    std::minstd_rand random(9);
    for (const DWORD form : WRITTEN_FORMS)
    {
        SCOPED_TRACE(form);
        for (const DWORD end : {DWORD(0), CRYPT_STRING_NOCR, CRYPT_STRING_NOCRLF})
        {
            for (std::size_t size = 0; size < 260; size += 1 + random() % 7)
            {
                const std::string bytes = Random_Bytes(random, size);
                const std::string text = Write(bytes, form | end);
                if (text.empty())
                    continue; // a length of 0 asks for the NUL
                Expect_Read(bytes, {text}, form);
                Expect_Read(bytes, {text}, form | CRYPT_STRING_STRICT);
                ASSERT_FALSE(HasFailure()) << text;
            }
        }
    }
}

TEST(Crypt_String, Finds_The_Form_By_Itself)
{
    std::minstd_rand random(10);
    const std::string bytes = Random_Bytes(random, 50);
    const auto Expect_Found = [&](DWORD form, DWORD any)
    {
        const auto reading = Read(Write(bytes, form), any);
        ASSERT_TRUE(reading.has_value()) << form;
        EXPECT_EQ(bytes, reading->bytes) << form;
        EXPECT_EQ(form, reading->form);
        EXPECT_EQ(0u, reading->skipped);
    };
    for (const DWORD any : {CRYPT_STRING_BASE64_ANY, CRYPT_STRING_ANY})
    {
        Expect_Found(CRYPT_STRING_BASE64HEADER, any);
        Expect_Found(CRYPT_STRING_BASE64, any);
    }
    for (const DWORD form :
         {CRYPT_STRING_HEX, CRYPT_STRING_HEXASCII, CRYPT_STRING_HEXADDR, CRYPT_STRING_HEXASCIIADDR})
        Expect_Found(form, CRYPT_STRING_HEX_ANY);
    const auto raw = Read("0aff\r\n", CRYPT_STRING_HEX_ANY);
    EXPECT_TRUE(raw && raw->bytes == "\x0A\xFF");
    const auto binary = Read("\xFFno base64", CRYPT_STRING_ANY);
    EXPECT_TRUE(binary && binary->form == CRYPT_STRING_BINARY && binary->bytes == "\xFFno base64");
    Expect_Refused({"\xFFno base64"}, CRYPT_STRING_BASE64_ANY);
    Expect_Refused({"no hex"}, CRYPT_STRING_HEX_ANY);
}

TEST(Crypt_String, Reads_Base64_As_The_Platform_Does)
{
    const DWORD base64 = CRYPT_STRING_BASE64;
    Expect_Read("ABC", {"QUJD", "Q U\tJ\r\nD", " QUJD", "QUJD\r\n\r\n", "QUJD===="}, base64);
    Expect_Read("AB", {"QUI", "QUJ=", "QUI=*", "QUI=QUJD", "Q\nU\nI\n=\n"}, base64);
    Expect_Read("A", {"QQ", "QR==", "QQ==QUJD", "QQ=\r\n="}, base64);
    Expect_Read("", {"=", "\r\n"}, base64);
    Expect_Refused({"Q", "QUJDR", "QQ=", "Q=Q=", "QU*D", "QUJD*", "-_-_", "QU\vJD", "\x80QUJ"}, base64);
    Expect_Refused({std::string("QUJD\0", 5)}, base64);

    const DWORD strict = base64 | CRYPT_STRING_STRICT;
    Expect_Read("ABC", {"QU\r\nJD\n"}, strict);
    Expect_Read("AB", {"QUI=\r\n"}, strict);
    Expect_Refused({"QUI", "QR==", "QUJ=", "QUJD=", "=", "QUI=*", "Q U J D", "QUI==", "QQ==\r\nx"}, strict);
}

TEST(Crypt_String, Finds_Base64_Between_Header_Lines)
{
    const std::string text = "-----BEGIN X-----\r\nQUJD\r\n-----END X-----\r\n";
    const auto reading = Read("junk\r\n" + text + "junk", CRYPT_STRING_BASE64REQUESTHEADER);
    ASSERT_TRUE(reading.has_value());
    EXPECT_EQ("ABC", reading->bytes);
    EXPECT_EQ(6u, reading->skipped);
    EXPECT_EQ(CRYPT_STRING_BASE64REQUESTHEADER, reading->form);

    const DWORD header = CRYPT_STRING_BASE64HEADER;
    const std::string other_end = "-----BEGIN X-----QUJD-----END Y-----";
    Expect_Read("ABC", {other_end}, header);
    Expect_Read("ABC", {" \n" + text}, header | CRYPT_STRING_STRICT);
    Expect_Refused({"QUJD", "-----BEGIN X-----\r\nQUJD", "-----BEGIN X\r\n-----QUJD-----END X-----",
                    "-----BEGIN X-----\r\nA: b\r\n\r\nQUJD\r\n-----END X-----", "-----BEGIN ",
                    "-----BEGIN X----------END X", "-----BEGIN X-----QUJD-----BEGIN X-----"},
                   header);
    Expect_Refused({"x" + text, text + "x", other_end}, header | CRYPT_STRING_STRICT);
}

TEST(Crypt_String, Reads_Hex_As_People_Write_It)
{
    Expect_Read("ABC", {"41 42 43", "414243", "4142\r\n43", " 41\t42  43 \r\n\r\n"}, CRYPT_STRING_HEX);
    Expect_Read("JKL", {"4A4b 4C\r\n"}, CRYPT_STRING_HEXRAW);
    Expect_Read("ABC", {"0000  41 42 43\n"}, CRYPT_STRING_HEXADDR);
    Expect_Read("AB", {"00000010\t41 42   anything"}, CRYPT_STRING_HEXASCIIADDR);
    Expect_Refused({"4", "41 4", "4g", "41,42", "41   42", "0x41"}, CRYPT_STRING_HEX);
    Expect_Refused({"414", "41-42"}, CRYPT_STRING_HEXRAW);
    Expect_Refused({"41 42", "0000 41", "000\t41", "000000000\t41", "0000\t", "0000\t41   A"},
                   CRYPT_STRING_HEXADDR);
    Expect_Refused({"41 42"}, CRYPT_STRING_HEXASCII);
    Expect_Refused({"4142"}, CRYPT_STRING_HEX | CRYPT_STRING_STRICT);
    Expect_Refused({"0001\t41"}, CRYPT_STRING_HEXADDR | CRYPT_STRING_STRICT);
    Expect_Refused({"41 42   A"}, CRYPT_STRING_HEXASCII | CRYPT_STRING_STRICT);
    Expect_Refused({"41 42\r\n"}, CRYPT_STRING_HEXRAW | CRYPT_STRING_STRICT);
}

TEST(Crypt_String, Takes_A_Text_Up_To_Its_Nul_For_A_Length_Of_0)
{
    BYTE bytes[3];
    DWORD count = sizeof(bytes);
    EXPECT_TRUE(CryptStringToBinaryA("QUJD", 0, CRYPT_STRING_BASE64, bytes, &count, nullptr, nullptr));
    EXPECT_EQ(0, std::memcmp("ABC", bytes, 3));
}

TEST(Crypt_String, Refuses_Arguments)
{
    const BYTE byte = 1;
    DWORD count = 9;
    char text[3] = {'#', '#', '#'};
    const auto expect_Write = [&](DWORD error, const BYTE* bytes, DWORD flags, char* target, DWORD* size)
    {
        EXPECT_FALSE(CryptBinaryToStringA(bytes, 1, flags, target, size));
        EXPECT_EQ(error, GetLastError()) << flags;
    };
    expect_Write(87, nullptr, CRYPT_STRING_HEX, nullptr, &count);
    expect_Write(87, &byte, CRYPT_STRING_HEX, nullptr, nullptr);
    for (const DWORD flags : {CRYPT_STRING_ANY, CRYPT_STRING_HEX_ANY, DWORD(13), DWORD(0x101)})
        expect_Write(87, &byte, flags, nullptr, &count);
    const DWORD most = 0xFFFFFFFC / 4 * 3; // counting reads no byte
    const DWORD one_line = CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF;
    EXPECT_FALSE(CryptBinaryToStringA(&byte, most + 1, one_line, nullptr, &count));
    EXPECT_EQ(87u, GetLastError());
    EXPECT_EQ(9u, count);
    EXPECT_TRUE(CryptBinaryToStringA(&byte, most, one_line, nullptr, &count));
    EXPECT_EQ(0xFFFFFFFD, count);
    count = 4;
    expect_Write(ERROR_MORE_DATA, &byte, CRYPT_STRING_BASE64, text, &count);
    EXPECT_EQ(7u, count);
    EXPECT_EQ('#', text[0]);

    BYTE target[2] = {};
    count = 2;
    const auto expect_Read = [&](DWORD error, const char* source, DWORD flags, DWORD* size)
    {
        EXPECT_FALSE(CryptStringToBinaryA(source, 4, flags, target, size, nullptr, nullptr));
        EXPECT_EQ(error, GetLastError()) << flags;
    };
    expect_Read(ERROR_MORE_DATA, "QUJD", CRYPT_STRING_BASE64, &count);
    EXPECT_EQ(3u, count);
    EXPECT_EQ(0, target[0]);
    expect_Read(87, nullptr, CRYPT_STRING_BASE64, &count);
    expect_Read(87, "QUJD", CRYPT_STRING_BASE64, nullptr);
    expect_Read(87, "QUJD", 13, &count);
}
