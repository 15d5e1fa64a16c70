#include "strings/string_a.h"

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

using String = Lib_StringA;
using Char = char;

constexpr bool bEmpty_Finds_Empty = false;

void print_Bounded(char* pBuffer, std::size_t nSize, const char* pFormat, std::va_list arguments)
{
    _vsnprintf_s(pBuffer, std::min(nSize, Format_Estimate<Char>::Max_Capacity), _TRUNCATE, pFormat,
                 arguments);
}

} // namespace

#include "strings/string_blocks.inl"

#include "strings/string_search.inl"

#include "strings/string_edit.inl"

#include "strings/string_format.inl"

Lib_StringA::Lib_StringA(const wchar_t* pText)
{
    init();
    width_conversion::Narrow_Text narrow(pText);
    assign(narrow.Get_Text());
}

// The buffer's room is fixed by the text's length, of which a conversion to 16 bits never needs more.
LibT_Buffer<wchar_t> Lib_StringA::Get() const { return width_conversion::To_Wide_Buffer(GetA(), 1); }

LibT_Buffer<wchar_t> Lib_StringA::GetW() const { return width_conversion::To_Wide_Buffer(GetA(), 2); }

Lib_StringA::operator LibT_Buffer<wchar_t>() const { return Get(); }

void Lib_StringA::ANSI_To_OEM()
{
    copy_Before_Write();
    if (!Is_Empty())
        CharToOemA(m_pChars, m_pChars);
}

void Lib_StringA::OEM_To_ANSI()
{
    copy_Before_Write();
    if (!Is_Empty())
        OemToCharA(m_pChars, m_pChars);
}
