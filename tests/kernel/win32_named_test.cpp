#include "probes.h"

// Names of events and mutexes, as one process sees them.

namespace
{

Owned open_Event(const Lib_String& strName) { return Owned(OpenEventW(SYNCHRONIZE, FALSE, strName)); }

/// An event that resets itself, with a name that no other object has.
Owned create_Event(const Lib_String& strName, bool set)
{
    SetLastError(7);
    Owned event(CreateEventW(nullptr, FALSE, set, strName));
    EXPECT_EQ(0u, GetLastError());
    return event;
}

} // namespace

TEST(Names, Of_One_Object_Give_Handles_To_It)
{
    const Lib_String strName = Fresh_Name();
    const Owned first = create_Event(strName, false);
    const Owned second(CreateEventW(nullptr, TRUE, TRUE, strName));
    EXPECT_EQ(DWORD{ERROR_ALREADY_EXISTS}, GetLastError());
    const Owned third(OpenEventW(EVENT_ALL_ACCESS, FALSE, strName));
    EXPECT_EQ(TIMED_OUT, Try(second)) << "the state of an object that exists is left alone";
    EXPECT_TRUE(SetEvent(third));
    EXPECT_EQ(WAIT_OBJECT_0, Try(first));
    EXPECT_EQ(TIMED_OUT, Try(second)) << "it resets itself, whatever its second maker asked for";

    const Lib_String strMutex = Fresh_Name();
    const Owned mutex(CreateMutexW(nullptr, TRUE, strMutex));
    const Owned again(CreateMutexW(nullptr, TRUE, strMutex));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(DWORD{ERROR_NOT_OWNER}, Error_Of(ReleaseMutex(again))) << "its second maker took nothing";
}

TEST(Names, Are_Told_Apart_By_Each_Unit)
{
    const auto expect_Two = [](const Lib_String& strOne, const Lib_String& strOther)
    {
        const Owned one = create_Event(strOne, true);
        const Owned other = create_Event(strOther, false);
        const Owned again = open_Event(strOne);
        EXPECT_EQ(TIMED_OUT, Try(other)) << testing::PrintToString(strOther);
        EXPECT_EQ(WAIT_OBJECT_0, Try(again)) << testing::PrintToString(strOne);
    };
    const Lib_String strName = Fresh_Name();
    expect_Two(strName + L"case", strName + L"CASE");
    expect_Two(strName, strName + L" ");
    expect_Two(strName, L"Global\\" + strName);
    const Lib_String strOdd = strName + L"/.%# :*\x01\x7F\xE4\x3042\xD800\xDC00";
    expect_Two(strOdd + L"\xFFFE", strOdd + L"\xFFFD");
    for (const wchar_t cFilling : {L'x', L'\x4E00'})
    {
        Lib_String strLong = strName;
        while (strLong.Get_Length() < 258)
            strLong += cFilling;
        expect_Two(strLong + L'a', strLong + L'b');
    }
    const Owned local = create_Event(strName, true);
    EXPECT_EQ(WAIT_OBJECT_0, Try(open_Event(L"Local\\" + strName)));
}

TEST(Names, Of_What_Is_Missing_Or_Of_Another_Kind_Are_Refused)
{
    const Lib_String strName = Fresh_Name();
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, Error_Of(OpenEventW(SYNCHRONIZE, FALSE, strName)));
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, Error_Of(OpenMutexW(SYNCHRONIZE, FALSE, strName)));
    const Owned mutex(CreateMutexW(nullptr, FALSE, strName));
    EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, Error_Of(CreateEventW(nullptr, FALSE, FALSE, strName)));
    EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, Error_Of(OpenEventW(SYNCHRONIZE, FALSE, strName)));
    EXPECT_EQ(DWORD{ERROR_PATH_NOT_FOUND},
              Error_Of(CreateMutexW(nullptr, FALSE, Fresh_Name() + L"\\behind")));
}

TEST(Names, Go_With_The_Last_Handle)
{
    const Lib_String strName = Fresh_Name();
    Owned first = create_Event(strName, false);
    Owned second = open_Event(strName);
    first.Close();
    EXPECT_NE(nullptr, open_Event(strName));
    second.Close();
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, Error_Of(OpenEventW(SYNCHRONIZE, FALSE, strName)));

    Owned(CreateMutexW(nullptr, TRUE, strName)).Close();
    const Owned mutex(CreateMutexW(nullptr, FALSE, strName));
    EXPECT_EQ(0u, GetLastError());
    EXPECT_EQ(WAIT_OBJECT_0, On_Other_Thread([&] { return Try(mutex); })) << "a new mutex is nobody's";
}
