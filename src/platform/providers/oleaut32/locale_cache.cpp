#include "platform/providers/oleaut32/locale_cache.h"

#include "platform/providers/oleaut32/icu_error.h"

#include <unicode/uloc.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>

namespace qn_oleaut32
{

namespace
{

constexpr int LONGEST_ID = 200;

using qn_platform::LOCALE_INVARIANT;
using qn_platform::LOCALE_NEUTRAL;
using qn_platform::LOCALE_SYSTEM_DEFAULT;
using qn_platform::LOCALE_USER_DEFAULT;

struct Entry
{
    LCID m_Locale;
    const Locale_Record* m_pRecord; ///< null for an unknown identifier
    const Entry* m_pNext;
};

/// Entries are only added, under the mutex, and never go.
constinit std::array<std::atomic<const Entry*>, 256> g_Buckets{};
constinit std::mutex g_Mutex;

std::atomic<const Entry*>& get_Bucket(LCID locale)
{
    return g_Buckets[(locale ^ locale >> 8) % g_Buckets.size()];
}

const Entry* find_Entry(LCID locale)
{
    const Entry* entry = get_Bucket(locale).load(std::memory_order_acquire);
    while (entry != nullptr && entry->m_Locale != locale)
        entry = entry->m_pNext;
    return entry;
}

bool is_Default(LCID locale)
{
    constexpr LCID CUSTOM_DEFAULT = 0xC00;      // the user's, if it has no identifier
    constexpr LCID CUSTOM_UNSPECIFIED = 0x1000; // any that has none
    return locale == LOCALE_NEUTRAL || locale == LOCALE_USER_DEFAULT || locale == LOCALE_SYSTEM_DEFAULT ||
           locale == CUSTOM_DEFAULT || locale == CUSTOM_UNSPECIFIED;
}

/// Second identifiers of a locale, of which ICU tells the first: Dari without a country, Scottish Gaelic.
bool is_Alias(LCID locale) { return locale == 0x008C || locale == 0x043C; }

std::string maximize(const std::string& id)
{
    char full[LONGEST_ID] = "";
    UErrorCode error = U_ZERO_ERROR;
    uloc_addLikelySubtags(id.c_str(), full, LONGEST_ID, &error);
    return Is_Good(error) ? full : id;
}

std::string get_Country(const std::string& id)
{
    char country[LONGEST_ID] = "";
    UErrorCode error = U_ZERO_ERROR;
    uloc_getCountry(id.c_str(), country, LONGEST_ID, &error);
    return Is_Good(error) ? country : "";
}

/// A locale of no country is that of the language's most likely one. "__" stands before a variant then, "@"
/// before keywords.
std::string complete(const std::string& id)
{
    if (!get_Country(id).empty())
        return id;
    const std::string country = get_Country(maximize(id));
    if (country.empty())
        return id;
    const std::size_t end = std::min(id.find('@'), id.size());
    const std::size_t variant = id.find("__");
    return variant < end ? id.substr(0, variant + 1) + country + id.substr(variant + 1)
                         : id.substr(0, end) + "_" + country + id.substr(end);
}

/// ICU's identifier for one of the platform; empty for one that it doesn't map to a locale with data. ICU
/// answers the language for a country that it doesn't know.
std::string get_Id(LCID locale)
{
    char id[LONGEST_ID] = "";
    UErrorCode error = U_ZERO_ERROR;
    uloc_getLocaleForLCID(locale, id, LONGEST_ID, &error);
    const bool known = Is_Good(error) && (uloc_getLCID(id) == locale || is_Alias(locale));
    return known && Has_Data(id) ? complete(id) : std::string();
}

/// The user's, by the environment; a program of the "C" locale or of one without data writes as en_US.
std::string get_Default_Id()
{
    const std::string id = uloc_getDefault();
    const bool plain = id.empty() || id == "root" || id.find("POSIX") != std::string::npos;
    return plain || !Has_Data(id) ? "en_US" : complete(id);
}

std::string find_Id(LCID locale)
{
    if (locale == LOCALE_INVARIANT)
        return "en_US";
    return locale == LOCALE_USER_DEFAULT ? get_Default_Id() : get_Id(locale);
}

/// Under the mutex. What ICU knows and yet refuses is not kept: it may have been short of something.
const Locale_Record* make_Entry(LCID locale)
{
    const std::string id = find_Id(locale);
    std::unique_ptr<Locale_Record> made;
    if (!id.empty())
        made = locale == LOCALE_INVARIANT ? Make_Invariant_Record() : Make_Record(id);
    if (!id.empty() && made == nullptr)
        return nullptr;
    std::atomic<const Entry*>& bucket = get_Bucket(locale);
    bucket.store(new Entry{locale, made.get(), bucket.load(std::memory_order_relaxed)},
                 std::memory_order_release);
    return made.release();
}

std::u16string join(const Locale_Names& names)
{
    std::u16string name = names.m_strLanguage;
    if (!names.m_strCountry.empty())
        name += u"_" + names.m_strCountry;
    return name + u"." + names.m_strCode_Page;
}

bool is_Same(const std::u16string& left, const wchar_t* right)
{
    std::size_t index = 0;
    while (index < left.size() && static_cast<char16_t>(right[index]) == left[index])
        ++index;
    return index == left.size() && right[index] == 0;
}

/// Whether `name` goes on with `part`, which is passed over.
bool skip_Part(const wchar_t*& name, const wchar_t* part)
{
    for (; *part != 0 && *name == *part; ++part)
        ++name;
    return *part == 0;
}

bool has_Name(const Locale_Record& record, const wchar_t* name)
{
    const bool country = *record.m_pCountry != 0;
    return skip_Part(name, record.m_pLanguage) && (!country || skip_Part(name, L"_")) &&
           skip_Part(name, record.m_pCountry) && skip_Part(name, L".") &&
           skip_Part(name, record.m_pCode_Page) && *name == 0;
}

/// Among the records that there are. Who names a locale has mostly asked for the parts of the name before.
const Locale_Record* find_Made(const wchar_t* name)
{
    for (const std::atomic<const Entry*>& bucket : g_Buckets)
    {
        const Entry* entry = bucket.load(std::memory_order_acquire);
        while (entry != nullptr && !(entry->m_pRecord != nullptr && has_Name(*entry->m_pRecord, name)))
            entry = entry->m_pNext;
        if (entry != nullptr)
            return entry->m_pRecord;
    }
    return nullptr;
}

/// Whether two identifiers have one script and country, those being filled in that are left out.
bool is_Same_Locale(const std::string& left, const std::string& right)
{
    return maximize(left) == maximize(right);
}

} // namespace

const Locale_Record* Find_Locale(LCID locale)
{
    constexpr LCID KNOWN_BITS = 0x000FFFFF; // language, and sort order, which doesn't matter here
    if ((locale & ~KNOWN_BITS) != 0)
        return nullptr;
    locale &= 0xFFFF;
    if (is_Default(locale))
        locale = LOCALE_USER_DEFAULT;
    const Entry* entry = find_Entry(locale);
    if (entry != nullptr)
        return entry->m_pRecord;
    const std::lock_guard lock(g_Mutex);
    entry = find_Entry(locale);
    return entry != nullptr ? entry->m_pRecord : make_Entry(locale);
}

const Locale_Record* Find_Locale_By_Platform_Name(const wchar_t* name)
{
    if (is_Same(u"Invariant Language_Invariant Country.1252", name))
        return Find_Locale(LOCALE_INVARIANT);
    const Locale_Record* made = find_Made(name);
    if (made != nullptr)
        return made;
    for (int index = 0; index < uloc_countAvailable(); ++index)
    {
        const char* id = uloc_getAvailable(index);
        const LCID locale = uloc_getLCID(id);
        if (locale != 0 && is_Same(join(Get_Names(id)), name))
            return Find_Locale(locale);
    }
    // The user's own may be one that has no identifier.
    return is_Same(join(Get_Names(get_Default_Id())), name) ? Find_Locale(LOCALE_USER_DEFAULT) : nullptr;
}

const Locale_Record* Find_Locale_By_Host_Name(const char* name)
{
    std::string plain(name);
    const std::size_t modifier = std::min(plain.find('@'), plain.size());
    const std::size_t codeset = std::min(plain.find('.'), modifier);
    plain.erase(codeset, modifier - codeset);
    char id[LONGEST_ID] = "";
    UErrorCode error = U_ZERO_ERROR;
    uloc_canonicalize(plain.c_str(), id, LONGEST_ID, &error);
    const LCID locale = Is_Good(error) ? uloc_getLCID(id) : 0;
    const std::string known = locale != 0 ? get_Id(locale) : std::string();
    return !known.empty() && is_Same_Locale(known, id) ? Find_Locale(locale) : nullptr;
}

} // namespace qn_oleaut32
