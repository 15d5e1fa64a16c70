#include "strings/string_lists.h"

#include "platform/white_space.h"
#include "strings/characters.h"
#include "strings/scan.h"

#include <algorithm>
#include <memory>
#include <new>
#include <stdexcept>
#include <vector>

Lib_Strings::~Lib_Strings() = default;
Lib_Strings_Table::~Lib_Strings_Table() = default;

namespace
{

/// A piece of the text that is cut up; it owns nothing.
struct Slice
{
    const wchar_t* m_pBegin;
    const wchar_t* m_pEnd;

    bool Is_Empty() const noexcept { return m_pBegin == m_pEnd; }

    Slice Trimmed() const noexcept
    {
        Slice trimmed = *this;
        while (!trimmed.Is_Empty() && qn_runtime::Is_White_Space(*trimmed.m_pBegin))
            ++trimmed.m_pBegin;
        while (!trimmed.Is_Empty() && qn_runtime::Is_White_Space(trimmed.m_pEnd[-1]))
            --trimmed.m_pEnd;
        return trimmed;
    }
};

/// A Lib_String that takes its text from a slice.
class Slice_String final : public Lib_String
{
public:
    explicit Slice_String(const Slice& slice)
    {
        const auto nLength = static_cast<unsigned long long>(slice.m_pEnd - slice.m_pBegin);
        alloc_Buffer(nLength);
        characters::Copy(m_pChars, slice.m_pBegin, nLength);
    }

    // Hands the block on, so that a growing list moves its strings.
    Slice_String(Slice_String&& other) noexcept
    {
        m_pChars = other.m_pChars;
        other.init();
    }
};

template <class Element>
void ensure_Room(const std::vector<Element>& elements)
{
    if (elements.size() == elements.max_size())
        throw std::length_error("vector<T> too long");
}

class Lib_Strings_Rel : public Lib_Strings
{
public:
    Lib_Strings_Rel() : m_pStrings(new std::vector<Slice_String>) {}
    ~Lib_Strings_Rel() override { delete m_pStrings; }
    Lib_Strings_Rel(const Lib_Strings_Rel&) = delete;
    Lib_Strings_Rel& operator=(const Lib_Strings_Rel&) = delete;

    const wchar_t* Get_At(unsigned long long nIndex) override
    {
        if (nIndex >= m_pStrings->size())
            throw std::out_of_range("invalid vector<T> subscript");
        return (*m_pStrings)[nIndex];
    }

    unsigned long long Get_Num_Elements() const override { return m_pStrings->size(); }

    void Add(const Slice& slice)
    {
        ensure_Room(*m_pStrings);
        m_pStrings->emplace_back(slice);
    }

private:
    std::vector<Slice_String>* m_pStrings;
};

class Lib_Strings_Table_Real : public Lib_Strings_Table
{
public:
    bool Get_Pair(unsigned long long nIndex, Lib_String& strKey, Lib_String& strValue) override
    {
        if (nIndex >= Get_Num_Elements())
            return false;
        strKey = m_Pairs[nIndex].m_strKey;
        strValue = m_Pairs[nIndex].m_strValue;
        return true;
    }

    bool Find_Value(const wchar_t* pKey, Lib_String& strValue) override
    {
        for (const Pair& pair : m_Pairs)
        {
            if (pair.m_strKey.CompareNoCase(pKey) != 0)
                continue;
            strValue = pair.m_strValue;
            return true;
        }
        return false;
    }

    unsigned long long Get_Num_Elements() const override { return m_Pairs.size(); }

    void Add(const Slice& key, const Slice& value)
    {
        ensure_Room(m_Pairs);
        m_Pairs.push_back({Slice_String(key.Trimmed()), Slice_String(value)});
    }

private:
    struct Pair
    {
        Lib_String m_strKey;
        Lib_String m_strValue;
    };

    std::vector<Pair> m_Pairs;
};

// The next `=`, or the end of the text.
const wchar_t* find_Equals(const wchar_t* pFrom, const wchar_t* pEnd) noexcept
{
    const std::size_t nFound = scan::Find_Character(pFrom, static_cast<std::size_t>(pEnd - pFrom), L'=');
    return nFound != scan::None ? pFrom + nFound : pEnd;
}

const wchar_t* last_Blank(const Slice& slice) noexcept
{
    for (const wchar_t* pAt = slice.m_pEnd; pAt != slice.m_pBegin;)
        if (*--pAt == L' ')
            return pAt;
    return nullptr;
}

// Key and value in progress are slices of the text: the key grows up to the first `=`, the value from one
// `=` to the next.
void read_Pairs(const wchar_t* pText, Lib_Strings_Table_Real& table)
{
    const wchar_t* pEnd = pText + characters::Length(pText);
    const wchar_t* pEquals = find_Equals(pText, pEnd);
    if (pEquals == pEnd)
        return;
    Slice key{pText, pEquals};
    Slice value{pEquals + 1, pEquals + 1};
    while ((value.m_pEnd = find_Equals(value.m_pBegin, pEnd)) != pEnd)
    {
        const wchar_t* pBlank = last_Blank(value);
        if (pBlank != nullptr && pBlank != value.m_pBegin)
        {
            table.Add(key, {value.m_pBegin, pBlank});
            key = Slice{pBlank + 1, value.m_pEnd}.Trimmed();
        }
        else
            key = value.Trimmed();
        value.m_pBegin = value.m_pEnd + 1;
    }
    if (!key.Is_Empty() && !value.Is_Empty())
        table.Add(key, value);
}

} // namespace

unsigned long long Lib_Split_String(const wchar_t* pText, wchar_t chSeparator, Lib_Strings*& pList)
{
    pList = nullptr;
    if (pText == nullptr)
        return 0;
    auto* pStrings = new Lib_Strings_Rel;
    pList = pStrings;
    // The first token exists even without characters; later ones begin at a unit that is no separator.
    const wchar_t* pAt = pText;
    do
    {
        const wchar_t* pStart = pAt;
        pAt += scan::Length_Before(pAt, chSeparator);
        pStrings->Add({pStart, pAt});
        while (*pAt == chSeparator && *pAt != 0)
            ++pAt;
    } while (*pAt != 0);
    return pStrings->Get_Num_Elements();
}

unsigned long long Lib_Parse_String(const wchar_t* pText, Lib_Strings_Table*& pTable)
{
    if (pText == nullptr)
        return 0;
    auto pPairs = std::make_unique<Lib_Strings_Table_Real>();
    read_Pairs(pText, *pPairs);
    const unsigned long long nCount = pPairs->Get_Num_Elements();
    if (nCount != 0)
        pTable = pPairs.release();
    return nCount;
}
