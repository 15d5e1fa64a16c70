#ifndef QNLIB_PROTECTED_PROTECTED_STRING_H
#define QNLIB_PROTECTED_PROTECTED_STRING_H

#include "protected/protected_buffer.h"
#include "strings/lib_string.h"

/// A text that stays enciphered for as long as it lies in the object: a plain one exists only when somebody
/// asks for it. It stores, replaces and hands back one string. What is enciphered is the text with its
/// terminator; an empty text has no image.
///
/// Failures are those of Lib_Protected_Buffer, which leave the object empty (as it was, if it should become a
/// copy of another one) or give an empty text; besides them std::bad_alloc can leave Get_String, which makes
/// a string. There is no comparison: compare what Get_String gives, which is empty when the text was and
/// after every failure; so refuse an empty entry before. Nothing is wiped. Several threads may read one
/// object; who changes it needs it alone.
class LIB_API Lib_Protected_String
{
public:
    Lib_Protected_String() noexcept = default;
    Lib_Protected_String(const Lib_Protected_String& Source) noexcept = default;

    /// Enciphers the text, which stays the caller's: an ordinary string that shares its block with others.
    Lib_Protected_String(const Lib_String& strText) noexcept;

    ~Lib_Protected_String() = default;

    Lib_Protected_String& operator=(const Lib_Protected_String& Source) noexcept = default;
    Lib_Protected_String& operator=(const Lib_String& strText) noexcept;

    /// The plain text, up to its first NUL.
    Lib_String Get_String() const;
    operator Lib_String() const { return Get_String(); }

private:
    Lib_Protected_Buffer m_Buffer;
};

#endif
