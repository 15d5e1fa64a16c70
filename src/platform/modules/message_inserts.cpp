#include "platform/modules/message_inserts.h"

#include "platform/modules/message_output.h"
#include "platform/text.h"

#include <algorithm>
#include <string_view>

namespace qn_platform
{

namespace
{

/// _vsnwprintf_s for arguments given as such.
int print(std::vector<wchar_t>& text, const wchar_t* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    const int length = _vsnwprintf_s(text.data(), text.size(), _TRUNCATE, format, arguments);
    va_end(arguments);
    return length;
}

bool is_One_Of(wchar_t unit, std::string_view set)
{
    return unit < 0x80 && set.find(static_cast<char>(unit)) != std::string_view::npos;
}

/// A format is one conversion of a string, a character or an integer, and nothing behind it.
bool is_Format(const std::vector<wchar_t>& format)
{
    const auto conversion = std::find_if_not(
        format.begin(), format.end(),
        [](wchar_t unit) { return (unit >= L'0' && unit <= L'9') || is_One_Of(unit, "#+- .*hlwIjzt"); });
    return conversion != format.end() && conversion + 1 == format.end() &&
           is_One_Of(*conversion, "cCdiopsSuxX");
}

} // namespace

Message_Arguments::Message_Arguments(std::va_list* arguments, bool array)
{
    if (arguments == nullptr)
    {
        return;
    }
    if (array)
    {
        m_pArray = reinterpret_cast<const unsigned long long*>(arguments);
        return;
    }
    va_copy(m_List, *arguments);
    m_bList = true;
}

Message_Arguments::~Message_Arguments()
{
    if (m_bList)
    {
        va_end(m_List);
    }
}

unsigned long long Message_Arguments::Get(unsigned int number)
{
    if (m_pArray != nullptr)
    {
        return m_pArray[number - 1];
    }
    while (m_Read.size() < number)
    {
        m_Read.push_back({read_Next(), 0, false});
    }
    return m_Read[number - 1].m_nNumbered;
}

unsigned long long Message_Arguments::Get_Value(unsigned int number, unsigned int stars)
{
    if (m_pArray != nullptr || stars == 0)
    {
        return Get(number + stars);
    }
    const std::size_t last = number + stars - 1;
    Get(static_cast<unsigned int>(last));
    if (m_Read.size() > last && !m_Read[last - 1].m_bBehind)
    {
        return m_Read[last].m_nNumbered;
    }
    Read_Argument& star = m_Read[last - 1];
    if (!star.m_bBehind)
    {
        star.m_nBehind = read_Next();
        star.m_bBehind = true;
    }
    return star.m_nBehind;
}

DWORD Print_Insert(Message_Arguments& arguments, unsigned int number, const std::vector<wchar_t>& format,
                   std::vector<wchar_t>& text)
{
    const auto stars = static_cast<unsigned int>(std::count(format.begin(), format.end(), L'*'));
    if (stars > 2 || !is_Format(format))
    {
        return ERROR_INVALID_PARAMETER;
    }
    std::vector<wchar_t> whole{L'%'};
    whole.insert(whole.end(), format.begin(), format.end());
    whole.push_back(L'\0');
    const auto first = static_cast<int>(stars > 0 ? arguments.Get(number) : 0);
    const auto second = static_cast<int>(stars > 1 ? arguments.Get(number + 1) : 0);
    const unsigned long long value = arguments.Get_Value(number, stars);
    for (const std::size_t size : {std::size_t{256}, Message_Output::MOST_UNITS + 1})
    {
        text.resize(size);
        const int length = stars == 0   ? print(text, whole.data(), value)
                           : stars == 1 ? print(text, whole.data(), first, value)
                                        : print(text, whole.data(), first, second, value);
        if (length >= 0)
        {
            text.resize(static_cast<std::size_t>(length));
            return ERROR_SUCCESS;
        }
    }
    return ERROR_MORE_DATA;
}

} // namespace qn_platform
