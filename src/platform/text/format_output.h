#ifndef QNLIB_SRC_PLATFORM_TEXT_FORMAT_OUTPUT_H
#define QNLIB_SRC_PLATFORM_TEXT_FORMAT_OUTPUT_H

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>

namespace qn_platform
{

/// A character of the other width: bytes are zero-extended, a unit that has no byte becomes '?'.
template <class Char, class Source>
constexpr Char To_Width(Source character)
{
    if constexpr (std::is_same_v<Char, Source>)
        return character;
    else if constexpr (sizeof(Char) > sizeof(Source))
        return static_cast<Char>(static_cast<unsigned char>(character));
    else
        return static_cast<Char>(character < 256 ? character : static_cast<Source>('?'));
}

/// The target of a formatter: takes characters up to its room and remembers whether some had to be cut. It
/// does not end the text; whoever makes it keeps room for the NUL.
template <class Char>
class Bounded_Output
{
public:
    Bounded_Output(Char* target, std::size_t room) : m_pNext(target), m_pEnd(target + room) {}

    Char* Get_Next() const { return m_pNext; }
    std::size_t Get_Room() const { return static_cast<std::size_t>(m_pEnd - m_pNext); }
    bool Is_Cut() const { return m_bCut; }

    void Put(Char character)
    {
        if (m_pNext == m_pEnd)
            m_bCut = true;
        else
            *m_pNext++ = character;
    }

    void Fill(Char character, long long count)
    {
        if (count > 0)
            m_pNext = std::fill_n(m_pNext, clamp(static_cast<unsigned long long>(count)), character);
    }

    template <class Source>
    void Copy(const Source* text, std::size_t length)
    {
        const std::size_t fitting = clamp(length);
        if constexpr (sizeof(Source) == sizeof(Char))
        {
            if (fitting != 0)
                std::memcpy(m_pNext, text, fitting * sizeof(Char));
        }
        else
        {
            for (std::size_t index = 0; index < fitting; ++index)
                m_pNext[index] = To_Width<Char>(text[index]);
        }
        m_pNext += fitting;
    }

    /// For a writer that stored `length` characters at Get_Next() itself, having asked for the room.
    void Advance(std::size_t length) { m_pNext += length; }

private:
    std::size_t clamp(unsigned long long wanted)
    {
        const std::size_t room = Get_Room();
        if (wanted <= room)
            return static_cast<std::size_t>(wanted);
        m_bCut = true;
        return room;
    }

    Char* m_pNext;
    Char* m_pEnd;
    bool m_bCut = false;
};

} // namespace qn_platform

#endif
