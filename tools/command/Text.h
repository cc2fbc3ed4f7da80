// Texts of options, reports and messages; UTF-8 throughout.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "base/WideString.h"
#include "tools/names/Format.h"

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

} // namespace tarn_host
