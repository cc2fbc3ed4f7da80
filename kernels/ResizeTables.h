// What a resize needs to know about its two sizes, as plain arrays that every instruction set can read.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mft_kernels
{
// One output coordinate: the two source pixels (or rows) it lies between and the second one's share of the denominator.
struct ResizeTap
{
    std::uint32_t first;
    std::uint32_t second;
    std::uint32_t weight;
};

// How a weighted sum of four pixels is divided by the product of the denominators.
enum class ResizeDivision
{
    Shift,      // the product is a power of two, sums fit 32 bits
    Reciprocal, // sums fit 31 bits: the high part of a product
    Double      // sums fit a double exactly
};

struct ResizeTables
{
    std::size_t inputWidth, inputHeight, outputWidth, outputHeight;
    const ResizeTap *columns;        // outputWidth
    const ResizeTap *rows;           // outputHeight
    std::uint32_t columnDenominator; // even
    std::uint32_t rowDenominator;
    ResizeDivision division;
    std::uint32_t reciprocal; // sum * reciprocal >> 32 >> shift, or sum >> shift
    std::uint32_t shift;

    // Pairs of weights (first, second) per output column, padded to whole groups of 16; null when they exceed 15 bits.
    const std::int16_t *pairWeights;
    // Four output columns from a window of 8 source pixels: start and byte shuffle; null when 4 columns span more.
    const std::uint32_t *windowStarts;
    const std::uint8_t *windowShuffles; // 16 per group
    // Sixteen output columns from a window of 32 source pixels: start and word permutation; null likewise.
    const std::uint32_t *wideStarts;
    const std::uint16_t *widePermutes; // 32 per group
    // 32-bit words per row of horizontal sums in the scratch memory: whole cache lines.
    std::size_t scratchRow;
};

// Rows of sums that the scratch memory holds, besides the bytes to start on a cache line.
constexpr std::size_t kResizeScratchRows = 4;
constexpr std::size_t kResizeScratchSlack = 63;
} // namespace mft_kernels
