// Values that the image nodes compute, and sizes that they refuse.
#include "tests/nodes/FrameMemory.h"

#include <algorithm>
#include <array>
#include <functional>
#include <limits>
#include <stdexcept>

#include "nodes/CropMmTopologyNode.h"
#include "nodes/SharpeningTopologyNode.h"
#include "device/nodes/TarnConfidenceMapTopologyNode.h"
#include "device/nodes/TarnIr10to8TopologyNode.h"
#include "nodes/Crop16BitTopologyNode.h"
#include "nodes/ImageResizeTopologyNode.h"
#include "nodes/ImageThresholdTopologyNode.h"
#include "tests/support/Expect.h"

using namespace mft_core;
using namespace tarn_test;

namespace
{

Pixels Cut(const Pixels &input, std::size_t inputWidth, std::size_t x, std::size_t y, std::size_t width,
           std::size_t height)
{
    Pixels output;
    for (std::size_t row = 0; row < height; ++row)
    {
        const auto first = input.begin() + static_cast<std::ptrdiff_t>((y + row) * inputWidth + x);
        output.insert(output.end(), first, first + static_cast<std::ptrdiff_t>(width));
    }
    return output;
}

TEST(Crop16BitTopologyNodeTest, ExtraRowAndColumnFallAwayAtTheBottomAndRight)
{
    const Pixels input = RandomPixels(641 * 481);
    EXPECT_EQ(Cut(input, 641, 0, 0, 640, 480),
              PixelsOf(Converted<Crop16BitTopologyNode>(MakeFrame(input), 641, 481, 640, 480).Get()));
    EXPECT_EQ(Cut(input, 641, 110, 60, 421, 360),
              PixelsOf(Converted<Crop16BitTopologyNode>(MakeFrame(input), 641, 481, 421, 360).Get()));
    EXPECT_EQ(input, PixelsOf(Converted<Crop16BitTopologyNode>(MakeFrame(input), 641, 481, 641, 481).Get()));
}

TEST(ImageResizeTopologyNodeTest, SameSizeIsTheFrameAndTwiceTheSizeReplicatesTheEdge)
{
    const Pixels input = RandomPixels(61 * 43);
    EXPECT_EQ(input, PixelsOf(Converted<ImageResizeTopologyNode>(MakeFrame(input), 61, 43, 61, 43).Get()));

    const Pixels doubled = PixelsOf(Converted<ImageResizeTopologyNode>(MakeFrame(Pixels{100, 200}), 2, 1, 4, 2).Get());
    EXPECT_EQ((Pixels{100, 125, 175, 200, 100, 125, 175, 200}), doubled);
}

TEST(TarnIr10to8TopologyNodeTest, TenBitsBecomeEightAndHigherBitsAreLost)
{
    const Pixels input{0, 2, 3, 512, 1023, 1024, 1026, 0xFFFF};
    EXPECT_EQ((Bytes{0, 0, 1, 128, 255, 0, 0, 255}),
              BytesOf(Converted<TarnIr10to8TopologyNode>(MakeFrame(input), 8, 1, 0).Get()));
    // The leading part of the input is ignored.
    const Pixels last{1023, 1023, 1023, 512};
    EXPECT_EQ(Bytes{128}, BytesOf(Converted<TarnIr10to8TopologyNode>(MakeFrame(last), 1, 1, 0.75).Get()));
    for (const double coefficient : {0.7500001, -0.0001, std::numeric_limits<double>::quiet_NaN()})
    {
        EXPECT_EQ("invalid input buffer offset coefficient", ThrownText<std::invalid_argument>([&] {
                      const TarnIr10to8TopologyNode node(nullptr, 8, 8, coefficient);
                  }))
            << coefficient;
    }
}

// The rule as written down: rows in order, runs of 8, pitch of the output's height; everything else 0.
Pixels MedianCrop(const Pixels &input, std::size_t inputWidth, std::size_t inputHeight, std::size_t width,
                  std::size_t height)
{
    const std::size_t cropX = (inputWidth - width) / 2;
    const std::size_t cropY = (inputHeight - height) / 2;
    Pixels output(inputWidth * inputHeight);
    for (std::size_t row = 0; row < height; ++row)
    {
        for (std::size_t column = 0; column < (width + 7) / 8 * 8; ++column)
        {
            std::array<std::int16_t, 9> neighbours{}; // no allocation: the heap checker looks at each
            for (std::size_t i = 0; i < neighbours.size(); ++i)
            {
                const std::size_t index = (cropY + row + i / 3 - 1) * inputWidth + cropX + column + i % 3 - 1;
                neighbours.at(i) = static_cast<std::int16_t>(input.at(index));
            }
            std::sort(neighbours.begin(), neighbours.end());
            output.at(row * height + column) = static_cast<std::uint16_t>(neighbours[4]);
        }
    }
    return output;
}

TEST(CropMmTopologyNodeTest, RowsAreWrittenInOrderAtAPitchOfTheOutputHeight)
{
    // Square, wider than high, higher than wide, odd differences.
    const int sizes[][4] = {{64, 48, 30, 30}, {64, 48, 45, 20}, {64, 48, 13, 40}, {41, 38, 38, 35}};
    for (const auto &[inputWidth, inputHeight, width, height] : sizes)
    {
        const Pixels input = RandomPixels(static_cast<std::size_t>(inputWidth * inputHeight));
        EXPECT_EQ(
            MedianCrop(input, static_cast<std::size_t>(inputWidth), static_cast<std::size_t>(inputHeight),
                       static_cast<std::size_t>(width), static_cast<std::size_t>(height)),
            PixelsOf(Converted<CropMmTopologyNode>(MakeFrame(input), inputWidth, inputHeight, width, height).Get()))
            << width << "x" << height;
    }
}

TEST(SharpeningTopologyNodeTest, PeakIsRaisedConstantStaysAndTheBorderIsZero)
{
    for (const std::uint16_t value : {std::uint16_t{1}, std::uint16_t{32767}})
    {
        const Pixels output =
            PixelsOf(Converted<SharpeningTopologyNode>(MakeFrame(Pixels(29 * 23, value)), 29, 23).Get());
        for (std::size_t i = 0; i < output.size(); ++i)
        {
            const std::size_t x = i % 29;
            const std::size_t y = i / 29;
            const bool inside = x >= 4 && x < 25 && y >= 4 && y < 19;
            ASSERT_EQ(inside ? value : 0, output[i]) << x << "," << y;
        }
    }
    Pixels input(19 * 19, 10);
    input[9 * 19 + 9] = 1000;
    const Pixels output = PixelsOf(Converted<SharpeningTopologyNode>(MakeFrame(input), 19, 19).Get());
    // 1000 + 0.85 * (1000 - (10 + 990 * 0.20416369 squared)) = 1806.4
    EXPECT_EQ(1806, output[9 * 19 + 9]);
    EXPECT_EQ(0, output[9 * 19 + 10]); // clamped
    EXPECT_EQ(Pixels(19 * 8), PixelsOf(Converted<SharpeningTopologyNode>(MakeFrame(Pixels(19 * 8, 5)), 19, 8).Get()));
}

TEST(NodeSizesTest, SizesThatCannotHoldAreRefused)
{
    const auto map = std::make_shared<ConfidenceMapState>();
    const std::function<void()> refused[] = {
        [] { Crop16BitTopologyNode(nullptr, 0, 0, 0, 0); },
        [] { Crop16BitTopologyNode(nullptr, 8, 8, 8, 0); },
        [] { Crop16BitTopologyNode(nullptr, 8, 8, 9, 8); },
        [] { Crop16BitTopologyNode(nullptr, 8, 8, 8, 9); },
        [] { Crop16BitTopologyNode(nullptr, 0x8000, 0x10000, 8, 8); },
        [] { ImageResizeTopologyNode(nullptr, 8, 8, 0, 8); },
        [] { ImageResizeTopologyNode(nullptr, 8, 0, 8, 8); },
        [] { ImageResizeTopologyNode(nullptr, 0xFFFFFFFF, 0xFFFFFFFF, 8, 8); },
        [] { ImageResizeTopologyNode(nullptr, 70000, 1, 8, 8); },
        [] { ImageThresholdTopologyNode(nullptr, static_cast<std::uint32_t>(-8), 8, 1); },
        [] { ImageThresholdTopologyNode(nullptr, 8, 0, 1); },
        [] { TarnIr10to8TopologyNode(nullptr, -8, -8, 0); },
        [] { TarnIr10to8TopologyNode(nullptr, 0x10000, 0x8000, 0); },
        // A plane fits 32 bits, two do not; a frame does, its work memory does not.
        [&] { TarnConfidenceMapTopologyNode(nullptr, 0x8000, 0x8000, map); },
        [&] { TarnConfidenceMapTopologyNode(nullptr, 8, -8, map); },
        [] { TarnConfidenceMapTopologyNode(nullptr, 8, 8, nullptr); },
        [] { SharpeningTopologyNode(nullptr, 0x8000, 0x8000); },
        [] { SharpeningTopologyNode(nullptr, 0, 8); },
        // No pixel around the rectangle; rows that do not fit the buffer.
        [] { CropMmTopologyNode(nullptr, 64, 48, 63, 40); },
        [] { CropMmTopologyNode(nullptr, 64, 48, 40, 48); },
        [] { CropMmTopologyNode(nullptr, 64, 48, 80, 40); },
        [] { CropMmTopologyNode(nullptr, 40, 100, 30, 80); },
        [] { CropMmTopologyNode(nullptr, 8, 8, -2, -2); },
    };
    for (const auto &construction : refused)
    {
        EXPECT_THROW(construction(), std::invalid_argument) << "entry " << &construction - refused;
    }
    EXPECT_NO_THROW(CropMmTopologyNode(nullptr, 642, 482, 640, 480));
    EXPECT_NO_THROW(CropMmTopologyNode(nullptr, 641, 482, 638, 400));
}

} // namespace
