// The building blocks of Lib_StringA and Lib_StringW for classes that derive from them. Included in the
// protected section of either class. Lengths, counts and indexes are in characters. What is inline here is
// on the paths of copying, appending and comparing, where a call into the module would double the cost; so
// the layout of a block is part of what clients are compiled with.

struct Empty_Data
{
    Data m_Header;
    Lib_Char m_chEnd;
};

/// The class's shared empty block: constant initial data, so strings work during any static
/// initialisation. Its contents never change.
static Empty_Data s_Empty;

Lib_Char* m_pChars; ///< the text of the block; null reads as the shared empty block

Data* get_Data() const noexcept
{
    return m_pChars != nullptr ? reinterpret_cast<Data*>(m_pChars) - 1 : &s_Empty.m_Header;
}

/// The text for reading; never null.
Lib_Char* get_Text() const noexcept { return m_pChars != nullptr ? m_pChars : &s_Empty.m_chEnd; }

/// Takes the shared empty block and releases nothing.
void init() noexcept { m_pChars = &s_Empty.m_chEnd; }

/// Characters before the NUL; 0 for null.
static unsigned long long safe_Strlen(const Lib_Char* pText) noexcept
{
    if (pText == nullptr)
        return 0;
    if constexpr (sizeof(Lib_Char) == 1)
        return std::strlen(
            reinterpret_cast<const char*>(pText)); // the cast is for the other width to compile
    else
        return measure_Text(pText);
}
static unsigned long long measure_Text(const Lib_Char* pText) noexcept;

/// The sum of two lengths; std::bad_alloc when it doesn't fit.
static unsigned long long st_Add_Lengths(unsigned long long nLeft, unsigned long long nRight);

/// Stores the length of the text and its NUL, within the capacity; the shared empty block stays as it is.
void set_Length(unsigned long long nLength) noexcept;

/// Takes a new private block of length and capacity `nLength` with its NUL set, or the shared empty block
/// for 0. The previous block isn't released.
void alloc_Buffer(unsigned long long nLength);

/// Makes room for `nLength` characters of new text; the old text need not survive. A private or locked
/// block that is large enough stays; otherwise it is released before the new one is allocated.
void alloc_Before_Write(unsigned long long nLength);

/// Moves the text to a new block of capacity `nCapacity`, no less than the text; the old block is released
/// last.
void move_To_Block(unsigned long long nCapacity);

/// Makes a shared block private, with an exact copy of the text; the old block is released last.
void copy_Before_Write();

/// Replaces the text by `nLength` characters, which may lie in this string's own private block. Null is
/// allowed with 0.
void assign_Copy(unsigned long long nLength, const Lib_Char* pText);

/// Fills the fresh string `dest` with `nCount` characters from `nIndex` of this one and leaves room for
/// `nExtra` more behind them, which the length counts already. dest's previous block isn't released.
void alloc_Copy(Lib_Self& dest, unsigned long long nCount, unsigned long long nIndex,
                unsigned long long nExtra) const;

/// Takes a new block with both texts; the previous block isn't released. Nothing happens when both are
/// empty.
void concat_Copy(unsigned long long nCount1, const Lib_Char* pText1, unsigned long long nCount2,
                 const Lib_Char* pText2);

/// memmove for at least one character, without its call for as few as a word mostly has.
static void move_Word(Lib_Char* pTarget, const Lib_Char* pSource, unsigned long long nCount) noexcept
{
    struct Sixteen_Bytes
    {
        unsigned long long m_nHalves[2];
    };
    const unsigned long long nSize = nCount * sizeof(Lib_Char);
    pSource = std::launder(pSource); // no warning then that a long text would overrun the short one in sight
    if (nSize > 2 * sizeof(Sixteen_Bytes))
        std::memmove(pTarget, pSource, nSize);
    else if (nSize >= sizeof(Sixteen_Bytes))
        move_Ends<Sixteen_Bytes>(pTarget, pSource, nSize);
    else if (nSize >= sizeof(unsigned long long))
        move_Ends<unsigned long long>(pTarget, pSource, nSize);
    else if (nSize >= sizeof(unsigned int))
        move_Ends<unsigned int>(pTarget, pSource, nSize);
    else if (nSize >= sizeof(unsigned short))
        move_Ends<unsigned short>(pTarget, pSource, nSize);
    else
        *pTarget = *pSource;
}

/// The first and the last of the bytes, which may overlap: both are read before either is written.
template <class Piece>
static void move_Ends(void* pTarget, const void* pSource, unsigned long long nSize) noexcept
{
    const unsigned long long nLast = nSize - sizeof(Piece);
    Piece front;
    Piece back;
    std::memcpy(&front, pSource, sizeof(Piece));
    std::memcpy(&back, static_cast<const char*>(pSource) + nLast, sizeof(Piece));
    std::memcpy(pTarget, &front, sizeof(Piece));
    std::memcpy(static_cast<char*>(pTarget) + nLast, &back, sizeof(Piece));
}

/// Appends characters, which may lie in this string's own block.
void concat_In_Place(unsigned long long nCount, const Lib_Char* pText)
{
    Data* pBlock = get_Data();
    const unsigned long long nLength = pBlock->m_nLength;
    if (nCount == 0)
        return;
    if (nCount > pBlock->m_nAlloc_Length - nLength || pBlock->Is_Shared())
    {
        concat_Elsewhere(nCount, pText);
        return;
    }
    move_Word(m_pChars + nLength, pText, nCount);
    pBlock->m_nLength = nLength + nCount;
    m_pChars[nLength + nCount] = 0;
}

/// The same for one character: a loop that appends character by character takes three times as long through
/// the general form.
void concat_Character_In_Place(Lib_Char ch)
{
    Data* pBlock = get_Data();
    const unsigned long long nLength = pBlock->m_nLength;
    if (nLength >= pBlock->m_nAlloc_Length || pBlock->Is_Shared())
    {
        concat_Character_Elsewhere(ch);
        return;
    }
    pBlock->m_nLength = nLength + 1;
    Lib_Char* pEnd = m_pChars + nLength;
    pEnd[0] = ch;
    pEnd[1] = 0;
}

/// The same two by moving to a new block. The character comes by value: one whose address is taken is kept in
/// memory by its caller's loop.
void concat_Elsewhere(unsigned long long nCount, const Lib_Char* pText);
void concat_Character_Elsewhere(Lib_Char ch);

/// Takes one holder from a block and frees it after the last; m_pChars stays as it is.
void release(Data* pBlock) noexcept
{
    if (pBlock != &s_Empty.m_Header)
        drop_Holder(pBlock);
}
void release() noexcept { Flush(); }

/// The same for a block that isn't the shared empty one.
void drop_Holder(Data* pBlock) noexcept
{
    // A locked block has one holder too: its count goes from -1 to -2.
    if (pBlock->m_nRef_Count.fetch_sub(1) <= 1)
        free_Data(pBlock);
}

/// Shares the source's block, or copies the text up to its first NUL when the source is locked. For
/// constructors: there is no previous block.
void init_Copy(const Lib_Self& source)
{
    Data* pBlock = source.get_Data();
    if (pBlock->Is_Locked())
    {
        init_Text_Copy(source);
        return;
    }
    m_pChars = pBlock->Get_Text(); // before the locked instruction, which no later load may pass
    ++pBlock->m_nRef_Count;
}

/// Take a text up to its NUL, or one character whatever it is. For constructors as well.
void init_Text_Copy(const Lib_Self& source);
void init_Text(const Lib_Char* pText);
void init_Character(Lib_Char ch);

/// The assignments' work.
void assign(const Lib_Self& source);
void assign(const Lib_Char* pText);
void assign(Lib_Char ch);

/// String `nId` of a module's string table into a buffer of `nSize` units, at least one, ended with a NUL;
/// the number of units, 0 for a missing string.
int load_String(unsigned int nId, wchar_t* pBuffer, int nSize, HINSTANCE hModule) const;

// The bodies that several operations share.

bool equals(const Lib_Self& other) const noexcept
{
    const unsigned long long nLength = Get_Length();
    return m_pChars == other.m_pChars ||
           (nLength != 0 && nLength == other.Get_Length() &&
            std::memcmp(m_pChars, other.m_pChars, nLength * sizeof(Lib_Char)) == 0) ||
           equals_Up_To_NUL(other);
}
bool equals_Up_To_NUL(const Lib_Self& other) const noexcept;
bool equals(const Lib_Char* pText) const noexcept;
void insert(int nIndex, const Lib_Char* pText, unsigned long long nCount);
template <class Matches>
void trim_Front(Matches matches);
template <class Matches>
void trim_Back(Matches matches);
