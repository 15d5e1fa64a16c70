#ifndef QNLIB_SRC_STRINGS_WIDTH_CONVERSION_H
#define QNLIB_SRC_STRINGS_WIDTH_CONVERSION_H

#include "foundation/typed_buffer.h"

#include <cstddef>
#include <memory>

// Text between the widths by the system's ANSI code page.

namespace width_conversion
{

/// A text converted for the time of a call: in place when short, else in a block from operator new.
template <class Char>
class Converted_Text
{
public:
    /// Null gives null, and so does a text that can't be converted.
    template <class Source>
    explicit Converted_Text(const Source* pText);
    Converted_Text(const Converted_Text&) = delete;
    Converted_Text& operator=(const Converted_Text&) = delete;

    const Char* Get_Text() const noexcept { return m_pText; }

private:
    Char* get_Room(std::size_t nCount);

    Char m_Local[256];
    std::unique_ptr<Char[]> m_pBlock;
    const Char* m_pText = nullptr;
};

/// 8-bit text as 16-bit text.
class Wide_Text : public Converted_Text<wchar_t>
{
public:
    explicit Wide_Text(const char* pText) : Converted_Text(pText) {}
};

/// 16-bit text as 8-bit text; `?` for what the code page lacks.
class Narrow_Text : public Converted_Text<char>
{
public:
    explicit Narrow_Text(const wchar_t* pText) : Converted_Text(pText) {}
};

/// A text in a buffer of nFactor * (length + 1) units, ended with a NUL. Null, exhausted memory and a failed
/// conversion give an empty buffer.
LibT_Buffer<wchar_t> To_Wide_Buffer(const char* pText, std::size_t nFactor);

/// A text in a buffer of length + 1 bytes, ended with a NUL. Null, exhausted memory, a failed conversion and
/// one that needs more bytes give an empty buffer.
LibT_Buffer<char> To_Narrow_Buffer(const wchar_t* pText);

} // namespace width_conversion

#endif
