#ifndef QNLIB_TEST_BYTE_TEXT_H
#define QNLIB_TEST_BYTE_TEXT_H

#include "lib_foundation.h"

#include <string>

// Buffers as texts of bytes, which tests can write down and compare.

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

} // namespace test_support

#endif
