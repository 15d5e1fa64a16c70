// The free operator+ of each string class; the result has the class of the string operand. Included in the
// public section of the class, Lib_Self being the class itself. The result always has a block of its own of
// the exact total length, also when one side is empty, and none when both are. String operands count
// Get_Length() characters, texts up to their NUL, null as empty, and a NUL character as one character.
// std::bad_alloc leaves nothing behind.

friend Lib_Self operator+(const Lib_Self& left, const Lib_Self& right)
{
    Lib_Self result;
    result.concat_Copy(left.Get_Length(), left.m_pChars, right.Get_Length(), right.m_pChars);
    return result;
}

friend Lib_Self operator+(const Lib_Self& left, const Lib_Char* pRight)
{
    Lib_Self result;
    result.concat_Copy(left.Get_Length(), left.m_pChars, safe_Strlen(pRight), pRight);
    return result;
}

friend Lib_Self operator+(const Lib_Char* pLeft, const Lib_Self& right)
{
    Lib_Self result;
    result.concat_Copy(safe_Strlen(pLeft), pLeft, right.Get_Length(), right.m_pChars);
    return result;
}

friend Lib_Self operator+(const Lib_Self& left, Lib_Char chRight)
{
    Lib_Self result;
    result.concat_Copy(left.Get_Length(), left.m_pChars, 1, &chRight);
    return result;
}

friend Lib_Self operator+(Lib_Char chLeft, const Lib_Self& right)
{
    Lib_Self result;
    result.concat_Copy(1, &chLeft, right.Get_Length(), right.m_pChars);
    return result;
}
