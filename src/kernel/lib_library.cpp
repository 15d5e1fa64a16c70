#include "kernel/lib_library.h"

#include "strings/width_conversion.h"

Lib_Library::Lib_Library(const wchar_t* pName) : m_hModule(LoadLibraryW(pName)) {}

Lib_Library::~Lib_Library() { Free(); }

Lib_Library& Lib_Library::operator=(const Lib_Library& source) noexcept
{
    m_hModule = source.m_hModule;
    return *this;
}

HINSTANCE Lib_Library::Load(const wchar_t* pName)
{
    Free();
    m_hModule = LoadLibraryW(pName);
    return m_hModule;
}

void Lib_Library::Free()
{
    if (m_hModule != nullptr)
    {
        FreeLibrary(m_hModule);
        m_hModule = nullptr;
    }
}

void* Lib_Library::Get_Proc_Address(const wchar_t* pName) const
{
    const width_conversion::Narrow_Text name(pName);
    return reinterpret_cast<void*>(GetProcAddress(m_hModule, name.Get_Text()));
}
