#include "platform/kernel/session.h"

#include "layer_probe.h"

#include <cstring>
#include <string_view>

#include <sys/mman.h>
#include <unistd.h>

using namespace qn_platform;

namespace
{

class Sessions : public test_support::Layer_Test
{
public:
    /// The kernel's answer for every process.
    static void Has_Written(const char* text)
    {
        s_pText = text;
        system_calls.open_file = [](const char*, int)
        {
            const int file = memfd_create("sessionid", MFD_CLOEXEC);
            EXPECT_EQ(static_cast<ssize_t>(std::strlen(s_pText)),
                      pwrite(file, s_pText, std::strlen(s_pText), 0));
            return file;
        };
    }

    static void Refuses(int error)
    {
        s_nError = error;
        system_calls.open_file = [](const char*, int)
        {
            errno = s_nError;
            return -1;
        };
    }

    /// 0 when it answers `session`, else the error.
    static DWORD Reads(DWORD session)
    {
        DWORD read = session + 1;
        const DWORD error = kernel::Read_Session(getpid(), read);
        EXPECT_EQ(error == 0 ? session : session + 1, read);
        return error;
    }

private:
    static inline const char* s_pText = nullptr;
    static inline int s_nError = 0;
};

} // namespace

TEST_F(Sessions, Are_What_The_Kernel_Wrote)
{
    Has_Written("7");
    EXPECT_EQ(0U, Reads(7));
    Has_Written("4294967294\n");
    EXPECT_EQ(0U, Reads(4294967294));
    Has_Written("4294967295");
    EXPECT_EQ(0U, Reads(0)) << "none was set";
    for (const char* text : {"", "none", "99999999999"})
    {
        Has_Written(text);
        EXPECT_EQ(5U, Reads(0)) << text;
    }
}

TEST_F(Sessions, Are_Kept_Once_They_Are_Known)
{
    kernel::Session_Once own;
    DWORD session = 1;
    Refuses(EMFILE);
    EXPECT_EQ(4U, own.Get(session));
    Refuses(EACCES);
    EXPECT_EQ(5U, own.Get(session));
    EXPECT_EQ(1U, session);
    Has_Written("7");
    EXPECT_EQ(0U, own.Get(session));
    Has_Written("8");
    EXPECT_EQ(0U, own.Get(session));
    EXPECT_EQ(7U, session);

    kernel::Session_Once without;
    Refuses(ENOENT);
    EXPECT_EQ(0U, without.Get(session));
    EXPECT_EQ(0U, session);
}

TEST_F(Sessions, Are_Not_Guessed_Where_They_Cannot_Be_Read)
{
    for (const auto& [error, told] : {std::pair(EACCES, 5u), std::pair(EMFILE, 4u), std::pair(ENOMEM, 8u)})
    {
        Refuses(error);
        EXPECT_EQ(told, Reads(0));
    }
    Refuses(ENOENT);
    system_calls.access_file = [](const char*, int) { return 0; };
    EXPECT_EQ(5U, Reads(0)) << "others have one";
    system_calls.access_file = [](const char* path, int)
    {
        errno = ENOENT;
        return std::string_view(path) == "/proc/self/sessionid" ? -1 : 0;
    };
    EXPECT_EQ(0U, Reads(0)) << "a kernel that keeps none";
    system_calls.access_file = [](const char*, int)
    {
        errno = ENOENT;
        return -1;
    };
    EXPECT_EQ(5U, Reads(0)) << "no such process";
}
