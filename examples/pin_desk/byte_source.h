#ifndef PIN_DESK_BYTE_SOURCE_H
#define PIN_DESK_BYTE_SOURCE_H

#include <cstddef>

/// Where lines come from. One thread at a time uses it.
class Byte_Source
{
public:
    /// Waits for bytes and takes as many as there are, at most nRoom. 0 at the end, and when nothing can be
    /// read any more.
    virtual std::size_t Read(char* pBytes, std::size_t nRoom) = 0;

    /// Whether that 0 was a failure and not the end.
    virtual bool Has_Failed() const = 0;

protected:
    Byte_Source() = default;
    Byte_Source(const Byte_Source&) = default;
    Byte_Source& operator=(const Byte_Source&) = default;
    virtual ~Byte_Source() = default;
};

#endif
