#include "base/HexText.h"

#include <array>
#include <cstdio>

namespace mft_utils
{

std::string HexText(unsigned long value)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%08lX", value);
    return text.data();
}

} // namespace mft_utils
