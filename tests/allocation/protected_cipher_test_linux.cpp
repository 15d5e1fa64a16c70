#include "lib_platform.h"
#include "platform/crypt/cipher_calls.h"
#include "protected_probe.h"
#include "test_text.h"

// A cipher that refuses: never is a plain image left, and never is what was not deciphered taken for content.

using namespace test_support;

namespace
{

BOOL Refuse(LPVOID, DWORD, DWORD)
{
    SetLastError(ERROR_MOD_NOT_FOUND);
    return FALSE;
}

/// One that has turned half of the data before it fails.
BOOL Refuse_Late(LPVOID data, DWORD size, DWORD)
{
    for (DWORD i = 0; i < size / 2; ++i)
        static_cast<unsigned char*>(data)[i] = 0xFF;
    return FALSE;
}

class Refused_Cipher : public testing::TestWithParam<BOOL (*)(LPVOID, DWORD, DWORD)>
{
protected:
    void TearDown() override { cipher_calls = m_Saved; }

    Cipher_Calls m_Saved = cipher_calls;
    Open_Buffer m_Buffer{To_Buffer("before")};
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Cipher, Refused_Cipher, testing::Values(Refuse, Refuse_Late));

TEST_P(Refused_Cipher, Leaves_No_Image)
{
    const auto Expect_Empty = [&](auto change)
    {
        cipher_calls = m_Saved;
        m_Buffer = To_Buffer("before");
        cipher_calls.protect = GetParam();
        change();
        EXPECT_EQ(nullptr, m_Buffer.m_Image.Get_Ptr());
        EXPECT_EQ(0u, m_Buffer.m_Image.Get_Size());
    };
    Expect_Empty([&] { m_Buffer = To_Buffer("after"); });
    Expect_Empty([&] { m_Buffer.Attach_Copy("after", 5); });
    Expect_Empty([&] { m_Buffer.Append("x", 1); });
    Expect_Empty([&] { m_Buffer.Append(std::string(100, 'x').data(), 100); });
    Expect_Empty([&] { m_Buffer.Make_Reverse(); });
    Expect_Empty([&] { Open_Buffer::st_Encipher_Data(To_Buffer("after"), m_Buffer.m_Image); });
    EXPECT_EQ(0u, Lib_Buffer(Open_Buffer(To_Buffer("new"))).Get_Size());
    EXPECT_TEXT_EQ(L"", Lib_Protected_String(L"3441").Get_String());
}

TEST_P(Refused_Cipher, Gives_No_Content)
{
    const Lib_Protected_String pin(L"3441");
    const Lib_Buffer image = m_Buffer.m_Image;
    cipher_calls.unprotect = GetParam();
    EXPECT_EQ("", To_Text(m_Buffer));
    EXPECT_FALSE(m_Buffer.Is_Equals(nullptr, 0) || m_Buffer == To_Buffer("before") ||
                 m_Buffer < To_Buffer("x"));
    EXPECT_TEXT_EQ(L"", pin.Get_String());
    Lib_Buffer plain = To_Buffer("as it was");
    Open_Buffer::st_Decipher_Data(m_Buffer.m_Image, plain);
    EXPECT_EQ("as it was", To_Text(plain));

    m_Buffer.Append("x", 1);
    m_Buffer.Make_Reverse();
    EXPECT_TRUE(m_Buffer.m_Image == image) << "what cannot be read is not replaced";
    cipher_calls = m_Saved;
    EXPECT_EQ("before", To_Text(m_Buffer));
}
