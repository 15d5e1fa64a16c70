#include "platform/modules/module_address.h"

#include "platform/modules.h"
#include "platform/system_calls.h"

#include <cstdlib>
#include <memory>
#include <string_view>

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

namespace qn_platform
{

namespace
{

/// The loader keeps the name by which a module was asked for, which may be relative. If the file is no longer
/// there that name has to do.
std::string full_Path(const char* loader_name)
{
    if (loader_name[0] == '/')
    {
        return loader_name;
    }
    const std::unique_ptr<char, void (*)(void*)> resolved(system_calls.real_path(loader_name, nullptr),
                                                          std::free);
    return resolved != nullptr ? resolved.get() : loader_name;
}

} // namespace

const char* Loader_Name(HMODULE module)
{
    Dl_info info;
    if (module == nullptr || dladdr(module, &info) == 0 || info.dli_fbase != module)
    {
        return nullptr;
    }
    return info.dli_fname;
}

HMODULE Module_Of(const void* address)
{
    Dl_info info;
    return dladdr(address, &info) == 0 ? nullptr : static_cast<HMODULE>(info.dli_fbase);
}

// The loader writes its record under a lock of its own, which the thread sanitizer does not see.
__attribute__((no_sanitize("thread"))) HMODULE Module_Of_Loader_Handle(void* handle)
{
    const link_map* map = nullptr;
    return dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 ? Module_Of(map->l_ld) : nullptr;
}

void* Own_Symbol(HMODULE module, const char* name)
{
    const HMODULE executable = GetModuleHandleW(nullptr);
    const HMODULE owner = module != nullptr ? module : executable;
    const char* const loader_name = Loader_Name(owner);
    if (loader_name == nullptr)
    {
        return nullptr;
    }
    void* const handle =
        system_calls.open_module(owner == executable ? nullptr : loader_name, RTLD_LAZY | RTLD_NOLOAD);
    if (handle == nullptr)
    {
        return nullptr;
    }
    void* const symbol = system_calls.find_symbol(handle, name);
    // The module stays loaded: its user holds a reference of his own.
    system_calls.close_module(handle);
    return symbol != nullptr && Module_Of(symbol) == owner ? symbol : nullptr;
}

std::string Executable_Path()
{
    std::string path(256, '\0');
    ssize_t length = system_calls.read_link("/proc/self/exe", path.data(), path.size());
    while (length >= 0 && static_cast<std::size_t>(length) == path.size())
    {
        path.resize(2 * path.size());
        length = system_calls.read_link("/proc/self/exe", path.data(), path.size());
    }
    path.resize(length < 0 ? 0 : static_cast<std::size_t>(length));

    // The kernel says so behind the name when the file was replaced or deleted, as an update does.
    constexpr std::string_view DELETED = " (deleted)";
    if (path.ends_with(DELETED) && system_calls.access_file(path.c_str(), F_OK) != 0)
    {
        path.resize(path.size() - DELETED.size());
    }
    return path;
}

std::string Module_Path(HMODULE module)
{
    if (module == nullptr || module == GetModuleHandleW(nullptr))
    {
        return Executable_Path();
    }
    const char* const name = Loader_Name(module);
    return name != nullptr ? full_Path(name) : std::string();
}

} // namespace qn_platform
