#ifndef QNLIB_SRC_PLATFORM_MODULES_MESSAGE_INSERTS_H
#define QNLIB_SRC_PLATFORM_MODULES_MESSAGE_INSERTS_H

#include "platform/types.h"

#include <cstdarg>
#include <vector>

namespace qn_platform
{

/// The arguments of a message's inserts, by number. Those of a `...` can only be read one behind the other,
/// so they are kept once they were read. Throws std::bad_alloc.
class Message_Arguments
{
public:
    /// `arguments` is what FormatMessageW got: null, a list, or (`array`) 64-bit values.
    Message_Arguments(std::va_list* arguments, bool array);
    ~Message_Arguments();
    Message_Arguments(const Message_Arguments&) = delete;
    Message_Arguments& operator=(const Message_Arguments&) = delete;

    bool Has_Any() const { return m_bList || m_pArray != nullptr; }

    /// Argument `number`, counted from 1.
    unsigned long long Get(unsigned int number);

    /// The value behind the `stars` arguments from `number` on, which are an insert's width and precision. In
    /// a list it has no number of its own: the argument behind it bears the next one.
    unsigned long long Get_Value(unsigned int number, unsigned int stars);

private:
    struct Read_Argument
    {
        unsigned long long m_nNumbered;
        unsigned long long m_nBehind; ///< the value without a number that stood behind it
        bool m_bBehind;
    };

    unsigned long long read_Next() { return va_arg(m_List, unsigned long long); }

    std::vector<Read_Argument> m_Read;
    std::va_list m_List;
    const unsigned long long* m_pArray = nullptr;
    bool m_bList = false;
};

/// Prints insert `number` by a format, which is what follows the % of a printf conversion. Gives
/// ERROR_SUCCESS, or 87 for a format that is refused and 234 for a text that no message can hold; `text` has
/// no NUL. Throws std::bad_alloc.
DWORD Print_Insert(Message_Arguments& arguments, unsigned int number, const std::vector<wchar_t>& format,
                   std::vector<wchar_t>& text);

} // namespace qn_platform

#endif
