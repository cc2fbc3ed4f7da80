// Sharpening for any vector type, with the scalar version's operations in its order.
// The last rows of horizontal sums are kept in a ring at the start of the scratch memory instead of a whole frame.
#pragma once

#include "kernels/PointwiseVector.h"
#include "kernels/SharpenWeights.h"

namespace mft_kernels
{
namespace // NOLINT(google-build-namespaces): internal linkage in every including file is the point
{
// A number that is a type, for lambdas that need it at compile time.
template <std::size_t k>
struct Index
{
    constexpr operator std::size_t() const
    {
        return k;
    }
};

// The last nine rows of sums.
struct SharpenRing
{
    float *rows;
    std::size_t stride;

    float *Row(std::size_t y) const
    {
        return rows + y % kSharpenTaps * stride;
    }
};
} // namespace

template <typename V>
struct SharpenRegisters
{
    typename V::Float weights[kSharpenBorder + 1];
    typename V::Float amount;
};

template <typename V, typename TapLoader>
static inline typename V::Float WeightedSum(const SharpenRegisters<V> &registers, const TapLoader &tap)
{
    auto sum = V::Multiply(registers.weights[0], tap(Index<0>{}));
    sum = V::Add(sum, V::Multiply(registers.weights[1], tap(Index<1>{})));
    sum = V::Add(sum, V::Multiply(registers.weights[2], tap(Index<2>{})));
    sum = V::Add(sum, V::Multiply(registers.weights[3], tap(Index<3>{})));
    sum = V::Add(sum, V::Multiply(registers.weights[4], tap(Index<4>{})));
    sum = V::Add(sum, V::Multiply(registers.weights[3], tap(Index<5>{})));
    sum = V::Add(sum, V::Multiply(registers.weights[2], tap(Index<6>{})));
    sum = V::Add(sum, V::Multiply(registers.weights[1], tap(Index<7>{})));
    return V::Add(sum, V::Multiply(registers.weights[0], tap(Index<8>{})));
}

// Rows start a cache line each unless the scratch memory of so low a frame has no room for that.
static inline SharpenRing MakeRing(float *scratch, std::size_t width, std::size_t height)
{
    constexpr std::size_t kLine = 64 / sizeof(float);
    const std::size_t stride = (width + kLine - 1) / kLine * kLine;
    const std::size_t skip = (64 - reinterpret_cast<std::uintptr_t>(scratch) % 64) % 64 / sizeof(float);
    if (kSharpenTaps * stride + skip > width * height)
    {
        return {scratch, width};
    }
    return {scratch + skip, stride};
}

template <typename V>
static inline void ConvertRow(const std::uint8_t *in, float *pixels, std::size_t width)
{
    std::size_t x = 0;
    for (; x + V::kFloats <= width; x += V::kFloats)
    {
        V::StoreFloats(pixels + x, V::LoadSignedWords(in + 2 * x));
    }
    V::StoreFloats(pixels + width - V::kFloats, V::LoadSignedWords(in + 2 * (width - V::kFloats)));
}

// Replaces a row of pixels by sums, in place to stay in the first cache: sum x is that of the pixels from x to x + 8.
template <typename V>
static inline void SumHorizontally(const SharpenRegisters<V> &registers, float *row, std::size_t width)
{
    const std::size_t innerWidth = width - 2 * kSharpenBorder;
    const auto sumAt = [&registers, row](std::size_t x) {
        return WeightedSum<V>(registers, [row, x](auto k) { return V::LoadFloats(row + x + k); });
    };
    const auto last = sumAt(innerWidth - V::kFloats);
    std::size_t x = 0;
    if constexpr (V::kJoinsRegisters)
    {
        // Rows are aligned, taps are not: taking some of them from two registers spares loads across cache lines.
        auto here = V::LoadFloats(row);
        for (; x + 2 * V::kFloats <= width; x += V::kFloats)
        {
            const auto next = V::LoadFloats(row + x + V::kFloats);
            const auto tap = [here, next, row, x](auto k) { return V::template Tap<k>(here, next, row + x); };
            V::StoreFloats(row + x, WeightedSum<V>(registers, tap));
            here = next;
        }
    }
    for (; x + V::kFloats <= innerWidth; x += V::kFloats)
    {
        V::StoreFloats(row + x, sumAt(x));
    }
    V::StoreFloats(row + innerWidth - V::kFloats, last);
}

// Output row from nine rows of sums, the first being row `top`, and the middle one's pixels.
template <typename V>
static inline void SharpenRow(const SharpenRegisters<V> &registers, const SharpenRing &ring, std::size_t top,
                              const std::uint8_t *in, std::uint8_t *out, std::size_t innerWidth)
{
    const float *taps[kSharpenTaps];
    for (std::size_t k = 0; k < kSharpenTaps; ++k)
    {
        taps[k] = ring.Row(top + k);
    }
    const auto sharpenAt = [&registers, &taps, in](std::size_t x) {
        const auto blurred = WeightedSum<V>(registers, [&taps, x](auto k) { return V::LoadFloats(taps[k] + x); });
        const auto pixel = V::LoadSignedWords(in + 2 * x);
        return V::Add(pixel, V::Multiply(registers.amount, V::Subtract(pixel, blurred)));
    };
    constexpr std::size_t kStep = 2 * V::kFloats;
    for (std::size_t x = 0; x + kStep <= innerWidth; x += kStep)
    {
        V::StoreRounded(out + 2 * x, sharpenAt(x), sharpenAt(x + V::kFloats));
    }
    const std::size_t last = innerWidth - kStep;
    V::StoreRounded(out + 2 * last, sharpenAt(last), sharpenAt(last + V::kFloats));
}

template <typename V>
static void SharpenVector(const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint16_t *output,
                          std::ptrdiff_t outputStride, std::size_t width, std::size_t height, float *scratch)
{
    if (width < 2 * V::kFloats + 2 * kSharpenBorder || height < kSharpenTaps)
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

    const SharpenRing ring = MakeRing(scratch, width, height);
    for (std::size_t y = 0; y < height; ++y)
    {
        ConvertRow<V>(RowAt(input, inputStride, y), ring.Row(y), width);
        SumHorizontally<V>(registers, ring.Row(y), width);
        if (y + 1 >= kSharpenTaps)
        {
            const std::size_t centre = y - kSharpenBorder;
            const std::uint8_t *in = RowAt(input, inputStride, centre) + 2 * kSharpenBorder;
            std::uint8_t *out = RowAt(output, outputStride, centre) + 2 * kSharpenBorder;
            SharpenRow<V>(registers, ring, y + 1 - kSharpenTaps, in, out, width - 2 * kSharpenBorder);
        }
    }
}
} // namespace mft_kernels
