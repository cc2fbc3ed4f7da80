// Threshold: clamps 16-bit pixels from above, in place.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mft_kernels
{
// pixel = min(pixel, threshold), unsigned.
// The stride is in bytes and may be negative; any byte address will do. Cannot fail.
void ClampAbove(std::uint16_t *pixels, std::ptrdiff_t stride, std::size_t width, std::size_t height,
                std::uint16_t threshold);
} // namespace mft_kernels
