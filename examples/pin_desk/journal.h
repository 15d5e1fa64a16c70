#ifndef PIN_DESK_JOURNAL_H
#define PIN_DESK_JOURNAL_H

#include "host.h"

#include <memory>

/// The file pin_desk.journal in the user's directory of cached PIN data, to which desks append. It grows
/// until the user removes it.
class Journal
{
public:
    /// Makes directory and file where they are missing, for the user alone. Throws std::runtime_error when
    /// there is no file to be had.
    Journal();

    /// Appends a line behind the time in UTC, on a line of its own whatever stands before it. It is in the
    /// file when the call comes back, in one piece (on Linux also among those of other desks). False when it
    /// could not be written.
    bool Add(const Lib_String& strLine);

private:
    std::unique_ptr<std::FILE, Close_File> m_pFile;
};

#endif
