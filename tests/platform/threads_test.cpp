#include "layer_probe.h"
#include "lib_thread.h"
#include "platform/kernel/token.h"
#include "sanitizers.h"
#include "test_process.h"

#include <vector>

#include <sys/wait.h>
#include <unistd.h>

using namespace test_support;

// What threads leave behind, and what happens when the system fails beneath them.

namespace
{

std::atomic<unsigned int> s_nRuns{0};

unsigned int Count(void*)
{
    ++s_nRuns;
    return 5;
}

HANDLE Begin(unsigned int flags = 0, unsigned int (*procedure)(void*) = Count, void* argument = nullptr,
             unsigned int stack_size = 0)
{
    return reinterpret_cast<HANDLE>(_beginthreadex(nullptr, stack_size, procedure, argument, flags, nullptr));
}

/// The exit code; closes the handle.
DWORD Wait_For(HANDLE thread)
{
    DWORD code = 0;
    EXPECT_EQ(DWORD{WAIT_OBJECT_0}, WaitForSingleObject(thread, INFINITE));
    EXPECT_TRUE(GetExitCodeThread(thread, &code));
    EXPECT_TRUE(CloseHandle(thread));
    return code;
}

std::atomic<int> s_nTokens{0};

/// A token that counts itself.
struct Counted_Token : qn_platform::kernel::Token
{
    Counted_Token() : Token(TOKEN_ALL_ACCESS, qn_platform::kernel::Identity{1, 1}) { ++s_nTokens; }
    ~Counted_Token() { --s_nTokens; }
};

HANDLE Create_Counted_Token()
{
    using namespace qn_platform::kernel;
    return New_Handle(New_Record(Kind::Token, new Counted_Token,
                                 [](void* token) { delete static_cast<Counted_Token*>(token); }),
                      TOKEN_ALL_ACCESS, false);
}

/// Suspended.
HANDLE Begin_With_Token()
{
    HANDLE thread = Begin(CREATE_SUSPENDED);
    const HANDLE token = Create_Counted_Token();
    EXPECT_TRUE(SetThreadToken(&thread, token));
    CloseHandle(token);
    return thread;
}

class Made_Threads : public Layer_Test
{
protected:
    Made_Threads() { s_nRuns = 0; }
    ~Made_Threads() override
    {
        system_calls = m_Saved;
        EXPECT_TRUE(Threads_Fall_To(m_nThreads));
        EXPECT_GE(m_nHandles, Count_Open_Handles());
        EXPECT_EQ(0, s_nTokens) << "nobody keeps it";
    }

    /// How many have run, when all of them are gone.
    unsigned int Count_Runs() const
    {
        EXPECT_TRUE(Threads_Fall_To(m_nThreads));
        return s_nRuns;
    }

    const std::ptrdiff_t m_nThreads = Count_Lasting_Threads();
    const unsigned int m_nHandles = Count_Open_Handles();
};

} // namespace

TEST_F(Made_Threads, End_Unrun_When_Nobody_Can_Resume_Them)
{
    for (int i = 0; i < 50; ++i)
    {
        const HANDLE thread = Begin_With_Token();
        EXPECT_EQ(1, s_nTokens) << "the thread bears it";
        HANDLE second = nullptr;
        ASSERT_TRUE(DuplicateHandle(GetCurrentProcess(), thread, GetCurrentProcess(), &second, 0, FALSE,
                                    DUPLICATE_SAME_ACCESS));
        EXPECT_TRUE(CloseHandle(thread));
        EXPECT_EQ(DWORD{WAIT_TIMEOUT}, WaitForSingleObject(second, 0));
        EXPECT_TRUE(CloseHandle(second));
        EXPECT_EQ(0, s_nTokens);
    }
    EXPECT_EQ(0U, Count_Runs());
}

TEST_F(Made_Threads, Put_Off_Their_Token_At_The_End)
{
    const HANDLE thread = Begin_With_Token();
    ResumeThread(thread);
    EXPECT_EQ(DWORD{WAIT_OBJECT_0}, WaitForSingleObject(thread, INFINITE));
    EXPECT_EQ(0, s_nTokens) << "though there is a handle to the thread";
    CloseHandle(thread);
}

TEST_F(Made_Threads, Are_Resumed_Closed_And_Asked_By_Many_At_Once)
{
    constexpr unsigned int MAKERS = 4;
    constexpr unsigned int EACH = 150;
    std::vector<std::thread> makers;
    for (unsigned int maker = 0; maker < MAKERS; ++maker)
    {
        makers.emplace_back(
            []
            {
                for (unsigned int i = 0; i < EACH; ++i)
                {
                    const HANDLE thread = Begin(CREATE_SUSPENDED);
                    ASSERT_NE(nullptr, thread);
                    std::atomic<DWORD> resumed{0};
                    std::atomic<DWORD> id{0};
                    std::thread rival([&] { id = GetThreadId(thread), resumed += ResumeThread(thread); });
                    resumed += ResumeThread(thread);
                    EXPECT_NE(0U, GetThreadId(thread));
                    rival.join();
                    EXPECT_EQ(1U, resumed) << "one of both resumed it";
                    EXPECT_EQ(GetThreadId(thread), id);
                    EXPECT_EQ(5U, Wait_For(thread));
                    CloseHandle(Begin(i % 2 == 0 ? CREATE_SUSPENDED : 0));
                }
            });
    }
    for (std::thread& maker : makers)
    {
        maker.join();
    }
    EXPECT_EQ(MAKERS * EACH * 3 / 2, Count_Runs());
}

TEST_F(Made_Threads, Are_Set_After_The_Last_Destructor)
{
    struct Slow
    {
        std::atomic<unsigned int>* ended = nullptr;
        ~Slow()
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            ++*ended;
        }
    };
    std::atomic<unsigned int> ended{0};
    const HANDLE thread = Begin(
        0,
        [](void* argument)
        {
            static thread_local Slow slow;
            slow.ended = static_cast<std::atomic<unsigned int>*>(argument);
            return 0u;
        },
        &ended);
    EXPECT_EQ(0U, Wait_For(thread));
    EXPECT_EQ(1U, ended);
    // A thread that leaves by the C library's own way out has no answer.
    EXPECT_EQ(0U, Wait_For(Begin(0, [](void*) -> unsigned int { pthread_exit(nullptr); })));
}

TEST_F(Made_Threads, Have_The_Stack_That_Was_Asked_For)
{
    const auto stack_Size = [](void* size)
    {
        pthread_attr_t attributes;
        pthread_getattr_np(pthread_self(), &attributes);
        pthread_attr_getstacksize(&attributes, static_cast<std::size_t*>(size));
        pthread_attr_destroy(&attributes);
        return 0u;
    };
    std::size_t by_default = 0;
    std::size_t size = 0;
    Wait_For(Begin(0, stack_Size, &by_default));
    Wait_For(Begin(0, stack_Size, &size, 4096));
    EXPECT_EQ(by_default, size) << "never less than by default";
    Wait_For(Begin(0, stack_Size, &size, 40'000'000));
    EXPECT_LE(40'000'000U, size);
    Wait_For(Begin(STACK_SIZE_PARAM_IS_A_RESERVATION, stack_Size, &size, 1'000'000));
    EXPECT_LE(900'000U, size); // the C library's own part counts
    EXPECT_GT(by_default, size);
}

TEST_F(Made_Threads, Are_Refused_With_The_Reason)
{
    const auto expect_None = [](DWORD code, int error, unsigned int flags)
    {
        unsigned int id = 77;
        SetLastError(0);
        errno = 0;
        EXPECT_EQ(0U, _beginthreadex(nullptr, 0, Count, nullptr, flags, &id));
        EXPECT_EQ(code, GetLastError());
        EXPECT_EQ(error, errno);
        EXPECT_EQ(77U, id);
    };
    expect_None(ERROR_INVALID_PARAMETER, EINVAL, 0x80000000);
    EXPECT_EQ(nullptr, Begin(0, nullptr));
    EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());

    system_calls.create_thread = Create_No_Thread;
    for (const unsigned int flags : {0U, CREATE_SUSPENDED})
    {
        expect_None(ERROR_NOT_ENOUGH_MEMORY, EAGAIN, flags);
    }
}

TEST_F(Made_Threads, That_Cannot_Bear_The_Token_Of_Their_Maker_Never_Run)
{
    const HANDLE token = Create_Counted_Token();
    EXPECT_TRUE(SetThreadToken(nullptr, token));
    CloseHandle(token);
    system_calls.create_thread = Create_And_End;
    for (const unsigned int flags : {0U, CREATE_SUSPENDED})
    {
        Lib_Result result;
        void* thread = &result;
        EXPECT_FALSE(Lib_Create_Impersonated_Thread_Ex(nullptr, 0, Count, nullptr, flags, result, nullptr,
                                                       nullptr, &thread));
        EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, result.Get_Result_Code());
        EXPECT_EQ(1U, result.Get_Result_Source());
        EXPECT_EQ(&result, thread);
    }
    system_calls.create_thread = Create_No_Thread;
    Lib_Result result;
    EXPECT_FALSE(
        Lib_Create_Impersonated_Thread_Ex(nullptr, 0, Count, nullptr, 0, result, nullptr, nullptr, nullptr));
    EXPECT_EQ(DWORD{ERROR_NOT_ENOUGH_MEMORY}, result.Get_Result_Code());
    RevertToSelf();
    EXPECT_EQ(0U, Count_Runs());
}

TEST_F(Made_Threads, Fork_Like_Others)
{
    if (!Forks_Beside_Threads)
        GTEST_SKIP() << NO_FORK;
    const HANDLE suspended = Begin(CREATE_SUSPENDED);
    const HANDLE thread = Begin(
        0,
        [](void* foreign)
        {
            const auto child = [&]
            {
                DWORD code = 0;
                const bool gone = GetExitCodeThread(foreign, &code) == FALSE && GetLastError() == 6;
                return gone && Wait_For(Begin()) == 5 ? 0 : 1;
            };
            return static_cast<unsigned int>(In_Other_Process(child));
        },
        suspended);
    EXPECT_EQ(0U, Wait_For(thread));
    EXPECT_EQ(1U, ResumeThread(suspended));
    EXPECT_EQ(5U, Wait_For(suspended));
}

TEST_F(Made_Threads, Return_From_Their_Procedure_In_A_Forked_Child)
{
    if (!Forks_Beside_Threads)
        GTEST_SKIP() << NO_FORK;
    pid_t child = -1;
    const HANDLE thread = Begin(
        0,
        [](void* id)
        {
            *static_cast<pid_t*>(id) = fork();
            return 5u;
        },
        &child);
    EXPECT_EQ(5U, Wait_For(thread));
    int status = -1;
    EXPECT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status) << "the child ends with its only thread";
}
