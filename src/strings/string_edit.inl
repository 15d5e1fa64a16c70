// The edits of Lib_StringA and Lib_StringW, compiled once for each width: String names the class, Char its
// character type.

void String::Set_At(unsigned long long nIndex, Char ch)
{
    copy_Before_Write();
    m_pChars[nIndex] = ch;
}

int String::Insert(int nIndex, Char ch)
{
    insert(nIndex, &ch, 1);
    return static_cast<int>(Get_Length());
}

int String::Insert(int nIndex, const Char* pText)
{
    if (const unsigned long long nCount = safe_Strlen(pText))
        insert(nIndex, pText, nCount);
    return static_cast<int>(Get_Length());
}

// Detaching and growing meet in one step: a block that must be left anyway is left for one of the new
// length, whose capacity a detached copy would have been replaced by.
void String::insert(int nIndex, const Char* pText, unsigned long long nCount)
{
    Data* pOld = get_Data();
    const Char* pOld_Text = get_Text();
    const unsigned long long nOld = pOld->m_nLength;
    const unsigned long long nNew = st_Add_Lengths(nOld, nCount);
    const unsigned long long nAt = std::min(static_cast<unsigned long long>(std::max(nIndex, 0)), nOld);
    if (pOld->Is_Shared() || nNew > pOld->m_nAlloc_Length)
    {
        alloc_Buffer(nNew);
        characters::Copy(m_pChars, pOld_Text, nAt);
    }
    characters::Move(m_pChars + nAt + nCount, pOld_Text + nAt, nOld - nAt);
    characters::Move(m_pChars + nAt, pText, nCount);
    set_Length(nNew);
    if (get_Data() != pOld)
        release(pOld);
}

int String::Delete(int nIndex, int nCount)
{
    const unsigned long long nLength = Get_Length();
    const unsigned long long nFirst = static_cast<unsigned long long>(std::max(nIndex, 0));
    if (nCount > 0 && nFirst < nLength)
        Remove(nFirst, static_cast<unsigned long long>(nCount));
    return static_cast<int>(nLength);
}

int String::Remove(Char ch)
{
    copy_Before_Write();
    const unsigned long long nLength = Get_Length();
    Char* pEnd = std::remove(m_pChars, m_pChars + nLength, ch);
    const unsigned long long nLeft = static_cast<unsigned long long>(pEnd - m_pChars);
    set_Length(nLeft);
    return static_cast<int>(nLength - nLeft);
}

int String::Remove(unsigned long long nIndex, unsigned long long nCount)
{
    copy_Before_Write();
    const unsigned long long nLength = Get_Length();
    const unsigned long long nFirst = std::min(nIndex, nLength);
    const unsigned long long nRemoved = std::min(nCount, nLength - nFirst);
    const unsigned long long nBehind = nFirst + nRemoved;
    characters::Move(m_pChars + nFirst, m_pChars + nBehind, nLength - nBehind);
    set_Length(nLength - nRemoved);
    return static_cast<int>(nRemoved);
}

int String::Replace(Char chOld, Char chNew)
{
    if (chOld == chNew)
        return 0;
    copy_Before_Write();
    const unsigned long long nLength = Get_Length();
    int nReplaced = 0;
    for (unsigned long long i = 0; i < nLength; ++i)
    {
        nReplaced += m_pChars[i] == chOld;
        m_pChars[i] = m_pChars[i] == chOld ? chNew : m_pChars[i];
    }
    return nReplaced;
}

namespace
{

// A text of known length.
struct Part
{
    const Char* m_pText;
    unsigned long long m_nLength;

    bool Lies_In(const Char* pBlock, unsigned long long nLength) const noexcept
    {
        return !std::less<>()(m_pText, pBlock) && !std::less<>()(pBlock + nLength, m_pText);
    }
};

// The next occurrence of a part from nFrom on. A NUL only ends a stretch of the text: the search goes on
// behind it.
unsigned long long find_Across_Nuls(const Char* pText, unsigned long long nLength, unsigned long long nFrom,
                                    const Part& part) noexcept
{
    while (nFrom < nLength)
    {
        const std::size_t nFound =
            scan::Find_Text(pText + nFrom, nLength - nFrom, part.m_pText, part.m_nLength);
        if (nFound != scan::None)
            return nFrom + nFound;
        nFrom += scan::Find_Character(pText + nFrom, nLength - nFrom, Char(0)) + 1;
    }
    return scan::None;
}

// The occurrences of a part: their number, and the places of as many as there is room for, so that most texts
// are searched only once.
struct Occurrences
{
    static constexpr unsigned long long Places = 128;

    unsigned long long m_nCount = 0;
    unsigned long long m_Places[Places];

    Occurrences(const Char* pText, unsigned long long nLength, const Part& part) noexcept
    {
        unsigned long long nFrom = 0;
        for (; (nFrom = find_Across_Nuls(pText, nLength, nFrom, part)) != scan::None; ++m_nCount)
        {
            if (m_nCount < Places)
                m_Places[m_nCount] = nFrom;
            nFrom += part.m_nLength;
        }
    }
};

// Writes the text with every occurrence replaced. The target may overlap the source as long as it doesn't
// run ahead of it.
void write_Replaced(Char* pTarget, const Char* pText, unsigned long long nLength,
                    const Occurrences& occurrences, const Part& oldPart, const Part& newPart) noexcept
{
    unsigned long long nFrom = 0;
    for (unsigned long long i = 0; i < occurrences.m_nCount; ++i)
    {
        const unsigned long long nFound = i < Occurrences::Places
                                              ? occurrences.m_Places[i]
                                              : find_Across_Nuls(pText, nLength, nFrom, oldPart);
        characters::Move(pTarget, pText + nFrom, nFound - nFrom);
        pTarget += nFound - nFrom;
        characters::Copy(pTarget, newPart.m_pText, newPart.m_nLength);
        pTarget += newPart.m_nLength;
        nFrom = nFound + oldPart.m_nLength;
    }
    characters::Move(pTarget, pText + nFrom, nLength - nFrom);
}

} // namespace

int String::Replace(const Char* pOld, const Char* pNew)
{
    const Part oldPart{pOld, safe_Strlen(pOld)};
    const Part newPart{pNew, safe_Strlen(pNew)};
    const unsigned long long nLength = Get_Length();
    if (oldPart.m_nLength == 0 || nLength == 0)
        return 0;
    if (oldPart.Lies_In(get_Text(), nLength) || newPart.Lies_In(get_Text(), nLength))
        return Replace(String(pOld).get_Text(), String(pNew).get_Text());

    const Occurrences occurrences(get_Text(), nLength, oldPart);
    const unsigned long long nCount = occurrences.m_nCount;
    if (nCount == 0)
        return 0;
    if (newPart.m_nLength > oldPart.m_nLength &&
        nCount > (~0ULL - nLength) / (newPart.m_nLength - oldPart.m_nLength))
        throw std::bad_alloc();
    const unsigned long long nNew = nLength + nCount * (newPart.m_nLength - oldPart.m_nLength);

    Data* pBlock = get_Data();
    if (nNew > (pBlock->Is_Shared() ? nLength : pBlock->m_nAlloc_Length))
    {
        const Char* pText = m_pChars;
        alloc_Buffer(nNew);
        write_Replaced(m_pChars, pText, nLength, occurrences, oldPart, newPart);
        release(pBlock);
        return static_cast<int>(nCount);
    }

    copy_Before_Write();
    Char* pText = m_pChars;
    if (nNew > nLength)
    {
        // The text moves up by the whole growth first, so that writing from the front stays behind it.
        pText += nNew - nLength;
        characters::Move(pText, m_pChars, nLength);
        pText[nLength] = 0;
    }
    write_Replaced(m_pChars, pText, nLength, occurrences, oldPart, newPart);
    set_Length(nNew);
    return static_cast<int>(nCount);
}

template <class Matches>
void String::trim_Front(Matches matches)
{
    copy_Before_Write();
    const Char* pText = get_Text();
    const unsigned long long nLength = Get_Length();
    unsigned long long nRun = 0;
    while (nRun < nLength && pText[nRun] != 0 && matches(pText[nRun]))
        ++nRun;
    if (nRun == 0)
        return;
    const unsigned long long nLeft = nLength - nRun;
    characters::Move(m_pChars, pText + nRun, nLeft);
    set_Length(nLeft);
}

// Walking back from the first NUL finds the same run as walking up to it.
template <class Matches>
void String::trim_Back(Matches matches)
{
    copy_Before_Write();
    const Char* pText = get_Text();
    const unsigned long long nEnd = first_Nul(pText, Get_Length());
    unsigned long long nLeft = nEnd;
    while (nLeft != 0 && matches(pText[nLeft - 1]))
        --nLeft;
    if (nLeft != nEnd)
        set_Length(nLeft);
}

void String::TrimLeft()
{
    trim_Front([](Char ch) { return qn_runtime::Is_White_Space(ch); });
}

void String::TrimRight()
{
    trim_Back([](Char ch) { return qn_runtime::Is_White_Space(ch); });
}

void String::Trim_Left(Char chTrimmed)
{
    trim_Front([chTrimmed](Char ch) { return ch == chTrimmed; });
}

void String::Trim_Right(Char chTrimmed)
{
    trim_Back([chTrimmed](Char ch) { return ch == chTrimmed; });
}

void String::Trim_Left(const Char* pSet)
{
    if (pSet != nullptr && *pSet != 0)
        trim_Front([pSet](Char ch) { return characters::Is_In(ch, pSet); });
}

void String::Trim_Right(const Char* pSet)
{
    if (pSet != nullptr)
        trim_Back([pSet](Char ch) { return characters::Is_In(ch, pSet); });
}

void String::Make_Lower()
{
    copy_Before_Write();
    if (!Is_Empty())
        qn_runtime::Make_Lower(m_pChars, first_Nul(m_pChars, Get_Length()));
}

void String::Make_Upper()
{
    copy_Before_Write();
    if (!Is_Empty())
        qn_runtime::Make_Upper(m_pChars, first_Nul(m_pChars, Get_Length()));
}

void String::Make_Reverse()
{
    copy_Before_Write();
    if (!Is_Empty())
        std::reverse(m_pChars, m_pChars + first_Nul(m_pChars, Get_Length()));
}
