// The scalar references, also used by the vector versions for sizes below a vector.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/KernelTable.h"

namespace mft_kernels
{
void TenToEightScalar(const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint8_t *output,
                      std::ptrdiff_t outputStride, std::size_t width, std::size_t height);
void ConfidenceScalar(std::uint8_t *pixels, std::ptrdiff_t stride, std::size_t width, std::size_t height);
void ClampAboveScalar(std::uint16_t *pixels, std::ptrdiff_t stride, std::size_t width, std::size_t height,
                      std::uint16_t threshold);
void CopyRowsScalar(const std::uint8_t *input, std::ptrdiff_t inputStride, std::uint8_t *output,
                    std::ptrdiff_t outputStride, std::size_t rowSize, std::size_t height);
void MoveBytesScalar(std::uint8_t *output, const std::uint8_t *input, std::size_t size);
void MedianCropScalar(const MedianCropInput &input, std::uint16_t *output, std::ptrdiff_t outputStride,
                      std::size_t width, std::size_t height);
// Columns [begin, end) of output row y.
void MedianRowScalar(const MedianCropInput &input, std::uint8_t *outputRow, std::size_t y, std::size_t begin,
                     std::size_t end);
void ResizeScalar(const ResizeTables &tables, const std::uint16_t *input, std::ptrdiff_t inputStride,
                  std::uint16_t *output, std::ptrdiff_t outputStride, void *scratch);
void SharpenScalar(const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint16_t *output,
                   std::ptrdiff_t outputStride, std::size_t width, std::size_t height, float *scratch);

// All bits set, where compilers of the vector versions cannot see it: a load under a mask they do not know is not
// repeated.
extern const std::uint32_t kEveryLane;
} // namespace mft_kernels
