#include "foundation/lib_result.h"

#include "kernel/lib_library.h"
#include "lib_platform.h"

namespace
{

constexpr unsigned int PLATFORM_SOURCE = 1;
constexpr unsigned int MODULE_SOURCE = 2;

/// A text that FormatMessageW allocated.
struct Message_Buffer
{
    wchar_t* m_pText = nullptr;

    Message_Buffer() = default;
    Message_Buffer(const Message_Buffer&) = delete;
    Message_Buffer& operator=(const Message_Buffer&) = delete;
    ~Message_Buffer() { LocalFree(m_pText); }
};

Lib_String get_Message(DWORD dwFrom, HINSTANCE hModule, unsigned int nCode, unsigned int nLanguage)
{
    Message_Buffer message;
    FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | dwFrom, hModule, nCode, nLanguage,
                   reinterpret_cast<wchar_t*>(&message.m_pText), 0, nullptr);
    return message.m_pText;
}

} // namespace

Lib_Result::Lib_Result(unsigned int nCode, unsigned int nSource) noexcept
    : m_dwResult_Source(nSource), m_dwResult_Code(nCode)
{
}

Lib_Result::~Lib_Result() = default;

Lib_Result& Lib_Result::operator=(const Lib_Result& source)
{
    if (this != &source)
    {
        m_strError_Info = source.m_strError_Info;
        m_dwResult_Source = source.m_dwResult_Source;
        m_dwResult_Code = source.m_dwResult_Code;
        m_dwAdditional_Info = source.m_dwAdditional_Info;
    }
    return *this;
}

bool Lib_Result::operator==(const Lib_Result& other) const noexcept
{
    return m_dwResult_Source == other.m_dwResult_Source && m_dwResult_Code == other.m_dwResult_Code;
}

void Lib_Result::Get_Result(unsigned int& nCode, unsigned int& nSource) const noexcept
{
    nCode = m_dwResult_Code;
    nSource = m_dwResult_Source;
}

void Lib_Result::Set_Result(unsigned int nCode, unsigned int nSource) noexcept
{
    m_dwResult_Code = nCode;
    m_dwResult_Source = nSource;
}

Lib_String Lib_Result::Get_Result_Text(unsigned int nLanguage) const
{
    if (m_dwResult_Source == PLATFORM_SOURCE)
    {
        return get_Message(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, m_dwResult_Code, nLanguage);
    }
    if (m_dwResult_Source == MODULE_SOURCE)
    {
        const Lib_Library module(L"qnErr.dll");
        return get_Message(FORMAT_MESSAGE_FROM_HMODULE, module, m_dwResult_Code, nLanguage);
    }
    return Lib_String();
}
