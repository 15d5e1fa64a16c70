#ifndef PIN_DESK_LINE_READER_H
#define PIN_DESK_LINE_READER_H

#include <array>
#include <cstdio>
#include <lib_foundation.h>
#include <lib_strings.h>

/// Reads the lines of an open UTF-8 file one at a time, whatever the size of the file. The file stays the
/// caller's; nothing may have been read from it. What has been handed out is wiped: lines hold PINs.
class Line_Reader
{
public:
    enum class State
    {
        text,
        malformed, ///< not UTF-8, too long, or with a NUL in it
        end,
        failed ///< the file couldn't be read
    };

    static constexpr std::size_t LONGEST_LINE = 1000; ///< bytes

    explicit Line_Reader(std::FILE* pFile);

    /// The next line without the white space at its ends; for a malformed line what is wrong with it.
    State Read_Line(Lib_String& strLine);

    /// The number of the line that was read last, from 1.
    unsigned int Get_Line_Number() const { return m_nLine; }

private:
    bool fill();
    bool collect(Lib_Buffer& Line, bool& bTooLong);
    State convert(Lib_Buffer& Line, Lib_String& strLine) const;

    std::FILE* m_pFile;
    unsigned int m_nLine = 0;
    std::array<char, 65536> m_Block;
    std::size_t m_nNext = 0;
    std::size_t m_nEnd = 0;
};

#endif
