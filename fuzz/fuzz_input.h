#ifndef QNLIB_FUZZ_FUZZ_INPUT_H
#define QNLIB_FUZZ_FUZZ_INPUT_H

#include "strings/lib_string.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

// What the fuzz targets share: reading choices and texts out of the fuzzer's bytes, and stopping at a fault.
// The models keep their texts in std::u16string, which knows nothing of the strings under test.

/// Stops the fuzzer, which keeps the input, when a statement doesn't hold.
#define FUZZ_CHECK(statement)                                                                                \
    do                                                                                                       \
    {                                                                                                        \
        if (!(statement))                                                                                    \
        {                                                                                                    \
            std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #statement);              \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)

/// The fuzzer's bytes, taken one after the other; behind their end there are zeros.
class Fuzz_Input
{
public:
    Fuzz_Input(const std::uint8_t* pData, std::size_t nSize) : m_pData(pData), m_nLeft(nSize) {}

    std::size_t Get_Left() const { return m_nLeft; }
    const std::uint8_t* Get_Data() const { return m_pData; }

    unsigned int Take_Byte()
    {
        if (m_nLeft == 0)
            return 0;
        --m_nLeft;
        return *m_pData++;
    }

    /// A choice of 0 to nCount - 1.
    unsigned int Take_Choice(unsigned int nCount) { return Take_Byte() % nCount; }

    /// Up to nMost units. With an alphabet each byte picks one of its units, so that texts with a meaning are
    /// frequent; without one two bytes are a unit. A NUL never comes.
    std::u16string Take_Text(const std::u16string& strAlphabet, std::size_t nMost)
    {
        std::u16string strText;
        while (m_nLeft != 0 && strText.size() < nMost)
        {
            unsigned int nUnit = Take_Byte();
            if (strAlphabet.empty())
                nUnit = nUnit << 8 | Take_Byte();
            else
                nUnit = strAlphabet[nUnit % strAlphabet.size()];
            if (nUnit != 0)
                strText += static_cast<char16_t>(nUnit);
        }
        return strText;
    }

private:
    const std::uint8_t* m_pData;
    std::size_t m_nLeft;
};

/// A text as the library takes it: NUL-ended, in a block that ends there, so that reading on is seen.
template <class Char>
class Exact_Text
{
public:
    explicit Exact_Text(const std::u16string& strText) : m_pText(new Char[strText.size() + 1])
    {
        for (std::size_t i = 0; i <= strText.size(); ++i)
            m_pText[i] = static_cast<Char>(strText.c_str()[i]);
    }
    operator const Char*() const { return m_pText.get(); }
    Char* Get() const { return m_pText.get(); }

private:
    std::unique_ptr<Char[]> m_pText;
};

using Wide_Text = Exact_Text<wchar_t>;

/// The whole text of a library's string, after a look at how it is kept.
inline std::u16string As_Model(const Lib_StringW& strText)
{
    FUZZ_CHECK(strText.Get_Length() <= strText.Get_Alloc_Length());
    FUZZ_CHECK(strText.Get_At(strText.Get_Length()) == 0);
    std::u16string strModel;
    for (unsigned long long i = 0; i < strText.Get_Length(); ++i)
        strModel += static_cast<char16_t>(strText.Get_At(i));
    return strModel;
}

#endif
