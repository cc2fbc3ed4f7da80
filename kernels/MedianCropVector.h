// 3x3 median for any vector type.
// Each row's triples are sorted once and serve three output rows; what two neighbouring rows have in common is computed
// once for the two output rows that both need it.
#pragma once

#include "kernels/PointwiseVector.h"

namespace mft_kernels
{
template <typename V>
struct SortedTriple
{
    typename V::Reg low, middle, high;
};

template <typename V>
static inline SortedTriple<V> SortTriple(const std::uint8_t *centre)
{
    const auto a = V::LoadOnce(centre - 2);
    const auto b = V::LoadOnce(centre);
    const auto c = V::LoadOnce(centre + 2);
    const auto small = V::MinSigned(a, b);
    const auto large = V::MaxSigned(a, b);
    const auto inner = V::MaxSigned(small, c);
    return {V::MinSigned(small, c), V::MinSigned(inner, large), V::MaxSigned(inner, large)};
}

// What rows r and r + 1 contribute to the medians of both: the larger low, both middles in order, the smaller high.
template <typename V>
struct JoinedPair
{
    typename V::Reg low, smallMiddle, largeMiddle, high;
};

template <typename V>
static inline JoinedPair<V> Join(const SortedTriple<V> &a, const SortedTriple<V> &b)
{
    return {V::MaxSigned(a.low, b.low), V::MinSigned(a.middle, b.middle), V::MaxSigned(a.middle, b.middle),
            V::MinSigned(a.high, b.high)};
}

// The median of nine is the median of the largest low, the median middle and the smallest high.
template <typename V>
static inline typename V::Reg MedianOf(const JoinedPair<V> &pair, const SortedTriple<V> &third)
{
    const auto low = V::MaxSigned(pair.low, third.low);
    const auto middle = V::MaxSigned(pair.smallMiddle, V::MinSigned(pair.largeMiddle, third.middle));
    const auto high = V::MinSigned(pair.high, third.high);
    return V::MaxSigned(V::MinSigned(low, middle), V::MinSigned(V::MaxSigned(low, middle), high));
}

// Rows that stay in the first cache while the columns go by. Each band asks for the next one's rows: so many at a time
// are more than the processor follows by itself. Each row of a wide frame lies in a page of its own: with 32 rows the
// input, the output and what is asked for are more pages than some processors translate at a time.
constexpr std::ptrdiff_t kBandRows = 16;

// One vector of columns, `rows` output rows; `in` is the centre of the first output pixel.
template <typename V>
static inline void MedianColumn(const std::uint8_t *in, std::ptrdiff_t inputStride, std::uint8_t *out,
                                std::ptrdiff_t outputStride, std::size_t rows)
{
    auto above = SortTriple<V>(in - inputStride);
    auto here = SortTriple<V>(in);
    for (; rows >= 2; rows -= 2)
    {
        PrefetchFar(in + kBandRows * inputStride);
        PrefetchFar(in + (kBandRows + 1) * inputStride);
        const auto below = SortTriple<V>(in + inputStride);
        const auto pair = Join<V>(here, below);
        V::Store(out, MedianOf<V>(pair, above));
        const auto next = SortTriple<V>(in + 2 * inputStride);
        V::Store(out + outputStride, MedianOf<V>(pair, next));
        above = below;
        here = next;
        in += 2 * inputStride;
        out += 2 * outputStride;
    }
    if (rows != 0)
    {
        V::Store(out, MedianOf<V>(Join<V>(above, here), SortTriple<V>(in + inputStride)));
    }
}

// Output rows [begin, end), columns [0, columns) of which every neighbour lies in its own row.
template <typename V>
static inline void MedianRows(const MedianCropInput &input, std::uint16_t *output, std::ptrdiff_t outputStride,
                              std::size_t begin, std::size_t end, std::size_t columns)
{
    constexpr auto kBand = static_cast<std::size_t>(kBandRows);
    for (; begin < end; begin += kBand)
    {
        const std::size_t rows = end - begin < kBand ? end - begin : kBand;
        const std::uint8_t *in = RowAt(input.pixels, input.stride, input.cropY + begin) + 2 * input.cropX;
        std::uint8_t *out = RowAt(output, outputStride, begin);
        const auto column = [&](std::size_t x) {
            MedianColumn<V>(in + 2 * x, input.stride, out + 2 * x, outputStride, rows);
        };
        // The first and the last column of vectors overlap their neighbours; those between load from whole vectors
        // where the frame allows.
        column(0);
        std::size_t x = (V::kBytes - reinterpret_cast<std::uintptr_t>(in) % V::kBytes) / 2;
        for (; x + V::kWords <= columns; x += V::kWords)
        {
            column(x);
        }
        if (x < columns)
        {
            column(columns - V::kWords);
        }
    }
}

template <typename V>
static void MedianCropVector(const MedianCropInput &input, std::uint16_t *output, std::ptrdiff_t outputStride,
                             std::size_t width, std::size_t height)
{
    const std::size_t wholeRow = (width + kMedianRun - 1) / kMedianRun * kMedianRun;
    const auto wholeBytes = static_cast<std::ptrdiff_t>(2 * wholeRow);
    const std::size_t inFrame = input.width - 1 - input.cropX; // columns whose neighbours do not leave the row
    const bool rowsApart = outputStride >= wholeBytes || -outputStride >= wholeBytes;
    if (height == 0)
    {
        return;
    }
    if ((!rowsApart && (outputStride <= 0 || outputStride % 2 != 0)))
    {
        MedianCropScalar(input, output, outputStride, width, height);
        return;
    }
    // Where rows overlap, each but the last keeps what lies before the next one's start, so none needs to wait.
    const std::size_t shortRow = rowsApart ? wholeRow : static_cast<std::size_t>(outputStride) / 2;
    const auto process = [&](std::size_t begin, std::size_t end, std::size_t length) {
        const std::size_t vectorColumns = length < inFrame ? length : inFrame;
        std::size_t done = 0;
        if (vectorColumns >= V::kWords)
        {
            MedianRows<V>(input, output, outputStride, begin, end, vectorColumns);
            done = vectorColumns;
        }
        for (std::size_t y = begin; done < length && y < end; ++y)
        {
            MedianRowScalar(input, RowAt(output, outputStride, y), y, done, length);
        }
    };
    process(0, height - 1, shortRow);
    process(height - 1, height, wholeRow);
}
} // namespace mft_kernels
