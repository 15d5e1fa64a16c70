// The core of Lib_StringA and Lib_StringW, compiled once for each width: String names the class, Char its
// character type.

constinit String::Empty_Data String::s_Empty{{-1, 0, 0}, 0};

unsigned long long String::measure_Text(const Char* pText) noexcept { return characters::Length(pText); }

void String::free_Data(Data* pBlock) noexcept { ::operator delete(pBlock); }

unsigned long long String::st_Add_Lengths(unsigned long long nLeft, unsigned long long nRight)
{
    if (nRight > ~0ULL - nLeft)
        throw std::bad_alloc();
    return nLeft + nRight;
}

void String::alloc_Buffer(unsigned long long nLength)
{
    if (nLength == 0)
    {
        init();
        return;
    }
    constexpr unsigned long long nMaximum = (~0ULL - sizeof(Data)) / sizeof(Char) - 1;
    if (nLength > nMaximum)
        throw std::bad_alloc();
    Data* pBlock =
        new (::operator new(sizeof(Data) + (nLength + 1) * sizeof(Char))) Data{1, nLength, nLength};
    m_pChars = pBlock->Get_Text();
    m_pChars[nLength] = 0;
}

void String::alloc_Before_Write(unsigned long long nLength)
{
    Data* pBlock = get_Data();
    if (!pBlock->Is_Shared() && nLength <= pBlock->m_nAlloc_Length)
        return;
    release(pBlock);
    init();
    alloc_Buffer(nLength);
}

void String::move_To_Block(unsigned long long nCapacity)
{
    Data* pOld = get_Data();
    const Char* pText = m_pChars;
    alloc_Buffer(nCapacity);
    characters::Copy(m_pChars, pText, pOld->m_nLength);
    set_Length(pOld->m_nLength);
    release(pOld);
}

void String::copy_Before_Write()
{
    if (get_Data()->Is_Shared())
        move_To_Block(Get_Length());
}

// The shared empty block already has what a length of 0 would store, and must not be written by several
// threads at once.
void String::set_Length(unsigned long long nLength) noexcept
{
    Data* pBlock = get_Data();
    if (pBlock == &s_Empty.m_Header)
        return;
    pBlock->m_nLength = nLength;
    m_pChars[nLength] = 0;
}

void String::assign_Copy(unsigned long long nLength, const Char* pText)
{
    alloc_Before_Write(nLength);
    characters::Move(m_pChars, pText, nLength);
    set_Length(nLength);
}

void String::alloc_Copy(String& dest, unsigned long long nCount, unsigned long long nIndex,
                        unsigned long long nExtra) const
{
    dest.alloc_Buffer(st_Add_Lengths(nCount, nExtra));
    characters::Copy(dest.m_pChars, m_pChars + nIndex, nCount);
}

void String::concat_Copy(unsigned long long nCount1, const Char* pText1, unsigned long long nCount2,
                         const Char* pText2)
{
    const unsigned long long nLength = st_Add_Lengths(nCount1, nCount2);
    if (nLength == 0)
        return;
    alloc_Buffer(nLength);
    characters::Copy(m_pChars, pText1, nCount1);
    characters::Copy(m_pChars + nCount1, pText2, nCount2);
}

void String::concat_Elsewhere(unsigned long long nCount, const Char* pText)
{
    Data* pOld = get_Data();
    concat_Copy(pOld->m_nLength, m_pChars, nCount, pText);
    release(pOld);
}

void String::concat_Character_Elsewhere(Char ch) { concat_Elsewhere(1, &ch); }

void String::init_Text_Copy(const String& source)
{
    init();
    if (source.get_Data()->m_nLength != 0)
        init_Text(source.m_pChars);
}

void String::init_Text(const Char* pText)
{
    const unsigned long long nLength = safe_Strlen(pText);
    alloc_Buffer(nLength);
    characters::Copy(m_pChars, pText, nLength);
}

void String::init_Character(Char ch)
{
    alloc_Buffer(1);
    *m_pChars = ch;
}

void String::assign(const String& source)
{
    if (this == &source)
        return;
    Data* pOwn = get_Data();
    Data* pSource = source.get_Data();
    const bool bLocked = pOwn->Is_Locked() && pOwn != &s_Empty.m_Header;
    if (bLocked || pSource->Is_Locked())
    {
        assign_Copy(pSource->m_nLength, source.m_pChars);
        return;
    }
    pSource->m_nRef_Count.fetch_add(1);
    Char* pChars = source.m_pChars;
    release(pOwn);
    m_pChars = pChars;
}

void String::assign(const Char* pText)
{
    if (pText != nullptr && pText == m_pChars)
        return;
    assign_Copy(safe_Strlen(pText), pText);
}

void String::assign(Char ch)
{
    alloc_Before_Write(1);
    *m_pChars = ch;
    set_Length(1);
}

Char* String::Get_Buffer(unsigned long long nLength)
{
    const Data* pBlock = get_Data();
    if (pBlock->Is_Shared() || nLength > pBlock->m_nAlloc_Length)
        move_To_Block(std::max(nLength, pBlock->m_nLength));
    return get_Text();
}

Char* String::Get_Buffer_Set_Length(unsigned long long nLength)
{
    Char* pBuffer = Get_Buffer(nLength);
    set_Length(nLength);
    return pBuffer;
}

void String::Release_Buffer(unsigned long long nLength)
{
    copy_Before_Write();
    set_Length(nLength == ~0ULL ? safe_Strlen(m_pChars) : nLength);
}

Char* String::Lock_Buffer()
{
    Char* pBuffer = Get_Buffer(0);
    Data* pBlock = get_Data();
    if (pBlock != &s_Empty.m_Header)
        pBlock->m_nRef_Count.store(-1, std::memory_order_relaxed);
    return pBuffer;
}

void String::Unlock_Buffer() noexcept
{
    Data* pBlock = get_Data();
    if (pBlock != &s_Empty.m_Header)
        pBlock->m_nRef_Count.store(1, std::memory_order_relaxed);
}

void String::Free_Extra()
{
    if (Get_Length() != Get_Alloc_Length())
        move_To_Block(Get_Length());
}

void String::Empty() noexcept
{
    Data* pBlock = get_Data();
    if (pBlock->m_nLength == 0)
        return;
    if (pBlock->Is_Locked())
        set_Length(0);
    else
        Flush();
}

int String::load_String(unsigned int nId, wchar_t* pBuffer, int nSize, HINSTANCE hModule) const
{
    const int nLength = LoadStringW(hModule, nId, pBuffer, nSize);
    if (nLength == 0)
        *pBuffer = 0;
    return nLength;
}
