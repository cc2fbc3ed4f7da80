// Conversions between the UTF-8 of options and reports and the UTF-16 of the platform.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tarn_host
{

std::wstring Widen(std::string_view utf8);
std::string Narrow(std::wstring_view utf16);

inline std::filesystem::path ToPath(std::string_view utf8)
{
    return std::filesystem::path(Widen(utf8));
}
inline std::string ToText(const std::filesystem::path &path)
{
    return Narrow(path.native());
}

} // namespace tarn_host
