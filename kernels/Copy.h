// Copies of 16-bit rectangles and of whole planes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mft_kernels
{
// Copies `height` rows of `width` pixels. Strides are in bytes and may be negative; any byte address will do.
// Input and output must not overlap. Cannot fail.
void CopyRectangle(const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint16_t *output,
                   std::ptrdiff_t outputStride, std::size_t width, std::size_t height);

// Copies `size` bytes that do not overlap. Cannot fail.
void CopyPlane(void *output, const void *input, std::size_t size);

// Copies `size` bytes that may overlap in either direction. Cannot fail.
void MovePlane(void *output, const void *input, std::size_t size);
} // namespace mft_kernels
