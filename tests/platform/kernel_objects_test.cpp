#include "lib_platform.h"
#include "platform/kernel/object_layout.h"
#include "platform/kernel/object_pool.h"
#include "platform/kernel/ranked_lock.h"
#include "platform/system_calls.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

#include <pthread.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace qn_platform::kernel;

namespace
{

HANDLE make_Event(bool set = false) { return CreateEventW(nullptr, FALSE, set, nullptr); }
HANDLE make_Mutex() { return CreateMutexW(nullptr, FALSE, nullptr); }

DWORD error_Of(BOOL result)
{
    EXPECT_FALSE(result);
    return GetLastError();
}

/// What the child of a fork answers, as its exit code.
template <class Function>
int in_Child(const Function& function)
{
    const pid_t child = fork();
    if (child == 0)
    {
        alarm(20);
        _exit(function());
    }
    int status = 0;
    EXPECT_EQ(child, waitpid(child, &status, 0));
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Puts the layer's system calls back.
class Kernel_Memory : public testing::Test
{
protected:
    void TearDown() override { system_calls = m_Saved; }

    System_Calls m_Saved = system_calls;
};

} // namespace

TEST(Kernel_Handles, Have_Values_That_Dont_Come_Again_Soon)
{
    const HANDLE stale = make_Event();
    ASSERT_TRUE(CloseHandle(stale));
    for (int i = 0; i < 100000; ++i)
    {
        const HANDLE handle = make_Event();
        ASSERT_NE(stale, handle) << "after " << i << " handles";
        ASSERT_EQ(0u, reinterpret_cast<std::uintptr_t>(handle) & 3);
        ASSERT_LT(reinterpret_cast<std::uintptr_t>(handle), 1u << 31);
        ASSERT_TRUE(CloseHandle(handle));
    }
    EXPECT_EQ(6u, error_Of(SetEvent(stale)));
    EXPECT_EQ(6u, error_Of(CloseHandle(stale)));
}

TEST(Kernel_Handles, Refuse_Values_That_Are_None)
{
    const HANDLE handle = make_Event();
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    for (const std::uintptr_t wrong :
         {value + 1, value + 2, value | 1ul << 31, value | 1ul << 32, value ^ 1u << 22, value ^ 1u << 21,
          ~std::uintptr_t{0} - 2, std::uintptr_t{4000000000}})
    {
        EXPECT_EQ(6u, error_Of(SetEvent(reinterpret_cast<HANDLE>(wrong)))) << std::hex << wrong;
        EXPECT_EQ(6u, error_Of(CloseHandle(reinterpret_cast<HANDLE>(wrong)))) << std::hex << wrong;
    }
    EXPECT_TRUE(CloseHandle(handle));
}

TEST(Kernel_Handles, Dont_Reach_The_Object_That_Has_The_Memory_Now)
{
    const HANDLE first = make_Event(true);
    const Look look = Look_Up(first);
    ASSERT_TRUE(CloseHandle(first));
    const HANDLE second = make_Event();
    ASSERT_EQ(look.object, Look_Up(second).object) << "the test needs the same memory";
    EXPECT_FALSE(Get_Reference(look));
    EXPECT_EQ(258u, WaitForSingleObject(second, 0));
    EXPECT_TRUE(CloseHandle(second));
}

TEST(Kernel_Handles, Lose_Nothing_In_Many_Rounds)
{
    const auto round = []
    {
        const HANDLE event = make_Event(true);
        const HANDLE mutex = CreateMutexW(nullptr, TRUE, nullptr);
        HANDLE copy = nullptr;
        ASSERT_TRUE(DuplicateHandle(GetCurrentProcess(), mutex, GetCurrentProcess(), &copy, 0, FALSE, 2));
        const HANDLE both[] = {event, copy};
        ASSERT_EQ(0u, WaitForMultipleObjects(2, both, TRUE, 0));
        for (const HANDLE handle : {event, mutex, copy})
        {
            ASSERT_TRUE(CloseHandle(handle)); // the last one while the mutex is owned
        }
    };
    for (int i = 0; i < 2000; ++i)
    {
        round();
    }
    const std::size_t slots = g_Slots.Get_Count();
    const std::size_t objects = g_Objects.Get_Count();
    for (int i = 0; i < 100000; ++i)
    {
        round();
    }
    EXPECT_EQ(slots, g_Slots.Get_Count());
    EXPECT_EQ(objects, g_Objects.Get_Count());
}

TEST(Kernel_Handles, Stand_Races_Of_Closing_And_Use)
{
    // One thread opens and closes; the others use whatever value it told last, stale or not.
    std::atomic<HANDLE> shared{nullptr};
    std::atomic<bool> end{false};
    std::atomic<int> uses{0};
    std::vector<std::thread> users;
    for (int i = 0; i < 2; ++i)
    {
        users.emplace_back(
            [&]
            {
                for (; !end; ++uses)
                {
                    const HANDLE handle = shared;
                    SetEvent(handle);
                    WaitForSingleObject(handle, 0);
                    ReleaseMutex(handle);
                    PulseEvent(handle);
                }
            });
    }
    const HANDLE mine = make_Event();
    for (int i = 0; uses < 20000; ++i)
    {
        const HANDLE handle = i % 2 == 0 ? make_Event() : make_Mutex();
        shared = handle;
        ASSERT_EQ(258u, WaitForSingleObject(mine, 0)) << "another object's event was set";
        ASSERT_TRUE(CloseHandle(handle));
    }
    end = true;
    for (std::thread& user : users)
    {
        user.join();
    }
    EXPECT_TRUE(CloseHandle(mine));
}

TEST_F(Kernel_Memory, Short_Is_Told_By_Each_Operation)
{
    std::vector<HANDLE> handles{make_Event()};
    system_calls.protect_memory = [](void*, std::size_t, int) { return -1; };
    HANDLE handle = make_Event();
    while (handle != nullptr && handles.size() < 100000)
    {
        handles.push_back(handle);
        handle = make_Event();
    }
    EXPECT_EQ(8u, error_Of(handle != nullptr));
    HANDLE copy = nullptr;
    std::vector<HANDLE> copies;
    while (DuplicateHandle(GetCurrentProcess(), handles[0], GetCurrentProcess(), &copy, 0, FALSE, 2))
    {
        copies.push_back(copy);
    }
    EXPECT_EQ(8u, GetLastError());
    handles.insert(handles.end(), copies.begin(), copies.end());
    system_calls = m_Saved;
    handles.push_back(make_Event());
    EXPECT_NE(nullptr, handles.back());
    for (const HANDLE each : handles)
    {
        EXPECT_TRUE(CloseHandle(each));
    }
}

TEST_F(Kernel_Memory, Short_For_A_New_Thread_Fails_Its_Waits)
{
    const HANDLE event = make_Event(true);
    system_calls.allocate_aligned = [](std::size_t, std::size_t) -> void* { return nullptr; };
    // More threads at once than have ever been: some find no record to use again.
    std::atomic<int> waiting{0};
    std::atomic<int> failed{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 40; ++i)
    {
        threads.emplace_back(
            [&]
            {
                const bool short_of_memory =
                    WaitForSingleObject(event, 0) == WAIT_FAILED && GetLastError() == 8 &&
                    CreateMutexW(nullptr, TRUE, nullptr) == nullptr && GetLastError() == 8;
                failed += short_of_memory ? 1 : 0;
                for (++waiting; waiting < 40;)
                {
                    std::this_thread::yield();
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_GT(failed, 0);
    EXPECT_TRUE(CloseHandle(event));
}

TEST(Kernel_Fork, The_Child_Starts_Afresh)
{
    const HANDLE event = make_Event(true);
    const HANDLE mutex = CreateMutexW(nullptr, TRUE, nullptr);
    const auto child = [&]
    {
        if (SetEvent(event) || GetLastError() != 6 || ReleaseMutex(mutex) || GetLastError() != 6)
        {
            return 1;
        }
        const HANDLE own = CreateMutexW(nullptr, TRUE, nullptr);
        const DWORD other = [&]
        {
            DWORD answer = 0;
            std::thread([&] { answer = WaitForSingleObject(own, 0); }).join();
            return answer;
        }();
        const bool good = own != nullptr && other == 258 && ReleaseMutex(own) && CloseHandle(own) &&
                          GetCurrentThreadId() == GetCurrentProcessId();
        return good ? 7 : 2;
    };
    EXPECT_EQ(7, in_Child(child));
    EXPECT_TRUE(ReleaseMutex(mutex)) << "the parent's mutex is still its own";
    EXPECT_EQ(0u, WaitForSingleObject(event, 0));
    EXPECT_TRUE(CloseHandle(event));
    EXPECT_TRUE(CloseHandle(mutex));
}

#if !defined(__SANITIZE_THREAD__) // its runtime forbids new threads after such a fork
TEST(Kernel_Fork, Finds_All_In_Order_While_Others_Work)
{
    std::atomic<bool> end{false};
    const HANDLE event = make_Event();
    std::thread worker(
        [&]
        {
            while (!end)
            {
                CloseHandle(make_Event());
                WaitForSingleObject(event, 0);
                WaitForSingleObject(event, 1);
                SetEvent(event);
            }
        });
    for (int i = 0; i < 50; ++i)
    {
        ASSERT_EQ(3, in_Child([] { return WaitForSingleObject(make_Event(true), 1) == 0 ? 3 : 4; }));
    }
    end = true;
    worker.join();
    EXPECT_TRUE(CloseHandle(event));
}
#endif

TEST(Kernel_Threads, Own_Their_Mutexes_To_The_Last_Destructor)
{
    static HANDLE mutex;
    mutex = make_Mutex();
    pthread_key_t key;
    static pthread_key_t again;
    // Waits for the third round of destructors, and releases there.
    ASSERT_EQ(0, pthread_key_create(&key,
                                    [](void* rounds)
                                    {
                                        const auto left = reinterpret_cast<std::uintptr_t>(rounds);
                                        if (left > 1)
                                        {
                                            pthread_setspecific(again, reinterpret_cast<void*>(left - 1));
                                            return;
                                        }
                                        EXPECT_TRUE(ReleaseMutex(mutex));
                                    }));
    again = key;
    std::thread(
        [&]
        {
            EXPECT_EQ(0u, WaitForSingleObject(mutex, INFINITE));
            pthread_setspecific(key, reinterpret_cast<void*>(std::uintptr_t{2}));
        })
        .join();
    EXPECT_EQ(0u, WaitForSingleObject(mutex, 0)) << "released in time, so not abandoned";
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(CloseHandle(mutex));
    pthread_key_delete(key);
}

TEST(Kernel_Threads, Abandon_What_They_Own_And_Then_Are_Set)
{
    // Some of the mutexes have lost their last handle; their memory comes back.
    HANDLE thread = nullptr;
    std::vector<HANDLE> mutexes(100);
    std::atomic<bool> go{false};
    std::atomic<bool> ready{false};
    pthread_t other;
    const auto body = [&]
    {
        EXPECT_TRUE(DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &thread, 0,
                                    FALSE, 2));
        for (HANDLE& mutex : mutexes)
        {
            mutex = CreateMutexW(nullptr, TRUE, nullptr);
        }
        ReleaseMutex(mutexes[50]); // from the middle of what it owns
        for (ready = true; !go;)
        {
            std::this_thread::yield();
        }
        pthread_exit(nullptr);
    };
    using Body = decltype(body);
    ASSERT_EQ(0, pthread_create(
                     &other, nullptr,
                     [](void* b) -> void*
                     {
                         (*static_cast<Body*>(b))();
                         return nullptr;
                     },
                     const_cast<void*>(static_cast<const void*>(&body))));
    while (!ready)
    {
        std::this_thread::yield();
    }
    const Look orphan = Look_Up(mutexes[20]);
    EXPECT_TRUE(CloseHandle(mutexes[20]));
    EXPECT_NE(0u, Get_State(orphan.object->word) & STATE_ORPHAN);
    go = true;
    EXPECT_EQ(0u, WaitForSingleObject(thread, INFINITE));
    EXPECT_NE(orphan.generation, Get_Generation(orphan.object->word)) << "the memory is lost";
    for (std::size_t i = 0; i < mutexes.size(); ++i)
    {
        if (i != 20)
        {
            EXPECT_EQ(i == 50 ? 0u : 0x80u, WaitForSingleObject(mutexes[i], 0)) << i;
            EXPECT_TRUE(CloseHandle(mutexes[i]));
        }
    }
    EXPECT_TRUE(CloseHandle(thread));
    pthread_join(other, nullptr);
}

TEST(Kernel_Creation, Refuses_Descriptors_That_It_Cannot_Express)
{
    SECURITY_DESCRIPTOR descriptor;
    SECURITY_ATTRIBUTES attributes{sizeof attributes, &descriptor, FALSE};
    const auto error = [&]
    {
        SetLastError(99);
        const HANDLE handle = CreateEventW(&attributes, FALSE, FALSE, nullptr);
        const DWORD answer = GetLastError();
        EXPECT_EQ(handle != nullptr, answer == 0);
        EXPECT_TRUE(handle == nullptr || CloseHandle(handle));
        return answer;
    };
    ACL nobody;
    ASSERT_TRUE(InitializeAcl(&nobody, sizeof nobody, ACL_REVISION));
    ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    EXPECT_EQ(0u, error());
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE));
    EXPECT_EQ(0u, error());
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, &nobody, FALSE));
    EXPECT_EQ(50u, error());
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, FALSE, nullptr, FALSE));
    descriptor.Owner = &nobody;
    EXPECT_EQ(50u, error());
    descriptor.Revision = 2;
    EXPECT_EQ(1305u, error());
}

TEST(Kernel_Mutex, Is_Refused_When_Its_Count_Is_Full)
{
    const HANDLE mutex = CreateMutexW(nullptr, TRUE, nullptr);
    Look_Up(mutex).object->recursion = 0x7FFFFFFE;
    EXPECT_EQ(0u, WaitForSingleObject(mutex, 0));
    EXPECT_EQ(WAIT_FAILED, WaitForSingleObject(mutex, INFINITE));
    EXPECT_EQ(298u, GetLastError());
    EXPECT_EQ(WAIT_FAILED, WaitForMultipleObjects(1, &mutex, TRUE, INFINITE));
    EXPECT_EQ(298u, GetLastError());
    Look_Up(mutex).object->recursion = 0;
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(CloseHandle(mutex));
}

TEST(Kernel_Wait, For_All_Refuses_One_Object_Twice)
{
    const HANDLE event = make_Event(true);
    HANDLE copy = nullptr;
    ASSERT_TRUE(DuplicateHandle(GetCurrentProcess(), event, GetCurrentProcess(), &copy, 0, FALSE, 2));
    for (const HANDLE second : {event, copy})
    {
        const HANDLE both[] = {event, second};
        EXPECT_EQ(WAIT_FAILED, WaitForMultipleObjects(2, both, TRUE, 0));
        EXPECT_EQ(87u, GetLastError());
    }
    EXPECT_EQ(WAIT_FAILED, WaitForMultipleObjects(2, nullptr, TRUE, 0));
    EXPECT_EQ(87u, GetLastError());
    EXPECT_TRUE(CloseHandle(copy));
    EXPECT_TRUE(CloseHandle(event));
}

TEST(Kernel_Wait, Is_Not_Ended_By_Signals)
{
    static std::atomic<int> caught{0};
    struct sigaction action = {};
    action.sa_handler = [](int) { ++caught; };
    struct sigaction before;
    sigaction(SIGUSR1, &action, &before);
    const HANDLE event = make_Event();
    DWORD answer = 99;
    std::atomic<bool> done{false};
    std::thread waiter(
        [&]
        {
            answer = WaitForSingleObject(event, 10000);
            done = true;
        });
    for (int i = 0; i < 5 && !done; ++i)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        pthread_kill(waiter.native_handle(), SIGUSR1);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_FALSE(done);
    EXPECT_TRUE(SetEvent(event));
    waiter.join();
    EXPECT_EQ(0u, answer);
    EXPECT_GT(caught, 0);
    sigaction(SIGUSR1, &before, nullptr);
    EXPECT_TRUE(CloseHandle(event));
}

TEST(Kernel_Wait, Answers_Every_Set_Once)
{
    // Three kinds of waiters and time-outs on two events: what is set is taken exactly once.
    constexpr int SETS = 3000;
    const HANDLE events[] = {make_Event(), make_Event()};
    const HANDLE end = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    const HANDLE taken = make_Event();
    std::atomic<int> answers{0};
    std::vector<std::thread> waiters;
    for (int kind = 0; kind < 3; ++kind)
    {
        waiters.emplace_back(
            [&, kind]
            {
                while (WaitForSingleObject(end, 0) != 0)
                {
                    const HANDLE any[] = {events[0], events[1], end};
                    const DWORD got = kind == 0   ? WaitForSingleObject(events[0], 1)
                                      : kind == 1 ? WaitForMultipleObjects(3, any, FALSE, INFINITE)
                                                  : WaitForMultipleObjects(2, any, FALSE, 1);
                    if (got < 2)
                    {
                        ++answers;
                        SetEvent(taken);
                    }
                }
            });
    }
    for (int i = 0; i < SETS; ++i)
    {
        SetEvent(events[i % 2]);
        ASSERT_EQ(0u, WaitForSingleObject(taken, 10000)) << "set " << i << " got lost";
    }
    SetEvent(end);
    for (std::thread& waiter : waiters)
    {
        waiter.join();
    }
    EXPECT_EQ(SETS, answers);
    for (const HANDLE handle : {events[0], events[1], end, taken})
    {
        EXPECT_TRUE(CloseHandle(handle));
    }
}

#ifndef NDEBUG
TEST(Kernel_Locks_DeathTest, Out_Of_Order_Stop_The_Program)
{
    Ranked_Lock low(Lock_Rank::Dispatcher);
    Ranked_Lock high(Lock_Rank::Table);
    low.lock();
    high.lock();
    high.unlock();
    low.unlock();
    const auto take_Both = [&]
    {
        high.lock();
        low.lock();
    };
    EXPECT_DEATH(take_Both(), "rank 1 is taken while locks 0x8");
}
#endif
