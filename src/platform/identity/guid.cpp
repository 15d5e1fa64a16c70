#include "platform/guid.h"

#include "platform/system_calls.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace qn_platform
{

namespace
{

/// Whether a call fills all of the bytes; up to 256 random ones come all at once.
template <class Call>
bool fills(std::size_t size, const Call& call)
{
    ssize_t count = 0;
    do
    {
        count = call();
    } while (count < 0 && errno == EINTR);
    return count == static_cast<ssize_t>(size);
}

bool read_Device(void* bytes, std::size_t size)
{
    const int file = system_calls.open_file("/dev/urandom", O_RDONLY | O_CLOEXEC);
    if (file < 0)
    {
        return false;
    }
    const bool filled = fills(size, [&] { return ::read(file, bytes, size); });
    ::close(file);
    return filled;
}

bool fill_With_Random(void* bytes, std::size_t size)
{
    return fills(size, [&] { return system_calls.get_random(bytes, size, 0); }) || read_Device(bytes, size);
}

/// Takes the text apart from left to right.
class Reader
{
public:
    explicit Reader(LPCWSTR text) : m_pText(text) {}

    bool Take(wchar_t unit)
    {
        const bool same = *m_pText == unit;
        m_pText += same ? 1 : 0;
        return same;
    }

    /// A number of as many digits as the field can hold.
    template <class Field>
    bool Take_Number(Field& field)
    {
        field = 0;
        for (std::size_t i = 0; i < 2 * sizeof field; ++i)
        {
            const int digit = take_Digit();
            if (digit < 0)
            {
                return false;
            }
            field = static_cast<Field>((field << 4) | static_cast<Field>(digit));
        }
        return true;
    }

    bool Take_Byte(BYTE& field)
    {
        BYTE value = 0;
        const bool taken = Take_Number(value);
        field = taken ? value : field;
        return taken;
    }

private:
    int take_Digit()
    {
        const wchar_t unit = *m_pText;
        int digit = -1;
        if (unit >= L'0' && unit <= L'9')
        {
            digit = unit - L'0';
        }
        else if ((unit | 0x20) >= L'a' && (unit | 0x20) <= L'f')
        {
            digit = (unit | 0x20) - L'a' + 10;
        }
        m_pText += digit >= 0 ? 1 : 0;
        return digit;
    }

    LPCWSTR m_pText;
};

bool read_Identifier(LPCWSTR text, CLSID& id)
{
    Reader reader(text);
    if (!reader.Take(L'{'))
    {
        id = CLSID{};
        return false;
    }
    if (!reader.Take_Number(id.Data1) || !reader.Take(L'-') || !reader.Take_Number(id.Data2) ||
        !reader.Take(L'-') || !reader.Take_Number(id.Data3) || !reader.Take(L'-'))
    {
        return false;
    }
    for (BYTE& field : id.Data4)
    {
        if (!reader.Take_Byte(field) || (&field == &id.Data4[1] && !reader.Take(L'-')))
        {
            return false;
        }
    }
    return reader.Take(L'}') && reader.Take(L'\0');
}

} // namespace

HRESULT CoCreateGuid(GUID* guid)
{
    if (guid == nullptr)
    {
        return E_INVALIDARG;
    }
    GUID drawn;
    if (!fill_With_Random(&drawn, sizeof drawn))
    {
        return E_FAIL;
    }
    drawn.Data3 = static_cast<WORD>((drawn.Data3 & 0x0FFF) | 0x4000);   // version 4: random
    drawn.Data4[0] = static_cast<BYTE>((drawn.Data4[0] & 0x3F) | 0x80); // the usual variant
    *guid = drawn;
    return S_OK;
}

HRESULT CLSIDFromString(LPCWSTR text, LPCLSID id)
{
    if (id == nullptr)
    {
        return E_INVALIDARG;
    }
    if (text == nullptr)
    {
        *id = CLSID{};
        return S_OK;
    }
    return read_Identifier(text, *id) ? S_OK : CO_E_CLASSSTRING;
}

} // namespace qn_platform
