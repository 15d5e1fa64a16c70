#include "platform/modules.h"
#include "platform/modules/module_address.h"
#include "platform/modules/module_loads.h"
#include "platform/modules/module_search.h"
#include "platform/system_calls.h"

#include <cstdint>
#include <fstream>
#include <new>
#include <string_view>

#include <dlfcn.h>

namespace qn_platform
{

namespace
{

constexpr int LOAD_MODE = RTLD_NOW | RTLD_LOCAL;

/// Whether there is a file, but no module in it.
bool is_Foreign_File(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    char start[4] = "";
    return file.is_open() && (!file.read(start, sizeof start) ||
                              std::string_view(start, sizeof start) != std::string_view("\x7F"
                                                                                        "ELF"));
}

/// One more reference to a module that is loaded already, wherever its file is; null if there is none.
void* open_Loaded(const Module_Name& name)
{
    const char* const loader_name = Loader_Name(Find_Loaded_Module(name));
    // The executable's name is empty or no module's: it is not loaded a second time.
    return loader_name == nullptr ? nullptr : system_calls.open_module(loader_name, LOAD_MODE | RTLD_NOLOAD);
}

/// The loader's handle, or null with the reason in `error`.
void* open_Module(const Module_Name& name, DWORD& error)
{
    error = ERROR_MOD_NOT_FOUND;
    bool asked_loaded = false;
    for (const std::string& candidate : Module_Candidates(name))
    {
        const bool by_search = candidate.find('/') == std::string::npos;
        void* handle = by_search && !asked_loaded ? open_Loaded(name) : nullptr;
        asked_loaded = asked_loaded || by_search;
        if (handle == nullptr)
        {
            handle = system_calls.open_module(candidate.c_str(), LOAD_MODE);
        }
        if (handle != nullptr)
        {
            return handle;
        }
        if (!by_search && is_Foreign_File(candidate))
        {
            error = ERROR_BAD_EXE_FORMAT;
        }
    }
    return nullptr;
}

/// Counts the load. The reference goes back when that fails.
HMODULE keep_Module(void* handle)
{
    const HMODULE module = Module_Of_Loader_Handle(handle);
    auto* const lent = static_cast<Provider_Last_Error*>(Own_Symbol(module, "qn_provider_last_error"));
    if (!Count_Module_Load(module, handle, lent))
    {
        system_calls.close_module(handle);
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    return module;
}

} // namespace

HMODULE LoadLibraryW(LPCWSTR name)
{
    if (name == nullptr)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    try
    {
        DWORD error = ERROR_SUCCESS;
        void* const handle = open_Module(Read_Module_Name(name), error);
        if (handle != nullptr)
        {
            return keep_Module(handle);
        }
        SetLastError(error);
    }
    catch (const std::bad_alloc&)
    {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    }
    return nullptr;
}

BOOL FreeLibrary(HMODULE module)
{
    if (Loader_Name(module) == nullptr)
    {
        SetLastError(module == nullptr ? ERROR_INVALID_HANDLE : ERROR_MOD_NOT_FOUND);
        return FALSE;
    }
    void* const handle = Count_Module_Release(module);
    if (handle != nullptr)
    {
        system_calls.close_module(handle);
    }
    return TRUE;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name)
{
    constexpr std::uintptr_t FIRST_NAME = 0x10000; // below are ordinals, null among them
    if (module != nullptr && Loader_Name(module) == nullptr)
    {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    void* const symbol =
        reinterpret_cast<std::uintptr_t>(name) < FIRST_NAME ? nullptr : Own_Symbol(module, name);
    if (symbol == nullptr)
    {
        SetLastError(ERROR_PROC_NOT_FOUND);
    }
    return reinterpret_cast<FARPROC>(symbol);
}

} // namespace qn_platform
