#ifndef QNLIB_TEST_BYTE_TEXT_H
#define QNLIB_TEST_BYTE_TEXT_H

#include "lib_foundation.h"

#include <string>
#include <vector>

// Buffers as texts or lists of bytes, which tests can write down and compare.

namespace test_support
{

inline Lib_Buffer To_Buffer(const std::string& text)
{
    Lib_Buffer buffer;
    buffer.Attach_Copy(text.data(), text.size());
    return buffer;
}

inline std::string To_Text(const Lib_Buffer& buffer)
{
    return {static_cast<const char*>(buffer.Get_Ptr()), static_cast<std::size_t>(buffer.Get_Size())};
}

using Bytes = std::vector<unsigned char>;

inline Bytes To_Bytes(const Lib_Buffer& buffer)
{
    const auto* pData = static_cast<const unsigned char*>(buffer.Get_Ptr());
    return {pData, pData + buffer.Get_Size()};
}

} // namespace test_support

#endif
