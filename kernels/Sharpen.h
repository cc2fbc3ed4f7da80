// Sharpening: unsharp mask of a 16-bit frame with a separable 9-tap Gaussian.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mft_kernels
{
// Pixels at each edge that sharpening does not write.
constexpr std::size_t kSharpenBorder = 4;

// Input is read as signed 16-bit, output is max(0, rint(I + 0.85 * (I - Gaussian(I)))) saturated to 16 bits signed, for
// all pixels but the border; a frame below 9 pixels in either direction writes nothing. `scratch` holds at least
// width * height floats. Every implementation performs the same single-precision operations in the same order, so
// results are equal to the last bit. Strides are in bytes and may be negative. Input and output must not overlap.
// Cannot fail.
using SharpenFunction = void (*)(const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint16_t *output,
                                 std::ptrdiff_t outputStride, std::size_t width, std::size_t height, float *scratch);

// The implementation for this processor: the active set's where AVX2, FMA, BMI1, BMI2, MOVBE and the operating system's
// support for AVX registers are all there, else the best without AVX.
SharpenFunction SelectSharpenKernel();

// Sharpens with the active set. Cannot fail.
void Sharpen(const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint16_t *output, std::ptrdiff_t outputStride,
             std::size_t width, std::size_t height, float *scratch);
} // namespace mft_kernels
