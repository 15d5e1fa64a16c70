#ifndef QNLIB_SRC_PLATFORM_MODULES_MESSAGE_OUTPUT_H
#define QNLIB_SRC_PLATFORM_MODULES_MESSAGE_OUTPUT_H

#include <cstddef>
#include <vector>

namespace qn_platform
{

/// The text of a message as it grows, in lines of a given width. Throws std::bad_alloc.
class Message_Output
{
public:
    static constexpr unsigned int UNLIMITED = 255;
    static constexpr std::size_t MOST_UNITS = 32767; ///< 64 KB with the NUL

    /// `width` as in the low byte of FormatMessageW's flags.
    explicit Message_Output(unsigned int width) : m_nWidth(width) {}

    /// A unit of the message or of an insert. Lines may end at a blank.
    void Put(wchar_t unit);
    /// A unit at which no line may end.
    void Put_Fixed(wchar_t unit);
    /// A line break that the message asks for (by %n).
    void Break_Line();
    /// A line break of the message's source.
    void Break_Source_Line();

    bool Is_Too_Long() const { return m_Text.size() > MOST_UNITS; }
    const std::vector<wchar_t>& Get_Text() const { return m_Text; }

private:
    bool is_Limited() const { return m_nWidth != 0 && m_nWidth != UNLIMITED; }
    void wrap_Line();

    static constexpr std::size_t NONE = static_cast<std::size_t>(-1);

    std::vector<wchar_t> m_Text;
    unsigned int m_nWidth;
    std::size_t m_nLine = 0;      ///< where the current line begins
    std::size_t m_nBlanks = NONE; ///< where its last run of blanks begins
    std::size_t m_nBehind = NONE; ///< and where that ends
};

} // namespace qn_platform

#endif
