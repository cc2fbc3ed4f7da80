// Bilinear resize for any vector type: each source row's horizontal sums are made once, in 32-bit integers, and two
// rows of them give an output row. Every sum carries half the column denominator, which weighed down the rows is half
// of the whole: the rounding.
#pragma once

#include "kernels/PointwiseVector.h"

namespace mft_kernels
{
static inline void SumRowScalar(const ResizeTables &tables, const std::uint8_t *in, std::int32_t *sums)
{
    const std::uint32_t half = tables.columnDenominator / 2;
    for (std::size_t x = 0; x < tables.outputWidth; ++x)
    {
        const ResizeTap &tap = tables.columns[x];
        const std::uint32_t rest = tables.columnDenominator - tap.weight;
        sums[x] =
            static_cast<std::int32_t>(LoadWord(in, tap.first) * rest + LoadWord(in, tap.second) * tap.weight + half);
    }
    for (std::size_t x = tables.outputWidth; x < tables.scratchRow; ++x)
    {
        sums[x] = 0;
    }
}

// Calls store(target, x) for whole blocks of pixels, the last one into memory of its own.
template <typename V, typename Store>
static inline void StoreRow(const ResizeTables &tables, std::uint8_t *out, const Store &store)
{
    const std::size_t width = tables.outputWidth; // a store might change the table, for all the compiler knows
    std::size_t x = 0;
    for (; x + V::kResizeBlock <= width; x += V::kResizeBlock)
    {
        store(out + 2 * x, x);
    }
    if (x < width)
    {
        std::uint8_t block[2 * V::kResizeBlock];
        store(block, x);
        std::memcpy(out + 2 * x, block, 2 * (width - x));
    }
}

template <typename V>
static inline void WeighRows(const ResizeTables &tables, const std::int32_t *upper, const std::int32_t *lower,
                             std::uint32_t weight, std::uint8_t *out)
{
    const std::uint32_t rest = tables.rowDenominator - weight;
    if (tables.division == ResizeDivision::Double)
    {
        // Half a unit more keeps the rounding of the quotient away from whole numbers.
        constexpr double kHalfUnit = 0.5;
        const double factor = 1.0 / (static_cast<double>(tables.columnDenominator) * tables.rowDenominator);
        StoreRow<V>(tables, out, [=](std::uint8_t *target, std::size_t block) {
            V::StoreWords(target, block, [=](std::size_t x) {
                return V::WeighInDoubles(V::Load(upper + x), V::Load(lower + x), rest, weight, kHalfUnit, factor);
            });
        });
        return;
    }
    const auto restFactor = V::Dwords(rest);
    const auto weightFactor = V::Dwords(weight);
    const auto sumAt = [=](std::size_t x) {
        return V::AddDwords(V::MultiplyDwords(V::Load(upper + x), restFactor),
                            V::MultiplyDwords(V::Load(lower + x), weightFactor));
    };
    const auto shift = V::ShiftCount(tables.shift);
    if (tables.division == ResizeDivision::Shift)
    {
        StoreRow<V>(tables, out, [=](std::uint8_t *target, std::size_t block) {
            V::StoreWords(target, block, [=](std::size_t x) { return V::ShiftRightDwords(sumAt(x), shift); });
        });
        return;
    }
    const auto reciprocal = V::Dwords(tables.reciprocal);
    const auto wholeShift = V::ShiftCount(32 + tables.shift);
    StoreRow<V>(tables, out, [=](std::uint8_t *target, std::size_t block) {
        V::StoreQuotients(target, block, sumAt, reciprocal, shift, wholeShift);
    });
}

// Rows of sums, made two at a time: source row r stands in slot r % 4.
template <typename V>
class ResizeSums
{
  public:
    ResizeSums(const ResizeTables &sizes, const std::uint16_t *pixels, std::ptrdiff_t pixelStride, void *scratch)
        : tables(sizes), input(pixels), stride(pixelStride)
    {
        auto *bytes = static_cast<std::uint8_t *>(scratch);
        const std::size_t over = reinterpret_cast<std::uintptr_t>(bytes) & kResizeScratchSlack;
        rows = static_cast<std::int32_t *>(static_cast<void *>(bytes + ((64 - over) & kResizeScratchSlack)));
    }

    const std::int32_t *Row(std::uint32_t row)
    {
        const std::uint32_t first = row & ~1U;
        if (held[row / 2 % 2] != first)
        {
            // The last row of an odd height is its own partner.
            const std::uint32_t second = first + 1 < tables.inputHeight ? first + 1 : first;
            const std::uint8_t *upper = RowAt(input, stride, first);
            const std::uint8_t *lower = RowAt(input, stride, second);
            if (V::HasWindows(tables))
            {
                V::SumRows(tables, upper, lower, Slot(first), Slot(first + 1));
            }
            else
            {
                SumRowScalar(tables, upper, Slot(first));
                SumRowScalar(tables, lower, Slot(first + 1));
            }
            held[row / 2 % 2] = first;
        }
        return Slot(row);
    }

  private:
    std::int32_t *Slot(std::uint32_t row) const
    {
        return rows + row % kResizeScratchRows * tables.scratchRow;
    }

    static constexpr std::uint32_t kNone = 0xFFFFFFFF;
    const ResizeTables &tables;
    const std::uint16_t *input;
    std::ptrdiff_t stride;
    std::int32_t *rows;
    std::uint32_t held[2] = {kNone, kNone};
};

template <typename V>
static void ResizeVector(const ResizeTables &tables, const std::uint16_t *input, std::ptrdiff_t inputStride,
                         std::uint16_t *output, std::ptrdiff_t outputStride, void *scratch)
{
    if (tables.pairWeights == nullptr)
    {
        ResizeScalar(tables, input, inputStride, output, outputStride, scratch);
        return;
    }
    ResizeSums<V> sums(tables, input, inputStride, scratch);
    for (std::size_t y = 0; y < tables.outputHeight; ++y)
    {
        const ResizeTap &tap = tables.rows[y];
        const std::int32_t *upper = sums.Row(tap.first);
        const std::int32_t *lower = sums.Row(tap.second);
        WeighRows<V>(tables, upper, lower, tap.weight, RowAt(output, outputStride, y));
    }
}
} // namespace mft_kernels
