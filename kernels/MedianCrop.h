// 3x3 median of a rectangle cut out of a 16-bit frame.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mft_kernels
{
struct MedianCropInput
{
    const std::uint16_t *pixels; // any byte address
    std::ptrdiff_t stride;       // bytes, may be negative
    std::size_t width;
    std::size_t height;
    std::size_t cropX;
    std::size_t cropY;
};

// Median rows are computed and written in runs of this many pixels.
constexpr std::size_t kMedianRun = 8;

// Writes the median of the nine neighbours, compared as signed 16-bit values, of each pixel of the rectangle at
// (cropX, cropY). Each row is `width` pixels rounded up to whole runs; rows count as written in order at `outputStride`
// bytes, so a later row overwrites what an earlier one spilled. The last row's spill stays: the output must reach
// (height - 1) rows of stride plus one whole row of runs.
// A spilled pixel's neighbours right of the frame are the first pixels of the next row, as in a frame without padding;
// beyond the last row the frame's last pixel repeats. Nothing outside the input frame is read.
// Returns false and writes nothing when the rectangle with one pixel around it does not lie inside the frame.
bool MedianCrop3x3(const MedianCropInput &input, std::uint16_t *output, std::ptrdiff_t outputStride, std::size_t width,
                   std::size_t height);
} // namespace mft_kernels
