#ifndef QNLIB_STRINGS_STRING_A_H
#define QNLIB_STRINGS_STRING_A_H

#include "foundation/typed_buffer.h"
#include "lib_platform.h"

#include <atomic>
#include <concepts>
#include <cstdarg>
#include <cstring>
#include <new>
#include <type_traits>

/// Text of 8-bit characters in the system's ANSI code page, reference-counted and copied on write. Copying
/// costs one atomic increment. The twin of Lib_StringW with a block type of its own; what both have alike
/// stands in the .inl files beside this one.
class LIB_API Lib_StringA
{
    using Lib_Char = char;
    using Lib_Self = Lib_StringA;

public:
    /// Empty, without an allocation.
    Lib_StringA() noexcept { init(); }

    /// Shares the source's block. A locked source is copied up to its first NUL.
    Lib_StringA(const Lib_StringA& source) { init_Copy(source); }

    /// One character, a NUL too.
    Lib_StringA(char ch) { init_Character(ch); }

    /// The text up to its NUL; null and empty texts allocate nothing.
    Lib_StringA(const char* pText) { init_Text(pText); }

    /// 16-bit text in the ANSI code page; `?` for what that lacks. Empty when the conversion fails.
    Lib_StringA(const wchar_t* pText);

    virtual ~Lib_StringA() { Flush(); }

    /// Shares the source's block unless one of the two is locked or the source is on the shared empty
    /// block: then the source's Get_Length() characters are copied, into the present block if they fit.
    const Lib_StringA& operator=(const Lib_StringA& source)
    {
        assign(source);
        return *this;
    }

    /// Takes a text, which may lie in this string's own block unless that is shared with other threads; null
    /// empties.
    const Lib_StringA& operator=(const char* pText)
    {
        assign(pText);
        return *this;
    }

    /// Takes one character, a NUL too.
    const Lib_StringA& operator=(char ch)
    {
        assign(ch);
        return *this;
    }

    /// Appends a text, which may lie in this string's own block; null appends nothing.
    const Lib_StringA& operator+=(const char* pText)
    {
        concat_In_Place(safe_Strlen(pText), pText);
        return *this;
    }

    /// The text as 16-bit text in a buffer of its own, ended with a NUL: Get_Size() is 2 bytes for each
    /// character up to the first NUL, and 2. An empty string gives an empty buffer; so do a failed
    /// allocation and a failed conversion. GetW's buffer has twice that size, zeros behind the text.
    LibT_Buffer<wchar_t> Get() const;
    LibT_Buffer<wchar_t> GetW() const;
    virtual operator LibT_Buffer<wchar_t>() const;

    /// The text itself, valid until the string changes; null for an empty string.
    const char* GetA() const noexcept { return Is_Empty() ? nullptr : m_pChars; }
    virtual operator const char*() const { return GetA(); }

    /// Orders unit by unit as unsigned values: -1, 0 or 1, with one exception: an empty string comes after
    /// every other. Null counts as empty.
    virtual int Compare(const char* pText) const;

    /// The character at an index, as Get_At.
    char operator[](unsigned long long nIndex) const noexcept { return Get_At(nIndex); }
    template <std::integral Index>
    char operator[](Index nIndex) const noexcept // beats the subscript of the cast for every index type
    {
        return Get_At(static_cast<unsigned long long>(nIndex));
    }

    /// Convert the text up to the first NUL in place between the ANSI and the OEM code page; detach.
    void ANSI_To_OEM();
    void OEM_To_ANSI();

#include "strings/string_core.inl"

#include "strings/string_operations.inl"

#include "strings/string_comparison.inl"

#include "strings/string_concatenation.inl"

protected:
#include "strings/string_building_blocks.inl"

    /// Gives a block back to the allocator.
    static void free_Data(Data* pBlock) noexcept;
};

#endif
