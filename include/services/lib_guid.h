#ifndef QNLIB_SERVICES_LIB_GUID_H
#define QNLIB_SERVICES_LIB_GUID_H

#include "lib_api.h"
#include "lib_platform.h"
#include "strings/lib_string.h"

/// A GUID as a value: drawn anew, read from text, written as text, compared. Named kernel objects get their
/// unique names from it. No operation reports a failure; if no GUID can be drawn, the value stays as it was
/// (null in a new object). On Linux that takes a sandbox without getrandom and without /dev/urandom.
class LIB_API Lib_Guid
{
public:
    /// A new GUID, not a null one.
    Lib_Guid();

    Lib_Guid(const _GUID& Source);
    Lib_Guid(const Lib_Guid& Source);

    /// Reads the form in braces; a null pointer gives the null GUID. Of text that is no GUID the value has
    /// what was read before the fault, and zeros behind it.
    Lib_Guid(const wchar_t* pText);

    virtual ~Lib_Guid();

    Lib_Guid& operator=(const _GUID& Source);
    Lib_Guid& operator=(const Lib_Guid& Source);

    /// The value itself: a change through it is a change of this object.
    operator _GUID&();

    bool operator==(const Lib_Guid& Other) const;
    bool operator!=(const Lib_Guid& Other) const;

    /// The descending order of the 16 bytes as they lie in memory: less is what has the greater bytes. This
    /// isn't the order of the texts.
    bool operator<(const Lib_Guid& Other) const;
    bool operator>(const Lib_Guid& Other) const;

    /// Draws a new GUID.
    void Create_New();

    /// "{01234567-89AB-CDEF-0123-456789ABCDEF}": always 38 characters, digits in upper case.
    Lib_String Get_Text_Registry_Format() const;

    /// "{ 0x1234567, 0x89ab, 0xcdef, { 0x1, 0x23, 0x45, 0x67, 0x89, 0xab, 0xcd, 0xef } }": the initialiser of
    /// a constant, without leading zeros.
    Lib_String Get_Text_Static_Const_Format() const;

private:
    Lib_String format(const wchar_t* pFormat) const;

    _GUID m_Guid{};
};

/// Compares with a plain value, on either side: without it, either operand could become what the other one
/// is.
inline bool operator==(const Lib_Guid& Left, const _GUID& Right) { return Left == Lib_Guid(Right); }

#endif
