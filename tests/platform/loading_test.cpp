// How names of modules find their files, and what failing system calls leave.

#include "layer_probe.h"
#include "platform/modules/module_search.h"
#include "test_text.h"

#include <algorithm>
#include <vector>

#include <dlfcn.h>

namespace
{

class Module_Files : public test_support::Layer_Test
{
protected:
    void SetUp() override { std::filesystem::create_directory(m_Folder); }
    void TearDown() override { std::filesystem::remove_all(m_Folder); }

    // The 16-bit form of a path of ASCII characters.
    static std::vector<wchar_t> Wide(const std::string& path)
    {
        std::vector<wchar_t> text(path.begin(), path.end());
        text.push_back(L'\0');
        return text;
    }

    const std::filesystem::path m_Folder =
        std::filesystem::temp_directory_path() / ("qn_loading_" + std::to_string(GetCurrentProcessId()));
};

std::vector<std::string> Candidates_Of(LPCWSTR name) { return Module_Candidates(Read_Module_Name(name)); }

} // namespace

TEST_F(Module_Files, Lie_In_The_Librarys_Folders_First)
{
    const std::string own = (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "").string();
    std::vector<std::string> found = Candidates_Of(L"Reader.DLL");
    ASSERT_LE(8u, found.size());
    found.resize(8);
    const std::vector<std::string> wanted{own + "qnLib/Reader.so", own + "qnLib/libReader.so",
                                          own + "qnLib/reader.so", own + "qnLib/libreader.so",
                                          own + "Reader.so",       own + "libReader.so",
                                          own + "reader.so",       own + "libreader.so"};
    EXPECT_EQ(wanted, found);
    EXPECT_EQ("libreader.so", Candidates_Of(L"reader").back()) << "the loader's own search comes last";
    EXPECT_EQ("libreader.so.2", Candidates_Of(L"libreader.so.2").back());
    EXPECT_EQ("reader", Candidates_Of(L"reader.").back()) << "a dot at the end: no ending is added";
    EXPECT_EQ(std::vector<std::string>({"/opt/b/reader.so", "/opt/b/libreader.so"}),
              Candidates_Of(L"\\opt\\b\\reader.dll"));
}

TEST_F(Module_Files, Are_Told_From_Files_That_Are_None)
{
    std::ofstream(m_Folder / "letter.so") << "Dear reader";
    std::ofstream(m_Folder / "cut.so") << "\x7F"
                                          "ELF";
    EXPECT_EQ(nullptr, LoadLibraryW(Wide((m_Folder / "letter").string()).data()));
    EXPECT_EQ(193u, GetLastError());
    EXPECT_EQ(nullptr, LoadLibraryW(Wide((m_Folder / "missing").string()).data()));
    EXPECT_EQ(126u, GetLastError());
    EXPECT_EQ(nullptr, LoadLibraryW(Wide((m_Folder / "cut").string()).data()));
    EXPECT_NE(0u, GetLastError());
}

TEST_F(Module_Files, Are_Known_By_Their_Names_Once_Loaded)
{
    const HMODULE first = LoadLibraryW(L"qn_test_module");
    ASSERT_NE(nullptr, first);
    std::vector<wchar_t> path(4096);
    ASSERT_LT(0u, GetModuleFileNameW(first, path.data(), 4096));
    std::string native;
    std::transform(path.begin(), std::find(path.begin(), path.end(), L'\0'), std::back_inserter(native),
                   [](wchar_t unit) { return unit == L'\\' ? '/' : static_cast<char>(unit); });
    FreeLibrary(first);
    ASSERT_EQ(nullptr, GetModuleHandleW(L"qn_test_module"));

    // A module elsewhere that another part of the program loaded serves under its plain name.
    std::filesystem::copy_file(native, m_Folder / "libqn_elsewhere.so.3");
    void* const handle = dlopen((m_Folder / "libqn_elsewhere.so.3").c_str(), RTLD_NOW);
    ASSERT_NE(nullptr, handle) << dlerror();
    const HMODULE module = LoadLibraryW(L"qn_elsewhere.dll");
    EXPECT_NE(nullptr, module);
    EXPECT_EQ(module, GetModuleHandleW(L"QN_ELSEWHERE"));
    EXPECT_EQ(module, GetModuleHandleW(L"libqn_elsewhere.so.3"));
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_TRUE(FreeLibrary(module)) << "one too many";
    EXPECT_EQ(module, GetModuleHandleW(L"qn_elsewhere")) << "the other part's reference is left alone";
    dlclose(handle);
    EXPECT_EQ(nullptr, GetModuleHandleW(L"qn_elsewhere"));
    EXPECT_EQ(nullptr, LoadLibraryW(L"qn_elsewhere"));
}

TEST_F(Module_Files, Balance_Loads_Of_Several_Threads)
{
    std::atomic<int> failures = 0;
    const auto load = [&failures]
    {
        for (int round = 0; round < 200; ++round)
        {
            const HMODULE module = LoadLibraryW(L"qn_test_module");
            failures += GetProcAddress(module, "Qn_Test_Next") == nullptr || !FreeLibrary(module) ? 1 : 0;
        }
    };
    std::thread threads[] = {std::thread(load), std::thread(load), std::thread(load)};
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(0, failures);
    EXPECT_EQ(nullptr, GetModuleHandleW(L"qn_test_module"));
}

TEST_F(Module_Files, Leave_Nothing_Loaded_When_The_System_Fails)
{
    static int references = 0;
    system_calls.open_module = [](const char* path, int mode)
    {
        void* const handle = dlopen(path, mode);
        references += handle != nullptr ? 1 : 0;
        return handle;
    };
    system_calls.close_module = [](void* handle)
    {
        --references;
        return dlclose(handle);
    };
    const HMODULE module = LoadLibraryW(L"qn_test_module");
    ASSERT_NE(nullptr, module);
    EXPECT_EQ(1, references);
    EXPECT_NE(nullptr, GetProcAddress(module, "Qn_Test_Next"));
    EXPECT_EQ(nullptr, GetProcAddress(module, "no such entry"));
    EXPECT_EQ(1, references);
    system_calls.find_symbol = [](void*, const char*) -> void* { return nullptr; };
    EXPECT_EQ(nullptr, GetProcAddress(module, "Qn_Test_Next"));
    EXPECT_EQ(127u, GetLastError());
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(0, references);
}
