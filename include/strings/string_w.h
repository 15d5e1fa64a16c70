#ifndef QNLIB_STRINGS_STRING_W_H
#define QNLIB_STRINGS_STRING_W_H

#include "foundation/typed_buffer.h"
#include "lib_platform.h"

#include <atomic>
#include <cstdarg>
#include <cstring>
#include <new>
#include <type_traits>

/// Text of 16-bit units, reference-counted and copied on write. Copying costs one atomic increment. The
/// twin of Lib_StringA with a block type of its own; what both have alike stands in the .inl
/// files beside this one. Interfaces pass text as Lib_String, which derives from this class.
class LIB_API Lib_StringW
{
    using Lib_Char = wchar_t;
    using Lib_Self = Lib_StringW;

public:
    /// Empty, without an allocation.
    Lib_StringW() noexcept { init(); }

    /// Shares the source's block. A locked source is copied up to its first NUL.
    Lib_StringW(const Lib_StringW& source) { init_Copy(source); }

    /// One unit, a NUL too.
    Lib_StringW(wchar_t ch) { init_Character(ch); }

    /// The text up to its NUL; null and empty texts allocate nothing.
    Lib_StringW(const wchar_t* pText) { init_Text(pText); }

    /// 8-bit text in the system's ANSI code page. Empty when the conversion fails.
    Lib_StringW(const char* pText);

    virtual ~Lib_StringW() { Flush(); }

    /// Shares the source's block unless one of the two is locked or the source is on the shared empty
    /// block: then the source's Get_Length() units are copied, into the present block if they fit.
    const Lib_StringW& operator=(const Lib_StringW& source)
    {
        assign(source);
        return *this;
    }

    /// Takes a text, which may lie in this string's own block unless that is shared with other threads; null
    /// empties.
    const Lib_StringW& operator=(const wchar_t* pText)
    {
        assign(pText);
        return *this;
    }

    /// Takes one unit, a NUL too.
    const Lib_StringW& operator=(wchar_t ch)
    {
        assign(ch);
        return *this;
    }

    /// Append a string's Get_Length() units, a text up to its NUL, or one unit. What is appended may lie in
    /// this string's own block; null appends nothing.
    const Lib_StringW& operator+=(const Lib_StringW& text)
    {
        concat_In_Place(text.Get_Length(), text.m_pChars);
        return *this;
    }
    const Lib_StringW& operator+=(const wchar_t* pText)
    {
        concat_In_Place(safe_Strlen(pText), pText);
        return *this;
    }
    const Lib_StringW& operator+=(wchar_t ch)
    {
        concat_Character_In_Place(ch);
        return *this;
    }

    /// A copy of the text in a buffer of its own, ended with a NUL: Get_Size() is 2 bytes for each unit up
    /// to the first NUL, and 2. An empty string gives an empty buffer, and so does a failed allocation.
    LibT_Buffer<wchar_t> Get() const;

    /// The text in the ANSI code page, ended with a NUL: one byte for each unit up to the first NUL, and 1.
    /// An empty string gives an empty buffer; so do a failed allocation, a failed conversion and one that
    /// needs more bytes than that.
    LibT_Buffer<char> GetA() const;

    /// The text itself, valid until the string changes; null for an empty string.
    const wchar_t* GetW() const noexcept { return Is_Empty() ? nullptr : m_pChars; }
    virtual operator const wchar_t*() const { return GetW(); }

    /// Orders unit by unit as unsigned values: -1, 0 or 1, with one exception: an empty string comes after
    /// every other. Null counts as empty.
    virtual int Compare(const wchar_t* pText) const;

#include "strings/string_core.inl"

#include "strings/string_operations.inl"

#include "strings/string_comparison.inl"

#include "strings/string_concatenation.inl"

protected:
#include "strings/string_building_blocks.inl"

    /// Gives a block back to the allocator.
    void free_Data(Data* pBlock) noexcept;
};

#endif
