#include "named_test_objects.h"

#include "platform/kernel/named_name.h"

#include <fcntl.h>
#include <sys/mman.h>

using namespace test_support;
using namespace qn_platform::kernel;

// Names at their limits, many objects, and the system's refusals.

namespace
{

std::vector<wchar_t> Repeated(std::size_t length, wchar_t unit)
{
    std::vector<wchar_t> name(length, unit);
    name.push_back(0);
    return name;
}

std::size_t Count_Descriptors()
{
    const std::filesystem::directory_iterator folder("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(folder), end(folder)));
}

} // namespace

TEST(Named_Name, What_Is_No_Name_Is_Told)
{
    const auto error_Of = [](const std::vector<wchar_t>& name)
    {
        Object_Name parsed;
        return Parse_Object_Name(name.data(), parsed);
    };
    EXPECT_EQ(0U, error_Of(Repeated(260, 'n')));
    EXPECT_EQ(206U, error_Of(Repeated(261, 'n')));
    EXPECT_EQ(123U, error_Of(Wide("Global\\")));
    EXPECT_EQ(123U, error_Of(Wide("Local\\")));
    EXPECT_EQ(3U, error_Of(Wide("Global\\Local\\a")));
    EXPECT_EQ(3U, error_Of(Wide("other\\a")));
}

TEST(Named_Limits, Twenty_Thousand_Objects_Without_A_Descriptor)
{
    constexpr int OBJECTS = 20000;
    const std::string strBase = Own_Name("many-");
    const std::size_t nDescriptors = Count_Descriptors();
    std::vector<Handle> objects;
    for (int i = 0; i < OBJECTS; ++i)
    {
        const std::string strName = strBase + std::to_string(i);
        objects.push_back(i % 2 == 0 ? Event(strName, false, true) : Mutex(strName));
        ASSERT_NE(nullptr, objects.back()) << i << ": " << GetLastError();
    }
    EXPECT_EQ(nDescriptors, Count_Descriptors());
    const HANDLE ends[] = {objects.front(), objects.back()};
    EXPECT_EQ(WAIT_OBJECT_0, WaitForMultipleObjects(2, ends, TRUE, 0));
    objects.clear();
    EXPECT_TRUE(Find_Files(strBase).empty());
}

// ---- Refusals --------------------------------------------------------------------------------------------

namespace
{

/// Counts down to the call that fails.
int s_nUntil_Failure = 0;
int s_nError = 0;

/// The call as it was, whose nth time fails.
template <auto Member>
struct Failing;

template <class Result, class... Arguments, Result (*Named_Calls::*Member)(Arguments...)>
struct Failing<Member>
{
    static Result Call(Arguments... arguments)
    {
        if (--s_nUntil_Failure != 0)
        {
            return s_pFormer(arguments...);
        }
        errno = s_nError;
        if constexpr (std::is_pointer_v<Result>)
        {
            return MAP_FAILED;
        }
        else
        {
            return -1;
        }
    }
    static inline Result (*s_pFormer)(Arguments...) = nullptr;
};

template <auto Member>
void Fail()
{
    Failing<Member>::s_pFormer = named_calls.*Member;
    named_calls.*Member = Failing<Member>::Call;
}

struct Refusal
{
    const char* what;
    void (*set)();
    int error;
    DWORD told;
};

} // namespace

TEST(Named_Limits, A_Refusal_Is_Told_And_Leaves_Nothing)
{
    const Refusal refusals[] = {
        {"descriptors of the process", Fail<&Named_Calls::open_file>, EMFILE, ERROR_TOO_MANY_OPEN_FILES},
        {"descriptors of the system", Fail<&Named_Calls::open_file>, ENFILE, ERROR_TOO_MANY_OPEN_FILES},
        {"folder not writable", Fail<&Named_Calls::open_file>, EACCES, ERROR_ACCESS_DENIED},
        {"full folder", Fail<&Named_Calls::allocate>, ENOSPC, ERROR_NOT_ENOUGH_MEMORY},
        {"mappings", Fail<&Named_Calls::map>, ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
        {"advice", Fail<&Named_Calls::advise>, ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
        {"locks", Fail<&Named_Calls::lock_file>, ENOLCK, ERROR_NOT_ENOUGH_MEMORY},
        {"names", Fail<&Named_Calls::link_file>, ENOSPC, ERROR_NOT_ENOUGH_MEMORY},
    };
    // The first creation looks through what is left over, of which other processes may have some just now.
    EXPECT_NE(nullptr, Event(Own_Name("first")));
    const std::string strName = Own_Name("refused");
    for (const Refusal& refusal : refusals)
    {
        for (int nNth = 1;; ++nNth)
        {
            SCOPED_TRACE(testing::Message() << refusal.what << ", call " << nNth);
            const std::size_t nDescriptors = Count_Descriptors();
            Handle mutex;
            {
                const Kept_Calls kept;
                s_nUntil_Failure = nNth;
                s_nError = refusal.error;
                refusal.set();
                mutex = Mutex(strName, true);
            }
            if (s_nUntil_Failure > 0)
            {
                EXPECT_NE(nullptr, mutex);
                EXPECT_LT(1, nNth);
                break;
            }
            EXPECT_EQ(nullptr, mutex);
            EXPECT_EQ(refusal.told, GetLastError());
            EXPECT_EQ(nDescriptors, Count_Descriptors());
            EXPECT_TRUE(Find_Files(strName).empty());
            ASSERT_GT(10, nNth);
        }
        EXPECT_TRUE(Find_Files(strName).empty());
    }
}

TEST(Named_Limits, An_Interrupted_Call_Is_Made_Again)
{
    for (const auto set : {Fail<&Named_Calls::open_file>, Fail<&Named_Calls::allocate>})
    {
        const Kept_Calls kept;
        s_nUntil_Failure = 1;
        s_nError = EINTR;
        set();
        EXPECT_NE(nullptr, Event(Own_Name("interrupted"))) << GetLastError();
        EXPECT_GE(0, s_nUntil_Failure);
    }
}

TEST(Named_Limits, A_Name_That_Could_Not_Be_Removed_Is_Made_Afresh)
{
    const std::string strName = Own_Name("stuck");
    Handle event = Event(strName, true, true);
    {
        const Leftover left(strName);
        {
            const Kept_Calls kept;
            s_nUntil_Failure = 1;
            s_nError = EMFILE;
            Fail<&Named_Calls::open_file>();
            event.Close();
        }
        EXPECT_TRUE(left.Is_There());
        event = Event(strName);
        EXPECT_EQ(0U, GetLastError());
    }
    EXPECT_EQ(TIMED_OUT, WaitForSingleObject(event, 0));
    event.Close();
    EXPECT_TRUE(Find_Files(strName).empty());
}

TEST(Named_Limits, A_Foreign_File_In_The_Place_Of_An_Object_Is_No_Object)
{
    const std::string strName = Own_Name("foreign");
    const Handle event = Event(strName);
    const std::string strFile = Find_Files(strName).at(0);
    const std::string strOther = strFile + "2";
    std::filesystem::create_hard_link(strFile, strOther); // a page of another name, alive
    EXPECT_EQ(nullptr, Open_Event(strName + "2"));
    EXPECT_EQ(DWORD{ERROR_INVALID_HANDLE}, GetLastError());
    std::filesystem::remove(strOther);
    std::filesystem::create_symlink(strFile, strOther);
    EXPECT_EQ(nullptr, Open_Event(strName + "2"));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
    std::filesystem::remove(strOther);
    std::filesystem::create_directory(strOther);
    EXPECT_EQ(nullptr, Event(strName + "2"));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, GetLastError());
    std::filesystem::remove(strOther);
}
