#include "services/lib_guid.h"

#include <cstring>

static_assert(sizeof(_GUID) == 16);

Lib_Guid::Lib_Guid() { Create_New(); }

Lib_Guid::Lib_Guid(const _GUID& Source) : m_Guid(Source) {}

Lib_Guid::Lib_Guid(const Lib_Guid& Source) = default;

Lib_Guid::Lib_Guid(const wchar_t* pText) { static_cast<void>(CLSIDFromString(pText, &m_Guid)); }

Lib_Guid::~Lib_Guid() = default;

Lib_Guid& Lib_Guid::operator=(const _GUID& Source)
{
    m_Guid = Source;
    return *this;
}

Lib_Guid& Lib_Guid::operator=(const Lib_Guid& Source) = default;

Lib_Guid::operator _GUID&() { return m_Guid; }

bool Lib_Guid::operator==(const Lib_Guid& Other) const
{
    return std::memcmp(&m_Guid, &Other.m_Guid, sizeof m_Guid) == 0;
}

bool Lib_Guid::operator!=(const Lib_Guid& Other) const { return !(*this == Other); }

bool Lib_Guid::operator<(const Lib_Guid& Other) const
{
    return std::memcmp(&Other.m_Guid, &m_Guid, sizeof m_Guid) < 0;
}

bool Lib_Guid::operator>(const Lib_Guid& Other) const { return Other < *this; }

void Lib_Guid::Create_New() { static_cast<void>(CoCreateGuid(&m_Guid)); }

Lib_String Lib_Guid::format(const wchar_t* pFormat) const
{
    const auto Number = [](auto Value) { return static_cast<unsigned int>(Value); };
    const unsigned char* const p = m_Guid.Data4;
    Lib_String strText;
    strText.Format(pFormat, Number(m_Guid.Data1), Number(m_Guid.Data2), Number(m_Guid.Data3), Number(p[0]),
                   Number(p[1]), Number(p[2]), Number(p[3]), Number(p[4]), Number(p[5]), Number(p[6]),
                   Number(p[7]));
    return strText;
}

Lib_String Lib_Guid::Get_Text_Registry_Format() const
{
    return format(L"{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}");
}

Lib_String Lib_Guid::Get_Text_Static_Const_Format() const
{
    return format(L"{ 0x%x, 0x%x, 0x%x, { 0x%x, 0x%x, 0x%x, 0x%x, 0x%x, 0x%x, 0x%x, 0x%x } }");
}
