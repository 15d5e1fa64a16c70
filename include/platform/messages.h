#ifndef QNLIB_PLATFORM_MESSAGES_H
#define QNLIB_PLATFORM_MESSAGES_H

#include "lib_api.h"
#include "platform/types.h"

#include <cstdarg>

// The texts of messages: of the platform's codes, of a module's own message table, or of a text at hand, with
// their inserts filled in. Included through lib_platform.h only.

namespace qn_platform
{

inline constexpr DWORD FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x100;
inline constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x200;
inline constexpr DWORD FORMAT_MESSAGE_FROM_STRING = 0x400;
inline constexpr DWORD FORMAT_MESSAGE_FROM_HMODULE = 0x800;
inline constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;
inline constexpr DWORD FORMAT_MESSAGE_ARGUMENT_ARRAY = 0x2000;
inline constexpr DWORD FORMAT_MESSAGE_MAX_WIDTH_MASK = 0xFF;

/// One text of a module's message table: a message in one language.
struct Lib_Message_Table_Entry
{
    DWORD code;
    DWORD language;
    LPCWSTR text;
};

/// Gives the module in whose sources it stands, once and outside of every namespace, its message table:
///     QN_MESSAGE_TABLE({1, 0x409, L"Card %1 is blocked.\r\n"}, {1, 0x407, L"Karte %1 ist gesperrt.\r\n"});
/// An executable must be linked with its symbols exported (-rdynamic) for its table to be found.
#define QN_MESSAGE_TABLE(...)                                                                                \
    extern "C"                                                                                               \
    {                                                                                                        \
        __attribute__((                                                                                      \
            visibility("default"))) extern const ::qn_platform::Lib_Message_Table_Entry qn_message_table[];  \
        const ::qn_platform::Lib_Message_Table_Entry qn_message_table[] = {__VA_ARGS__, {0, 0, nullptr}};    \
    }                                                                                                        \
    static_assert(true)

/// Makes the text of a message. Where it comes from:
///
/// | flag         | `source`                         | `code`, `language`                     |
/// |--------------|----------------------------------|----------------------------------------|
/// | FROM_STRING  | the text itself                  | ignored                                |
/// | FROM_HMODULE | a module, null the executable    | looked up in the module's table        |
/// | FROM_SYSTEM  | ignored                          | looked up in the table of the platform |
///
/// FROM_HMODULE with FROM_SYSTEM looks in the module first. Only the low 16 bits of `language` count, and
/// only that language will do, but for 0 and the two that mean the user's (0x400) and the system's (0x800):
/// then a text in 0, one in 0x409, or the first one of that code is taken. The table of the platform is in
/// 0x409; it answers 0x8007xxxx as it does xxxx.
///
/// In a text, %1 to %99 are inserts, whose arguments are strings, or are printed as a format between two
/// exclamation marks tells (%1!5d!; formats for floating-point numbers are refused; a `*` takes an argument
/// too, from the insert's own number on, and then the value follows). %n is a line break, %0 ends the text,
/// %r is a carriage return, %t a tab, %b a blank, and % in front of anything else (%%, "% ", %., %!) is that
/// itself. A line break of the text becomes "\r\n". With IGNORE_INSERTS only %0, %n, %r, %t and %b are
/// replaced; all else is passed through.
///
/// The low byte of `flags` is the width of a line: 0 leaves the lines alone; 255 turns the text's own line
/// breaks into blanks, so that only those by %n remain; other values also break lines at blanks, or in a
/// word that is longer, so that none has more units.
///
/// `arguments` are those of a caller's `...`, or with ARGUMENT_ARRAY a pointer to 64-bit values; null is fine
/// if there is no insert. With ALLOCATE_BUFFER `buffer` is the address of a pointer that receives a block of
/// at least `size` units, which ends with LocalFree, or null on failure. Otherwise it has `size` units.
///
/// The answer is the number of units without the NUL, or 0 on failure, which leaves a buffer of the caller's
/// alone: 317 when there is no message of that code, 1815 when the table has nothing in that language, 1812
/// when the handle is no module or has neither strings nor messages, 1813 when it has strings but no
/// messages, 122 when the buffer is too small, 234 when the text has more than 32,767 units, 87 for a text
/// that cannot be read or whose insert has no argument, for null pointers and unknown flags, 8 when memory is
/// short; 235 when the text is empty (then a buffer of the caller's is, too).
LIB_API DWORD FormatMessageW(DWORD flags, LPCVOID source, DWORD code, DWORD language, LPWSTR buffer,
                             DWORD size, std::va_list* arguments);

} // namespace qn_platform

#endif
