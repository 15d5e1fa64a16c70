#include "platform/providers/crypt32/cipher.h"

#include <algorithm>
#include <atomic>
#include <memory>

#include <openssl/err.h>
#include <openssl/evp.h>

namespace qn_crypt32
{

namespace
{

using qn_platform::DWORD;

/// The most that one tweak of XTS may serve; longer data go in pieces, each with its number as the tweak.
constexpr DWORD UNIT_SIZE = 1u << 24;

/// The cipher as OpenSSL knows it, without a key. It belongs to a library context of our own, with settings
/// that are not the program's. Null on failure.
EVP_CIPHER* get_Cipher()
{
    static std::atomic<EVP_CIPHER*> cipher{nullptr};
    EVP_CIPHER* known = cipher.load(std::memory_order_acquire);
    if (known != nullptr)
    {
        return known;
    }
    OSSL_LIB_CTX* const library = OSSL_LIB_CTX_new();
    EVP_CIPHER* const made =
        library != nullptr ? qn_crypt32_cipher_calls.fetch(library, "AES-256-XTS", nullptr) : nullptr;
    if (made != nullptr && cipher.compare_exchange_strong(known, made, std::memory_order_acq_rel))
    {
        return made;
    }
    EVP_CIPHER_free(made);
    OSSL_LIB_CTX_free(library);
    return known;
}

/// The errors that OpenSSL keeps for the calling thread are the program's: ours are taken off again.
class Error_Mark
{
public:
    Error_Mark() { ERR_set_mark(); }
    Error_Mark(const Error_Mark&) = delete;
    Error_Mark& operator=(const Error_Mark&) = delete;
    ~Error_Mark() { ERR_pop_to_mark(); }
};

struct Free_Context
{
    void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};

/// The unit's number is its tweak; key and cipher come with the first one.
bool turn_Unit(EVP_CIPHER_CTX* context, const EVP_CIPHER* cipher, const unsigned char* key, DWORD number,
               Direction direction, unsigned char* data, DWORD size)
{
    const unsigned char tweak[16] = {static_cast<unsigned char>(number)}; // there are at most 256 units
    int done = 0;
    return EVP_CipherInit_ex2(context, number == 0 ? cipher : nullptr, number == 0 ? key : nullptr, tweak,
                              direction == Direction::encipher ? 1 : 0, nullptr) == 1 &&
           qn_crypt32_cipher_calls.update(context, data, &done, data, static_cast<int>(size)) == 1 &&
           static_cast<DWORD>(done) == size;
}

} // namespace

DWORD Turn(Direction direction, const unsigned char* key, unsigned char* data, DWORD size)
{
    const Error_Mark mark;
    EVP_CIPHER* const cipher = get_Cipher();
    // The context holds the expanded key; releasing it wipes that. So no context outlives the call.
    const std::unique_ptr<EVP_CIPHER_CTX, Free_Context> context(qn_crypt32_cipher_calls.make_context());
    if (cipher == nullptr || context == nullptr)
    {
        return context == nullptr ? qn_platform::ERROR_NOT_ENOUGH_MEMORY : qn_platform::ERROR_GEN_FAILURE;
    }
    for (DWORD number = 0; size != 0; ++number)
    {
        const DWORD taken = std::min(size, UNIT_SIZE);
        if (!turn_Unit(context.get(), cipher, key, number, direction, data, taken))
        {
            return qn_platform::ERROR_GEN_FAILURE;
        }
        data += taken;
        size -= taken;
    }
    return qn_platform::ERROR_SUCCESS;
}

} // namespace qn_crypt32

extern "C"
{
    constinit qn_crypt32::Cipher_Calls qn_crypt32_cipher_calls{::EVP_CIPHER_fetch, ::EVP_CIPHER_CTX_new,
                                                               ::EVP_CipherUpdate};
}
