#include "probes.h"
#include "test_text.h"

namespace
{

using Event = Flush_Counter<Lib_Event>;
using Mutex = Flush_Counter<Lib_Mutex>;

/// What events and mutexes have alike, asked of both.
struct Events
{
    using Class = Event;

    template <class... Name>
    static bool Create(Lib_Event& event, Name... name)
    {
        return event.Create(nullptr, true, false, name...);
    }
    static bool Create_Public(Lib_Event& event, bool bGlobal)
    {
        return event.Create_Public_With_Unique_Name(bGlobal, true, false);
    }
};

struct Mutexes
{
    using Class = Mutex;

    template <class... Name>
    static bool Create(Lib_Mutex& mutex, Name... name)
    {
        return mutex.Create(nullptr, false, name...);
    }
    static bool Create_Public(Lib_Mutex& mutex, bool bGlobal)
    {
        return mutex.Create_Public_With_Unique_Name(bGlobal, false);
    }
};

template <class Kind>
class Named : public testing::Test
{
protected:
    using Class = typename Kind::Class;

    bool opens(const wchar_t* pName) { return Class().Open(pName, SYNCHRONIZE, false); }

    Class m_Object;
    const Lib_String m_strName = Fresh_Name();
};

using Kinds = testing::Types<Events, Mutexes>;
TYPED_TEST_SUITE(Named, Kinds);

TYPED_TEST(Named, Begins_Empty_And_Creates_Without_A_Name)
{
    EXPECT_TEXT_EQ(L"", this->m_Object.Get_Name());
    EXPECT_EQ(DWORD{WAIT_FAILED}, this->m_Object.Wait(0));
    EXPECT_FALSE(this->m_Object.Release());

    typename TypeParam::Class other;
    ASSERT_TRUE(TypeParam::Create(this->m_Object));
    ASSERT_TRUE(TypeParam::Create(other));
    EXPECT_EQ(0u, GetLastError()) << "a second one, and not the first one again";
    EXPECT_TRUE(this->m_Object == other) << "names are compared, and both have none";
}

TYPED_TEST(Named, The_Name_Held_Serves_Creation_And_Opening)
{
    this->m_Object.Set_Name(this->m_strName);
    EXPECT_EQ(0, this->m_Object.Count([&] { EXPECT_TRUE(TypeParam::Create(this->m_Object)); }));
    EXPECT_TEXT_EQ(this->m_strName, this->m_Object.Get_Name());
    EXPECT_TRUE(this->opens(this->m_strName));

    typename TypeParam::Class other;
    other.Set_Name(this->m_strName);
    EXPECT_EQ(0, other.Count([&] { EXPECT_TRUE(other.Open(nullptr, SYNCHRONIZE, false)); }));
    EXPECT_TRUE(TypeParam::Create(other)) << "what is there already is a success";
    EXPECT_EQ(DWORD{ERROR_ALREADY_EXISTS}, GetLastError());

    EXPECT_TRUE(other.Close());
    EXPECT_TEXT_EQ(this->m_strName, other.Get_Name());
    EXPECT_TRUE(other.Open(nullptr, SYNCHRONIZE, false));
}

TYPED_TEST(Named, Closes_Before_It_Creates)
{
    ASSERT_TRUE(TypeParam::Create(this->m_Object, this->m_strName));
    EXPECT_EQ(0u, GetLastError());
    ASSERT_TRUE(TypeParam::Create(this->m_Object));
    EXPECT_EQ(0u, GetLastError()) << "the old one went before the new one came";
    ASSERT_TRUE(TypeParam::Create(this->m_Object, this->m_strName));
    EXPECT_EQ(0u, GetLastError());
}

TYPED_TEST(Named, Closes_Before_It_Opens)
{
    ASSERT_TRUE(TypeParam::Create(this->m_Object, this->m_strName));
    EXPECT_FALSE(this->m_Object.Open(nullptr, SYNCHRONIZE, false));
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, GetLastError());
    EXPECT_EQ(nullptr, this->m_Object.operator void*());
    EXPECT_TEXT_EQ(this->m_strName, this->m_Object.Get_Name());
}

TYPED_TEST(Named, Opening_Without_Any_Name_Asks_Nothing)
{
    ASSERT_TRUE(TypeParam::Create(this->m_Object));
    void* const hOld = this->m_Object;
    SetLastError(12345);
    EXPECT_FALSE(this->m_Object.Open(nullptr, SYNCHRONIZE, false));
    EXPECT_EQ(12345u, GetLastError());
    EXPECT_FALSE(Is_Open(hOld));
    this->m_Object.Set_Name(this->m_strName);
    EXPECT_FALSE(this->m_Object.Open(L"", SYNCHRONIZE, false));
    EXPECT_TEXT_EQ(L"", this->m_Object.Get_Name());
}

TYPED_TEST(Named, The_Name_Goes_With_Everything_That_Flushes)
{
    auto& object = this->m_Object;
    object.Set_Name(this->m_strName);
    EXPECT_EQ(1, object.Count([&] { EXPECT_TRUE(TypeParam::Create(object, nullptr)); }));
    EXPECT_TEXT_EQ(L"", object.Get_Name());

    Plain_Event plain;
    object.Set_Name(this->m_strName);
    EXPECT_EQ(1, object.Count([&] { object.Attach(plain.Detach()); }));
    EXPECT_TEXT_EQ(L"", object.Get_Name());

    typename TypeParam::Class target(object, this->m_strName);
    EXPECT_TEXT_EQ(this->m_strName, target.Get_Name());
    EXPECT_EQ(1, target.Count([&] { EXPECT_TRUE(object.Duplicate(target, nullptr, nullptr, 0, true, 2)); }));
    EXPECT_TEXT_EQ(L"", target.Get_Name());

    EXPECT_EQ(1, object.Count([&] { EXPECT_TRUE(TypeParam::Create_Public(object, false)); }));
}

TYPED_TEST(Named, Takes_Its_Own_Text_For_A_Name)
{
    auto& object = this->m_Object;
    object.Set_Name(L"Local\\" + this->m_strName);
    object.Set_Name(object.Get_Name().GetW());
    EXPECT_TEXT_EQ(L"Local\\" + this->m_strName, object.Get_Name());
    const wchar_t* pOwn = object.Get_Name(); // the block is the object's, the copy was a holder only
    object.Set_Name(pOwn + 6);
    EXPECT_TEXT_EQ(this->m_strName, object.Get_Name());

    pOwn = object.Get_Name();
    EXPECT_TRUE(TypeParam::Create(object, pOwn));
    EXPECT_TEXT_EQ(this->m_strName, object.Get_Name());
    const typename TypeParam::Class keeper(object);
    pOwn = object.Get_Name();
    EXPECT_TRUE(object.Open(pOwn, SYNCHRONIZE, false));
    EXPECT_TEXT_EQ(this->m_strName, object.Get_Name());
    object.Set_Name(nullptr);
    EXPECT_TEXT_EQ(L"", object.Get_Name());
}

TYPED_TEST(Named, Copies_Share_The_Object_And_Live_On_Their_Own)
{
    auto& object = this->m_Object;
    ASSERT_TRUE(TypeParam::Create(object, this->m_strName));
    typename TypeParam::Class copy(object);
    typename TypeParam::Class assigned;
    const Lib_String strOld = Fresh_Name();
    ASSERT_TRUE(TypeParam::Create(assigned, strOld));
    EXPECT_EQ(0, assigned.Count([&] { assigned = copy; }));
    EXPECT_FALSE(this->opens(strOld));
    EXPECT_TEXT_EQ(this->m_strName, assigned.Get_Name());
    unsigned long dwFlags = 0;
    EXPECT_TRUE(assigned.Get_Information(dwFlags));
    EXPECT_EQ(DWORD{HANDLE_FLAG_INHERIT}, dwFlags);
    EXPECT_NE(object.operator void*(), copy.operator void*());

    void* const hOwn = object;
    const auto& self = object;
    object = self;
    EXPECT_EQ(hOwn, object.operator void*());
    EXPECT_TEXT_EQ(this->m_strName, object.Get_Name());

    EXPECT_TRUE(object.Close());
    EXPECT_TRUE(copy.Close());
    EXPECT_TRUE(this->opens(this->m_strName)) << "the last copy keeps it";
    EXPECT_TRUE(assigned.Close());
    EXPECT_FALSE(this->opens(this->m_strName));
}

TYPED_TEST(Named, A_Copy_That_Cannot_Be_Made_Has_The_Name_Alone)
{
    auto& object = this->m_Object;
    ASSERT_TRUE(TypeParam::Create(object, this->m_strName));
    ASSERT_TRUE(CloseHandle(object));
    const typename TypeParam::Class copy(object);
    EXPECT_EQ(nullptr, copy.operator void*());
    EXPECT_TEXT_EQ(this->m_strName, copy.Get_Name());
    EXPECT_FALSE(object.Close());
}

TYPED_TEST(Named, Public_Objects_Have_Unique_Names_That_Open)
{
    for (const bool bGlobal : {true, false})
    {
        ASSERT_TRUE(TypeParam::Create_Public(this->m_Object, bGlobal));
        EXPECT_EQ(0u, GetLastError());
        const Lib_String strName = this->m_Object.Get_Name();
        EXPECT_EQ(bGlobal ? 45u : 38u, strName.Get_Length());
        EXPECT_TEXT_EQ(bGlobal ? L"Global\\{" : L"{",
                       strName.Left(static_cast<unsigned long long>(strName.Find(L'{') + 1)));
        EXPECT_TRUE(this->opens(strName));
        unsigned long dwFlags = 0;
        EXPECT_TRUE(this->m_Object.Get_Information(dwFlags));
        EXPECT_EQ(DWORD{HANDLE_FLAG_INHERIT}, dwFlags);
        ASSERT_TRUE(TypeParam::Create_Public(this->m_Object, bGlobal));
        EXPECT_FALSE(this->opens(strName));
    }
}

TEST(Synchro, Unique_Names_Touch_No_Handle)
{
    Lib_Event event;
    ASSERT_TRUE(event.Create(nullptr, true, false));
    void* const hEvent = event;
    const Lib_String strFirst = event.Set_Unique_Name(true);
    EXPECT_TEXT_EQ(strFirst, event.Get_Name());
    EXPECT_TEXT_EQ(L"Global\\{", strFirst.Left(8));
    EXPECT_TEXT_EQ(L"}", strFirst.Mid(44));
    EXPECT_FALSE(strFirst == event.Set_Unique_Name(true));
    EXPECT_EQ(hEvent, event.operator void*());
    EXPECT_TRUE(Is_Open(event));
}

TEST(Synchro, Compares_Names_Exactly)
{
    Lib_Synchro lower(nullptr, L"name");
    const Lib_Synchro upper(nullptr, L"Name");
    EXPECT_TRUE(lower != upper);
    EXPECT_FALSE(lower == upper);
    lower = upper;
    EXPECT_TRUE(lower == upper);
    EXPECT_FALSE(lower == Lib_Synchro());
    Plain_Event plain;
    EXPECT_TRUE(Lib_Synchro(plain, nullptr) == Lib_Event());
    EXPECT_FALSE(lower.Release());
}

TEST(Synchro, Time_Outs_And_Answers_Are_32_Bits)
{
    Lib_Event event;
    EXPECT_EQ(0xFFFFFFFFul, event.Wait(0));
    ASSERT_TRUE(event.Create(nullptr, false, false));
    // The low 32 bits of the time count: 0 here, where the full value would hardly end.
    EXPECT_EQ(258ul, event.Wait(static_cast<unsigned long>(0x300000000ULL)));
    EXPECT_FALSE(event.Wait_Until_Object_0(1));
    EXPECT_TRUE(event.Set());
    EXPECT_TRUE(event.Wait_Until_Object_0(INFINITE));
}

class Several : public testing::Test
{
protected:
    Several()
    {
        EXPECT_TRUE(m_Event.Create(nullptr, true, false));
        EXPECT_TRUE(m_Mutex.Create(nullptr, false));
        m_Objects.Add(&m_Event);
        m_Objects.Add(&m_Mutex);
    }

    unsigned long wait(bool bAll) { return Lib_Synchro::Wait_Multiple(&m_Objects, bAll, 0); }

    Lib_Event m_Event;
    Lib_Mutex m_Mutex;
    LibT_Array<Lib_Synchro*, 4> m_Objects;
};

TEST_F(Several, Any_And_All)
{
    EXPECT_EQ(1ul, wait(false));
    EXPECT_EQ(258ul, wait(true));
    m_Event.Set();
    EXPECT_EQ(0ul, wait(false));
    EXPECT_EQ(0ul, wait(true));
    EXPECT_TRUE(m_Mutex.Release());
    EXPECT_TRUE(m_Mutex.Release());
    EXPECT_FALSE(m_Mutex.Release()) << "the wait that took the time had taken nothing";
}

TEST_F(Several, Tells_An_Abandoned_Mutex_By_Its_Place)
{
    EXPECT_TRUE(On_Other_Thread([&] { return m_Mutex.Wait_Until_Object_0(0); }));
    EXPECT_EQ(0x81ul, wait(false));
    EXPECT_TRUE(m_Mutex.Release());
}

TEST_F(Several, The_Platform_Answers_For_What_It_Refuses)
{
    LibT_Array<Lib_Synchro*, 4> none;
    EXPECT_EQ(0xFFFFFFFFul, Lib_Synchro::Wait_Multiple(&none, false, 0));
    EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
    EXPECT_EQ(0xFFFFFFFFul, Lib_Synchro::Wait_Multiple(nullptr, false, 0));

    Lib_Event empty;
    for (Lib_Synchro* pNothing : {static_cast<Lib_Synchro*>(&empty), static_cast<Lib_Synchro*>(nullptr)})
    {
        LibT_Array<Lib_Synchro*, 4> objects;
        objects.Add(pNothing);
        EXPECT_EQ(0xFFFFFFFFul, Lib_Synchro::Wait_Multiple(&objects, false, 0));
        EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, GetLastError());
    }

    while (m_Objects.Get_Num_Elements() < 64)
        m_Objects.Add(&m_Event);
    EXPECT_EQ(1ul, wait(false));
    m_Mutex.Release();
    m_Objects.Add(&m_Event);
    EXPECT_EQ(0xFFFFFFFFul, wait(false));
    EXPECT_EQ(DWORD{ERROR_INVALID_PARAMETER}, GetLastError());
}

} // namespace
