// Size of a 16-bit frame, checked once when a node is made.
#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

namespace mft_core
{

// Rows follow each other without padding. Immutable after Init.
struct FrameSize
{
    static constexpr std::uint32_t kBytesPerPixel = 2;

    // Throws std::invalid_argument for a size of 0 or below and where `bytesNeededPerPixel`, which is at least the
    // frame's own 2, do not fit 32 bits for all pixels together.
    FrameSize(std::int64_t frameWidth, std::int64_t frameHeight, std::uint32_t bytesNeededPerPixel = kBytesPerPixel);

    std::ptrdiff_t RowPitchBytes() const noexcept
    {
        return std::ptrdiff_t{width} * kBytesPerPixel;
    }
    DWORD ByteCount() const noexcept
    {
        return width * height * kBytesPerPixel;
    }
    DWORD PixelCount() const noexcept
    {
        return width * height;
    }

    std::uint32_t width;
    std::uint32_t height;
};

} // namespace mft_core
