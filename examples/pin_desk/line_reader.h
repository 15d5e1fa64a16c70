#ifndef PIN_DESK_LINE_READER_H
#define PIN_DESK_LINE_READER_H

#include "byte_source.h"

#include <lib_foundation.h>
#include <lib_strings.h>
#include <vector>

/// Reads UTF-8 lines from a source one at a time, however many there are. The source stays the caller's;
/// nothing may have been read from it. Lines hold PINs, so a few are read ahead, and wiped when handed out.
class Line_Reader
{
public:
    enum class State
    {
        text,
        malformed, ///< not UTF-8, too long, or with a NUL in it
        end,
        failed ///< the source couldn't be read
    };

    static constexpr std::size_t LONGEST_LINE = 1000; ///< bytes

    explicit Line_Reader(Byte_Source& Source);
    Line_Reader(const Line_Reader&) = delete;
    Line_Reader& operator=(const Line_Reader&) = delete;

    /// Wipes what was read and not handed out.
    ~Line_Reader();

    /// The next line without the white space at its ends; for a malformed line what is wrong with it.
    State Read_Line(Lib_String& strLine);

    /// The number of the line that was read last, from 1.
    unsigned int Get_Line_Number() const { return m_nLine; }

    /// Whether the line that was read last had a line feed at its end: the last one may lack it, and may be
    /// a part of what was to be a line.
    bool Is_Whole() const { return m_bWhole; }

private:
    bool fill();
    bool collect(Lib_Buffer& Line, bool& bTooLong);
    State convert(Lib_Buffer& Line, Lib_String& strLine) const;

    Byte_Source& m_Source;
    unsigned int m_nLine = 0;
    bool m_bWhole = false;
    std::vector<char> m_Block;
    std::size_t m_nNext = 0;
    std::size_t m_nEnd = 0;
};

#endif
