#ifndef QNLIB_SRC_FOUNDATION_TRACE_TEXT_H
#define QNLIB_SRC_FOUNDATION_TRACE_TEXT_H

#include "foundation/trace.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <type_traits>

/// A text that a template is made for.
template <std::size_t N>
struct Trace_Literal
{
    consteval Trace_Literal(const wchar_t (&aText)[N]) { std::copy_n(aText, N, m_aText); }

    wchar_t m_aText[N]{};
};

/// The text of a trace point as the string that trace points take. It lies in a block of static data, locked,
/// so a copy gets a block of its own; a trace point then takes no memory, cannot fail, and costs next to
/// nothing on the way to where it is needed.
///
///     LIBT_PRINT_WARNING(Trace_Text<L"what happened">());
template <Trace_Literal TEXT>
class Trace_Text : public Lib_String
{
public:
    Trace_Text() noexcept { m_pChars = s_Block.m_Literal.m_aText; }
    Trace_Text(const Trace_Text&) = delete;
    Trace_Text& operator=(const Trace_Text&) = delete;
    ~Trace_Text() override { init(); }

private:
    static constexpr std::size_t LENGTH = std::size(TEXT.m_aText) - 1;

    struct Block
    {
        Data m_Header;
        std::remove_const_t<decltype(TEXT)> m_Literal;
    };
    static_assert(offsetof(Block, m_Literal) == sizeof(Data));

    static inline constinit Block s_Block{{-1, LENGTH, LENGTH}, TEXT};
};

#endif
