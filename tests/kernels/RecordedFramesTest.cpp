// Properties that hold for any picture, and all sets against the reference, on recorded frames.
// TARN_DATA_DIR names the folder of recordings; without it these tests are skipped.
#include "tests/kernels/PngFrame.h"

#include "kernels/InstructionSet.h"
#include "kernels/MedianCrop.h"
#include "kernels/Resize.h"
#include "kernels/Sharpen.h"
#include "kernels/TenToEight.h"
#include "kernels/Threshold.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace mft_kernels
{
namespace
{
class RecordedFramesTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        const char *directory = std::getenv("TARN_DATA_DIR");
        if (directory == nullptr || *directory == '\0')
        {
            GTEST_SKIP() << "TARN_DATA_DIR is not set: no recorded frames";
        }
        for (const char *name : {"/cabinet-orbit/depth_0000.png", "/boxes-and-hallway/depth_0003.png",
                                 "/tof-mug/ir_0000.png", "/tof-orchard/ir_0000.png"})
        {
            PngFrame frame;
            if (ReadPng(std::string(directory) + name, frame))
            {
                frames.push_back(std::move(frame));
            }
        }
        ASSERT_FALSE(frames.empty()) << "no readable frame in " << directory;
    }
    void TearDown() override
    {
        ForceInstructionSet("");
    }

    std::vector<PngFrame> frames;
};

// Median of the inner rectangle, sharpened, shrunk, clamped and converted: what a frame goes through for face login.
std::vector<std::uint8_t> RunChain(const PngFrame &frame)
{
    const std::size_t width = frame.width - 2;
    const std::size_t height = frame.height - 2;
    const std::size_t pitch = (width + kMedianRun - 1) / kMedianRun * kMedianRun;
    const auto bytes = [](std::size_t pixels) { return static_cast<std::ptrdiff_t>(2 * pixels); };
    std::vector<std::uint16_t> median(pitch * height);
    EXPECT_TRUE(MedianCrop3x3({frame.pixels.data(), bytes(frame.width), frame.width, frame.height, 1, 1}, median.data(),
                              bytes(pitch), width, height));
    std::vector<std::uint16_t> sharp(pitch * height);
    std::vector<float> floats(width * height);
    Sharpen(median.data(), bytes(pitch), sharp.data(), bytes(pitch), width, height, floats.data());
    const std::size_t newWidth = width * 72 / 83;
    const std::size_t newHeight = height * 72 / 83;
    const ResizePlan plan(width, height, newWidth, newHeight);
    std::vector<std::uint8_t> scratch(plan.ScratchSize());
    std::vector<std::uint16_t> small(newWidth * newHeight);
    Resize(plan, sharp.data(), bytes(pitch), small.data(), bytes(newWidth), scratch.data());
    ClampAbove(small.data(), bytes(newWidth), newWidth, newHeight, 1023);
    std::vector<std::uint8_t> result(newWidth * newHeight);
    ConvertTenToEight(small.data(), bytes(newWidth), result.data(), static_cast<std::ptrdiff_t>(newWidth), newWidth,
                      newHeight);
    return result;
}

TEST_F(RecordedFramesTest, EverySetGivesTheReferencesBytes)
{
    for (const PngFrame &frame : frames)
    {
        ASSERT_TRUE(ForceInstructionSet("scalar"));
        const std::vector<std::uint8_t> expected = RunChain(frame);
        EXPECT_NE(*std::max_element(expected.begin(), expected.end()), 0);
        for (const std::string_view name : SupportedInstructionSets())
        {
            ASSERT_TRUE(ForceInstructionSet(name));
            EXPECT_EQ(RunChain(frame), expected) << name;
        }
    }
}

TEST_F(RecordedFramesTest, ThresholdTwiceIsThresholdOnceAndConversionIsMonotonic)
{
    for (PngFrame &frame : frames)
    {
        const auto stride = static_cast<std::ptrdiff_t>(2 * frame.width);
        ClampAbove(frame.pixels.data(), stride, frame.width, frame.height, 1023);
        const std::vector<std::uint16_t> once = frame.pixels;
        ClampAbove(frame.pixels.data(), stride, frame.width, frame.height, 1023);
        EXPECT_EQ(frame.pixels, once);

        std::sort(frame.pixels.begin(), frame.pixels.end());
        std::vector<std::uint8_t> bytes(frame.pixels.size());
        ConvertTenToEight(frame.pixels.data(), stride, bytes.data(), static_cast<std::ptrdiff_t>(frame.width),
                          frame.width, frame.height);
        EXPECT_TRUE(std::is_sorted(bytes.begin(), bytes.end()));
    }
}

TEST_F(RecordedFramesTest, MediansAndResizedPixelsStayWithinTheFramesRange)
{
    for (PngFrame &frame : frames)
    {
        const auto stride = static_cast<std::ptrdiff_t>(2 * frame.width);
        ClampAbove(frame.pixels.data(), stride, frame.width, frame.height, 32767); // medians compare signed
        const auto [low, high] = std::minmax_element(frame.pixels.begin(), frame.pixels.end());
        const ResizePlan plan(frame.width, frame.height, 301, 207);
        std::vector<std::uint8_t> scratch(plan.ScratchSize());
        std::vector<std::uint16_t> small(301 * 207);
        Resize(plan, frame.pixels.data(), stride, small.data(), 602, scratch.data());
        EXPECT_GE(*std::min_element(small.begin(), small.end()), *low);
        EXPECT_LE(*std::max_element(small.begin(), small.end()), *high);
        std::vector<std::uint16_t> median(304 * 200);
        ASSERT_TRUE(MedianCrop3x3({frame.pixels.data(), stride, frame.width, frame.height, 50, 50}, median.data(), 608,
                                  304, 200));
        EXPECT_GE(*std::min_element(median.begin(), median.end()), *low);
        EXPECT_LE(*std::max_element(median.begin(), median.end()), *high);
    }
}
} // namespace
} // namespace mft_kernels
