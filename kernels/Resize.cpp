#include "kernels/Resize.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <numeric>
#include <stdexcept>

#include "kernels/Rows.h"
#include "kernels/Scalar.h"

namespace mft_kernels
{
namespace
{
constexpr std::size_t kMaximumSize = 65535;
constexpr std::size_t kGroup = 4;       // columns per narrow window
constexpr std::size_t kWindow = 8;      // pixels in it
constexpr std::size_t kWideGroup = 16;  // columns per wide window
constexpr std::size_t kWideWindow = 32; // pixels in it

std::size_t RoundUp(std::size_t value, std::size_t multiple)
{
    return (value + multiple - 1) / multiple * multiple;
}

// Output coordinate i samples ((2 i + 1) p - q) / 2 q for input : output = p : q in lowest terms.
std::uint32_t Denominator(std::size_t inputSize, std::size_t outputSize)
{
    return static_cast<std::uint32_t>(2 * outputSize / std::gcd(inputSize, outputSize));
}

std::vector<ResizeTap> MakeTaps(std::size_t inputSize, std::size_t outputSize, std::uint32_t denominator)
{
    std::vector<ResizeTap> taps(outputSize);
    const auto last = static_cast<std::int64_t>(inputSize) - 1;
    const auto full = 2 * static_cast<std::int64_t>(outputSize);
    for (std::size_t i = 0; i < outputSize; ++i)
    {
        const auto centre = 2 * static_cast<std::int64_t>(i) + 1;
        const std::int64_t numerator = centre * (last + 1) - full / 2;
        const std::int64_t position =
            numerator >= 0 ? numerator / full : -1; // the source is left of pixel 0 at most by 1/2
        const std::int64_t rest = numerator - position * full;
        taps[i].first = static_cast<std::uint32_t>(std::clamp<std::int64_t>(position, 0, last));
        taps[i].second = static_cast<std::uint32_t>(std::clamp<std::int64_t>(position + 1, 0, last));
        taps[i].weight = static_cast<std::uint32_t>(rest * denominator / full);
    }
    return taps;
}

void ChooseDivision(ResizeTables &tables)
{
    const std::uint64_t denominator = std::uint64_t{tables.columnDenominator} * tables.rowDenominator;
    const std::uint64_t largest = denominator * 65535 + denominator / 2;
    tables.shift = static_cast<std::uint32_t>(std::bit_width(denominator)) - 1;
    if (std::has_single_bit(denominator) && largest <= std::numeric_limits<std::uint32_t>::max())
    {
        tables.division = ResizeDivision::Shift;
    }
    else if (largest <= std::numeric_limits<std::int32_t>::max())
    {
        // Exact for sums of 31 bits: the reciprocal's error times the largest sum stays below one unit of the quotient.
        tables.division = ResizeDivision::Reciprocal;
        tables.reciprocal = static_cast<std::uint32_t>((std::uint64_t{1} << (32 + tables.shift)) / denominator + 1);
    }
    else
    {
        tables.division = ResizeDivision::Double;
    }
}

// Start of the window of `window` pixels that all taps of the group lie in; false when there is none.
bool FindWindow(const std::vector<ResizeTap> &taps, std::size_t begin, std::size_t group, std::size_t window,
                std::size_t inputWidth, std::uint32_t &start)
{
    const std::size_t last = std::min(begin + group, taps.size()) - 1;
    start = std::min(taps[begin].first, static_cast<std::uint32_t>(inputWidth - window));
    return taps[last].second - start < window;
}
} // namespace

ResizePlan::ResizePlan(std::size_t inputWidth, std::size_t inputHeight, std::size_t outputWidth,
                       std::size_t outputHeight)
{
    for (const std::size_t size : {inputWidth, inputHeight, outputWidth, outputHeight})
    {
        if (size == 0 || size > kMaximumSize)
        {
            throw std::invalid_argument("resize size is 0 or above 65535");
        }
    }
    tables.inputWidth = inputWidth;
    tables.inputHeight = inputHeight;
    tables.outputWidth = outputWidth;
    tables.outputHeight = outputHeight;
    tables.columnDenominator = Denominator(inputWidth, outputWidth);
    tables.rowDenominator = Denominator(inputHeight, outputHeight);
    tables.scratchRow = RoundUp(outputWidth, kWideGroup);
    columns = MakeTaps(inputWidth, outputWidth, tables.columnDenominator);
    rows = MakeTaps(inputHeight, outputHeight, tables.rowDenominator);
    tables.columns = columns.data();
    tables.rows = rows.data();
    ChooseDivision(tables);

    constexpr std::uint32_t kLargestPairWeight = 32767;
    if (tables.columnDenominator <= kLargestPairWeight && tables.rowDenominator <= kLargestPairWeight)
    {
        MakePairWeights();
        MakeWindows();
        MakeWideWindows();
    }
}

void ResizePlan::MakePairWeights()
{
    pairWeights.assign(2 * tables.scratchRow, 0);
    for (std::size_t x = 0; x < columns.size(); ++x)
    {
        pairWeights[2 * x] = static_cast<std::int16_t>(tables.columnDenominator - columns[x].weight);
        pairWeights[2 * x + 1] = static_cast<std::int16_t>(columns[x].weight);
    }
    tables.pairWeights = pairWeights.data();
}

void ResizePlan::MakeWindows()
{
    if (tables.inputWidth < kWindow)
    {
        return;
    }
    const std::size_t groups = tables.scratchRow / kGroup;
    windowStarts.assign(groups, 0);
    windowShuffles.assign(groups * 4 * kGroup, 0);
    for (std::size_t begin = 0; begin < columns.size(); begin += kGroup)
    {
        std::uint32_t start = 0;
        if (!FindWindow(columns, begin, kGroup, kWindow, tables.inputWidth, start))
        {
            return;
        }
        windowStarts[begin / kGroup] = start;
        for (std::size_t x = begin; x < std::min(begin + kGroup, columns.size()); ++x)
        {
            const auto first = static_cast<std::uint8_t>(2 * (columns[x].first - start));
            const auto second = static_cast<std::uint8_t>(2 * (columns[x].second - start));
            std::uint8_t *shuffle = &windowShuffles[4 * x];
            shuffle[0] = first;
            shuffle[1] = static_cast<std::uint8_t>(first + 1);
            shuffle[2] = second;
            shuffle[3] = static_cast<std::uint8_t>(second + 1);
        }
    }
    tables.windowStarts = windowStarts.data();
    tables.windowShuffles = windowShuffles.data();
}

void ResizePlan::MakeWideWindows()
{
    if (tables.inputWidth < kWideWindow)
    {
        return;
    }
    wideStarts.assign(tables.scratchRow / kWideGroup, 0);
    widePermutes.assign(2 * tables.scratchRow, 0);
    for (std::size_t begin = 0; begin < columns.size(); begin += kWideGroup)
    {
        std::uint32_t start = 0;
        if (!FindWindow(columns, begin, kWideGroup, kWideWindow, tables.inputWidth, start))
        {
            return;
        }
        wideStarts[begin / kWideGroup] = start;
        for (std::size_t x = begin; x < std::min(begin + kWideGroup, columns.size()); ++x)
        {
            widePermutes[2 * x] = static_cast<std::uint16_t>(columns[x].first - start);
            widePermutes[2 * x + 1] = static_cast<std::uint16_t>(columns[x].second - start);
        }
    }
    tables.wideStarts = wideStarts.data();
    tables.widePermutes = widePermutes.data();
}

std::size_t ResizePlan::ScratchSize() const
{
    return kResizeScratchRows * tables.scratchRow * sizeof(std::int32_t) + kResizeScratchSlack;
}

const ResizeTables &ResizePlan::Tables() const
{
    return tables;
}

void ResizeScalar(const ResizeTables &tables, const std::uint16_t *input, std::ptrdiff_t inputStride,
                  std::uint16_t *output, std::ptrdiff_t outputStride, void * /*scratch*/)
{
    const std::uint64_t wholeColumn = tables.columnDenominator;
    const std::uint64_t wholeRow = tables.rowDenominator;
    const std::uint64_t denominator = wholeColumn * wholeRow;
    for (std::size_t y = 0; y < tables.outputHeight; ++y)
    {
        const ResizeTap &row = tables.rows[y];
        const std::uint8_t *upper = RowAt(input, inputStride, row.first);
        const std::uint8_t *lower = RowAt(input, inputStride, row.second);
        std::uint8_t *out = RowAt(output, outputStride, y);
        for (std::size_t x = 0; x < tables.outputWidth; ++x)
        {
            const ResizeTap &column = tables.columns[x];
            const auto across = [&column, wholeColumn](const std::uint8_t *line) {
                return LoadWord(line, column.first) * (wholeColumn - column.weight) +
                       std::uint64_t{LoadWord(line, column.second)} * column.weight;
            };
            const std::uint64_t sum = across(upper) * (wholeRow - row.weight) + across(lower) * row.weight;
            StoreWord(out, x, static_cast<std::uint16_t>((sum + denominator / 2) / denominator));
        }
    }
}

void Resize(const ResizePlan &plan, const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint16_t *output,
            std::ptrdiff_t outputStride, void *scratch)
{
    ActiveKernels().resize(plan.Tables(), input, inputStride, output, outputStride, scratch);
}
} // namespace mft_kernels
