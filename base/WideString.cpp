#include "base/WideString.h"

#include <windows.h>

namespace mft_utils
{

std::wstring Widen(std::string_view utf8)
{
    const int bytes = static_cast<int>(utf8.size());
    const int count = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, nullptr, 0);
    std::wstring utf16(static_cast<std::size_t>(count), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, utf16.data(), count);
    return utf16;
}

std::string Narrow(std::wstring_view utf16)
{
    const int units = static_cast<int>(utf16.size());
    const int count = WideCharToMultiByte(CP_UTF8, 0, utf16.data(), units, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(count), '\0');
    WideCharToMultiByte(CP_UTF8, 0, utf16.data(), units, utf8.data(), count, nullptr, nullptr);
    return utf8;
}

} // namespace mft_utils
