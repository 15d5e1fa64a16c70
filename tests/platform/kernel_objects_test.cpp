#include "handles.h"
#include "layer_probe.h"
#include "platform/kernel/object_pool.h"
#include "platform/kernel/ranked_lock.h"
#include "sanitizers.h"
#include "test_process.h"

#include <atomic>
#include <csignal>
#include <vector>

using namespace qn_platform::kernel;
using namespace test_support;

namespace
{

HANDLE make_Event(bool set = false) { return CreateEventW(nullptr, FALSE, set, nullptr); }
HANDLE make_Mutex() { return CreateMutexW(nullptr, FALSE, nullptr); }

DWORD error_Of(BOOL result)
{
    EXPECT_FALSE(result);
    return GetLastError();
}

void close_All(std::initializer_list<HANDLE> handles)
{
    for (const HANDLE handle : handles)
    {
        EXPECT_TRUE(CloseHandle(handle));
    }
}

HANDLE copy_Of(HANDLE handle)
{
    HANDLE copy = nullptr;
    DuplicateHandle(GetCurrentProcess(), handle, GetCurrentProcess(), &copy, 0, FALSE, DUPLICATE_SAME_ACCESS);
    return copy;
}

class Kernel_Memory : public Layer_Test
{
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

TEST(Kernel_Handles, Lose_Nothing_In_Many_Rounds)
{
    std::size_t slots = 0;
    std::size_t objects = 0;
    for (int i = 0; i < 50000; ++i)
    {
        const HANDLE event = make_Event(true);
        const HANDLE mutex = CreateMutexW(nullptr, TRUE, nullptr);
        const HANDLE both[] = {event, copy_Of(mutex)};
        ASSERT_EQ(0u, WaitForMultipleObjects(2, both, TRUE, 0));
        close_All({event, mutex, both[1]}); // the last one while the mutex is owned
        if (i == 2000)
        {
            slots = g_Slots.Get_Count();
            objects = g_Objects.Get_Count();
        }
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
    for (HANDLE (*const make)(HANDLE) : {+[](HANDLE) { return make_Event(); }, &copy_Of})
    {
        while (const HANDLE handle = make(handles[0]))
        {
            handles.push_back(handle);
        }
        EXPECT_EQ(8u, GetLastError());
    }
    system_calls = m_Saved;
    handles.push_back(make_Event());
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
        DWORD other = 0;
        std::thread([&] { other = WaitForSingleObject(own, 0); }).join();
        const bool good = own != nullptr && other == 258 && ReleaseMutex(own) && CloseHandle(own) &&
                          GetCurrentThreadId() == GetCurrentProcessId();
        return good ? 7 : 2;
    };
    EXPECT_EQ(7, In_Other_Process(child));
    EXPECT_TRUE(ReleaseMutex(mutex)) << "the parent's mutex is still its own";
    EXPECT_EQ(0u, WaitForSingleObject(event, 0));
    close_All({event, mutex});
}

TEST(Kernel_Fork, Finds_All_In_Order_While_Others_Work)
{
    if (!Forks_Beside_Threads)
        GTEST_SKIP() << NO_FORK;
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
        ASSERT_EQ(3, In_Other_Process([] { return WaitForSingleObject(make_Event(true), 1) == 0 ? 3 : 4; }));
    }
    end = true;
    worker.join();
    EXPECT_TRUE(CloseHandle(event));
}

TEST(Kernel_Threads, Own_Their_Mutexes_To_The_Last_Destructor)
{
    static HANDLE mutex;
    mutex = make_Mutex();
    static pthread_key_t again;
    // Waits for the next round of destructors, and releases there.
    const auto destroy = [](void* rounds)
    {
        if (rounds == &mutex)
        {
            pthread_setspecific(again, &again);
            return;
        }
        EXPECT_TRUE(ReleaseMutex(mutex));
    };
    pthread_key_t key;
    ASSERT_EQ(0, pthread_key_create(&key, destroy));
    again = key;
    std::thread(
        [&]
        {
            EXPECT_EQ(0u, WaitForSingleObject(mutex, INFINITE));
            pthread_setspecific(key, &mutex);
        })
        .join();
    EXPECT_EQ(0u, WaitForSingleObject(mutex, 0)) << "released in time, so not abandoned";
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_TRUE(CloseHandle(mutex));
    pthread_key_delete(key);
}

TEST(Kernel_Threads, Abandon_What_They_Own_And_Then_Are_Set)
{
    // One of the mutexes has lost its last handle; its memory comes back.
    HANDLE thread = nullptr;
    std::vector<HANDLE> mutexes(100);
    const HANDLE go = make_Event();
    const HANDLE ready = make_Event();
    std::thread owner(
        [&]
        {
            thread = copy_Of(GetCurrentThread());
            for (HANDLE& mutex : mutexes)
            {
                mutex = CreateMutexW(nullptr, TRUE, nullptr);
            }
            ReleaseMutex(mutexes[50]); // from the middle of what it owns
            SetEvent(ready);
            WaitForSingleObject(go, INFINITE);
        });
    EXPECT_EQ(0u, WaitForSingleObject(ready, INFINITE));
    const Look orphan = Look_Up(mutexes[20]);
    EXPECT_TRUE(CloseHandle(mutexes[20]));
    EXPECT_NE(0u, Get_State(orphan.object->word) & STATE_ORPHAN);
    SetEvent(go);
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
    close_All({thread, go, ready});
    owner.join();
}

TEST(Kernel_Creation, Refuses_Descriptors_That_It_Cannot_Express)
{
    ACL nobody;
    ASSERT_TRUE(InitializeAcl(&nobody, sizeof nobody, ACL_REVISION));
    SECURITY_DESCRIPTOR descriptor;
    ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    SECURITY_ATTRIBUTES attributes{sizeof attributes, &descriptor, FALSE};
    const auto expect = [&](DWORD error)
    {
        SetLastError(99);
        const HANDLE handle = CreateEventW(&attributes, FALSE, FALSE, nullptr);
        EXPECT_EQ(error, GetLastError());
        EXPECT_EQ(error == 0, handle != nullptr);
        CloseHandle(handle);
    };
    expect(0);
    SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE);
    expect(0);
    SetSecurityDescriptorDacl(&descriptor, TRUE, &nobody, FALSE);
    expect(50);
    SetSecurityDescriptorDacl(&descriptor, FALSE, nullptr, FALSE);
    descriptor.Owner = &nobody;
    expect(50);
    descriptor.Revision = 2;
    expect(1305);
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
    const HANDLE copy = copy_Of(event);
    const HANDLE three[] = {event, event, copy};
    for (const HANDLE* const both : {three, three + 1, static_cast<const HANDLE*>(nullptr)})
    {
        EXPECT_EQ(WAIT_FAILED, WaitForMultipleObjects(2, both, TRUE, 0));
        EXPECT_EQ(87u, GetLastError());
    }
    close_All({copy, event});
}

TEST(Kernel_Wait, Is_Not_Ended_By_Signals)
{
    static std::atomic<int> caught{0};
    struct sigaction action = {};
    action.sa_handler = [](int) { ++caught; };
    struct sigaction before;
    sigaction(SIGUSR1, &action, &before);
    const HANDLE event = make_Event();
    std::atomic<DWORD> id{0};
    std::atomic<DWORD> answer{99};
    std::thread waiter(
        [&]
        {
            id = GetCurrentThreadId();
            answer = WaitForSingleObject(event, 20000);
        });
    for (int signals = 1; signals <= 5; ++signals)
    {
        Wait_Until_Asleep(id);
        pthread_kill(waiter.native_handle(), SIGUSR1);
        while (caught < signals && answer == 99)
        {
            std::this_thread::yield();
        }
    }
    EXPECT_EQ(99u, answer);
    EXPECT_TRUE(SetEvent(event));
    waiter.join();
    EXPECT_EQ(0u, answer);
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
    close_All({events[0], events[1], end, taken});
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
