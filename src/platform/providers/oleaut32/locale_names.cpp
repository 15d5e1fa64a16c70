#include "platform/providers/oleaut32/icu_error.h"
#include "platform/providers/oleaut32/locale_record.h"

#include <unicode/uloc.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace qn_oleaut32
{

namespace
{

constexpr int LONGEST_ID = 200;
constexpr int LONGEST_NAME = 200;

using Get_Part = int32_t (*)(const char* id, char* part, int32_t capacity, UErrorCode* error);
using Get_Display = int32_t (*)(const char* id, const char* in, char16_t* name, int32_t capacity,
                                UErrorCode* error);

std::string get_Part(Get_Part get, const std::string& id)
{
    char part[LONGEST_ID] = "";
    UErrorCode error = U_ZERO_ERROR;
    get(id.c_str(), part, LONGEST_ID, &error);
    return Is_Good(error) && error != U_STRING_NOT_TERMINATED_WARNING ? part : "";
}

std::u16string get_English(Get_Display get, const std::string& id)
{
    char16_t name[LONGEST_NAME];
    UErrorCode error = U_ZERO_ERROR;
    const int length = get(id.c_str(), "en", name, LONGEST_NAME, &error);
    return Is_Good(error) && length <= LONGEST_NAME ? std::u16string(name, static_cast<std::size_t>(length))
                                                    : std::u16string();
}

std::string get_Script(const std::string& id)
{
    return get_Part(uloc_getScript, get_Part(uloc_addLikelySubtags, id));
}

/// What tells locales of one language and country apart.
std::u16string get_Script_Mark(const std::string& id, const std::string& language)
{
    const std::string script = get_Script(id);
    if (language == "zh")
        return script == "Hant" ? u" (Traditional)" : u" (Simplified)";
    const std::string plain = language + "_" + get_Part(uloc_getCountry, id);
    return script == get_Script(plain) ? std::u16string()
                                       : u" (" + get_English(uloc_getDisplayScript, id) + u")";
}

struct Code_Page
{
    std::string_view m_Key;
    const char16_t* m_pNumber;
};

/// Of languages in Latin script that Windows-1252 doesn't do for.
constexpr std::array<Code_Page, 20> CODE_PAGES_OF_LANGUAGES{{
    {"az", u"1254"},  {"bs", u"1250"}, {"cs", u"1250"}, {"et", u"1257"}, {"hr", u"1250"},
    {"hsb", u"1252"}, {"hu", u"1250"}, {"lt", u"1257"}, {"lv", u"1257"}, {"mt", u"0"},
    {"pl", u"1250"},  {"ro", u"1250"}, {"sk", u"1250"}, {"sl", u"1250"}, {"sq", u"1250"},
    {"sr", u"1250"},  {"tk", u"1250"}, {"tr", u"1254"}, {"uz", u"1254"}, {"vi", u"1258"},
}};

constexpr std::array<Code_Page, 10> CODE_PAGES_OF_SCRIPTS{{
    {"Arab", u"1256"},
    {"Cyrl", u"1251"},
    {"Grek", u"1253"},
    {"Hans", u"936"},
    {"Hant", u"950"},
    {"Hebr", u"1255"},
    {"Jpan", u"932"},
    {"Kore", u"949"},
    {"Latn", u"1252"},
    {"Thai", u"874"},
}};

template <std::size_t count>
const char16_t* find_Code_Page(const std::array<Code_Page, count>& pages, const std::string& key)
{
    const auto found =
        std::find_if(pages.begin(), pages.end(), [&](const Code_Page& page) { return page.m_Key == key; });
    return found != pages.end() ? found->m_pNumber : nullptr;
}

std::u16string get_Code_Page(const std::string& id, const std::string& language)
{
    const std::string script = get_Script(id);
    const char16_t* page = script == "Latn" ? find_Code_Page(CODE_PAGES_OF_LANGUAGES, language) : nullptr;
    if (page == nullptr)
        page = find_Code_Page(CODE_PAGES_OF_SCRIPTS, script);
    return page != nullptr ? page : u"0";
}

} // namespace

bool Has_Data(const std::string& id)
{
    const std::string language = get_Part(uloc_getLanguage, id);
    const std::string script = get_Script(id);
    const int count = uloc_countAvailable();
    for (int index = 0; index < count; ++index)
    {
        const std::string_view other = uloc_getAvailable(index);
        const bool same = other.substr(0, other.find('_')) == language;
        if (same && get_Script(std::string(other)) == script)
            return true;
    }
    return count == 0; // the list cannot be had; the data may be
}

Locale_Names Get_Names(const std::string& id)
{
    const std::string language = get_Part(uloc_getLanguage, id);
    return {get_English(uloc_getDisplayLanguage, id) + get_Script_Mark(id, language),
            get_English(uloc_getDisplayCountry, id), get_Code_Page(id, language)};
}

} // namespace qn_oleaut32
