#include "probes.h"

namespace
{

// What events and mutexes have alike is asked of both.
template <class... Name>
bool create(Lib_Event& event, Name... name)
{
    return event.Create(nullptr, true, false, name...);
}
template <class... Name>
bool create(Lib_Mutex& mutex, Name... name)
{
    return mutex.Create(nullptr, false, name...);
}
bool create_Public(Lib_Event& event, bool bGlobal)
{
    return event.Create_Public_With_Unique_Name(bGlobal, true, false);
}
bool create_Public(Lib_Mutex& mutex, bool bGlobal)
{
    return mutex.Create_Public_With_Unique_Name(bGlobal, false);
}

template <class Class>
class Named : public testing::Test
{
protected:
    bool opens(const wchar_t* pName) { return Class().Open(pName, SYNCHRONIZE, false); }

    Class m_Object;
    const Lib_String m_strName = Fresh_Name();
};

using Kinds = testing::Types<Flush_Counter<Lib_Event>, Flush_Counter<Lib_Mutex>>;
TYPED_TEST_SUITE(Named, Kinds);

TYPED_TEST(Named, Begins_Empty_And_Creates_Without_A_Name)
{
    EXPECT_TEXT_EQ(L"", this->m_Object.Get_Name());
    EXPECT_EQ(WAIT_FAILED, this->m_Object.Wait(0));
    SetLastError(12345);
    EXPECT_FALSE(this->m_Object.Release());
    EXPECT_EQ(12345u, GetLastError());

    TypeParam other;
    ASSERT_TRUE(create(this->m_Object));
    ASSERT_TRUE(create(other));
    EXPECT_EQ(0u, GetLastError()) << "a second one, and not the first one again";
}

TYPED_TEST(Named, The_Name_Held_Serves_Creation_And_Opening)
{
    this->m_Object.Set_Name(this->m_strName);
    EXPECT_EQ(0, this->m_Object.Count([&] { EXPECT_TRUE(create(this->m_Object)); }));
    EXPECT_TEXT_EQ(this->m_strName, this->m_Object.Get_Name());
    EXPECT_TRUE(this->opens(this->m_strName));

    TypeParam other;
    other.Set_Name(this->m_strName);
    EXPECT_EQ(0, other.Count([&] { EXPECT_TRUE(other.Open(nullptr, SYNCHRONIZE, false)); }));
    EXPECT_TRUE(create(other)) << "what is there already is a success";
    EXPECT_EQ(DWORD{ERROR_ALREADY_EXISTS}, GetLastError());
    EXPECT_TRUE(other.Close());
    EXPECT_TRUE(other.Open(nullptr, SYNCHRONIZE, false)) << "the name stays";
}

TYPED_TEST(Named, Closes_Before_It_Creates_And_Opens)
{
    auto& object = this->m_Object;
    ASSERT_TRUE(create(object, this->m_strName));
    ASSERT_TRUE(create(object, this->m_strName));
    EXPECT_EQ(0u, GetLastError()) << "the old one went before the new one came";
    EXPECT_FALSE(object.Open(nullptr, SYNCHRONIZE, false));
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, GetLastError());
    EXPECT_EQ(nullptr, object.operator void*());
    EXPECT_TEXT_EQ(this->m_strName, object.Get_Name());

    ASSERT_TRUE(create(object, nullptr));
    void* const hOld = object;
    SetLastError(12345);
    EXPECT_FALSE(object.Open(nullptr, SYNCHRONIZE, false));
    EXPECT_EQ(12345u, GetLastError()) << "without any name nothing is asked";
    EXPECT_FALSE(Is_Open(hOld));
    object.Set_Name(this->m_strName);
    EXPECT_FALSE(object.Open(L"", SYNCHRONIZE, false));
    EXPECT_TEXT_EQ(L"", object.Get_Name());
}

TYPED_TEST(Named, The_Name_Goes_With_Everything_That_Flushes)
{
    auto& object = this->m_Object;
    object.Set_Name(this->m_strName);
    EXPECT_EQ(1, object.Count([&] { EXPECT_TRUE(create(object, nullptr)); }));
    EXPECT_TEXT_EQ(L"", object.Get_Name());

    object.Set_Name(this->m_strName);
    EXPECT_EQ(1, object.Count([&] { object.Attach(Make_Event(true, false).Detach()); }));
    EXPECT_TEXT_EQ(L"", object.Get_Name());

    TypeParam target(object, this->m_strName);
    EXPECT_EQ(1, target.Count([&] { EXPECT_TRUE(object.Duplicate(target, nullptr, nullptr, 0, true, 2)); }));
    EXPECT_TEXT_EQ(L"", target.Get_Name());
    EXPECT_EQ(1, object.Count([&] { EXPECT_TRUE(create_Public(object, false)); }));
}

TYPED_TEST(Named, Takes_Its_Own_Text_For_A_Name)
{
    auto& object = this->m_Object;
    object.Set_Name(L"Local\\" + this->m_strName);
    const wchar_t* pOwn = object.Get_Name(); // the block is the object's, the copy was a holder only
    object.Set_Name(pOwn + 6);
    EXPECT_TEXT_EQ(this->m_strName, object.Get_Name());

    pOwn = object.Get_Name();
    EXPECT_TRUE(create(object, pOwn));
    EXPECT_TEXT_EQ(this->m_strName, object.Get_Name());
    const TypeParam keeper(object);
    pOwn = object.Get_Name();
    EXPECT_TRUE(object.Open(pOwn, SYNCHRONIZE, false));
    EXPECT_TEXT_EQ(this->m_strName, object.Get_Name());
}

TYPED_TEST(Named, Copies_Share_The_Object_And_Live_On_Their_Own)
{
    auto& object = this->m_Object;
    ASSERT_TRUE(create(object, this->m_strName));
    TypeParam copy(object);
    TypeParam assigned;
    const Lib_String strOld = Fresh_Name();
    ASSERT_TRUE(create(assigned, strOld));
    EXPECT_EQ(0, assigned.Count([&] { assigned = copy; }));
    EXPECT_FALSE(this->opens(strOld));
    EXPECT_TEXT_EQ(this->m_strName, assigned.Get_Name());

    const auto& self = assigned;
    assigned = self;
    EXPECT_TRUE(object.Close());
    EXPECT_TRUE(copy.Close());
    EXPECT_TRUE(this->opens(this->m_strName)) << "the last copy keeps it";
    ASSERT_TRUE(CloseHandle(assigned));
    const TypeParam failed(assigned);
    EXPECT_EQ(nullptr, failed.operator void*());
    EXPECT_TEXT_EQ(this->m_strName, failed.Get_Name()) << "a copy that can't be made has the name alone";
    EXPECT_FALSE(assigned.Close());
    EXPECT_FALSE(this->opens(this->m_strName));
}

TYPED_TEST(Named, Public_Objects_Have_Unique_Names_That_Open)
{
    for (const bool bGlobal : {true, false})
    {
        ASSERT_TRUE(create_Public(this->m_Object, bGlobal));
        const Lib_String strName = this->m_Object.Get_Name();
        EXPECT_EQ(bGlobal ? 45u : 38u, strName.Get_Length());
        EXPECT_TEXT_EQ(bGlobal ? L"Global\\{" : L"{",
                       strName.Left(static_cast<unsigned long long>(strName.Find(L'{') + 1)));
        EXPECT_TRUE(this->opens(strName));
        EXPECT_EQ(DWORD{HANDLE_FLAG_INHERIT}, Flags_Of(this->m_Object));
        ASSERT_TRUE(create_Public(this->m_Object, bGlobal));
        EXPECT_FALSE(this->opens(strName));
    }
}

TEST(Event, Opens_With_The_Access_And_Flag_That_Were_Asked_For)
{
    Lib_Event event;
    ASSERT_TRUE(event.Create(nullptr, true, false, Fresh_Name()));
    Lib_Event opened;
    ASSERT_TRUE(opened.Open(event.Get_Name(), SYNCHRONIZE, true));
    EXPECT_EQ(DWORD{HANDLE_FLAG_INHERIT}, Flags_Of(opened));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, Error_Of(BOOL{opened.Set()}));
    ASSERT_TRUE(opened.Open(nullptr, EVENT_MODIFY_STATE, false));
    EXPECT_EQ(0u, Flags_Of(opened));
    EXPECT_TRUE(opened.Set());
    EXPECT_EQ(0xFFFFFFFFul, opened.Wait(0));
    EXPECT_TRUE(event.Wait_Until_Object_0(0));
    EXPECT_TRUE(event.Wait_Until_Object_0(0)) << "made to stay";
    EXPECT_TRUE(event.Pulse());
    EXPECT_FALSE(event.Wait_Until_Object_0(0));

    ASSERT_TRUE(event.Create(nullptr, false, true));
    EXPECT_TRUE(event.Reset());
    EXPECT_EQ(258ul, event.Wait(static_cast<unsigned long>(0x300000000ULL))) << "0 in 32 bits, or for ever";
    EXPECT_FALSE(event.Release());
}

TEST(Mutex, Abandoned_Is_The_Waiters_Though_The_Short_Answer_Is_False)
{
    Lib_Mutex mutex;
    ASSERT_TRUE(mutex.Create(nullptr, true));
    Lib_Mutex copy(mutex);
    EXPECT_TRUE(copy.Release());
    EXPECT_FALSE(mutex.Release());
    EXPECT_TRUE(On_Other_Thread([&] { return copy.Wait_Until_Object_0(0); }));
    EXPECT_EQ(0x80ul, mutex.Wait(0));
    EXPECT_TRUE(mutex.Release());
    EXPECT_TRUE(On_Other_Thread([&] { return mutex.Wait_Until_Object_0(0); }));
    EXPECT_FALSE(mutex.Wait_Until_Object_0(0));
    EXPECT_TRUE(mutex.Release());
}

TEST(Synchro, Unique_Names_Touch_No_Handle)
{
    Lib_Event event;
    ASSERT_TRUE(event.Create(nullptr, true, false));
    const Lib_String strFirst = event.Set_Unique_Name(true);
    EXPECT_TEXT_EQ(strFirst, event.Get_Name());
    EXPECT_FALSE(strFirst == event.Set_Unique_Name(true));
    EXPECT_TRUE(event.Set());
}

TEST(Synchro, Compares_Names_Exactly)
{
    const Lib_Synchro lower(nullptr, L"name");
    EXPECT_TRUE(lower != Lib_Synchro(nullptr, L"Name"));
    EXPECT_FALSE(lower == Lib_Synchro(nullptr, L"Name"));
    const Owned plain = Make_Event(true, false);
    EXPECT_TRUE(lower == Lib_Synchro(plain, L"name"));
    EXPECT_TRUE(Lib_Synchro(plain, nullptr) == Lib_Event());
    EXPECT_FALSE(Lib_Synchro(lower).Release());
}

TEST(Synchro, Waits_For_Any_And_All_In_The_Order_Of_The_Array)
{
    Lib_Event event;
    Lib_Mutex mutex;
    LibT_Array<Lib_Synchro*, 4> objects;
    const auto Wait = [&](bool bAll) { return Lib_Synchro::Wait_Multiple(&objects, bAll, 0); };
    EXPECT_EQ(0xFFFFFFFFul, Wait(false));
    EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError()) << "none, and the platform was asked";
    EXPECT_EQ(0xFFFFFFFFul, Lib_Synchro::Wait_Multiple(nullptr, false, 0));

    ASSERT_TRUE(event.Create(nullptr, true, false) && mutex.Create(nullptr, false));
    objects.Add(&event);
    objects.Add(&mutex);
    EXPECT_EQ(258ul, Wait(true));
    EXPECT_EQ(1ul, Wait(false));
    EXPECT_TRUE(mutex.Release());
    event.Set();
    EXPECT_EQ(0ul, Wait(false));
    EXPECT_EQ(0ul, Wait(true));
    EXPECT_TRUE(mutex.Release());

    Lib_Event empty;
    for (Lib_Synchro* pNothing : {static_cast<Lib_Synchro*>(&empty), static_cast<Lib_Synchro*>(nullptr)})
    {
        objects[1] = pNothing;
        EXPECT_EQ(0xFFFFFFFFul, Wait(false));
        EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, GetLastError());
    }
}

} // namespace
