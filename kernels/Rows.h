// Byte-wise access to rows of pixels.
// Everything here has internal linkage: files built for a newer instruction set must not emit functions that the linker
// could pick for the others, so those files use nothing inline from the standard library either.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace mft_kernels
{
template <typename Pixel>
static inline const std::uint8_t *RowAt(const Pixel *pixels, std::ptrdiff_t stride, std::size_t y)
{
    return reinterpret_cast<const std::uint8_t *>(pixels) + stride * static_cast<std::ptrdiff_t>(y);
}

template <typename Pixel>
static inline std::uint8_t *RowAt(Pixel *pixels, std::ptrdiff_t stride, std::size_t y)
{
    return reinterpret_cast<std::uint8_t *>(pixels) + stride * static_cast<std::ptrdiff_t>(y);
}

// The word at element x of a row at any byte address.
static inline std::uint16_t LoadWord(const std::uint8_t *row, std::size_t x)
{
    std::uint16_t value;
    std::memcpy(&value, row + x * sizeof(value), sizeof(value));
    return value;
}

static inline void StoreWord(std::uint8_t *row, std::size_t x, std::uint16_t value)
{
    std::memcpy(row + x * sizeof(value), &value, sizeof(value));
}
} // namespace mft_kernels
