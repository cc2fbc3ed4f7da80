// Results and other 32-bit numbers as texts tell them.
#pragma once

#include <string>

namespace mft_utils
{

// Eight digits, as in 0x8000FFFF.
std::string HexText(unsigned long value);

} // namespace mft_utils
