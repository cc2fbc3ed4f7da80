#include "kernels/MedianCrop.h"

#include <algorithm>
#include <array>

#include "kernels/Rows.h"
#include "kernels/Scalar.h"

namespace mft_kernels
{
namespace
{
// Pixel (x, y) of the frame; x may lie up to a run beyond the right edge.
std::uint16_t PixelAt(const MedianCropInput &input, std::size_t x, std::size_t y)
{
    y += x / input.width;
    x %= input.width;
    if (y >= input.height)
    {
        y = input.height - 1;
        x = input.width - 1;
    }
    return LoadWord(RowAt(input.pixels, input.stride, y), x);
}
} // namespace

void MedianRowScalar(const MedianCropInput &input, std::uint8_t *outputRow, std::size_t y, std::size_t begin,
                     std::size_t end)
{
    for (std::size_t c = begin; c < end; ++c)
    {
        std::array<std::int16_t, 9> neighbours;
        std::size_t count = 0;
        for (std::size_t j = 0; j < 3; ++j)
        {
            for (std::size_t i = 0; i < 3; ++i)
            {
                const std::uint16_t pixel = PixelAt(input, input.cropX + c + i - 1, input.cropY + y + j - 1);
                neighbours[count++] = static_cast<std::int16_t>(pixel);
            }
        }
        std::nth_element(neighbours.begin(), neighbours.begin() + 4, neighbours.end());
        StoreWord(outputRow, c, static_cast<std::uint16_t>(neighbours[4]));
    }
}

void MedianCropScalar(const MedianCropInput &input, std::uint16_t *output, std::ptrdiff_t outputStride,
                      std::size_t width, std::size_t height)
{
    const std::size_t rowLength = (width + kMedianRun - 1) / kMedianRun * kMedianRun;
    for (std::size_t y = 0; y < height; ++y)
    {
        MedianRowScalar(input, RowAt(output, outputStride, y), y, 0, rowLength);
    }
}

bool MedianCrop3x3(const MedianCropInput &input, std::uint16_t *output, std::ptrdiff_t outputStride, std::size_t width,
                   std::size_t height)
{
    const auto fits = [](std::size_t offset, std::size_t size, std::size_t limit) {
        return offset >= 1 && offset < limit && size < limit - offset;
    };
    if (!fits(input.cropX, width, input.width) || !fits(input.cropY, height, input.height))
    {
        return false;
    }
    if (width != 0)
    {
        ActiveKernels().medianCrop(input, output, outputStride, width, height);
    }
    return true;
}
} // namespace mft_kernels
