// Every kernel of every instruction set against the scalar reference, in guarded memory.
#include "tests/kernels/EverySet.h"
#include "tests/kernels/KernelCase.h"

using namespace mft_kernels;

namespace
{
constexpr std::size_t kWidths = 130; // past two vectors of the widest set

constexpr Layout kLayouts[] = {
    {true, 0, 0, false},  // ends at the page behind, rows touch
    {false, 0, 0, false}, // starts at the page in front
    {true, 0, 6, false},  // padded
    {false, 3, 7, false}, // odd addresses
    {true, 0, 10, true},  // negative stride
    {false, 0, 0, true},
};

class DifferentialTest : public testing::TestWithParam<std::string>
{
  protected:
    // Pairs each input layout with a different one for the output.
    void RunAllLayouts(KernelCase c)
    {
        for (std::size_t i = 0; i < std::size(kLayouts); ++i)
        {
            c.input = kLayouts[i];
            c.output = kLayouts[(i + c.width) % std::size(kLayouts)];
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
            const auto threshold = static_cast<std::uint16_t>(width * 501);
            RunAllLayouts({.kernel = kernel, .width = width, .height = 1 + width % 5, .threshold = threshold});
        }
    }
}

TEST_P(DifferentialTest, PlaneCopiesAndMovesOfEverySizeAndDistance)
{
    for (std::size_t size = 0; size <= 2 * kWidths; ++size)
    {
        RunAllLayouts({.kernel = Kernel::CopyPlane, .width = size, .height = 1});
        for (const std::ptrdiff_t distance : {-300, -64, -33, -1, 0, 1, 31, 64, 300})
        {
            RunAllLayouts({.kernel = Kernel::MovePlane, .width = size, .height = 1, .moveDistance = distance});
        }
    }
    for (const std::ptrdiff_t distance : {-4096, -100, 100, 4096})
    {
        RunAllLayouts({.kernel = Kernel::MovePlane, .width = 4096, .height = 1, .moveDistance = distance});
    }
}

TEST_P(DifferentialTest, MedianOfEveryWidthAndWithRowsThatOverlapOrLeaveGaps)
{
    for (std::size_t width = 1; width <= kWidths; ++width)
    {
        RunAllLayouts({.kernel = Kernel::MedianCrop,
                       .width = width,
                       .height = 1 + width % 19,
                       .marginLeft = 1 + width % 3,
                       .marginRight = 1 + width % 11});
    }
    for (std::size_t width = 1; width <= kWidths; width += 3)
    {
        for (const std::size_t pitch : {std::size_t{1}, width / 2 + 1, width, width + 3, width + 20})
        {
            RunAllLayouts({.kernel = Kernel::MedianCrop,
                           .width = width,
                           .height = 5,
                           .marginBottom = 1 + width % 2,
                           .outputPitch = pitch});
        }
    }
}

TEST_P(DifferentialTest, ResizeToEveryWidthAndWithEveryKindOfDivision)
{
    const auto resize = [&](std::size_t inputWidth, std::size_t inputHeight, std::size_t width, std::size_t height) {
        RunAllLayouts({.kernel = Kernel::Resize,
                       .width = width,
                       .height = height,
                       .inputWidth = inputWidth,
                       .inputHeight = inputHeight});
    };
    for (std::size_t width = 1; width <= kWidths; ++width)
    {
        for (const std::size_t inputWidth : {width, 2 * width, 3 * width + 1, width * 83 / 72 + 1, width / 2 + 1})
        {
            resize(inputWidth, 1 + width % 9, width, 1 + width % 7);
        }
    }
    resize(415, 415, 360, 360); // reciprocal
    resize(1920, 12, 1280, 8);  // shift
    resize(641, 31, 640, 33);   // double
    resize(40, 3, 16385, 2);    // weights beyond 15 bits
}

TEST_P(DifferentialTest, SharpenOfEveryWidthAndInTiles)
{
    for (std::size_t width = 1; width <= kWidths; ++width)
    {
        // Low frames leave no scratch memory for vectors; the high ones end anywhere in a band of rows.
        for (const std::size_t height : {std::size_t{8}, std::size_t{9}, 10 + width % 30, 60 + width % 9})
        {
            RunAllLayouts({.kernel = Kernel::Sharpen, .width = width, .height = height});
        }
    }
    constexpr std::size_t kTile = 224;
    for (std::size_t more = 0; more <= 48; ++more)
    {
        RunAllLayouts({.kernel = Kernel::Sharpen, .width = kTile + more, .height = 30 + more % 8});
        RunAllLayouts({.kernel = Kernel::Sharpen, .width = 2 * kTile + more, .height = 30 + more % 8});
    }
}

INSTANTIATE_TEST_SUITE_P(EverySet, DifferentialTest, testing::ValuesIn(VectorSets()), NameOfSet);
} // namespace
