// Every kernel of every instruction set against the scalar reference, in guarded memory.
#include "tests/kernels/KernelCase.h"

#include "kernels/InstructionSet.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace mft_kernels
{
namespace
{
constexpr std::size_t kWidths = 130; // past two vectors of the widest set

std::vector<Layout> AllLayouts()
{
    return {
        {true, 0, 0, false},  // ends at the page behind, rows touch
        {false, 0, 0, false}, // starts at the page in front
        {true, 0, 6, false},  // padded
        {false, 3, 7, false}, // odd addresses
        {true, 0, 10, true},  // negative stride
        {false, 0, 0, true},
    };
}

std::vector<std::string> VectorSets()
{
    std::vector<std::string> names;
    for (const std::string_view name : SupportedInstructionSets())
    {
        if (name != "scalar")
        {
            names.emplace_back(name);
        }
    }
    return names;
}

class DifferentialTest : public testing::TestWithParam<std::string>
{
  protected:
    // Pairs each input layout with a different one for the output.
    void RunAllLayouts(KernelCase c)
    {
        const std::vector<Layout> layouts = AllLayouts();
        for (std::size_t i = 0; i < layouts.size(); ++i)
        {
            c.input = layouts[i];
            c.output = layouts[(i + c.width) % layouts.size()];
            c.contents = static_cast<Contents>((i + c.width + c.height) % 3);
            c.seed = ++seed;
            ASSERT_EQ(CompareWithScalar(c, GetParam()), "");
        }
    }

    std::uint64_t seed = 0;
};

TEST_P(DifferentialTest, PointwiseKernelsAndCopiesOfEveryWidth)
{
    for (const Kernel kernel : {Kernel::TenToEight, Kernel::Confidence, Kernel::ClampAbove, Kernel::CopyRectangle})
    {
        for (std::size_t width = 1; width <= kWidths; ++width)
        {
            KernelCase c;
            c.kernel = kernel;
            c.width = width;
            c.height = 1 + width % 5;
            c.threshold = static_cast<std::uint16_t>(width * 501);
            RunAllLayouts(c);
        }
    }
}

TEST_P(DifferentialTest, PlaneCopiesAndOverlappingMovesOfEverySize)
{
    for (std::size_t size = 0; size <= 2 * kWidths; ++size)
    {
        KernelCase c;
        c.kernel = Kernel::CopyPlane;
        c.width = size;
        c.height = 1;
        RunAllLayouts(c);
        c.kernel = Kernel::MovePlane;
        for (const std::ptrdiff_t distance : {-300, -64, -33, -1, 0, 1, 31, 64, 300})
        {
            c.moveDistance = distance;
            RunAllLayouts(c);
        }
    }
}

TEST_P(DifferentialTest, LongMovesInBothDirections)
{
    for (const std::ptrdiff_t distance : {-4096, -100, 100, 4096})
    {
        KernelCase c;
        c.kernel = Kernel::MovePlane;
        c.width = 4096;
        c.height = 1;
        c.moveDistance = distance;
        RunAllLayouts(c);
    }
}

TEST_P(DifferentialTest, MedianOfEveryWidth)
{
    for (std::size_t width = 1; width <= kWidths; ++width)
    {
        KernelCase c;
        c.kernel = Kernel::MedianCrop;
        c.width = width;
        c.height = 1 + width % 19;
        c.marginRight = 1 + width % 11;
        c.marginLeft = 1 + width % 3;
        RunAllLayouts(c);
    }
}

TEST_P(DifferentialTest, MedianRowsThatOverlapOrLeaveGaps)
{
    for (std::size_t width = 1; width <= kWidths; width += 3)
    {
        for (const std::size_t pitch : {std::size_t{1}, width / 2 + 1, width, width + 3, width + 20})
        {
            KernelCase c;
            c.kernel = Kernel::MedianCrop;
            c.width = width;
            c.height = 5;
            c.outputPitch = pitch;
            c.marginBottom = 1 + width % 2;
            RunAllLayouts(c);
        }
    }
}

TEST_P(DifferentialTest, ResizeToEveryWidth)
{
    for (std::size_t width = 1; width <= kWidths; ++width)
    {
        for (const std::size_t inputWidth : {width, 2 * width, 3 * width + 1, width * 83 / 72 + 1, width / 2 + 1})
        {
            KernelCase c;
            c.kernel = Kernel::Resize;
            c.width = width;
            c.height = 1 + width % 7;
            c.inputWidth = inputWidth;
            c.inputHeight = 1 + width % 9;
            RunAllLayouts(c);
        }
    }
}

TEST_P(DifferentialTest, ResizeWithEveryKindOfDivision)
{
    struct Size
    {
        std::size_t inputWidth, inputHeight, width, height;
    };
    for (const Size &size : {Size{415, 415, 360, 360}, // reciprocal
                             Size{1920, 12, 1280, 8},  // shift
                             Size{641, 31, 640, 33},   // double
                             Size{40, 3, 16385, 2}})   // weights beyond 15 bits
    {
        KernelCase c;
        c.kernel = Kernel::Resize;
        c.width = size.width;
        c.height = size.height;
        c.inputWidth = size.inputWidth;
        c.inputHeight = size.inputHeight;
        RunAllLayouts(c);
    }
}

TEST_P(DifferentialTest, SharpenOfEveryWidth)
{
    for (std::size_t width = 1; width <= kWidths; ++width)
    {
        // Low frames leave no scratch memory for vectors; the high ones end anywhere in a band of rows.
        for (const std::size_t height : {std::size_t{8}, std::size_t{9}, 10 + width % 30, 60 + width % 9})
        {
            KernelCase c;
            c.kernel = Kernel::Sharpen;
            c.width = width;
            c.height = height;
            RunAllLayouts(c);
        }
    }
}

TEST_P(DifferentialTest, SharpenInTiles)
{
    constexpr std::size_t kTile = 224;
    for (const std::size_t tiles : {1, 2})
    {
        for (std::size_t more = 0; more <= 48; ++more)
        {
            KernelCase c;
            c.kernel = Kernel::Sharpen;
            c.width = tiles * kTile + more;
            c.height = 30 + more % 8;
            RunAllLayouts(c);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EverySet, DifferentialTest, testing::ValuesIn(VectorSets()), [](const auto &set) {
    std::string name = set.param;
    std::erase(name, '.');
    return name;
});
} // namespace
} // namespace mft_kernels
