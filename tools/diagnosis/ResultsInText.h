// Results inside texts, with their names.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/names/ResultNames.h"

namespace tarn_host
{

// The number at the start of the text, decimal or as 0x...; none when it does not begin with one.
std::optional<std::uint32_t> ResultOf(std::string_view text);

// "... failed, hr 0xC00D36B4" becomes "... failed, hr MF_E_INVALIDMEDIATYPE (0xC00D36B4)".
std::string WithResultNames(std::string_view text);

} // namespace tarn_host
