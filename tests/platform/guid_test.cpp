#include "layer_probe.h"

#include <cstring>

namespace
{

template <int ERROR>
ssize_t Refuse(void*, std::size_t, unsigned int)
{
    errno = ERROR;
    return -1;
}

class Guid_Drawing : public test_support::Layer_Test
{
};

} // namespace

TEST_F(Guid_Drawing, Leaves_The_Identifier_Alone_When_The_Kernel_Refuses)
{
    _GUID guid;
    std::memset(&guid, 0xAB, sizeof guid);
    const _GUID before = guid;
    system_calls.open_file = [](const char*, int) { return -1; };
    system_calls.get_random = Refuse<EPERM>;
    EXPECT_EQ(E_FAIL, CoCreateGuid(&guid));
    system_calls.get_random = [](void*, std::size_t size, unsigned int) -> ssize_t
    { return static_cast<ssize_t>(size) - 1; };
    EXPECT_EQ(E_FAIL, CoCreateGuid(&guid));
    EXPECT_EQ(0, std::memcmp(&before, &guid, sizeof guid));
    EXPECT_EQ(E_INVALIDARG, CoCreateGuid(nullptr));
    EXPECT_EQ(E_INVALIDARG, CLSIDFromString(L"{", nullptr));
}

TEST_F(Guid_Drawing, Takes_The_Device_When_The_Call_Is_Refused)
{
    system_calls.get_random = Refuse<ENOSYS>;
    _GUID first{};
    _GUID second{};
    EXPECT_EQ(S_OK, CoCreateGuid(&first));
    EXPECT_EQ(S_OK, CoCreateGuid(&second));
    EXPECT_NE(0, std::memcmp(&first, &second, sizeof first));
}

TEST_F(Guid_Drawing, Draws_On_After_Signals_And_Marks_Version_And_Variant)
{
    static int s_nCalls = 0;
    system_calls.get_random = [](void* bytes, std::size_t size, unsigned int) -> ssize_t
    {
        if (++s_nCalls < 3)
            return Refuse<EINTR>(nullptr, 0, 0);
        std::memset(bytes, 0xFF, size);
        return static_cast<ssize_t>(size);
    };
    _GUID guid{};
    EXPECT_EQ(S_OK, CoCreateGuid(&guid));
    EXPECT_EQ(3, s_nCalls);
    EXPECT_EQ(0xFFFFFFFF, guid.Data1);
    EXPECT_EQ(0x4FFF, guid.Data3);
    EXPECT_EQ(0xBF, guid.Data4[0]);
}
