// Protected memory and buffers, base64 and CRC-32.

#include <lib_foundation.h>
#include <lib_platform.h>
#include <lib_protected.h>

#include "peers.h"
#include "row.h"
#include "texts.h"

#include <memory>
#include <vector>

namespace
{

std::string size_Name(std::size_t nSize)
{
    if (nSize >= 1 << 20)
        return std::to_string(nSize >> 20) + " MiB";
    return nSize >= 1 << 10 ? std::to_string(nSize >> 10) + " KiB" : std::to_string(nSize) + " bytes";
}

Lib_Buffer to_Buffer(const std::string& strBytes)
{
    Lib_Buffer buffer;
    buffer.Attach_Copy(strBytes.data(), strBytes.size());
    return buffer;
}

#if defined(QNLIB_BENCH_OPENSSL)

/// A mode of OpenSSL with contexts that have their key: nobody can be faster with it.
class Ready_Cipher
{
public:
    explicit Ready_Cipher(const char* pMode)
        : m_pCipher(EVP_CIPHER_fetch(nullptr, pMode, nullptr), EVP_CIPHER_free), m_pEncipher(make(1)),
          m_pDecipher(make(0))
    {
    }

    int There_And_Back(std::string& strData) const
    {
        return turn(m_pEncipher.get(), strData) + turn(m_pDecipher.get(), strData);
    }

private:
    using Context = std::shared_ptr<EVP_CIPHER_CTX>;

    Context make(int nEncipher) const
    {
        const std::string strKey = texts::Random_Bytes(64);
        Context pContext(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
        EVP_CipherInit_ex2(pContext.get(), m_pCipher.get(),
                           reinterpret_cast<const unsigned char*>(strKey.data()), m_Start, nEncipher,
                           nullptr);
        EVP_CIPHER_CTX_set_padding(pContext.get(), 0);
        return pContext;
    }

    int turn(EVP_CIPHER_CTX* pContext, std::string& strData) const
    {
        auto* pData = reinterpret_cast<unsigned char*>(strData.data());
        int nDone = 0;
        EVP_CipherInit_ex2(pContext, nullptr, nullptr, m_Start, -1, nullptr);
        EVP_CipherUpdate(pContext, pData, &nDone, pData, static_cast<int>(strData.size()));
        return nDone;
    }

    unsigned char m_Start[16] = {};
    std::shared_ptr<EVP_CIPHER> m_pCipher;
    Context m_pEncipher;
    Context m_pDecipher;
};

#endif

/// Peers of both rows: XTS is the mode of ours, CBC the other one that hides repetition. (ECB, a sixth faster
/// than XTS, shows which blocks of 16 bytes are equal; CTR needs a nonce, for which an image has no room.)
void add_Ciphers(const Row& row, std::size_t nSize)
{
#if defined(QNLIB_BENCH_OPENSSL)
    for (const char* pMode : {"XTS", "CBC"})
        row.Add(std::string("OpenSSL ") + pMode,
                [cipher = Ready_Cipher(("AES-256-" + std::string(pMode)).c_str()),
                 data = texts::Random_Bytes(nSize)]() mutable { return cipher.There_And_Back(data); });
#endif
#if defined(QNLIB_BENCH_SODIUM)
    row.Add("libsodium",
            [nSize, key = texts::Random_Bytes(crypto_secretbox_KEYBYTES),
             data = texts::Random_Bytes(nSize + crypto_secretbox_MACBYTES)]() mutable
            {
                const unsigned char nonce[crypto_secretbox_NONCEBYTES] = {};
                auto* pData = reinterpret_cast<unsigned char*>(data.data());
                const auto* pKey = reinterpret_cast<const unsigned char*>(key.data());
                crypto_secretbox_easy(pData, pData, nSize, nonce, pKey);
                return crypto_secretbox_open_easy(pData, pData, data.size(), nonce, pKey);
            });
#endif
}

void add_Protected_Memory(std::size_t nSize, double dMark)
{
    Row row("protect and unprotect in place, " + size_Name(nSize), dMark);
    row.Add(Row::Ours,
            [data = texts::Random_Bytes(nSize)]() mutable
            {
                const auto nBytes = static_cast<DWORD>(data.size());
                return CryptProtectMemory(data.data(), nBytes, 0) +
                       CryptUnprotectMemory(data.data(), nBytes, 0);
            });
    add_Ciphers(row, nSize);
}

void add_Protected_Buffer(std::size_t nSize, double dMark)
{
    Row row("protected buffer made and read, " + size_Name(nSize), dMark);
    row.Add(Row::Ours,
            [plain = to_Buffer(texts::Random_Bytes(nSize - 8))]
            {
                const Lib_Protected_Buffer buffer(plain);
                return Lib_Buffer(buffer);
            });
    add_Ciphers(row, nSize);
}

void add_To_Base64(std::size_t nSize)
{
    const std::string strBytes = texts::Random_Bytes(nSize);
    Row row("base64 from " + size_Name(nSize), 1.0);
    row.Add(Row::Ours,
            [bytes = to_Buffer(strBytes)]
            {
                Lib_Buffer text;
                base64_encode(bytes, text, CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF);
                return text;
            });
#if defined(QNLIB_BENCH_OPENSSL)
    row.Add("OpenSSL",
            [strBytes]
            {
                auto pText = std::make_unique_for_overwrite<unsigned char[]>(strBytes.size() * 4 / 3 + 5);
                EVP_EncodeBlock(pText.get(), reinterpret_cast<const unsigned char*>(strBytes.data()),
                                static_cast<int>(strBytes.size()));
                return pText;
            });
#endif
#if defined(QNLIB_BENCH_GLIB)
    row.Add("GLib",
            [strBytes] {
                return Glib_Text(
                    g_base64_encode(reinterpret_cast<const guchar*>(strBytes.data()), strBytes.size()));
            });
#endif
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [bytes = peers::Qt_Bytes(strBytes)] { return bytes.toBase64(); });
#endif
}

void add_From_Base64(std::size_t nSize)
{
    Lib_Buffer encoded;
    base64_encode(to_Buffer(texts::Random_Bytes(nSize)), encoded, CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF);
    encoded.Set_Size(encoded.Get_Size() - 1);
    const std::string strText(static_cast<const char*>(encoded.Get_Ptr()), encoded.Get_Size());
    Row row("base64 to " + size_Name(nSize), 1.0);
    row.Add(Row::Ours,
            [encoded]
            {
                Lib_Buffer bytes;
                base64_decode(encoded, bytes, CRYPT_STRING_BASE64);
                return bytes;
            });
#if defined(QNLIB_BENCH_OPENSSL)
    row.Add("OpenSSL",
            [strText]
            {
                auto pBytes = std::make_unique_for_overwrite<unsigned char[]>(strText.size() / 4 * 3);
                EVP_DecodeBlock(pBytes.get(), reinterpret_cast<const unsigned char*>(strText.data()),
                                static_cast<int>(strText.size()));
                return pBytes;
            });
#endif
#if defined(QNLIB_BENCH_GLIB)
    row.Add("GLib",
            [strText]
            {
                gsize nBytes = 0;
                return Glib_Text(reinterpret_cast<char*>(g_base64_decode(strText.c_str(), &nBytes)));
            });
#endif
#if defined(QNLIB_BENCH_QT)
    row.Add("Qt", [text = peers::Qt_Bytes(strText)] { return QByteArray::fromBase64(text); });
#endif
}

void add_Checksum(std::size_t nSize)
{
    const std::string strBytes = texts::Random_Bytes(nSize);
    const auto Ours = [bytes = strBytes]() mutable
    { return Lib_Cacl_CRC32(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size()); };
#if defined(QNLIB_BENCH_ZLIB)
    Row("CRC-32 of " + size_Name(nSize) + ", beside zlib", 1.0)
        .Add(Row::Ours, Ours)
        .Add("zlib",
             [strBytes] {
                 return crc32(0, reinterpret_cast<const Bytef*>(strBytes.data()),
                              static_cast<uInt>(strBytes.size()));
             });
#endif
#if defined(QNLIB_BENCH_DEFLATE)
    Row("CRC-32 of " + size_Name(nSize) + ", beside libdeflate", 0)
        .Add(Row::Ours, Ours)
        .Add("libdeflate", [strBytes] { return libdeflate_crc32(0, strBytes.data(), strBytes.size()); });
#endif
}

} // namespace

void Add_Secret_Rows()
{
    for (const std::size_t nSize : {16u, 256u, 65536u})
        add_Protected_Memory(nSize, nSize == 65536 ? 1 / 1.1 : 0);
    for (const std::size_t nSize : {16u, 256u, 65536u})
        add_Protected_Buffer(nSize, nSize == 65536 ? 0.5 : 0);
    for (const std::size_t nSize : {1u << 10, 1u << 20})
        add_To_Base64(nSize);
    for (const std::size_t nSize : {1u << 10, 1u << 20})
        add_From_Base64(nSize);
    for (const std::size_t nSize : {64u, 4u << 10, 1u << 20})
        add_Checksum(nSize);
}
