#include "layer_probe.h"
#include "test_text.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <dlfcn.h>
#include <limits.h>

QN_STRING_TABLE({7, L"seven"}, {1, L"\u0413\u043E\u0442\u043E\u0432\u043E"}, {3, L""}, {7, L"hidden"});

namespace
{

class Modules : public test_support::Layer_Test
{
protected:
    void SetUp() override
    {
        // A program exports its own symbols only if it is linked so; the table is found all the same.
        system_calls.find_symbol = [](void* module, const char* name) -> void*
        {
            void* const found = dlsym(module, name);
            const bool own_table =
                std::strcmp(name, "qn_string_table") == 0 && module == dlopen(nullptr, RTLD_LAZY);
            return found == nullptr && own_table ? const_cast<Lib_String_Table_Entry*>(qn_string_table)
                                                 : found;
        };
    }
};

std::string Own_Path()
{
    std::string text = std::filesystem::read_symlink("/proc/self/exe");
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

std::string Path_Of(HMODULE module)
{
    wchar_t path[PATH_MAX];
    return std::string(path, path + GetModuleFileNameW(module, path, PATH_MAX));
}

HMODULE C_Library()
{
    Dl_info info;
    const void* const inside = dlsym(dlopen("libc.so.6", RTLD_LAZY | RTLD_NOLOAD), "gnu_get_libc_version");
    return inside == nullptr || dladdr(inside, &info) == 0 ? nullptr : static_cast<HMODULE>(info.dli_fbase);
}

DWORD Error_After(DWORD result)
{
    EXPECT_EQ(0u, result);
    return GetLastError();
}

} // namespace

TEST_F(Modules, Know_Their_Files)
{
    const HMODULE executable = GetModuleHandleW(nullptr);
    EXPECT_EQ(Own_Path(), Path_Of(nullptr));
    EXPECT_EQ(Own_Path(), Path_Of(executable));
    EXPECT_NE(std::string::npos, Path_Of(C_Library()).find("\\libc.so"));
    EXPECT_TRUE(DisableThreadLibraryCalls(executable));
    EXPECT_FALSE(DisableThreadLibraryCalls(nullptr));
}

TEST_F(Modules, Cut_Long_Paths)
{
    const std::string whole = Own_Path();
    const auto size = static_cast<DWORD>(whole.size());
    std::vector<wchar_t> path(size + 2, L'#');
    EXPECT_EQ(size, GetModuleFileNameW(nullptr, path.data(), size + 1));
    EXPECT_EQ(L'#', path[size + 1]);
    EXPECT_EQ(5u, GetModuleFileNameW(nullptr, path.data(), 5));
    EXPECT_EQ(122u, GetLastError());
    EXPECT_EQ(L'\0', path[4]);
    EXPECT_EQ(static_cast<wchar_t>(whole[5]), path[5]);
    EXPECT_EQ(122u, Error_After(GetModuleFileNameW(nullptr, nullptr, 0)));
    EXPECT_EQ(87u, Error_After(GetModuleFileNameW(nullptr, nullptr, 5)));
}

TEST_F(Modules, Have_Names_Whatever_The_System_Answers)
{
    static std::string answer;
    system_calls.read_link = [](const char*, char* target, std::size_t size) -> ssize_t
    { return static_cast<ssize_t>(answer.copy(target, size)); };
    answer = "/x" + std::string(700, 'y');
    EXPECT_EQ("\\x" + std::string(700, 'y'), Path_Of(nullptr));
    answer = "/no such file (deleted)";
    EXPECT_EQ("\\no such file", Path_Of(nullptr));
    system_calls.access_file = [](const char*, int) { return 0; };
    EXPECT_EQ("\\no such file (deleted)", Path_Of(nullptr));
    system_calls.read_link = [](const char*, char*, std::size_t) -> ssize_t
    {
        errno = EACCES;
        return -1;
    };
    wchar_t path[4] = L"abc";
    EXPECT_EQ(126u, Error_After(GetModuleFileNameW(nullptr, path, 4)));
    EXPECT_TEXT_EQ(L"abc", static_cast<const wchar_t*>(path));
}

TEST_F(Modules, Load_Their_Strings)
{
    wchar_t text[8] = L"unused!";
    EXPECT_EQ(6, LoadStringW(nullptr, 1, text, 7));
    EXPECT_TEXT_EQ(L"\u0413\u043E\u0442\u043E\u0432\u043E", static_cast<const wchar_t*>(text));
    EXPECT_EQ(3, LoadStringW(nullptr, 7, text, 4));
    EXPECT_TEXT_EQ(L"sev", static_cast<const wchar_t*>(text));
    const wchar_t* direct = nullptr;
    EXPECT_EQ(5, LoadStringW(nullptr, 7, reinterpret_cast<wchar_t*>(&direct), 0));
    EXPECT_EQ(qn_string_table[0].text, direct);
}

TEST_F(Modules, Say_Why_There_Is_No_String)
{
    wchar_t text[4] = L"abc";
    const auto error = [&](HMODULE module, UINT id, wchar_t* buffer, int size)
    {
        SetLastError(0);
        return Error_After(static_cast<DWORD>(LoadStringW(module, id, buffer, size)));
    };
    EXPECT_EQ(1814u, error(nullptr, 2, text, 4));
    EXPECT_EQ(1814u, error(nullptr, 3, text, 4));
    EXPECT_EQ(87u, error(nullptr, 7, nullptr, 4));
    EXPECT_EQ(87u, error(nullptr, 7, text, -1));
    EXPECT_EQ(1812u, error(C_Library(), 7, text, 4));
    system_calls.open_module = [](const char*, int) -> void* { return nullptr; };
    EXPECT_EQ(1812u, error(nullptr, 7, text, 4));
    EXPECT_TEXT_EQ(L"abc", static_cast<const wchar_t*>(text));
}
