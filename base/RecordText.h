// Texts in the records that a camera sends.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace mft_utils
{

// What stands before the first zero, each character that is no printable ASCII as '?': what a line can hold, whatever
// the camera sent.
std::string PrintableText(std::span<const char> field);

// As in 1.2.3.4.
std::string VersionText(std::span<const std::uint8_t, 4> version);

} // namespace mft_utils
