#include "strings/string_w.h"

#include "platform/c_locale_text.h"
#include "platform/runtime_text.h"
#include "platform/white_space.h"
#include "strings/characters.h"
#include "strings/format_estimate.h"
#include "strings/scan.h"
#include "strings/width_conversion.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>

namespace
{

using String = Lib_StringW;
using Char = wchar_t;

constexpr bool bEmpty_Finds_Empty = true;

void print_Bounded(wchar_t* pBuffer, std::size_t nSize, const wchar_t* pFormat, std::va_list arguments)
{
    _vsnwprintf_s(pBuffer, std::min(nSize, Format_Estimate<Char>::Max_Capacity), _TRUNCATE, pFormat,
                  arguments);
}

} // namespace

#include "strings/string_blocks.inl"

#include "strings/string_search.inl"

#include "strings/string_edit.inl"

#include "strings/string_format.inl"

Lib_StringW::Lib_StringW(const char* pText)
{
    init();
    width_conversion::Wide_Text wide(pText);
    assign(wide.Get_Text());
}

LibT_Buffer<wchar_t> Lib_StringW::Get() const
{
    if (Is_Empty())
        return {};
    const std::size_t nLength = characters::Length(m_pChars);
    LibT_Buffer<wchar_t> buffer(nLength + 1);
    if (buffer.Get_Size() != 0)
        characters::Copy(static_cast<wchar_t*>(buffer.Get_Ptr()), m_pChars, nLength);
    return buffer;
}

LibT_Buffer<char> Lib_StringW::GetA() const { return width_conversion::To_Narrow_Buffer(GetW()); }
