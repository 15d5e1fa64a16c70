#include "layer_probe.h"
#include "platform/modules/provider.h"

namespace
{

class Providers : public test_support::Layer_Test
{
};

} // namespace

TEST_F(Providers, Are_Loaded_At_The_First_Call_That_Finds_Them_And_Stay)
{
    static constinit Provider_Function<unsigned int(unsigned int)> twice(L"qn_test_provider", "Twice");
    static constinit Provider_Function<int(unsigned int)> fail(L"QN_TEST_PROVIDER.dll", "Fail_With");
    EXPECT_EQ(nullptr, GetModuleHandleW(L"qn_test_provider")) << "loaded before it was needed";
    const auto no_Module = [](const char*, int) -> void* { return nullptr; };
    system_calls.open_module = no_Module;
    EXPECT_EQ(nullptr, twice.Get());
    EXPECT_EQ(126u, GetLastError());
    system_calls = m_Saved;
    ASSERT_NE(nullptr, twice.Get()) << "last error " << GetLastError();
    EXPECT_NE(nullptr, GetModuleHandleW(L"QN_TEST_PROVIDER.DLL"));
    system_calls.open_module = no_Module;
    EXPECT_EQ(42u, twice.Get()(21)) << "looked up again";
    system_calls = m_Saved;
    EXPECT_EQ(nullptr, Provider_Entry(L"qn_test_provider", "No_Such_Entry"));
    EXPECT_EQ(127u, GetLastError());

    ASSERT_NE(nullptr, fail.Get());
    std::thread(
        []
        {
            EXPECT_EQ(0, fail.Get()(7));
            EXPECT_EQ(7u, GetLastError());
        })
        .join();
    EXPECT_EQ(127u, GetLastError()) << "the last error is the calling thread's";
}
