#ifndef QNLIB_BENCH_TEXTS_H
#define QNLIB_BENCH_TEXTS_H

#include <cstddef>
#include <string>

// The texts that all works read: prose, since the length of words and the letters in them decide how fast a
// search or a conversion goes.

namespace texts
{

/// English prose with as many characters as wanted; Russian prose, as 16-bit text and in UTF-8 (where the
/// size is in bytes, to the last whole character).
std::string English(std::size_t nLength);
std::u16string English16(std::size_t nLength);
std::u16string Russian16(std::size_t nLength);
std::string Russian_Utf8(std::size_t nSize);

/// Parts of 8 characters that do not occur in the prose, though their words begin like many others.
inline constexpr char English_Part[] = "the tern";
inline constexpr char16_t Russian_Part[] = u"по порту";

/// The text with its end replaced by the part.
std::string Ending_In(std::string strText, const std::string& strPart);
std::u16string Ending_In(std::u16string strText, const std::u16string& strPart);

/// 8-bit text of plain ASCII as 16-bit text.
std::u16string Widened(const std::string& strText);

/// Bytes without a pattern.
std::string Random_Bytes(std::size_t nSize);

/// The library's view of 16-bit text: its wchar_t has 16 bits as well.
inline const wchar_t* Wide(const std::u16string& strText)
{
    return reinterpret_cast<const wchar_t*>(strText.c_str());
}

} // namespace texts

#endif
