#ifndef PIN_DESK_REQUEST_H
#define PIN_DESK_REQUEST_H

#include "clock.h"

#include <lib_foundation.h>
#include <lib_protected.h>
#include <lib_strings.h>

enum class Operation
{
    store,
    issue,
    check,
    change,
    unblock,
    remove,
    show,
    list,
    leave
};

/// One request of a client. Fields that its operation doesn't take are empty.
///
///   op        takes                         does
///   store     card owner pin [badge until]  enters a card into the table; it expires at `until`
///   issue     series owner pin [badge until] the same under the next free name of a series
///   check     card pin                      checks a PIN
///   change    card pin new                  changes a PIN
///   unblock   card                          gives a blocked card its tries back
///   remove    card pin                      takes a card out of the table
///   show      card                          tells the owner, the badge and the tries left
///   list      [owner]                       counts and names the cards, or those of owners whose name
///                                           holds a text
///   leave                                   ends the client's stay; the table goes with the last client
///
/// Each takes [session] and [client], too: the numbers of the client's session and of the client in it.
struct Request
{
    Operation m_Operation = Operation::list;
    std::optional<unsigned int> m_Session; ///< none means the desk's own
    unsigned int m_nClient = 0;            ///< tells the clients of a session apart
    Lib_String m_strCard;
    Lib_String m_strSeries;
    Lib_String m_strOwner;
    Lib_Protected_String m_Pin;
    Lib_Protected_String m_New_Pin;
    Lib_Buffer m_Badge;
    Lib_String m_strUntil;         ///< as the client wrote it
    std::optional<double> m_Until; ///< system time; none without m_strUntil
};

/// Reads a line such as `op=store card=0001 owner=Anna Ivanova pin=3441`. False for a malformed one, with
/// what is wrong in strFault; the fault never quotes a value, since that could be a PIN. Throws
/// std::runtime_error if PINs cannot be enciphered.
bool Read_Request(const Lib_String& strLine, const Clock& clock, Request& Result, Lib_String& strFault);

const wchar_t* Get_Operation_Name(Operation operation);

#endif
