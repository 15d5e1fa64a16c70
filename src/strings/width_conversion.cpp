#include "strings/width_conversion.h"

#include "lib_platform.h"
#include "strings/characters.h"

#include <iterator>

namespace
{

// The longest text, its NUL counted, that is converted: twice its bytes still fit the platform's int.
constexpr std::size_t Max_Units = 0x3FFFFFFF;

// The platform's two conversions under one name; -1 takes the text with its NUL.
int convert(const char* pText, wchar_t* pTarget, std::size_t nCapacity)
{
    return MultiByteToWideChar(CP_ACP, 0, pText, -1, pTarget, static_cast<int>(nCapacity));
}

int convert(const wchar_t* pText, char* pTarget, std::size_t nCapacity)
{
    return WideCharToMultiByte(CP_ACP, 0, pText, -1, pTarget, static_cast<int>(nCapacity), nullptr, nullptr);
}

// The text in a buffer with room for nCount characters of it and any number behind.
template <class Char, class Source>
LibT_Buffer<Char> to_Buffer(const Source* pText, std::size_t nFactor)
{
    if (pText == nullptr)
        return {};
    const std::size_t nUnits = characters::Length(pText) + 1;
    if (nUnits > Max_Units)
        return {};
    LibT_Buffer<Char> buffer(nFactor * nUnits);
    if (buffer.Get_Size() != 0 && convert(pText, static_cast<Char*>(buffer.Get_Ptr()), nUnits) == 0)
        buffer.Flush();
    return buffer;
}

} // namespace

template <class Char>
Char* width_conversion::Converted_Text<Char>::get_Room(std::size_t nCount)
{
    if (nCount <= std::size(m_Local))
        return m_Local;
    m_pBlock = std::make_unique_for_overwrite<Char[]>(nCount);
    return m_pBlock.get();
}

template <class Char>
template <class Source>
width_conversion::Converted_Text<Char>::Converted_Text(const Source* pText)
{
    if (pText == nullptr)
        return;
    const std::size_t nUnits = characters::Length(pText) + 1;
    if (nUnits > Max_Units)
        return;
    const std::size_t nCapacity = sizeof(Char) == 1 ? 2 * nUnits : nUnits;
    Char* pTarget = get_Room(nCapacity);
    if (convert(pText, pTarget, nCapacity) != 0)
        m_pText = pTarget;
}

template class width_conversion::Converted_Text<char>;
template class width_conversion::Converted_Text<wchar_t>;
template width_conversion::Converted_Text<char>::Converted_Text(const wchar_t*);
template width_conversion::Converted_Text<wchar_t>::Converted_Text(const char*);

LibT_Buffer<wchar_t> width_conversion::To_Wide_Buffer(const char* pText, std::size_t nFactor)
{
    return to_Buffer<wchar_t>(pText, nFactor);
}

LibT_Buffer<char> width_conversion::To_Narrow_Buffer(const wchar_t* pText)
{
    return to_Buffer<char>(pText, 1);
}
