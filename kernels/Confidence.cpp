#include "kernels/Confidence.h"

#include <algorithm>

#include "kernels/Rows.h"
#include "kernels/Scalar.h"

namespace mft_kernels
{
void ConfidenceScalar(std::uint8_t *pixels, std::ptrdiff_t stride, std::size_t width, std::size_t height)
{
    for (std::size_t y = 0; y < height; ++y)
    {
        std::uint8_t *row = RowAt(pixels, stride, y);
        for (std::size_t x = 0; x < width; ++x)
        {
            const int above = std::max(row[x] - 15, 0);
            row[x] = static_cast<std::uint8_t>(std::min(above, 127) >> 3);
        }
    }
}

void ExtractConfidence(std::uint8_t *pixels, std::ptrdiff_t stride, std::size_t width, std::size_t height)
{
    if (stride == static_cast<std::ptrdiff_t>(width))
    {
        width *= height;
        height = 1;
    }
    ActiveKernels().confidence(pixels, stride, width, height);
}
} // namespace mft_kernels
