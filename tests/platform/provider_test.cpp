#include "layer_probe.h"
#include "platform/modules/provider.h"

#include <vector>

namespace
{

class Providers : public test_support::Layer_Test
{
};

} // namespace

TEST_F(Providers, Are_Loaded_At_The_First_Call_And_Stay)
{
    static constinit Provider_Function<unsigned int(unsigned int)> twice(L"qn_test_provider", "Twice");
    const HMODULE before = GetModuleHandleW(L"qn_test_provider");
    ASSERT_NE(nullptr, twice.Get()) << "last error " << GetLastError();
    EXPECT_EQ(nullptr, before) << "loaded before it was needed";
    EXPECT_EQ(42u, twice.Get()(21));
    const HMODULE loaded = GetModuleHandleW(L"QN_TEST_PROVIDER.DLL");
    EXPECT_NE(nullptr, loaded);
    system_calls.open_module = [](const char*, int) -> void* { return nullptr; };
    EXPECT_EQ(42u, twice.Get()(21)) << "looked up again";
}

TEST_F(Providers, Leave_Their_Last_Error_To_The_Calling_Thread)
{
    static constinit Provider_Function<int(unsigned int)> fail(L"QN_TEST_PROVIDER.dll", "Fail_With");
    SetLastError(0);
    std::vector<std::thread> threads;
    for (unsigned int code = 1; code <= 4; ++code)
    {
        threads.emplace_back(
            [code]
            {
                ASSERT_NE(nullptr, fail.Get());
                EXPECT_EQ(0, fail.Get()(code));
                EXPECT_EQ(code, GetLastError());
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(0u, GetLastError());
}

TEST_F(Providers, That_Are_Missing_Are_Looked_For_Again)
{
    static constinit Provider_Function<unsigned int(unsigned int)> twice(L"qn_test_provider", "Twice");
    EXPECT_EQ(nullptr, Provider_Entry(L"no such provider", "Twice"));
    EXPECT_EQ(126u, GetLastError());
    EXPECT_EQ(nullptr, Provider_Entry(L"qn_test_provider", "No_Such_Entry"));
    EXPECT_EQ(127u, GetLastError());

    system_calls.open_module = [](const char*, int) -> void* { return nullptr; };
    EXPECT_EQ(nullptr, twice.Get());
    EXPECT_EQ(126u, GetLastError());
    system_calls = m_Saved;
    ASSERT_NE(nullptr, twice.Get());
    EXPECT_EQ(4u, twice.Get()(2));
}
