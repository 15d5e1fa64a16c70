#include "platform/text/runtime_locale.h"

#include "lib_platform.h"
#include "platform/c_locale_text.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <utility>

#include <langinfo.h>
#include <wctype.h>

namespace qn_platform
{

namespace
{

wchar_t g_C_Name[] = L"C";
constinit const Runtime_Locale g_C_Locale{nullptr, L'.', g_C_Name, nullptr, {}, {}};

constexpr Locale_Texts g_C_Texts{
    "C",
    L".",
    {L"Sunday", L"Monday", L"Tuesday", L"Wednesday", L"Thursday", L"Friday", L"Saturday"},
    {L"Sun", L"Mon", L"Tue", L"Wed", L"Thu", L"Fri", L"Sat"},
    {L"January", L"February", L"March", L"April", L"May", L"June", L"July", L"August", L"September",
     L"October", L"November", L"December"},
    {L"Jan", L"Feb", L"Mar", L"Apr", L"May", L"Jun", L"Jul", L"Aug", L"Sep", L"Oct", L"Nov", L"Dec"},
    {L"January", L"February", L"March", L"April", L"May", L"June", L"July", L"August", L"September",
     L"October", L"November", L"December"},
    {L"Jan", L"Feb", L"Mar", L"Apr", L"May", L"Jun", L"Jul", L"Aug", L"Sep", L"Oct", L"Nov", L"Dec"},
    {L"AM", L"PM"},
    L"MM/dd/yy",
    L"EEEE, MMMM dd, y",
    L"HH:mm:ss"};

/// Guards the list of locales that were asked for so far, newest first. It grows by one for each name, and
/// nothing is taken out of it.
constinit std::mutex g_Locales_Mutex;
constinit const Runtime_Locale* g_pLocales = &g_C_Locale;

/// LC_ALL as the platform numbers it; <locale.h> has a number of its own.
constexpr int PLATFORM_LC_ALL = 0;
constexpr std::size_t LONGEST_NAME = 255;

struct Category
{
    const char* m_pName;
    int m_nMask;
};

/// What the runtime's locale consists of.
constexpr std::array<Category, 4> CATEGORIES{{{"LC_COLLATE", LC_COLLATE_MASK},
                                              {"LC_CTYPE", LC_CTYPE_MASK},
                                              {"LC_NUMERIC", LC_NUMERIC_MASK},
                                              {"LC_TIME", LC_TIME_MASK}}};

/// Where the categories stand that are asked for one by one. The texts of dates don't come from the host.
constexpr std::size_t COLLATION = 0;
constexpr std::size_t CASE = 1;
constexpr std::size_t NUMBERS = 2;
constexpr std::size_t TIME = 3;

using Category_Names = std::array<std::string, CATEGORIES.size()>;

bool is_C_Name(const std::string& name) { return name == "C" || name == "POSIX"; }

/// "C" with whatever encoding, which changes nothing in dates.
bool writes_Dates_As_C(const std::string& name) { return is_C_Name(name) || name.compare(0, 2, "C.") == 0; }

bool speaks_Utf8(locale_t host) { return std::strcmp(nl_langinfo_l(CODESET, host), "UTF-8") == 0; }

/// The name's UTF-8 variant: "de_DE@euro" and "de_DE.ISO-8859-15@euro" give "de_DE.UTF-8@euro".
std::string get_Utf8_Name(const std::string& name)
{
    const std::size_t modifier = std::min(name.find('@'), name.size());
    const std::size_t codeset = std::min(name.find('.'), modifier);
    return name.substr(0, codeset) + ".UTF-8" + name.substr(modifier);
}

/// Puts one category of a host locale into `base`, and gives base up for the result. Null, with base
/// untouched, when the host has no such locale with UTF-8.
locale_t add_Category(const Category& category, const std::string& name, locale_t base)
{
    if (is_C_Name(name))
        return newlocale(category.m_nMask, "C", base);
    const locale_t probe = newlocale(LC_ALL_MASK, name.c_str(), nullptr);
    if (probe == nullptr)
        return nullptr;
    const bool utf8 = speaks_Utf8(probe);
    freelocale(probe);
    return newlocale(category.m_nMask, utf8 ? name.c_str() : get_Utf8_Name(name).c_str(), base);
}

bool is_Known(const Category& category, const std::string& name)
{
    if (category.m_nMask == LC_TIME_MASK)
        return writes_Dates_As_C(name) || Find_Texts_By_Host_Name(name.c_str()) != nullptr;
    const locale_t locale = add_Category(category, name, nullptr);
    if (locale != nullptr)
        freelocale(locale);
    return locale != nullptr;
}

/// The host locale of the names on the ground of "C.UTF-8", so that it speaks UTF-8 whichever category comes
/// from "C". Null when a name is unknown.
locale_t open_Host(const Category_Names& names)
{
    locale_t locale = newlocale(LC_ALL_MASK, "C.UTF-8", nullptr);
    for (std::size_t index = 0; locale != nullptr && index < TIME; ++index)
    {
        if (is_C_Name(names[index]))
            continue;
        const locale_t next = add_Category(CATEGORIES[index], names[index], locale);
        if (next == nullptr)
            freelocale(locale);
        locale = next;
    }
    return locale;
}

std::string get_Environment(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

/// The user's name for a category by the environment; "C" where that says nothing.
std::string get_User_Name(const Category& category)
{
    for (const char* variable : {"LC_ALL", category.m_pName, "LANG"})
    {
        const std::string name = get_Environment(variable);
        if (!name.empty())
            return name;
    }
    return "C";
}

/// The user's names, with "C" for those that the host lacks. The answer is whether it lacks none.
bool get_User_Names(Category_Names& names)
{
    bool all = true;
    for (std::size_t index = 0; index < CATEGORIES.size(); ++index)
    {
        std::string name = get_User_Name(CATEGORIES[index]);
        const bool known =
            is_C_Name(name) || (name.size() <= LONGEST_NAME && is_Known(CATEGORIES[index], name));
        names[index] = known && !is_C_Name(name) ? std::move(name) : "C";
        all = all && known;
    }
    return all;
}

/// One name for the whole: the common one, or each category with its own.
std::string join_Names(const Category_Names& names)
{
    if (std::all_of(names.begin(), names.end(), is_C_Name))
        return "C";
    if (std::all_of(names.begin(), names.end(), [&](const std::string& name) { return name == names[0]; }))
        return names[0];
    std::string joined;
    for (std::size_t index = 0; index < CATEGORIES.size(); ++index)
        joined += std::string(index == 0 ? "" : ";") + CATEGORIES[index].m_pName + "=" + names[index];
    return joined;
}

bool has_Name(const Runtime_Locale& locale, const wchar_t* name)
{
    const wchar_t* own = locale.m_pName;
    for (; *own != 0 && *own == *name; ++own)
        ++name;
    return *own == *name;
}

const Runtime_Locale* find_Locale(const wchar_t* name)
{
    const Runtime_Locale* locale = g_pLocales;
    while (locale != nullptr && !has_Name(*locale, name))
        locale = locale->m_pNext;
    return locale;
}

/// A copy of a name, for the life of the process.
template <class Target, class Source>
std::unique_ptr<Target[]> copy_Name(const Source* name, std::size_t length)
{
    auto text = std::make_unique<Target[]>(length + 1);
    for (std::size_t index = 0; index < length; ++index)
        text[index] = static_cast<Target>(name[index]);
    return text;
}

wchar_t get_Decimal_Point(locale_t host)
{
    wchar_t unit = L'.';
    const char* point = nl_langinfo_l(RADIXCHAR, host);
    MultiByteToWideChar(CP_UTF8, 0, point, static_cast<int>(std::strlen(point)), &unit, 1);
    return unit;
}

/// The byte of Windows-1252 for a unit, or `byte` when there is none.
char to_Byte(wchar_t unit, char byte)
{
    BOOL lost = FALSE;
    char result = byte;
    const int written = WideCharToMultiByte(CP_ACP, 0, &unit, 1, &result, 1, nullptr, &lost);
    return written == 1 && !lost ? result : byte;
}

void fill_Byte_Tables(Runtime_Locale& locale)
{
    for (int value = 0; value < 256; ++value)
    {
        const char byte = static_cast<char>(value);
        wchar_t unit = 0;
        MultiByteToWideChar(CP_ACP, 0, &byte, 1, &unit, 1);
        locale.m_Lower_Bytes[value] = to_Byte(locale.Lower(unit), byte);
        locale.m_Upper_Bytes[value] = to_Byte(locale.Upper(unit), byte);
    }
}

std::unique_ptr<Runtime_Locale> open_Locale(const Category_Names& names)
{
    auto locale = std::make_unique<Runtime_Locale>();
    std::unique_ptr<char[]> time_name;
    if (!writes_Dates_As_C(names[TIME]))
        time_name = copy_Name<char>(names[TIME].data(), names[TIME].size());
    locale->m_Host = open_Host(names);
    if (locale->m_Host == nullptr)
        return nullptr;
    locale->m_cDecimal_Point = get_Decimal_Point(locale->m_Host);
    locale->m_bC_Collation = is_C_Name(names[COLLATION]);
    locale->m_bC_Case = is_C_Name(names[CASE]);
    locale->m_pTime_Name = time_name.release();
    fill_Byte_Tables(*locale);
    return locale;
}

/// Puts a locale on the list, for the life of the process.
const Runtime_Locale* keep_Locale(std::unique_ptr<Runtime_Locale> locale, std::unique_ptr<wchar_t[]> name)
{
    if (locale == nullptr)
        return nullptr;
    locale->m_pName = name.release();
    locale->m_pNext = g_pLocales;
    g_pLocales = locale.get();
    return locale.release();
}

/// `name` in 8 bits; false when no host locale can have it.
bool get_Host_Name(const wchar_t* name, std::string& host_name)
{
    for (; *name != 0; ++name)
    {
        if (*name <= ' ' || *name >= 0x7F || host_name.size() == 4 * LONGEST_NAME)
            return false;
        host_name += static_cast<char>(*name);
    }
    return true;
}

const Runtime_Locale* get_Named_Locale(const Category_Names& names)
{
    const std::string joined = join_Names(names);
    auto text = copy_Name<wchar_t>(joined.data(), joined.size());
    const Runtime_Locale* locale = find_Locale(text.get());
    return locale != nullptr ? locale : keep_Locale(open_Locale(names), std::move(text));
}

const Runtime_Locale* get_Host_Locale(const wchar_t* name)
{
    std::string host_name;
    if (!get_Host_Name(name, host_name))
        return nullptr;
    if (is_C_Name(host_name))
        return &g_C_Locale;
    Category_Names names;
    names.fill(host_name);
    return get_Named_Locale(names);
}

/// All that the environment says of locales.
std::string get_Environment_Texts()
{
    std::string texts = get_Environment("LC_ALL") + '\n' + get_Environment("LANG");
    for (const Category& category : CATEGORIES)
        texts += '\n' + get_Environment(category.m_pName);
    return texts;
}

/// The user's locale, which is looked for anew when the environment has changed, or had named something that
/// could not be had: that may have been for want of memory.
const Runtime_Locale* get_User_Locale()
{
    struct Found
    {
        std::string m_strEnvironment;
        const Runtime_Locale* m_pLocale;
    };
    static constinit Found* last = nullptr; // for the life of the process

    std::string environment = get_Environment_Texts();
    if (last != nullptr && last->m_strEnvironment == environment)
        return last->m_pLocale;
    Category_Names names;
    const bool all = get_User_Names(names);
    const Runtime_Locale* locale = get_Named_Locale(names);
    if (all && locale != nullptr)
    {
        if (last == nullptr)
            last = new Found{};
        *last = {std::move(environment), locale};
    }
    return locale;
}

/// A name of the platform's runtime: "German_Germany.1252".
bool is_Platform_Name(const wchar_t* name, std::size_t& length)
{
    bool country = false;
    bool code_page = false;
    for (length = 0; name[length] != 0; ++length)
    {
        if (length == LONGEST_NAME)
            return false;
        country = country || name[length] == L'_';
        code_page = code_page || (country && name[length] == L'.');
    }
    return code_page;
}

/// Dates and the decimal point are the locale's own; case and order come from the host if it has the locale,
/// otherwise letters have a case as Unicode tells and their order is that of the units.
const Runtime_Locale* get_Platform_Locale(const wchar_t* name)
{
    std::size_t length = 0;
    const Locale_Texts* texts = is_Platform_Name(name, length) ? Find_Texts_By_Platform_Name(name) : nullptr;
    if (texts == nullptr)
        return nullptr;
    const std::string host_name = std::string(texts->m_pHost_Name) + ".UTF-8";
    Category_Names names{"C", "C.UTF-8", "C", "C"};
    for (const std::size_t index : {COLLATION, CASE, NUMBERS})
    {
        if (is_Known(CATEGORIES[index], host_name))
            names[index] = host_name;
    }
    auto text = copy_Name<wchar_t>(name, length);
    auto locale = open_Locale(names);
    if (locale != nullptr)
    {
        locale->m_cDecimal_Point = texts->m_pDecimal_Point[0];
        locale->m_pTexts.store(texts, std::memory_order_relaxed);
    }
    return keep_Locale(std::move(locale), std::move(text));
}

const Runtime_Locale* get_Locale(const wchar_t* name)
{
    if (*name == 0)
        return get_User_Locale();
    const Runtime_Locale* locale = find_Locale(name);
    if (locale == nullptr)
        locale = get_Host_Locale(name);
    return locale != nullptr ? locale : get_Platform_Locale(name);
}

const Runtime_Locale* set_Locale(const wchar_t* name)
{
    const std::lock_guard lock(g_Locales_Mutex);
    const Runtime_Locale* locale = get_Locale(name);
    if (locale != nullptr)
        g_pRuntime_Locale.store(locale, std::memory_order_release);
    return locale;
}

wchar_t fold_Unit(wchar_t unit, wint_t (*fold)(wint_t, locale_t), locale_t host)
{
    const wint_t folded = fold(unit, host);
    return folded <= 0xFFFF ? static_cast<wchar_t>(folded) : unit;
}

} // namespace

constinit std::atomic<const Runtime_Locale*> g_pRuntime_Locale{&g_C_Locale};

wchar_t Runtime_Locale::Lower(wchar_t unit) const
{
    return m_bC_Case ? qn_runtime::Swap_Case<wchar_t, 'A'>(unit) : fold_Unit(unit, towlower_l, m_Host);
}

wchar_t Runtime_Locale::Upper(wchar_t unit) const
{
    return m_bC_Case ? qn_runtime::Swap_Case<wchar_t, 'a'>(unit) : fold_Unit(unit, towupper_l, m_Host);
}

const Locale_Texts* Runtime_Locale::Get_Texts() const
{
    const Locale_Texts* texts = m_pTexts.load(std::memory_order_acquire);
    if (texts != nullptr)
        return texts;
    texts = m_pTime_Name == nullptr ? &g_C_Texts : Find_Texts_By_Host_Name(m_pTime_Name);
    m_pTexts.store(texts, std::memory_order_release);
    return texts;
}

wchar_t* _wsetlocale(int category, const wchar_t* name)
{
    if (category != LC_ALL && category != PLATFORM_LC_ALL)
        return nullptr;
    if (name == nullptr)
        return Get_Runtime_Locale().m_pName;
    try
    {
        const Runtime_Locale* locale = set_Locale(name);
        return locale == nullptr ? nullptr : locale->m_pName;
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

} // namespace qn_platform
