#include "named_test_objects.h"

#include "platform/kernel/named_name.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <sys/mman.h>

using namespace test_support;
using namespace qn_platform::kernel;

// Names at their limits, many objects, and the system's refusals.

namespace
{

Object_Name parse(const std::vector<wchar_t>& name)
{
    Object_Name parsed;
    EXPECT_EQ(0U, Parse_Object_Name(name.data(), parsed));
    return parsed;
}

DWORD error_Of_Name(const std::vector<wchar_t>& name)
{
    Object_Name parsed;
    return Parse_Object_Name(name.data(), parsed);
}

std::vector<wchar_t> repeated(std::size_t length, wchar_t unit)
{
    std::vector<wchar_t> name(length, unit);
    name.push_back(0);
    return name;
}

std::string file_Name(const Object_Name& name)
{
    return std::filesystem::path(name.path).filename().native();
}

} // namespace

TEST(Named_Name, Every_Name_Has_A_File_Name_Of_Its_Own)
{
    EXPECT_NE(std::string(parse(Wide("a-B{1}")).path).find(".s0.a-B{1}"), std::string::npos)
        << "readable where it can be; a process without a session counts as of session 0";
    EXPECT_NE(std::string(parse(Wide("Global\\a b")).path).find(".g.a%0020b"), std::string::npos);
    EXPECT_STREQ(parse(Wide("Local\\x")).path, parse(Wide("x")).path);
    EXPECT_STRNE(parse(Wide("Global\\x")).path, parse(Wide("x")).path);
    EXPECT_STRNE(parse(Wide("%0020")).path, parse(Wide(" ")).path);
    EXPECT_STRNE(parse(Wide("global")).path, parse(Wide("Global")).path);
    std::vector<std::string> names;
    for (const std::size_t nLength : {1U, 100U, 200U, 220U, 240U, 260U})
    {
        for (const wchar_t unit : {L'a', L'b', L'/', static_cast<wchar_t>(0xFFFF)})
        {
            names.push_back(file_Name(parse(repeated(nLength, unit))));
            EXPECT_GE(255U, names.back().size());
        }
    }
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names.end(), std::adjacent_find(names.begin(), names.end()));
}

TEST(Named_Name, What_Is_No_Name_Is_Told)
{
    EXPECT_EQ(0U, error_Of_Name(repeated(260, 'n')));
    EXPECT_EQ(206U, error_Of_Name(repeated(261, 'n')));
    EXPECT_EQ(123U, error_Of_Name(Wide("Global\\")));
    EXPECT_EQ(123U, error_Of_Name(Wide("Local\\")));
    EXPECT_EQ(3U, error_Of_Name(Wide("Global\\a\\b")));
    EXPECT_EQ(3U, error_Of_Name(Wide("other\\a")));
    EXPECT_EQ(3U, error_Of_Name(Wide("Global\\Local\\a")));
}

// ---- Many objects ----------------------------------------------------------------------------------------

namespace
{

std::size_t count_Descriptors()
{
    const std::filesystem::directory_iterator folder("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(folder), end(folder)));
}

} // namespace

TEST(Named_Limits, Twenty_Thousand_Objects_Without_A_Descriptor)
{
    constexpr int OBJECTS = 20000;
    const std::string strBase = Own_Name("many-");
    const std::size_t nDescriptors = count_Descriptors();
    std::vector<Handle> objects;
    for (int i = 0; i < OBJECTS; ++i)
    {
        const std::string strName = strBase + std::to_string(i);
        objects.push_back(i % 2 == 0 ? Event(strName, false, true) : Mutex(strName));
        ASSERT_NE(nullptr, objects.back()) << i << ": " << GetLastError();
    }
    EXPECT_EQ(nDescriptors, count_Descriptors());
    const HANDLE ends[] = {objects.front(), objects.back()};
    EXPECT_EQ(WAIT_OBJECT_0, WaitForMultipleObjects(2, ends, TRUE, 0));
    objects.clear();
    EXPECT_TRUE(Find_Files(strBase).empty());
}

// ---- Refusals --------------------------------------------------------------------------------------------

namespace
{

/// Counts down to the call that fails.
int g_nUntil_Failure = 0;
int g_nError = 0;

bool fails_Now()
{
    if (--g_nUntil_Failure == 0)
    {
        errno = g_nError;
        return true;
    }
    return false;
}

const Named_Calls& real_Calls()
{
    static const Named_Calls calls = named_calls;
    return calls;
}

/// Lets the nth call of the given kind fail. The kinds are set one at a time.
using Set_Failure = void (*)();

void fail_Open()
{
    named_calls.open_file = [](const char* path, int flags, mode_t mode)
    { return fails_Now() ? -1 : real_Calls().open_file(path, flags, mode); };
}
void fail_Allocate()
{
    named_calls.allocate = [](int file, int mode, off_t offset, off_t size)
    { return fails_Now() ? -1 : real_Calls().allocate(file, mode, offset, size); };
}
void fail_Map()
{
    named_calls.map = [](void* address, std::size_t size, int protection, int flags, int file, off_t offset)
    { return fails_Now() ? MAP_FAILED : real_Calls().map(address, size, protection, flags, file, offset); };
}
void fail_Link()
{
    named_calls.link_file = [](int old_folder, const char* old_path, int folder, const char* path, int flags)
    { return fails_Now() ? -1 : real_Calls().link_file(old_folder, old_path, folder, path, flags); };
}
void fail_Lock()
{
    named_calls.lock_file = [](int file, int operation, struct flock* lock)
    { return fails_Now() ? -1 : real_Calls().lock_file(file, operation, lock); };
}
void fail_Advise()
{
    named_calls.advise = [](void* address, std::size_t size, int advice)
    { return fails_Now() ? -1 : real_Calls().advise(address, size, advice); };
}

struct Refusal
{
    const char* what;
    Set_Failure set;
    int error;
    DWORD told;
};

} // namespace

TEST(Named_Limits, A_Refusal_Is_Told_And_Leaves_Nothing)
{
    const Refusal refusals[] = {
        {"descriptors of the process", fail_Open, EMFILE, ERROR_TOO_MANY_OPEN_FILES},
        {"descriptors of the system", fail_Open, ENFILE, ERROR_TOO_MANY_OPEN_FILES},
        {"folder not writable", fail_Open, EACCES, ERROR_ACCESS_DENIED},
        {"full folder", fail_Allocate, ENOSPC, ERROR_NOT_ENOUGH_MEMORY},
        {"mappings", fail_Map, ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
        {"advice", fail_Advise, ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
        {"locks", fail_Lock, ENOLCK, ERROR_NOT_ENOUGH_MEMORY},
        {"names", fail_Link, ENOSPC, ERROR_NOT_ENOUGH_MEMORY},
    };
    real_Calls();
    // The first creation looks through what is left over, of which other processes may have some just now.
    EXPECT_NE(nullptr, Event(Own_Name("first")));
    for (const Refusal& refusal : refusals)
    {
        const std::string strName = Own_Name("refused");
        for (int nNth = 1;; ++nNth)
        {
            SCOPED_TRACE(testing::Message() << refusal.what << ", call " << nNth);
            const std::size_t nDescriptors = count_Descriptors();
            Handle mutex;
            {
                const Kept_Calls kept;
                g_nUntil_Failure = nNth;
                g_nError = refusal.error;
                refusal.set();
                mutex = Mutex(strName, true);
            }
            if (g_nUntil_Failure > 0)
            {
                EXPECT_NE(nullptr, mutex);
                EXPECT_LT(1, nNth);
                break;
            }
            EXPECT_EQ(nullptr, mutex);
            EXPECT_EQ(refusal.told, GetLastError());
            EXPECT_EQ(nDescriptors, count_Descriptors());
            EXPECT_TRUE(Find_Files(strName).empty());
            ASSERT_GT(10, nNth);
        }
        EXPECT_TRUE(Find_Files(strName).empty());
    }
}

TEST(Named_Limits, An_Interrupted_Call_Is_Made_Again)
{
    real_Calls();
    const Kept_Calls kept;
    for (const Set_Failure set : {fail_Open, fail_Allocate})
    {
        g_nUntil_Failure = 1;
        g_nError = EINTR;
        set();
        const Handle event = Event(Own_Name("interrupted"));
        EXPECT_NE(nullptr, event) << GetLastError();
        EXPECT_GE(0, g_nUntil_Failure);
    }
}

TEST(Named_Limits, A_Name_That_Could_Not_Be_Removed_Is_Made_Afresh)
{
    real_Calls();
    const std::string strName = Own_Name("stuck");
    Handle event = Event(strName, true, true);
    {
        const Kept_Calls kept;
        g_nUntil_Failure = 1;
        g_nError = EMFILE;
        fail_Open();
        event.Close();
    }
    EXPECT_EQ(1U, Find_Files(strName).size());
    event = Event(strName);
    EXPECT_EQ(0U, GetLastError());
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), WaitForSingleObject(event, 0));
    event.Close();
    EXPECT_TRUE(Find_Files(strName).empty());
}

TEST(Named_Limits, A_Foreign_File_In_The_Place_Of_An_Object_Is_No_Object)
{
    const std::string strName = Own_Name("foreign");
    const Handle event = Event(strName);
    const std::string strFile = Find_Files(strName).at(0);
    const std::string strOther = strFile + "2";
    // A page of another name, alive.
    std::filesystem::create_hard_link(strFile, strOther);
    EXPECT_EQ(nullptr, Open_Event(strName + "2"));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_HANDLE), GetLastError());
    std::filesystem::remove(strOther);
    std::filesystem::create_symlink(strFile, strOther);
    EXPECT_EQ(nullptr, Open_Event(strName + "2"));
    EXPECT_EQ(static_cast<DWORD>(ERROR_ACCESS_DENIED), GetLastError());
    std::filesystem::remove(strOther);
    std::filesystem::create_directory(strOther);
    EXPECT_EQ(nullptr, Event(strName + "2"));
    EXPECT_EQ(static_cast<DWORD>(ERROR_ACCESS_DENIED), GetLastError());
    std::filesystem::remove(strOther);
}
