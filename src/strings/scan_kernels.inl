// The vector loops of the searches, compiled once for each instruction set. The including file defines the
// template Vector<Char>: Lanes, Load, Fill, Equal, Either, Both and Bits, where Bits gives one bit for each
// byte. Mark marks the units that are the wanted one or a NUL, in whatever form is quick to make and to
// merge; Hits gives the bits of what is marked.

template <class Char>
inline std::size_t first_Lane(unsigned int nBits) noexcept
{
    return static_cast<std::size_t>(__builtin_ctz(nBits)) / sizeof(Char);
}

// Hits are `ch` and the NUL. One is certain, since the text ends with a NUL; the search ends at nLength all
// the same.
template <class Char>
std::size_t find_Character(const Char* pText, std::size_t nLength, Char ch) noexcept
{
    using V = Vector<Char>;
    const std::size_t nReadable = nLength + 1;
    std::size_t i = 0;
    if (nReadable < V::Lanes)
    {
        while (i < nLength && pText[i] != ch && pText[i] != 0)
            ++i;
        return pText[i] == ch ? i : scan::None;
    }
    const auto wanted = V::Fill(ch);
    const auto marks = [=](std::size_t nAt) noexcept { return V::Mark(V::Load(pText + nAt), wanted); };
    if (V::Hits(marks(0)) == 0)
        i = V::Lanes -
            reinterpret_cast<std::uintptr_t>(pText) / sizeof(Char) % V::Lanes; // aligned from here on
    for (; i + 4 * V::Lanes <= nReadable; i += 4 * V::Lanes)
    {
        const auto front = V::Merge(marks(i), marks(i + V::Lanes));
        const auto back = V::Merge(marks(i + 2 * V::Lanes), marks(i + 3 * V::Lanes));
        if (V::Hits(V::Merge(front, back)) != 0)
            break;
    }
    const std::size_t nLast = nReadable - V::Lanes;
    for (i = std::min(i, nLast);; i = std::min(i + V::Lanes, nLast))
    {
        if (const unsigned int nBits = V::Hits(marks(i)))
        {
            i += first_Lane<Char>(nBits);
            return pText[i] == ch ? i : scan::None;
        }
        if (i == nLast)
            return scan::None;
    }
}

template <class Char>
inline bool same(const Char* pLeft, const Char* pRight, std::size_t nCount) noexcept
{
    while (nCount != 0 && pLeft[nCount - 1] == pRight[nCount - 1])
        --nCount;
    return nCount == 0;
}

// The part one position at a time, for what is too short for vectors.
template <class Char>
std::size_t find_Text_Plain(const Char* pText, std::size_t nFrom, std::size_t nEnd, const Char* pPart,
                            std::size_t nPart) noexcept
{
    for (std::size_t i = nFrom; i < nEnd && pText[i] != 0; ++i)
        if (pText[i] == pPart[0] && same(pText + i, pPart, nPart))
            return i;
    return scan::None;
}

// A position is worth a closer look where the part's first and last character stand at their places; a NUL
// ends the search, since no part holds one.
template <class Char>
std::size_t find_Text(const Char* pText, std::size_t nLength, const Char* pPart, std::size_t nPart) noexcept
{
    using V = Vector<Char>;
    if (nPart < 2)
        return nPart == 0 ? 0 : find_Character(pText, nLength, pPart[0]);
    if (nPart > nLength)
        return scan::None;
    const std::size_t nPositions = nLength - nPart + 1;
    if (nPositions < V::Lanes)
        return find_Text_Plain(pText, 0, nPositions, pPart, nPart);

    const auto first = V::Fill(pPart[0]);
    const auto last = V::Fill(pPart[nPart - 1]);
    const auto zero = V::Fill(Char(0));
    for (std::size_t i = 0;;)
    {
        const auto units = V::Load(pText + i);
        const auto ends = V::Load(pText + i + nPart - 1);
        const auto candidates = V::Both(V::Equal(units, first), V::Equal(ends, last));
        unsigned int nBits = V::Bits(V::Either(candidates, V::Equal(units, zero)));
        while (nBits != 0)
        {
            const std::size_t nLane = first_Lane<Char>(nBits);
            const Char* pAt = pText + i + nLane;
            if (*pAt == 0)
                return scan::None;
            if (same(pAt + 1, pPart + 1, nPart - 2))
                return i + nLane;
            nBits &= ~(((1u << sizeof(Char)) - 1) << (nLane * sizeof(Char)));
        }
        if (i == nPositions - V::Lanes)
            return scan::None;
        i = std::min(i + V::Lanes, nPositions - V::Lanes);
    }
}
