// What the scalar references promise, each checked against an independent formula or a published value.
#include "tests/kernels/EverySet.h"

#include "kernels/Confidence.h"
#include "kernels/MedianCrop.h"
#include "kernels/Resize.h"
#include "kernels/Sharpen.h"
#include "kernels/TenToEight.h"
#include "kernels/Threshold.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

using namespace mft_kernels;

namespace
{
class ReferenceTest : public testing::TestWithParam<std::string>
{
  protected:
    void SetUp() override { ASSERT_TRUE(ForceInstructionSet(GetParam())); }
    void TearDown() override { ForceInstructionSet(""); }
};

std::vector<std::uint16_t> ResizeImage(const std::vector<std::uint16_t> &image, std::size_t width, std::size_t height,
                                       std::size_t newWidth, std::size_t newHeight)
{
    const ResizePlan plan(width, height, newWidth, newHeight);
    std::vector<std::uint8_t> scratch(plan.ScratchSize());
    std::vector<std::uint16_t> result(newWidth * newHeight);
    Resize(plan, image.data(), static_cast<std::ptrdiff_t>(2 * width), result.data(),
           static_cast<std::ptrdiff_t>(2 * newWidth), scratch.data());
    return result;
}

std::vector<std::uint16_t> SharpenImage(const std::vector<std::uint16_t> &image, std::size_t width, std::size_t height)
{
    std::vector<std::uint16_t> result(image.size(), 7);
    std::vector<float> scratch(width * height);
    const auto stride = static_cast<std::ptrdiff_t>(2 * width);
    Sharpen(image.data(), stride, result.data(), stride, width, height, scratch.data());
    return result;
}

TEST_P(ReferenceTest, TenToEightEqualsTheSinglePrecisionProductForEveryWord)
{
    std::vector<std::uint16_t> words(65536);
    std::iota(words.begin(), words.end(), std::uint16_t{0});
    std::vector<std::uint8_t> bytes(words.size());
    ConvertTenToEight(words.data(), 131072, bytes.data(), 65536, 65536, 1);
    for (std::size_t v = 0; v < words.size(); ++v)
    {
        const float scaled = static_cast<float>((v << 6U) & 0xFFFFU) * 0.0038910505F;
        ASSERT_EQ(bytes[v], std::lrint(scaled)) << v;
    }
}

TEST_P(ReferenceTest, ConfidenceIsFourBits)
{
    std::vector<std::uint8_t> bytes(256);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    ExtractConfidence(bytes.data(), 256, 256, 1);
    for (int value = 0; value < 256; ++value)
    {
        // One more every eight from 23, then full.
        EXPECT_EQ(bytes[static_cast<std::size_t>(value)], std::clamp((value - 15) / 8, 0, 15)) << value;
    }
}

TEST_P(ReferenceTest, ClampComparesUnsigned)
{
    std::vector<std::uint16_t> pixels(100, 65535);
    pixels[0] = 999;
    pixels[1] = 1000;
    ClampAbove(pixels.data(), 200, 100, 1, 1000);
    EXPECT_EQ(pixels[0], 999);
    EXPECT_TRUE(std::all_of(pixels.begin() + 1, pixels.end(), [](std::uint16_t p) { return p == 1000; }));
}

TEST_P(ReferenceTest, ResizeIsTheExactValueRoundedToNearest)
{
    // 70 x 1 to 61 x 1, ramp with a slope: the exact value is a fraction over 122, in which nothing ties.
    std::vector<std::uint16_t> ramp(70);
    for (std::size_t x = 0; x < ramp.size(); ++x)
    {
        ramp[x] = static_cast<std::uint16_t>(937 * x);
    }
    const std::vector<std::uint16_t> result = ResizeImage(ramp, 70, 1, 61, 1);
    for (std::size_t x = 0; x < result.size(); ++x)
    {
        const double position = std::clamp((static_cast<double>(x) + 0.5) * 70 / 61 - 0.5, 0.0, 69.0);
        EXPECT_NEAR(result[x], 937 * position, 0.5001) << x;
    }
}

TEST_P(ReferenceTest, ResizeKeepsEdgesSameSizesAndConstants)
{
    const std::vector<std::uint16_t> image = {100, 300, 65535, 0};
    EXPECT_EQ(ResizeImage(image, 2, 2, 2, 2), image);
    // Twice as large: quarters between neighbours, edges repeated, halves upward (300 / 4 + 3 * 100 / 4 = 150).
    const std::vector<std::uint16_t> row = ResizeImage({100, 302}, 2, 1, 4, 1);
    EXPECT_EQ(row, (std::vector<std::uint16_t>{100, 151, 252, 302}));
    const std::vector<std::uint16_t> constant(33 * 47, 65535);
    EXPECT_EQ(ResizeImage(constant, 33, 47, 71, 19), std::vector<std::uint16_t>(71 * 19, 65535));
}

TEST_P(ReferenceTest, MedianComparesSigned)
{
    // Five of the nine are 0x8000 and above, which sort below zero.
    std::vector<std::uint16_t> frame(40 * 3, 5);
    for (const std::size_t i : {0U, 1U, 2U, 40U, 41U})
    {
        frame[i] = 0x8001;
    }
    std::vector<std::uint16_t> out(40);
    ASSERT_TRUE(MedianCrop3x3({frame.data(), 80, 40, 3, 1, 1}, out.data(), 80, 34, 1));
    EXPECT_EQ(out[0], 0x8001);
    EXPECT_EQ(out[1], 5);
    EXPECT_EQ(out[38], 5);
    EXPECT_EQ(out[39], 5); // last pixel of the last run
}

TEST_P(ReferenceTest, MedianRefusesRectanglesAtTheFramesEdge)
{
    std::vector<std::uint16_t> frame(100, 1);
    std::vector<std::uint16_t> out(200, 9);
    const auto run = [&](std::size_t cropX, std::size_t cropY, std::size_t width, std::size_t height) {
        return MedianCrop3x3({frame.data(), 20, 10, 10, cropX, cropY}, out.data(), 32, width, height);
    };
    EXPECT_FALSE(run(0, 1, 8, 8));
    EXPECT_FALSE(run(1, 0, 8, 8));
    EXPECT_FALSE(run(1, 1, 9, 8));
    EXPECT_FALSE(run(1, 1, 8, 9));
    EXPECT_FALSE(run(1, 1, SIZE_MAX, 8));
    EXPECT_EQ(std::count(out.begin(), out.end(), 9), 200);
    EXPECT_TRUE(run(1, 1, 8, 8));
}

TEST_P(ReferenceTest, SharpenKeepsConstantsAndLeavesTheBorder)
{
    constexpr std::size_t kWidth = 75;
    constexpr std::size_t kHeight = 61;
    for (const unsigned value : {0U, 1U, 1000U, 32767U, 0x8000U})
    {
        const std::vector<std::uint16_t> image(kWidth * kHeight, static_cast<std::uint16_t>(value));
        const std::vector<std::uint16_t> result = SharpenImage(image, kWidth, kHeight);
        for (std::size_t i = 0; i < result.size(); ++i)
        {
            const std::size_t x = i % kWidth;
            const std::size_t y = i / kWidth;
            const bool inside = x >= 4 && x < kWidth - 4 && y >= 4 && y < kHeight - 4;
            const unsigned expected = value == 0x8000U ? 0U : value; // negative pixels end at 0
            ASSERT_EQ(result[i], inside ? expected : 7U) << value << " at " << x << ", " << y;
        }
    }
}

TEST_P(ReferenceTest, SharpenIsAnUnsharpMask)
{
    // One bright pixel: its own blur is g0 * g0, a neighbour's is g0 * g1, which turns it negative and so to 0.
    constexpr std::size_t kSize = 81;
    std::vector<std::uint16_t> image(kSize * kSize, 0);
    image[40 * kSize + 40] = 10000;
    const std::vector<std::uint16_t> result = SharpenImage(image, kSize, kSize);
    const double centre = 10000 + 0.85 * (10000 - 10000 * 0.20416369 * 0.20416369);
    EXPECT_EQ(result[40 * kSize + 40], std::lrint(centre));
    EXPECT_EQ(result[40 * kSize + 41], 0);
}

INSTANTIATE_TEST_SUITE_P(EverySet, ReferenceTest, testing::ValuesIn(AllSets()), NameOfSet);
} // namespace
