#include "lib_platform.h"
#include "platform/providers/crypt32/cipher.h"
#include "platform/providers/crypt32/key_page.h"
#include "platform/system_calls.h"
#include "test_process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

// The cipher behind protected memory. What fails only before the key is there runs in a fresh process.

namespace
{

std::string Turned(std::string bytes, BOOL (*turn)(LPVOID, DWORD, DWORD))
{
    EXPECT_TRUE(turn(bytes.data(), static_cast<DWORD>(bytes.size()), 0)) << "last error " << GetLastError();
    return bytes;
}

std::string Protected(const std::string& bytes) { return Turned(bytes, CryptProtectMemory); }
std::string Unprotected(const std::string& bytes) { return Turned(bytes, CryptUnprotectMemory); }

/// The provider's records of calls; the provider is loaded by that, but has no key yet.
template <class Record>
Record& Provider_Record(const char* name)
{
    return *reinterpret_cast<Record*>(GetProcAddress(LoadLibraryW(L"crypt32"), name));
}
qn_crypt32::System_Calls& Provider_Calls()
{
    return Provider_Record<qn_crypt32::System_Calls>("qn_crypt32_system_calls");
}
qn_crypt32::Cipher_Calls& Provider_Cipher()
{
    return Provider_Record<qn_crypt32::Cipher_Calls>("qn_crypt32_cipher_calls");
}

/// Whether the first call fails as it should and leaves the data alone, and the next one, with the system as
/// it was before the change, succeeds.
bool Fails_Then_Recovers(DWORD error, void (*change)())
{
    const qn_crypt32::System_Calls system = Provider_Calls();
    const qn_crypt32::Cipher_Calls cipher = Provider_Cipher();
    change();
    std::string data(32, 'x');
    const bool failed = !CryptProtectMemory(data.data(), 32, 0) && GetLastError() == error;
    const bool untouched = data == std::string(32, 'x');
    Provider_Cipher() = cipher;
    Provider_Calls() = system;
    Provider_Calls().get_random = [](void* target, std::size_t size, unsigned int) -> ssize_t
    {
        static unsigned char next = 0;
        static bool interrupted = false;
        if (!std::exchange(interrupted, !interrupted))
        {
            errno = EINTR;
            return -1;
        }
        const std::size_t some = std::min<std::size_t>(size, 7); // fewer than asked for
        std::generate_n(static_cast<unsigned char*>(target), some, [] { return ++next; });
        return static_cast<ssize_t>(some);
    };
    const bool recovered = CryptProtectMemory(data.data(), 32, 0) && data != std::string(32, 'x') &&
                           CryptUnprotectMemory(data.data(), 32, 0) && data == std::string(32, 'x');
    return failed && untouched && recovered;
}

void Exit_With(bool right) { _exit(right && !testing::Test::HasFailure() ? 0 : 1); }

class Protected_Memory : public testing::Test
{
protected:
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

} // namespace

TEST_F(Protected_Memory, Comes_Back_As_It_Was)
{
    for (const std::size_t size : {0u, 16u, 48u, (1u << 24) - 16, 1u << 24, (1u << 24) + 16, 3u << 24})
    {
        const std::string plain(size, 'p');
        const std::string image = Protected(plain);
        EXPECT_TRUE(size == 0 || image != plain) << size;
        EXPECT_TRUE(Unprotected(image) == plain) << size;
    }
}

TEST_F(Protected_Memory, Hides_What_Repeats)
{
    const std::string image = Protected(std::string(1 << 16, '\0'));
    std::vector<std::string> blocks;
    for (std::size_t i = 0; i < image.size(); i += 16)
        blocks.push_back(image.substr(i, 16));
    std::sort(blocks.begin(), blocks.end());
    EXPECT_EQ(blocks.end(), std::adjacent_find(blocks.begin(), blocks.end())) << "equal blocks are seen";

    // Past the first 16 MiB too, where the mode begins anew.
    const std::string huge = Protected(std::string((1u << 24) + 16, '\0'));
    EXPECT_NE(huge.substr(0, 16), huge.substr(1u << 24));
    EXPECT_EQ(huge.substr(0, 1 << 16), image) << "the same bytes, the same image";
}

TEST_F(Protected_Memory, Refuses_Arguments)
{
    std::array<char, 32> data{};
    for (BOOL (*turn)(LPVOID, DWORD, DWORD) : {CryptProtectMemory, CryptUnprotectMemory})
    {
        const auto Expect_Error = [&](DWORD error, void* target, DWORD size, DWORD flags)
        {
            EXPECT_FALSE(turn(target, size, flags));
            EXPECT_EQ(error, GetLastError());
        };
        for (const DWORD size : {15u, 17u})
            Expect_Error(ERROR_INVALID_PARAMETER, data.data(), size, 0);
        Expect_Error(ERROR_INVALID_PARAMETER, nullptr, 16, 0);
        Expect_Error(ERROR_INVALID_PARAMETER, data.data(), 16, 4);
        Expect_Error(ERROR_NOT_SUPPORTED, data.data(), 16, CRYPTPROTECTMEMORY_CROSS_PROCESS);
        Expect_Error(ERROR_NOT_SUPPORTED, data.data(), 16, CRYPTPROTECTMEMORY_SAME_LOGON);
    }
    EXPECT_EQ((std::array<char, 32>{}), data);
}

TEST_F(Protected_Memory, Is_Read_By_A_Forked_Child)
{
    std::string image = Protected("inherited secret");
    EXPECT_TRUE(test_support::In_Other_Process(
        [&] { return CryptUnprotectMemory(image.data(), 16, 0) && image == "inherited secret"; }));
}

TEST_F(Protected_Memory, Fails_Without_Its_Provider)
{
    EXPECT_EXIT(
        {
            system_calls.open_module = [](const char*, int) -> void* { return nullptr; };
            std::string data(16, 'x');
            const bool failed =
                !CryptProtectMemory(data.data(), 16, 0) && GetLastError() == ERROR_MOD_NOT_FOUND;
            Exit_With(failed && data == std::string(16, 'x'));
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(Protected_Memory, Fails_Without_A_Key_Or_A_Cipher_And_Tries_Again)
{
    const struct
    {
        DWORD error;
        void (*change)();
    } faults[] = {
        {ERROR_NOT_ENOUGH_MEMORY,
         [] { Provider_Calls().map = [](void*, std::size_t, int, int, int, off_t) { return MAP_FAILED; }; }},
        {ERROR_GEN_FAILURE,
         []
         {
             Provider_Calls().get_random = [](void*, std::size_t, unsigned int) -> ssize_t
             { return errno = ENOSYS, -1; };
         }},
        {ERROR_GEN_FAILURE, [] { Provider_Calls().advise = [](void*, std::size_t, int) { return -1; }; }},
        {ERROR_GEN_FAILURE, [] { Provider_Calls().protect = [](void*, std::size_t, int) { return -1; }; }},
        {ERROR_GEN_FAILURE,
         []
         {
             Provider_Cipher().fetch = [](ossl_lib_ctx_st*, const char*, const char*)
             { return static_cast<evp_cipher_st*>(nullptr); };
         }},
        {ERROR_NOT_ENOUGH_MEMORY,
         [] { Provider_Cipher().make_context = [] { return static_cast<evp_cipher_ctx_st*>(nullptr); }; }},
        {ERROR_GEN_FAILURE,
         []
         {
             Provider_Cipher().update = [](evp_cipher_ctx_st*, unsigned char*, int*, const unsigned char*,
                                           int) { return 0; };
         }},
    };
    for (const auto& fault : faults)
        EXPECT_EXIT(Exit_With(Fails_Then_Recovers(fault.error, fault.change)), testing::ExitedWithCode(0),
                    "");
}

TEST_F(Protected_Memory, Does_Without_A_Locked_Page)
{
    EXPECT_EXIT(
        {
            Provider_Calls().lock = [](const void*, std::size_t) { return -1; };
            Exit_With(Unprotected(Protected(std::string(48, 'x'))) == std::string(48, 'x'));
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(Protected_Memory, Has_One_Key_For_Threads_That_Come_Together)
{
    EXPECT_EXIT(
        {
            std::vector<std::string> images(8);
            std::vector<std::thread> threads;
            for (std::string& image : images)
                threads.emplace_back([&] { image = Protected(std::string(16, 'x')); });
            for (std::thread& thread : threads)
                thread.join();
            Exit_With(std::count(images.begin(), images.end(), images.front()) == 8);
        },
        testing::ExitedWithCode(0), "");
}
