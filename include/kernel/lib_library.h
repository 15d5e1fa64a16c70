#ifndef QNLIB_KERNEL_LIB_LIBRARY_H
#define QNLIB_KERNEL_LIB_LIBRARY_H

#include "lib_api.h"
#include "lib_platform.h"

/// Owns one loaded module: loads it, finds its entry points and frees it when it goes. Failures show as a
/// null module or a null entry point, with the reason in the platform's last error.
///
/// One object is for one thread at a time; the module behind it is for all.
class LIB_API Lib_Library
{
public:
    /// Nothing loaded.
    Lib_Library() noexcept = default;

    /// Loads a module by its file name, as LoadLibraryW finds it. A failed load leaves the object empty.
    explicit Lib_Library(const wchar_t* pName);

    /// Frees the module.
    ~Lib_Library();

    /// Two objects would free one load.
    Lib_Library(const Lib_Library&) = delete;

    /// Takes over the bare module value: the module held before is not freed, and no load is added, so source
    /// and target now stand for one load. One of the two has to give it up before it goes, by having an empty
    /// object assigned to it.
    Lib_Library& operator=(const Lib_Library& source) noexcept;

    /// Frees the module held before, then loads another one, which is also the result. When that fails the
    /// object is empty and the result null: the module held before is gone all the same.
    HINSTANCE Load(const wchar_t* pName);

    /// Frees the module if there is one.
    void Free();

    /// The module, null for none. It stays this object's.
    operator HINSTANCE() const noexcept { return m_hModule; }

    /// The address of an entry point, null for none. The platform knows entry points by 8-bit names: the name
    /// is converted by the system's ANSI code page. A null name, and one that can't be converted, is asked
    /// for as a null name; an empty object asks for the null module. std::bad_alloc may leave for long names.
    void* Get_Proc_Address(const wchar_t* pName) const;

private:
    HINSTANCE m_hModule = nullptr;
};

#endif
