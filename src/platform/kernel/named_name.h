#ifndef QNLIB_SRC_PLATFORM_KERNEL_NAMED_NAME_H
#define QNLIB_SRC_PLATFORM_KERNEL_NAMED_NAME_H

#include "platform/types.h"

#include <cstddef>

// The names of objects and the files that they stand for.

namespace qn_platform::kernel
{

/// Most units of an object's name, its prefix included.
inline constexpr std::size_t MOST_NAME_UNITS = 260;

inline constexpr char NAMED_FOLDER[] = "/dev/shm";

struct Object_Name
{
    const wchar_t* text;                  // the name behind its prefix, the caller's
    std::size_t length;                   // of that text, in units
    unsigned int hash;                    // of the path, for the process's list
    char path[sizeof NAMED_FOLDER + 256]; // of the file
};

/// What `name` stands for in this process. The answer is 0, or why it is no name: 3 for a backslash behind
/// the prefix, 123 for a prefix with nothing behind it, 206 for one that is too long, or why the session of
/// the process can't be read just now (4, 5, 8).
///
/// The file name tells the process numbers' name space (numbers of threads in state words mean nothing
/// beyond it), "g" for the machine or the number of the session, and the text: letters, digits and a few
/// signs as they are, other units in hexadecimal. A text that is too long for a file name is told by a hash
/// of 128 bits; the page in the file has the whole name for whoever meets another one there.
DWORD Parse_Object_Name(LPCWSTR name, Object_Name& parsed);

/// What the file names of all objects that this process could open begin with.
struct File_Prefix
{
    char text[40];
};
File_Prefix Get_File_Prefix();

} // namespace qn_platform::kernel

#endif
