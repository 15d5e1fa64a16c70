#include "platform/memory.h"
#include "platform/messages.h"
#include "platform/modules.h"
#include "platform/modules/message_inserts.h"
#include "platform/modules/message_output.h"
#include "platform/modules/message_tables.h"

#include <algorithm>
#include <new>

namespace qn_platform
{

namespace
{

constexpr DWORD SOURCES =
    FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_FROM_SYSTEM;
constexpr DWORD KNOWN_FLAGS = SOURCES | FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS |
                              FORMAT_MESSAGE_ARGUMENT_ARRAY | FORMAT_MESSAGE_MAX_WIDTH_MASK;

bool is_Digit(wchar_t unit) { return unit >= L'0' && unit <= L'9'; }

/// Walks through a message's text and writes what it means.
class Message_Reader
{
public:
    Message_Reader(LPCWSTR text, Message_Output& output, Message_Arguments* arguments)
        : m_pText(text), m_Output(output), m_pArguments(arguments)
    {
    }

    /// ERROR_SUCCESS, or what is wrong.
    DWORD Read()
    {
        while (*m_pText != L'\0' && m_nError == ERROR_SUCCESS && !m_bEnd)
        {
            read_Unit(*m_pText++);
            if (m_Output.Is_Too_Long())
            {
                m_nError = ERROR_MORE_DATA;
            }
        }
        return m_nError;
    }

private:
    bool ignores_Inserts() const { return m_pArguments == nullptr; }

    void read_Unit(wchar_t unit)
    {
        if (unit == L'%')
        {
            read_Escape();
        }
        else if (unit == L'\r' || unit == L'\n')
        {
            m_pText += unit == L'\r' && *m_pText == L'\n' ? 1 : 0;
            m_Output.Break_Source_Line();
        }
        else
        {
            m_Output.Put(unit);
        }
    }

    void read_Escape()
    {
        const wchar_t unit = *m_pText;
        switch (unit)
        {
        case L'\0':
            m_nError = ERROR_INVALID_PARAMETER;
            return;
        case L'0':
            m_bEnd = true;
            break;
        case L'n':
            m_Output.Break_Line();
            break;
        case L'r':
            m_Output.Put_Fixed(L'\r');
            break;
        case L't':
            m_Output.Put_Fixed(L'\t');
            break;
        case L'b':
            m_Output.Put_Fixed(L' ');
            break;
        default:
            read_Other_Escape(unit);
            return;
        }
        ++m_pText;
    }

    void read_Other_Escape(wchar_t unit)
    {
        if (is_Digit(unit) && !ignores_Inserts())
        {
            read_Insert();
            return;
        }
        if (ignores_Inserts())
        {
            m_Output.Put_Fixed(L'%');
        }
        m_Output.Put_Fixed(unit);
        ++m_pText;
    }

    void read_Insert()
    {
        auto number = static_cast<unsigned int>(*m_pText++ - L'0');
        if (is_Digit(*m_pText))
        {
            number = 10 * number + static_cast<unsigned int>(*m_pText++ - L'0');
        }
        std::vector<wchar_t> format{L's'};
        if (!m_pArguments->Has_Any() || !read_Format(format))
        {
            m_nError = ERROR_INVALID_PARAMETER;
            return;
        }
        std::vector<wchar_t> text;
        m_nError = Print_Insert(*m_pArguments, number, format, text);
        for (std::size_t index = 0; index < text.size() && m_nError == ERROR_SUCCESS; ++index)
        {
            m_Output.Put(text[index]);
        }
    }

    /// What stands between two exclamation marks, if they follow. False if the second one is missing.
    bool read_Format(std::vector<wchar_t>& format)
    {
        if (*m_pText != L'!')
        {
            return true;
        }
        const LPCWSTR begin = m_pText + 1;
        LPCWSTR end = begin;
        while (*end != L'!' && *end != L'\0')
        {
            ++end;
        }
        format.assign(begin, end);
        m_pText = *end == L'!' ? end + 1 : end;
        return *end == L'!';
    }

    LPCWSTR m_pText;
    Message_Output& m_Output;
    Message_Arguments* m_pArguments; ///< null: inserts are passed through
    DWORD m_nError = ERROR_SUCCESS;
    bool m_bEnd = false;
};

Message_Text find_Text(DWORD flags, LPCVOID source, DWORD code, DWORD language)
{
    if ((flags & FORMAT_MESSAGE_FROM_STRING) != 0)
    {
        return {static_cast<LPCWSTR>(source), ERROR_INVALID_PARAMETER};
    }
    Message_Text found{nullptr, ERROR_SUCCESS};
    if ((flags & FORMAT_MESSAGE_FROM_HMODULE) != 0)
    {
        found = Find_Module_Message(static_cast<HMODULE>(const_cast<void*>(source)), code, language);
    }
    if (found.m_pText == nullptr && (flags & FORMAT_MESSAGE_FROM_SYSTEM) != 0)
    {
        found = Find_System_Message(code, language);
    }
    return found;
}

/// Copies the text with a NUL into the caller's buffer or into a new block.
DWORD hand_Out(const std::vector<wchar_t>& text, bool allocate, LPWSTR buffer, DWORD size)
{
    LPWSTR target = buffer;
    if (allocate)
    {
        const SIZE_T units = std::max<SIZE_T>(text.size() + 1, size);
        target = static_cast<LPWSTR>(LocalAlloc(LMEM_FIXED, units * sizeof(wchar_t)));
        if (target == nullptr)
        {
            return ERROR_NOT_ENOUGH_MEMORY;
        }
        *reinterpret_cast<LPWSTR*>(buffer) = target;
    }
    else if (text.size() >= size)
    {
        return ERROR_INSUFFICIENT_BUFFER;
    }
    *std::copy(text.begin(), text.end(), target) = L'\0';
    return ERROR_SUCCESS;
}

struct Message_Result
{
    DWORD m_nLength;
    DWORD m_nError;
};

Message_Result format_Text(DWORD flags, LPCWSTR text, LPWSTR buffer, DWORD size, std::va_list* arguments)
{
    Message_Arguments list(arguments, (flags & FORMAT_MESSAGE_ARGUMENT_ARRAY) != 0);
    Message_Output output(flags & FORMAT_MESSAGE_MAX_WIDTH_MASK);
    const bool ignore = (flags & FORMAT_MESSAGE_IGNORE_INSERTS) != 0;
    DWORD error = Message_Reader(text, output, ignore ? nullptr : &list).Read();
    const std::vector<wchar_t>& units = output.Get_Text();
    const bool allocate = (flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) != 0;
    if (error == ERROR_SUCCESS && (!allocate || !units.empty()))
    {
        error = hand_Out(units, allocate, buffer, size);
    }
    if (error == ERROR_SUCCESS && units.empty())
    {
        error = ERROR_NO_WORK_DONE;
    }
    return {error == ERROR_SUCCESS ? static_cast<DWORD>(units.size()) : 0, error};
}

} // namespace

DWORD FormatMessageW(DWORD flags, LPCVOID source, DWORD code, DWORD language, LPWSTR buffer, DWORD size,
                     std::va_list* arguments)
{
    if (buffer == nullptr || (flags & SOURCES) == 0 || (flags & ~KNOWN_FLAGS) != 0)
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if ((flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) != 0)
    {
        *reinterpret_cast<LPWSTR*>(buffer) = nullptr;
    }
    Message_Result result{0, ERROR_NOT_ENOUGH_MEMORY};
    try
    {
        const Message_Text found = find_Text(flags, source, code, language);
        result = found.m_pText != nullptr ? format_Text(flags, found.m_pText, buffer, size, arguments)
                                          : Message_Result{0, found.m_nError};
    }
    catch (const std::bad_alloc&)
    {
        result = {0, ERROR_NOT_ENOUGH_MEMORY};
    }
    if (result.m_nError != ERROR_SUCCESS)
    {
        SetLastError(result.m_nError);
    }
    return result.m_nLength;
}

} // namespace qn_platform
