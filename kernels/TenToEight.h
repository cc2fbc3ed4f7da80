// Infrared conversion: 16-bit words that hold 10-bit values become 8-bit pixels.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mft_kernels
{
// output = round((input << 6 mod 65536) * 255 / 65535), halves to even: the low ten bits scaled to 0..255.
// Strides are in bytes and may be negative; any byte address will do. Input and output must not overlap. Cannot fail.
void ConvertTenToEight(const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint8_t *output,
                       std::ptrdiff_t outputStride, std::size_t width, std::size_t height);
} // namespace mft_kernels
