// The free operator+ of each string class; the result has the class of the string operand. Included in the
// public section of the class, String being the class itself. The result always has a block of its own of
// the exact total length, also when one side is empty, and none when both are. String operands count
// Get_Length() characters, texts up to their NUL, null as empty, and a NUL character as one character.
// std::bad_alloc leaves nothing behind.

friend String operator+(const String& left, const String& right)
{
    String result;
    result.concat_Copy(left.Get_Length(), left.m_pChars, right.Get_Length(), right.m_pChars);
    return result;
}

friend String operator+(const String& left, const Char* pRight)
{
    String result;
    result.concat_Copy(left.Get_Length(), left.m_pChars, safe_Strlen(pRight), pRight);
    return result;
}

friend String operator+(const Char* pLeft, const String& right)
{
    String result;
    result.concat_Copy(safe_Strlen(pLeft), pLeft, right.Get_Length(), right.m_pChars);
    return result;
}

friend String operator+(const String& left, Char chRight)
{
    String result;
    result.concat_Copy(left.Get_Length(), left.m_pChars, 1, &chRight);
    return result;
}

friend String operator+(Char chLeft, const String& right)
{
    String result;
    result.concat_Copy(1, &chLeft, right.Get_Length(), right.m_pChars);
    return result;
}
