// Texts of options, reports and messages; UTF-8 throughout.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "base/WideString.h"

namespace tarn_host
{

inline std::filesystem::path ToPath(std::string_view utf8)
{
    return std::filesystem::path(mft_utils::Widen(utf8));
}
inline std::string ToText(const std::filesystem::path &path)
{
    return mft_utils::Narrow(path.native());
}

// As std::snprintf; cut after 255 bytes.
template <class... Values>
std::string Format(const char *format, Values... values)
{
    char text[256];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

} // namespace tarn_host
