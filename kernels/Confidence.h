// Confidence extraction: the sensor's confidence bytes become a 4-bit map, in place.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mft_kernels
{
// pixel = min(max(pixel - 15, 0), 127) >> 3, which is 0..15.
// The stride is in bytes and may be negative. Cannot fail.
void ExtractConfidence(std::uint8_t *pixels, std::ptrdiff_t stride, std::size_t width, std::size_t height);
} // namespace mft_kernels
