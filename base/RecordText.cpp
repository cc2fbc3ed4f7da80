#include "base/RecordText.h"

#include <algorithm>

namespace mft_utils
{

std::string PrintableText(std::span<const char> field)
{
    std::string printable(field.begin(), std::ranges::find(field, '\0'));
    std::ranges::replace_if(
        printable, [](char c) { return c < ' ' || c > '~'; }, '?');
    return printable;
}

std::string VersionText(std::span<const std::uint8_t, 4> version)
{
    return std::to_string(version[0]) + '.' + std::to_string(version[1]) + '.' + std::to_string(version[2]) + '.' +
           std::to_string(version[3]);
}

} // namespace mft_utils
