#include "platform/files/native_path.h"

#include "platform/text.h"

#include <algorithm>

namespace qn_platform
{

std::string Native_Path(LPCWSTR path)
{
    const int size =
        WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, path, -1, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, path, -1, bytes.data(), size, nullptr, nullptr);
    bytes.resize(bytes.empty() ? 0 : bytes.size() - 1);
    std::replace(bytes.begin(), bytes.end(), '\\', '/');
    return bytes;
}

} // namespace qn_platform
