#include "platform/modules/module_search.h"

#include "platform/files/native_path.h"
#include "platform/modules.h"
#include "platform/modules/module_address.h"
#include "platform/system_calls.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>
#include <string_view>

#include <link.h>

namespace qn_platform
{

namespace
{

std::string lower_Case(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; });
    return text;
}

/// Drops the end of a text if it is there, without regard to case.
bool drop_End(std::string& text, std::string_view end)
{
    const bool has = lower_Case(text).ends_with(end);
    text.resize(text.size() - (has ? end.size() : 0));
    return has;
}

std::string folder_Of(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

std::string file_Of(const std::string& path) { return path.substr(path.rfind('/') + 1); }

/// The folder of the module that this layer is a part of, its links followed: there its providers are.
std::string own_Folder()
{
    static const char INSIDE = 0;
    const std::string path = Module_Path(Module_Of(&INSIDE));
    const std::unique_ptr<char, void (*)(void*)> resolved(system_calls.real_path(path.c_str(), nullptr),
                                                          std::free);
    return folder_Of(resolved != nullptr ? resolved.get() : path);
}

/// The file names that a base can stand for, as given and in lower case.
std::vector<std::string> file_Names(const Module_Name& name)
{
    std::vector<std::string> files;
    for (const std::string& base : {name.m_Base, lower_Case(name.m_Base)})
    {
        if (name.m_bWhole)
        {
            files.push_back(base);
            continue;
        }
        files.push_back(base + ".so");
        files.push_back("lib" + base + ".so");
    }
    if (lower_Case(name.m_Base) == name.m_Base)
    {
        files.resize(files.size() / 2);
    }
    return files;
}

/// The name of a loaded module without "lib" and what comes from ".so" on.
std::string plain_Name(std::string file)
{
    file.resize(std::min(file.find(".so"), file.size()));
    return file.starts_with("lib") ? file.substr(3) : file;
}

bool is_Named(const std::string& path, const Module_Name& name)
{
    if (!name.m_Folder.empty() && folder_Of(path) != name.m_Folder)
    {
        return false;
    }
    const std::string file = lower_Case(file_Of(path));
    const std::string asked = lower_Case(name.m_Base);
    return file == asked || (!name.m_bWhole && (plain_Name(file) == asked || file == asked + ".so"));
}

/// An address in each loaded module. The loader holds a lock while it calls Add, so that asks it nothing.
struct Loaded_Addresses
{
    std::vector<const void*> m_Addresses;
    bool m_bFailed = false; ///< memory ran out

    static int Add(dl_phdr_info* info, std::size_t, void* context)
    {
        auto& loaded = *static_cast<Loaded_Addresses*>(context);
        const auto* const end = info->dlpi_phdr + info->dlpi_phnum;
        const auto* const segment =
            std::find_if(info->dlpi_phdr, end, [](const auto& header) { return header.p_type == PT_LOAD; });
        if (segment == end)
        {
            return 0;
        }
        try
        {
            // NOLINTNEXTLINE(performance-no-int-to-ptr)
            loaded.m_Addresses.push_back(reinterpret_cast<const void*>(info->dlpi_addr + segment->p_vaddr));
        }
        catch (const std::bad_alloc&)
        {
            loaded.m_bFailed = true;
        }
        return loaded.m_bFailed ? 1 : 0;
    }
};

} // namespace

Module_Name Read_Module_Name(LPCWSTR text)
{
    const std::string path = Native_Path(text);
    Module_Name name{folder_Of(path), file_Of(path), false};
    if (!drop_End(name.m_Base, ".dll"))
    {
        const std::string base = lower_Case(name.m_Base);
        name.m_bWhole =
            drop_End(name.m_Base, ".") || base.ends_with(".so") || base.find(".so.") != std::string::npos;
    }
    return name;
}

std::vector<std::string> Module_Candidates(const Module_Name& name)
{
    std::vector<std::string> candidates;
    const std::vector<std::string> files = file_Names(name);
    const auto add = [&](const std::string& folder)
    {
        for (const std::string& file : files)
        {
            candidates.push_back(folder + file);
        }
    };
    if (!name.m_Folder.empty())
    {
        add(name.m_Folder);
        return candidates;
    }
    const std::string own = own_Folder();
    for (const std::string& folder : {own + "qnLib/", own, folder_Of(Executable_Path())})
    {
        if (folder.starts_with('/')) // never from the current folder because a path is not known
        {
            add(folder);
        }
    }
    add("");
    return candidates;
}

HMODULE Find_Loaded_Module(const Module_Name& name)
{
    Loaded_Addresses loaded;
    dl_iterate_phdr(Loaded_Addresses::Add, &loaded);
    if (loaded.m_bFailed)
    {
        throw std::bad_alloc();
    }
    for (const void* const address : loaded.m_Addresses)
    {
        const HMODULE module = Module_Of(address);
        if (module != nullptr && is_Named(Module_Path(module), name))
        {
            return module;
        }
    }
    return nullptr;
}

} // namespace qn_platform
