#include "kernels/TenToEight.h"

#include "kernels/Rows.h"
#include "kernels/Scalar.h"

namespace mft_kernels
{
void TenToEightScalar(const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint8_t *output,
                      std::ptrdiff_t outputStride, std::size_t width, std::size_t height)
{
    for (std::size_t y = 0; y < height; ++y)
    {
        const std::uint8_t *in = RowAt(input, inputStride, y);
        std::uint8_t *out = RowAt(output, outputStride, y);
        for (std::size_t x = 0; x < width; ++x)
        {
            // 65535 / 255 is 257, which is odd: the quotient of a multiple of 64 never lies half-way, and adding half
            // of it rounds as the single-precision product does. A test goes through all inputs.
            const std::uint32_t scaled = (LoadWord(in, x) & 1023U) << 6U;
            out[x] = static_cast<std::uint8_t>((scaled + 128U) / 257U);
        }
    }
}

void ConvertTenToEight(const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint8_t *output,
                       std::ptrdiff_t outputStride, std::size_t width, std::size_t height)
{
    const auto pitch = static_cast<std::ptrdiff_t>(width);
    if (inputStride == 2 * pitch && outputStride == pitch)
    {
        width *= height;
        height = 1;
    }
    ActiveKernels().tenToEight(input, inputStride, output, outputStride, width, height);
}
} // namespace mft_kernels
