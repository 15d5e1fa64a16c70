#include "probes.h"

#include <initializer_list>

namespace
{

using Handle = Flush_Counter<Lib_Handle>;

TEST(Handle, Copies_Are_Inheritable_Handles_Of_Their_Own_With_The_Access_Of_Their_Source)
{
    Owned event = Make_Event(true, false);
    Lib_Handle first(event);
    Lib_Handle second(first);
    Lib_Handle third;
    third = second;
    Lib_Handle fourth;
    fourth = HANDLE{event};
    EXPECT_TRUE(Is_Open(event));
    event.Close();
    for (void* const hCopy : std::initializer_list<void*>{first, second, third, fourth})
    {
        EXPECT_EQ(DWORD{HANDLE_FLAG_INHERIT}, Flags_Of(hCopy));
        EXPECT_TRUE(Are_One_Event(hCopy, fourth));
    }
    EXPECT_NE(first.operator void*(), second.operator void*());
    EXPECT_TRUE(first.Close());
    EXPECT_TRUE(Is_Open(second));

    Lib_Handle waiting;
    ASSERT_TRUE(second.Duplicate(waiting, nullptr, nullptr, SYNCHRONIZE, false, 0));
    const Lib_Handle copy(waiting);
    EXPECT_EQ(TIMED_OUT, Try(copy));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, Error_Of(SetEvent(copy)));
}

TEST(Handle, Assignment_Closes_What_Was_Held)
{
    const Owned event = Make_Event(true, false);
    Lib_Handle handle(event);
    void* const hFirst = handle;

    handle = handle.operator void*();
    EXPECT_EQ(hFirst, handle.operator void*()) << "the value held";
    const Lib_Handle& self = handle;
    handle = self;
    EXPECT_EQ(hFirst, handle.operator void*()) << "the object itself";
    EXPECT_TRUE(Is_Open(hFirst));

    handle = nullptr;
    EXPECT_EQ(nullptr, handle.operator void*());
    EXPECT_FALSE(Is_Open(hFirst));
}

TEST(Handle, A_Failed_Duplication_Shows_As_An_Empty_Object)
{
    const Owned other = Make_Event(true, false);
    Lib_Handle handle(other);
    void* const hOld = handle;
    Owned event = Make_Event(true, false); // the last one made: some platforms give its value away again
    void* const hClosed = event;
    event.Close();
    EXPECT_EQ(nullptr, Lib_Handle(hClosed).operator void*());
    handle = hClosed;
    EXPECT_EQ(nullptr, handle.operator void*());
    EXPECT_FALSE(Is_Open(hOld));

    SetLastError(12345);
    const Lib_Handle nothing;
    const Lib_Handle copy(nothing);
    EXPECT_EQ(nullptr, copy.operator void*());
    EXPECT_EQ(12345u, GetLastError()) << "an empty source asks nothing of the platform";
}

TEST(Handle, Attach_Takes_The_Handle_Itself_Over)
{
    void* const hFirst = Make_Event(true, false).Detach();
    void* const hSecond = Make_Event(true, false).Detach();
    {
        Handle handle;
        EXPECT_TRUE(handle.Attach(hFirst));
        EXPECT_EQ(hFirst, handle.operator void*());
        EXPECT_EQ(1, handle.Count([&] { handle.Attach(hSecond); }));
        EXPECT_FALSE(Is_Open(hFirst));
        EXPECT_TRUE(Is_Open(hSecond));
    }
    EXPECT_FALSE(Is_Open(hSecond));
}

TEST(Handle, Close_Leaves_An_Empty_Object_Whatever_The_Platform_Says)
{
    Lib_Handle empty;
    EXPECT_TRUE(empty.Close());
    unsigned long dwFlags = 77;
    EXPECT_FALSE(empty.Get_Information(dwFlags));
    EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, GetLastError());
    EXPECT_EQ(77ul, dwFlags);

    void* const hEvent = Make_Event(true, false).Detach();
    Handle handle;
    handle.Attach(hEvent);
    ASSERT_TRUE(handle.Set_Information(HANDLE_FLAG_PROTECT_FROM_CLOSE, HANDLE_FLAG_PROTECT_FROM_CLOSE));
    dwFlags = ~0ul;
    EXPECT_TRUE(handle.Get_Information(dwFlags));
    EXPECT_EQ(DWORD{HANDLE_FLAG_PROTECT_FROM_CLOSE}, dwFlags) << "in 32 bits";
    EXPECT_EQ(0, handle.Count([&] { EXPECT_FALSE(handle.Close()); }));
    EXPECT_EQ(nullptr, handle.operator void*());
    ASSERT_TRUE(SetHandleInformation(hEvent, HANDLE_FLAG_PROTECT_FROM_CLOSE, 0));
    EXPECT_TRUE(CloseHandle(hEvent));
}

TEST(Handle, Duplicate_Replaces_The_Target_Only_When_It_Succeeds)
{
    const Owned event = Make_Event(true, false);
    const Owned other = Make_Event(true, false);
    const Lib_Handle source(event);
    Handle target;
    target = HANDLE{other};
    void* const hOld = target;
    EXPECT_EQ(
        0, target.Count([&] { EXPECT_FALSE(Lib_Handle().Duplicate(target, nullptr, nullptr, 0, true, 2)); }));
    EXPECT_EQ(hOld, target.operator void*());
    EXPECT_TRUE(Is_Open(hOld));

    Lib_Handle process(GetCurrentProcess());
    Lib_Handle no_process;
    EXPECT_EQ(
        1, target.Count([&] { EXPECT_TRUE(source.Duplicate(target, &process, &no_process, 0, true, 2)); }));
    EXPECT_FALSE(Is_Open(hOld));
    EXPECT_TRUE(Are_One_Event(source, target));
    EXPECT_EQ(DWORD{HANDLE_FLAG_INHERIT}, Flags_Of(target));

    void* hPlain = nullptr;
    EXPECT_TRUE(source.Duplicate(&hPlain, nullptr, GetCurrentProcess(), EVENT_MODIFY_STATE, false, 0));
    EXPECT_TRUE(SetEvent(hPlain));
    EXPECT_EQ(WAIT_FAILED, Try(hPlain)) << "the access that was asked for";
    EXPECT_EQ(WAIT_OBJECT_0, Try(event));
    EXPECT_TRUE(CloseHandle(hPlain));
}

TEST(Handle, Duplicates_Into_Itself)
{
    const Owned event = Make_Event(true, false);
    for (const unsigned long dwOptions : {2ul, 3ul}) // the second one closes the source
    {
        Handle handle;
        handle = HANDLE{event};
        void* const hOld = handle;
        EXPECT_EQ(1,
                  handle.Count(
                      [&] { EXPECT_TRUE(handle.Duplicate(handle, nullptr, nullptr, 0, false, dwOptions)); }));
        EXPECT_EQ(0u, Flags_Of(handle));
        EXPECT_TRUE(hOld == handle || !Is_Open(hOld)) << "the value may have come again at once";
        EXPECT_TRUE(Are_One_Event(event, handle));
    }

    // A handle to this process that is source, target and what is duplicated at once.
    Lib_Handle process(GetCurrentProcess());
    EXPECT_TRUE(process.Duplicate(process, &process, &process, 0, false, 2));
    EXPECT_TRUE(Is_Open(process));
}

// Derived classes outside of the library and callers built against it know the operations by their place.
TEST(Handle, Virtual_Operations_Keep_Their_Places)
{
    constexpr int nFlush = 2; // after the destructor's two entries
    constexpr int nRelease = 3;
    Flush_Counter<Lib_Mutex> mutex;
    ASSERT_TRUE(mutex.Create(nullptr, true));
    auto** ppTable = *reinterpret_cast<void***>(&mutex);
    EXPECT_TRUE(reinterpret_cast<bool (*)(Lib_Mutex*)>(ppTable[nRelease])(&mutex));
    EXPECT_TRUE(mutex.operator void*() != nullptr);
    reinterpret_cast<void (*)(Lib_Mutex*)>(ppTable[nFlush])(&mutex);
    EXPECT_EQ(1, mutex.m_nFlushes);
    EXPECT_EQ(nullptr, mutex.operator void*());
    static_assert(sizeof(Lib_Handle) == 2 * sizeof(void*) && sizeof(Lib_Mutex) == sizeof(Lib_Synchro) &&
                  sizeof(Lib_Synchro) == sizeof(Lib_Handle) + sizeof(Lib_String));
}

} // namespace
