#include "probes.h"
#include "test_text.h"

namespace
{

using Handle = Flush_Counter<Lib_Handle>;

unsigned long flags_Of(Lib_Handle& handle)
{
    unsigned long dwFlags = 0xAAAA;
    EXPECT_TRUE(handle.Get_Information(dwFlags));
    return dwFlags;
}

TEST(Handle, Copies_Are_Inheritable_Handles_Of_Their_Own_To_The_Same_Object)
{
    Plain_Event event;
    Lib_Handle first(event);
    Lib_Handle second(first);
    Lib_Handle third;
    third = second;
    Lib_Handle fourth;
    fourth = static_cast<void*>(event);
    EXPECT_TRUE(Is_Open(event));
    event.Close();
    for (Lib_Handle* pHandle : {&first, &second, &third, &fourth})
    {
        EXPECT_EQ(HANDLE_FLAG_INHERIT, flags_Of(*pHandle));
        EXPECT_TRUE(Are_One_Event(*pHandle, fourth));
    }
    EXPECT_NE(static_cast<void*>(first), static_cast<void*>(second));
    EXPECT_TRUE(first.Close());
    EXPECT_TRUE(Is_Open(second));
}

TEST(Handle, Copies_Have_The_Access_Of_Their_Source)
{
    Plain_Event event;
    Lib_Handle waiting;
    ASSERT_TRUE(Lib_Handle(event).Duplicate(waiting, nullptr, nullptr, SYNCHRONIZE, false, 0));
    EXPECT_EQ(0ul, flags_Of(waiting));
    Lib_Handle copy(waiting);
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(copy, 0));
    EXPECT_FALSE(SetEvent(copy));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
}

TEST(Handle, Assignment_Closes_What_Was_Held)
{
    Plain_Event event;
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

TEST(Handle, Duplicated_Into_Itself_Holds_The_New_Handle_Alone)
{
    Plain_Event event;
    Lib_Handle handle(event);
    ASSERT_TRUE(
        handle.Duplicate(handle, nullptr, nullptr, 0, false, DUPLICATE_SAME_ACCESS | DUPLICATE_CLOSE_SOURCE));
    EXPECT_EQ(0ul, flags_Of(handle));
    EXPECT_TRUE(Are_One_Event(handle, event));
}

TEST(Handle, A_Failed_Duplication_Shows_As_An_Empty_Object)
{
    Plain_Event other;
    Lib_Handle handle(other);
    void* const hOld = handle;
    Plain_Event event; // the last one made: some platforms give its value away again
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
    Plain_Event first;
    Plain_Event second;
    void* const hFirst = first.Detach();
    void* const hSecond = second.Detach();
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

    Plain_Event event;
    void* const hEvent = event.Detach();
    Handle handle;
    handle.Attach(hEvent);
    ASSERT_TRUE(handle.Set_Information(HANDLE_FLAG_PROTECT_FROM_CLOSE, HANDLE_FLAG_PROTECT_FROM_CLOSE));
    EXPECT_EQ(DWORD{HANDLE_FLAG_PROTECT_FROM_CLOSE}, flags_Of(handle));
    EXPECT_EQ(0, handle.Count([&] { EXPECT_FALSE(handle.Close()); }));
    EXPECT_EQ(nullptr, handle.operator void*());

    ASSERT_TRUE(SetHandleInformation(hEvent, HANDLE_FLAG_PROTECT_FROM_CLOSE, 0));
    EXPECT_TRUE(CloseHandle(hEvent));
}

TEST(Handle, Information_Is_32_Bits_And_Untouched_On_Failure)
{
    Plain_Event event;
    Lib_Handle handle(event);
    unsigned long dwFlags = ~0ul;
    EXPECT_TRUE(handle.Get_Information(dwFlags));
    EXPECT_EQ(1ul, dwFlags);
    EXPECT_TRUE(handle.Set_Information(HANDLE_FLAG_INHERIT, 0));
    EXPECT_EQ(0ul, flags_Of(handle));

    dwFlags = 77;
    EXPECT_FALSE(Lib_Handle().Get_Information(dwFlags));
    EXPECT_EQ(77ul, dwFlags);
    EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, GetLastError());
}

TEST(Handle, Duplicate_Replaces_The_Target_Only_When_It_Succeeds)
{
    Plain_Event event;
    Plain_Event other;
    const Lib_Handle source(event);
    Handle target;
    target = static_cast<void*>(other);
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
    EXPECT_EQ(DWORD{HANDLE_FLAG_INHERIT}, flags_Of(target));
}

TEST(Handle, Duplicates_Into_Itself)
{
    Plain_Event event;
    Handle handle;
    handle = static_cast<void*>(event);
    void* const hOld = handle;
    EXPECT_EQ(1, handle.Count([&] { EXPECT_TRUE(handle.Duplicate(handle, nullptr, nullptr, 0, false, 2)); }));
    EXPECT_NE(hOld, handle.operator void*());
    EXPECT_FALSE(Is_Open(hOld));
    EXPECT_TRUE(Are_One_Event(event, handle));

    // A handle to this process that is source, target and what is duplicated at once.
    Lib_Handle process(GetCurrentProcess());
    EXPECT_TRUE(process.Duplicate(process, &process, &process, 0, false, 2));
    EXPECT_TRUE(Is_Open(process));
}

TEST(Handle, Duplicate_Gives_A_Plain_Handle_To_The_Caller)
{
    Plain_Event event;
    const Lib_Handle source(event);
    void* hPlain = nullptr;
    EXPECT_TRUE(source.Duplicate(&hPlain, nullptr, GetCurrentProcess(), EVENT_MODIFY_STATE, false, 0));
    EXPECT_TRUE(SetEvent(hPlain));
    EXPECT_EQ(DWORD{WAIT_FAILED}, WaitForSingleObject(hPlain, 0)) << "the access that was asked for";
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(event, 0));
    EXPECT_TRUE(CloseHandle(hPlain));
    EXPECT_FALSE(Lib_Handle().Duplicate(&hPlain, nullptr, nullptr, 0, false, 2));
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
