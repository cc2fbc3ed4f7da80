// Sharpening for any vector type, with the scalar version's operations in its order.
// Rows go by in bands. A row's horizontal sums are multiplied by each weight once, for all the output rows that they
// take part in: the sums of the output rows that are not complete yet wait in the scratch memory between bands.
#pragma once

#include "kernels/PointwiseVector.h"
#include "kernels/SharpenWeights.h"

namespace mft_kernels
{
namespace // NOLINT(google-build-namespaces): internal linkage in every including file is the point
{
// Rows of pixels that become floats before columns go down them.
constexpr std::size_t kSharpenBand = 8;
// Rows of pixels that are kept: a band's output rows begin before it.
constexpr std::size_t kSharpenRing = kSharpenBand + kSharpenBorder;
// Output rows that are begun and not complete.
constexpr std::size_t kSharpenOpen = kSharpenTaps - 1;
// Wider frames are done in tiles of so many output columns: what a tile needs stays in the first cache.
constexpr std::size_t kSharpenTile = 224;
// Vectors of horizontal sums that are made side by side: one alone would wait for each of its additions.
constexpr std::size_t kSharpenBlock = 2;

// A number that is a type, for lambdas that need it at compile time.
template <std::size_t k>
struct Index
{
    constexpr operator std::size_t() const
    {
        return k;
    }
};

struct SharpenScratch
{
    float *pixels; // kSharpenRing rows, row y of the frame at y % kSharpenRing
    float *sums;   // a band
    float *open;   // kSharpenOpen sums for each vector of columns in turn
    std::size_t stride;
};
} // namespace

template <typename V>
struct SharpenRegisters
{
    typename V::Float weights[kSharpenBorder + 1];
    typename V::Float amount;
};

// Sum x of a row is that of the pixels from x to x + 8. Rows are padded to whole blocks.
template <typename V>
static inline void SumHorizontally(const SharpenRegisters<V> &registers, const float *pixels, float *sums,
                                   std::size_t count)
{
    for (std::size_t x = 0; x < count; x += kSharpenBlock * V::kFloats)
    {
        typename V::Float sum[kSharpenBlock];
        typename V::Float here[kSharpenBlock + 1];
        for (std::size_t j = 0; j <= kSharpenBlock; ++j)
        {
            here[j] = V::LoadFloats(pixels + x + j * V::kFloats);
        }
        for (std::size_t j = 0; j < kSharpenBlock; ++j)
        {
            sum[j] = V::Multiply(registers.weights[0], here[j]);
        }
        const auto add = [&](auto weight, auto k) {
            for (std::size_t j = 0; j < kSharpenBlock; ++j)
            {
                const auto tap = V::template Tap<k>(here[j], here[j + 1], pixels + x + j * V::kFloats);
                sum[j] = V::Add(sum[j], V::Multiply(registers.weights[weight], tap));
            }
        };
        add(Index<1>{}, Index<1>{});
        add(Index<2>{}, Index<2>{});
        add(Index<3>{}, Index<3>{});
        add(Index<4>{}, Index<4>{});
        add(Index<3>{}, Index<5>{});
        add(Index<2>{}, Index<6>{});
        add(Index<1>{}, Index<7>{});
        add(Index<0>{}, Index<8>{});
        for (std::size_t j = 0; j < kSharpenBlock; ++j)
        {
            V::StoreFloats(sums + x + j * V::kFloats, sum[j]);
        }
    }
}

// Adds a row's part to the output rows it belongs to; returns the vertical sum that this completes.
template <typename V>
static inline typename V::Float AddVertically(const SharpenRegisters<V> &registers, typename V::Float sum,
                                              typename V::Float (&open)[kSharpenOpen])
{
    const auto part0 = V::Multiply(registers.weights[0], sum);
    const auto complete = V::Add(open[0], part0);
    const auto part1 = V::Multiply(registers.weights[1], sum);
    const auto part2 = V::Multiply(registers.weights[2], sum);
    const auto part3 = V::Multiply(registers.weights[3], sum);
    open[0] = V::Add(open[1], part1);
    open[1] = V::Add(open[2], part2);
    open[2] = V::Add(open[3], part3);
    open[3] = V::Add(open[4], V::Multiply(registers.weights[4], sum));
    open[4] = V::Add(open[5], part3);
    open[5] = V::Add(open[6], part2);
    open[6] = V::Add(open[7], part1);
    open[7] = part0;
    return complete;
}

// One vector of columns down the rows of a band: results take the place of the sums. `slot` is the row of pixels that
// the first one completes. Asks for the rows from `ahead` on.
template <typename V>
static inline void SharpenColumn(const SharpenRegisters<V> &registers, const SharpenScratch &scratch, std::size_t x,
                                 std::size_t slot, std::size_t rows, float *waiting, const std::uint8_t *ahead,
                                 std::ptrdiff_t aheadStride)
{
    typename V::Float open[kSharpenOpen];
    for (std::size_t k = 0; k < kSharpenOpen; ++k)
    {
        open[k] = V::LoadFloats(waiting + k * V::kFloats);
    }
    const std::size_t stride = scratch.stride;
    const float *pixels = scratch.pixels + kSharpenBorder + x;
    const float *last = pixels + (kSharpenRing - 1) * stride;
    const float *centre = pixels + slot * stride;
    float *sums = scratch.sums + x;
    for (const float *end = sums + rows * stride; sums != end; sums += stride)
    {
        Prefetch(ahead);
        ahead += aheadStride;
        const auto blurred = AddVertically<V>(registers, V::LoadFloats(sums), open);
        const auto pixel = V::LoadFloats(centre);
        V::StoreFloats(sums, V::Add(pixel, V::Multiply(registers.amount, V::Subtract(pixel, blurred))));
        centre = centre == last ? pixels : centre + stride;
    }
    for (std::size_t k = 0; k < kSharpenOpen; ++k)
    {
        V::StoreFloats(waiting + k * V::kFloats, open[k]);
    }
}

template <typename V>
static inline void ConvertRow(const std::uint8_t *in, float *pixels, std::size_t width)
{
    for (std::size_t x = 0; x + V::kFloats <= width; x += V::kFloats)
    {
        V::StoreFloats(pixels + x, V::LoadSignedWords(in + 2 * x));
    }
    V::StoreFloats(pixels + width - V::kFloats, V::LoadSignedWords(in + 2 * (width - V::kFloats)));
}

template <typename V>
static inline void RoundRow(const float *results, std::uint8_t *out, std::size_t width)
{
    constexpr std::size_t kStep = 2 * V::kFloats;
    for (std::size_t x = 0; x + kStep <= width; x += kStep)
    {
        V::StoreRounded(out + 2 * x, V::LoadFloats(results + x), V::LoadFloats(results + x + V::kFloats));
    }
    const std::size_t last = width - kStep;
    V::StoreRounded(out + 2 * last, V::LoadFloats(results + last), V::LoadFloats(results + last + V::kFloats));
}

// A frame that is one tile wide: the columns [kSharpenBorder, width - kSharpenBorder).
template <typename V>
static inline void SharpenTile(const SharpenRegisters<V> &registers, const SharpenScratch &scratch,
                               const std::uint8_t *input, std::ptrdiff_t inputStride, std::uint8_t *output,
                               std::ptrdiff_t outputStride, std::size_t width, std::size_t height)
{
    const std::size_t innerWidth = width - 2 * kSharpenBorder;
    for (std::size_t begin = 0; begin < height; begin += kSharpenBand)
    {
        const std::size_t rows = height - begin < kSharpenBand ? height - begin : kSharpenBand;
        for (std::size_t y = 0; y < rows; ++y)
        {
            float *pixels = scratch.pixels + (begin + y) % kSharpenRing * scratch.stride;
            ConvertRow<V>(RowAt(input, inputStride, begin + y), pixels, width);
        }
        for (std::size_t y = 0; y < rows; ++y)
        {
            const float *pixels = scratch.pixels + (begin + y) % kSharpenRing * scratch.stride;
            SumHorizontally<V>(registers, pixels, scratch.sums + y * scratch.stride, innerWidth);
        }
        const std::size_t slot = (begin + kSharpenBand) % kSharpenRing;
        // What the next band reads and writes, in turn: tiles are too narrow for the processor to follow by itself.
        const std::uint8_t *nextInput = RowAt(input, inputStride, begin + kSharpenBand);
        const std::uint8_t *nextOutput = RowAt(output, outputStride, begin + kSharpenBand - kSharpenBorder);
        float *waiting = scratch.open;
        for (std::size_t x = 0; x < innerWidth; x += V::kFloats)
        {
            const bool reads = x / V::kFloats % 2 == 0;
            SharpenColumn<V>(registers, scratch, x, slot, rows, waiting, (reads ? nextInput : nextOutput) + 2 * x,
                             reads ? inputStride : outputStride);
            waiting += kSharpenOpen * V::kFloats;
        }
        for (std::size_t y = 0; begin != 0 && y < rows; ++y)
        {
            std::uint8_t *out = RowAt(output, outputStride, begin + y - kSharpenBorder) + 2 * kSharpenBorder;
            RoundRow<V>(scratch.sums + y * scratch.stride, out, innerWidth);
        }
    }
}

template <typename V>
static void SharpenVector(const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint16_t *output,
                          std::ptrdiff_t outputStride, std::size_t width, std::size_t height, float *scratch)
{
    constexpr std::size_t kLine = 64 / sizeof(float);
    constexpr std::size_t kEdges = 2 * kSharpenBorder;
    constexpr std::size_t kBlock = kSharpenBlock * V::kFloats;
    const std::size_t columns = width < kSharpenTile + kEdges ? width : kSharpenTile + kEdges;
    const std::size_t stride = (columns - kEdges + kBlock - 1) / kBlock * kBlock + kLine;
    const std::size_t skip = (64 - reinterpret_cast<std::uintptr_t>(scratch) % 64) % 64 / sizeof(float);
    const std::size_t pixelCount = kSharpenRing * stride;
    const std::size_t sumCount = kSharpenBand * stride;
    const std::size_t openCount = kSharpenOpen * stride;
    const std::size_t needed = skip + pixelCount + sumCount + openCount;
    if (width < 2 * V::kFloats + kEdges || needed > width * height)
    {
        SharpenScalar(input, inputStride, output, outputStride, width, height, scratch);
        return;
    }
    SharpenRegisters<V> registers;
    for (std::size_t k = 0; k <= kSharpenBorder; ++k)
    {
        registers.weights[k] = V::Broadcast(kSharpenWeights[k]);
    }
    registers.amount = V::Broadcast(kSharpenAmount);

    const SharpenScratch tileScratch = {scratch + skip, scratch + skip + pixelCount,
                                        scratch + skip + pixelCount + sumCount, stride};
    // Padding and what the first band completes are computed with and not used.
    for (std::size_t k = 0; k < pixelCount + sumCount + openCount; k += V::kFloats)
    {
        V::StoreFloats(tileScratch.pixels + k, V::Broadcast(0.0F));
    }
    for (std::size_t done = 0; done + kEdges < width; done += kSharpenTile)
    {
        // The last tile is at least two vectors wide.
        const std::size_t least = 2 * V::kFloats + kEdges;
        const std::size_t left = done + least <= width ? done : width - least;
        const std::size_t tile = width - left < columns ? width - left : columns;
        SharpenTile<V>(registers, tileScratch, RowAt(input, inputStride, 0) + 2 * left, inputStride,
                       RowAt(output, outputStride, 0) + 2 * left, outputStride, tile, height);
    }
}
} // namespace mft_kernels
