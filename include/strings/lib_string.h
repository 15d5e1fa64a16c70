#ifndef QNLIB_STRINGS_LIB_STRING_H
#define QNLIB_STRINGS_LIB_STRING_H

#include "strings/string_w.h"

/// The string of every interface of the library: Lib_StringW with loading from a module's string table. It
/// has no field of its own, and one built from a Lib_StringW shares its block.
class LIB_API Lib_String : public Lib_StringW
{
    using Lib_Char = wchar_t;
    using Lib_Self = Lib_String;

public:
    Lib_String() noexcept = default;
    Lib_String(const Lib_String& source) : Lib_StringW(source) {}
    Lib_String(const Lib_StringW& source) : Lib_StringW(source) {}
    Lib_String(const wchar_t* pText) : Lib_StringW(pText) {}
    Lib_String(wchar_t ch) : Lib_StringW(ch) {}

    /// 8-bit text in the system's ANSI code page. Empty when the conversion fails.
    Lib_String(const char* pText) : Lib_StringW(pText) {}

    ~Lib_String() override = default;

    /// The assignments of Lib_StringW.
    Lib_String& operator=(const Lib_String& source)
    {
        assign(source);
        return *this;
    }
    Lib_String& operator=(const Lib_StringW& source)
    {
        assign(source);
        return *this;
    }
    Lib_String& operator=(const wchar_t* pText)
    {
        assign(pText);
        return *this;
    }
    Lib_String& operator=(const char* pText)
    {
        assign(Lib_StringW(pText));
        return *this;
    }
    Lib_String& operator=(wchar_t ch)
    {
        assign(ch);
        return *this;
    }

    /// Replaces the text by string `nId` of a module's string table, of any length; null means the
    /// process's executable. 1 for a text, 0 for a missing or empty one, which leaves this string empty.
    /// When std::bad_alloc leaves, the string has its old text or is empty.
    int Load_String(unsigned int nId, HINSTANCE hModule);

#include "strings/string_concatenation.inl"

    template <class Other>
    static constexpr bool st_Is_Other_StringW =
        std::is_base_of_v<Lib_StringW, Other> && !std::is_base_of_v<Lib_String, Other>;

    /// The same with a Lib_StringW, or what else derives from it, at one side. Templates, so that no other
    /// operand converts to them.
    template <class Other>
    requires st_Is_Other_StringW<Other>
    friend Lib_String operator+(const Lib_String& left, const Other& right)
    {
        Lib_String result;
        result.concat_Copy(left.Get_Length(), left.m_pChars, right.Get_Length(), right.GetW());
        return result;
    }
    template <class Other>
    requires st_Is_Other_StringW<Other>
    friend Lib_String operator+(const Other& left, const Lib_String& right)
    {
        Lib_String result;
        result.concat_Copy(left.Get_Length(), left.GetW(), right.Get_Length(), right.m_pChars);
        return result;
    }
};

#endif
