#include "kernels/Threshold.h"

#include <algorithm>

#include "kernels/Rows.h"
#include "kernels/Scalar.h"

namespace mft_kernels
{
void ClampAboveScalar(std::uint16_t *pixels, std::ptrdiff_t stride, std::size_t width, std::size_t height,
                      std::uint16_t threshold)
{
    for (std::size_t y = 0; y < height; ++y)
    {
        std::uint8_t *row = RowAt(pixels, stride, y);
        for (std::size_t x = 0; x < width; ++x)
        {
            StoreWord(row, x, std::min(LoadWord(row, x), threshold));
        }
    }
}

void ClampAbove(std::uint16_t *pixels, std::ptrdiff_t stride, std::size_t width, std::size_t height,
                std::uint16_t threshold)
{
    if (stride == 2 * static_cast<std::ptrdiff_t>(width))
    {
        width *= height;
        height = 1;
    }
    ActiveKernels().clampAbove(pixels, stride, width, height, threshold);
}
} // namespace mft_kernels
