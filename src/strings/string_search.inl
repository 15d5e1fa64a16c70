// Comparing, searching and slicing of Lib_StringA and Lib_StringW, compiled once for each width: String
// names the class, Char its character type, bEmpty_Finds_Empty whether an empty string finds an empty text.

namespace
{

// An argument that should be a text; null counts as an empty one.
const Char* text_Or_Empty(const Char* pText) noexcept
{
    static constexpr Char chEnd = 0;
    return pText != nullptr ? pText : &chEnd;
}

// Characters before the first NUL, which stands at the text's length or before. While a caller writes into
// the buffer, the length may be too small.
std::size_t first_Nul(const Char* pText, std::size_t nLength) noexcept
{
    if constexpr (sizeof(Char) == 1)
        return std::strlen(
            reinterpret_cast<const char*>(pText)); // the cast is for the other width to compile
    else
    {
        const std::size_t nFound = scan::Find_Character(pText, nLength, Char(0));
        return nFound != scan::None ? nFound : nLength + characters::Length(pText + nLength);
    }
}

int position_Or_None(std::size_t nPosition) noexcept
{
    return nPosition == scan::None ? -1 : static_cast<int>(nPosition);
}

} // namespace

int String::Compare(const Char* pText) const
{
    const bool bEmpty = Is_Empty();
    if (pText == nullptr || *pText == 0)
        return bEmpty ? 0 : -1;
    if (bEmpty)
        return 1;
    return qn_runtime::Compare_C(m_pChars, pText);
}

bool String::equals(const Char* pText) const noexcept
{
    return qn_runtime::Compare_C(get_Text(), text_Or_Empty(pText)) == 0;
}

// Texts that differ in length or content may still end at an embedded NUL before they differ.
bool String::equals_Up_To_NUL(const String& other) const noexcept
{
    return qn_runtime::Compare_C(get_Text(), other.get_Text()) == 0;
}

int String::CompareNoCase(const Char* pText) const
{
    return qn_runtime::Compare_No_Case(get_Text(), text_Or_Empty(pText));
}

int String::Collate(const Char* pText) const { return qn_runtime::Collate(get_Text(), text_Or_Empty(pText)); }

int String::CollateNoCase(const Char* pText) const
{
    return qn_runtime::Collate_No_Case(get_Text(), text_Or_Empty(pText));
}

int String::Find(Char ch, int nStart) const noexcept
{
    const std::size_t nFrom = static_cast<std::size_t>(std::max(nStart, 0));
    if (nFrom >= Get_Length())
        return -1;
    const std::size_t nFound = scan::Find_Character(m_pChars + nFrom, Get_Length() - nFrom, ch);
    return position_Or_None(nFound == scan::None ? nFound : nFrom + nFound);
}

int String::Find(const Char* pText, int nStart) const noexcept
{
    const std::size_t nFrom = static_cast<std::size_t>(std::max(nStart, 0));
    if (nFrom > Get_Length() || (Is_Empty() && !bEmpty_Finds_Empty))
        return -1;
    const Char* pPart = text_Or_Empty(pText);
    const std::size_t nFound =
        scan::Find_Text(get_Text() + nFrom, Get_Length() - nFrom, pPart, characters::Length(pPart));
    return position_Or_None(nFound == scan::None ? nFound : nFrom + nFound);
}

int String::Find_One_Of(const Char* pSet) const noexcept
{
    const Char* pText = get_Text();
    const std::size_t nRun = characters::Run_Outside(pText, text_Or_Empty(pSet));
    return pText[nRun] != 0 ? static_cast<int>(nRun) : -1;
}

int String::Reverse_Find(Char ch) const noexcept
{
    const Char* pText = get_Text();
    std::size_t nPosition = first_Nul(pText, Get_Length());
    while (pText[nPosition] != ch)
        if (nPosition-- == 0)
            return -1;
    return static_cast<int>(nPosition);
}

String String::Left(unsigned long long nCount) const { return Mid(0, nCount); }

String String::Right(unsigned long long nCount) const
{
    const unsigned long long nLength = Get_Length();
    return Mid(nLength - std::min(nCount, nLength), nCount);
}

String String::Mid(unsigned long long nFirst, unsigned long long nCount) const
{
    const unsigned long long nLength = Get_Length();
    if (nFirst == 0 && nCount >= nLength)
        return *this;
    String slice;
    if (nFirst < nLength)
        alloc_Copy(slice, std::min(nCount, nLength - nFirst), nFirst, 0);
    return slice;
}

String String::Span_Including(const Char* pSet) const
{
    return Left(characters::Run_Inside(get_Text(), text_Or_Empty(pSet)));
}

String String::Span_Excluding(const Char* pSet) const
{
    return Left(characters::Run_Outside(get_Text(), text_Or_Empty(pSet)));
}
