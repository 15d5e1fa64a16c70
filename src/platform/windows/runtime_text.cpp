#include "platform/runtime_text.h"

#include "lib_platform.h"
#include "platform/c_locale_text.h"

#include <climits>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

// The runtime of Windows follows the locale that _wsetlocale set. While that is "C" the results are the
// library's own, since runtimes differ in what they answer beyond the sign and in how they fold units
// above 127.

namespace qn_runtime
{

namespace
{

bool is_C(int category)
{
    const char* name = setlocale(category, nullptr);
    return name != nullptr && name[0] == 'C' && name[1] == 0;
}

/// The runtime answers a text that it cannot compare by a value of its own, with no order in it.
template <class Char>
int collated(int order, const Char* left, const Char* right)
{
    constexpr int FAILED = INT_MAX;
    return order == FAILED ? Compare_C(left, right) : order;
}

} // namespace

int Compare_No_Case(const char* left, const char* right)
{
    return is_C(LC_CTYPE) ? Compare_C_No_Case(left, right) : _stricmp(left, right);
}

int Compare_No_Case(const wchar_t* left, const wchar_t* right)
{
    return is_C(LC_CTYPE) ? Compare_C_No_Case(left, right) : _wcsicmp(left, right);
}

int Collate(const char* left, const char* right)
{
    return is_C(LC_COLLATE) ? Compare_C(left, right) : collated(strcoll(left, right), left, right);
}

int Collate(const wchar_t* left, const wchar_t* right)
{
    return is_C(LC_COLLATE) ? Compare_C(left, right) : collated(wcscoll(left, right), left, right);
}

int Collate_No_Case(const char* left, const char* right)
{
    return is_C(LC_COLLATE) ? Compare_C_No_Case(left, right) : collated(_stricoll(left, right), left, right);
}

int Collate_No_Case(const wchar_t* left, const wchar_t* right)
{
    return is_C(LC_COLLATE) ? Compare_C_No_Case(left, right) : collated(_wcsicoll(left, right), left, right);
}

void Make_Lower(char* text, std::size_t length)
{
    if (is_C(LC_CTYPE))
        Change_C_Case<char, 'A'>(text, length);
    else
        _strlwr(text);
}

void Make_Lower(wchar_t* text, std::size_t length)
{
    if (is_C(LC_CTYPE))
        Change_C_Case<wchar_t, 'A'>(text, length);
    else
        _wcslwr(text);
}

void Make_Upper(char* text, std::size_t length)
{
    if (is_C(LC_CTYPE))
        Change_C_Case<char, 'a'>(text, length);
    else
        _strupr(text);
}

void Make_Upper(wchar_t* text, std::size_t length)
{
    if (is_C(LC_CTYPE))
        Change_C_Case<wchar_t, 'a'>(text, length);
    else
        _wcsupr(text);
}

int Parse_Int(const wchar_t* text, int base)
{
    if (base < 0 || base == 1 || base > 36)
        return 0;
    return static_cast<int>(wcstol(text, nullptr, base));
}

double Parse_Double(const char* text) { return atof(text); }

bool May_Take_Argument(wchar_t conversion, bool int64)
{
    return int64 || (conversion != 0 && wcschr(L"aAhIjlqtwzZFLN*.0123456789", conversion) != nullptr);
}

void Write_Standard_Output(const wchar_t* text, std::size_t length)
{
    _lock_file(stdout); // the text stays whole beside those of other threads
    for (; length != 0; ++text, --length)
        fputwc(*text, stdout);
    _unlock_file(stdout);
}

} // namespace qn_runtime
