#include "base/WideString.h"

#include <windows.h>

namespace mft_utils
{

std::wstring Widen(const std::string &utf8)
{
    const int sourceLength = static_cast<int>(utf8.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), sourceLength, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), sourceLength, wide.data(), length);
    return wide;
}

} // namespace mft_utils
