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

TYPED_TEST(Named, Closes_Before_It_Creates_And_Opens)
{
    ASSERT_TRUE(TypeParam::Create(this->m_Object, this->m_strName));
    ASSERT_TRUE(TypeParam::Create(this->m_Object, this->m_strName));
    EXPECT_EQ(0u, GetLastError()) << "the old one went before the new one came";
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

    const auto& self = assigned;
    assigned = self;
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
    Plain_Event plain;
    EXPECT_TRUE(lower == Lib_Synchro(plain, L"name"));
    EXPECT_TRUE(Lib_Synchro(plain, nullptr) == Lib_Event());
    EXPECT_FALSE(Lib_Synchro(lower).Release());
}

TEST(Synchro, Time_Outs_Are_32_Bits)
{
    Lib_Event event;
    ASSERT_TRUE(event.Create(nullptr, false, false));
    // The low 32 bits of the time count: 0 here, where the full value would hardly end.
    EXPECT_EQ(258ul, event.Wait(static_cast<unsigned long>(0x300000000ULL)));
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
    EXPECT_FALSE(mutex.Release()) << "the wait that took the time had taken nothing";
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
