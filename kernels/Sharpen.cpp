#include "kernels/Sharpen.h"

#include <algorithm>

#include "kernels/Rows.h"
#include "kernels/Scalar.h"
#include "kernels/SharpenWeights.h"

namespace mft_kernels
{
namespace
{
// Rounds to nearest, halves to even, by moving the value to where a float has no fraction bits.
float RoundToNearest(float value)
{
    constexpr float kNoFraction = 12582912.0F; // 1.5 * 2^23
    return (value + kNoFraction) - kNoFraction;
}

float SignedPixel(const std::uint8_t *row, std::size_t x)
{
    return static_cast<float>(static_cast<std::int16_t>(LoadWord(row, x)));
}
} // namespace

void SharpenScalar(const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint16_t *output,
                   std::ptrdiff_t outputStride, std::size_t width, std::size_t height, float *scratch)
{
    if (width < kSharpenTaps || height < kSharpenTaps)
    {
        return;
    }
    const std::size_t innerWidth = width - 2 * kSharpenBorder;
    const std::size_t innerHeight = height - 2 * kSharpenBorder;
    for (std::size_t y = 0; y < height; ++y)
    {
        const std::uint8_t *in = RowAt(input, inputStride, y);
        float *horizontal = scratch + y * innerWidth;
        for (std::size_t x = 0; x < innerWidth; ++x)
        {
            float sum = kSharpenWeights[0] * SignedPixel(in, x);
            for (std::size_t k = 1; k < kSharpenTaps; ++k)
            {
                sum += kSharpenWeights[k] * SignedPixel(in, x + k);
            }
            horizontal[x] = sum;
        }
    }
    for (std::size_t y = 0; y < innerHeight; ++y)
    {
        const std::uint8_t *in = RowAt(input, inputStride, y + kSharpenBorder);
        std::uint8_t *out = RowAt(output, outputStride, y + kSharpenBorder);
        const float *horizontal = scratch + y * innerWidth;
        for (std::size_t x = 0; x < innerWidth; ++x)
        {
            float blurred = kSharpenWeights[0] * horizontal[x];
            for (std::size_t k = 1; k < kSharpenTaps; ++k)
            {
                blurred += kSharpenWeights[k] * horizontal[x + k * innerWidth];
            }
            const float pixel = SignedPixel(in, x + kSharpenBorder);
            const float sharpened = RoundToNearest(pixel + kSharpenAmount * (pixel - blurred));
            const float clamped = std::min(std::max(sharpened, 0.0F), 32767.0F);
            StoreWord(out, x + kSharpenBorder, static_cast<std::uint16_t>(clamped));
        }
    }
}

void Sharpen(const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint16_t *output, std::ptrdiff_t outputStride,
             std::size_t width, std::size_t height, float *scratch)
{
    ActiveKernels().sharpen(input, inputStride, output, outputStride, width, height, scratch);
}
} // namespace mft_kernels
