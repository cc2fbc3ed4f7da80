// Values that the image nodes compute, and sizes that they refuse.
#include "tests/nodes/FrameMemory.h"

#include <limits>
#include <numeric>
#include <stdexcept>

#include "nodes/CropMmTopologyNode.h"
#include "nodes/SharpeningTopologyNode.h"
#include "device/nodes/TarnConfidenceMapTopologyNode.h"
#include "device/nodes/TarnIr10to8TopologyNode.h"
#include "nodes/Crop16BitTopologyNode.h"
#include "nodes/ImageResizeTopologyNode.h"
#include "nodes/ImageThresholdTopologyNode.h"
#include "nodes/SampleCopyTopologyNode.h"

using namespace mft_core;
using namespace tarn_test;

namespace
{

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(SampleCopyTopologyNodeTest, ProductsAreTruncatedAndCoefficientsAreCheckedInOrder)
{
    Bytes bytes(1001);
    std::iota(bytes.begin(), bytes.end(), BYTE{0});
    EXPECT_EQ(Bytes(bytes.begin() + 500, bytes.begin() + 1000),
              BytesOf(Converted<SampleCopyTopologyNode>(MakeFrame(bytes), 0.5, 0.5, "Second half")));
    EXPECT_EQ(Bytes(bytes.begin() + 400, bytes.begin() + 800),
              BytesOf(Converted<SampleCopyTopologyNode>(MakeFrame(bytes), 0.5, 0.5, "Of a padded frame", 800u)));

    constexpr char kSum[] = "coefficients sum > 1";
    constexpr char kLength[] = "output buffer length coefficient <= 0";
    constexpr char kOffset[] = "invalid input buffer offset coefficient";
    const struct
    {
        double offset, length;
        const char *text;
    } rows[] = {{0, 1, "nothing thrown"}, {0.5, 0.5000001, kSum}, {1, 0.1, kSum},      {0.5, 0, kLength},
                {0, kNan, kLength},       {-0.1, 0, kOffset},     {1.1, 0.5, kOffset}, {kNan, 0.5, kOffset}};
    for (const auto &row : rows)
    {
        EXPECT_EQ(row.text, ThrownText<std::invalid_argument>(
                                [&] { const SampleCopyTopologyNode node(nullptr, row.offset, row.length, "Copy"); }))
            << row.offset << ", " << row.length;
    }
}

TEST(Crop16BitTopologyNodeTest, ExtraRowAndColumnFallAwayAtTheBottomAndRight)
{
    const Pixels input = RandomPixels(641 * 481);
    Pixels expected;
    for (auto row = input.begin() + 60 * 641 + 110; expected.size() < 420 * 360; row += 641)
    {
        expected.insert(expected.end(), row, row + 420);
    }
    EXPECT_EQ(expected, PixelsOf(Converted<Crop16BitTopologyNode>(MakeFrame(input), 641, 481, 420, 360)));
    EXPECT_EQ(input, PixelsOf(Converted<Crop16BitTopologyNode>(MakeFrame(input), 641, 481, 641, 481)));
}

TEST(TarnIr10to8TopologyNodeTest, LeadingPartOfTheInputIsIgnored)
{
    EXPECT_EQ((Bytes{128, 0}),
              BytesOf(Converted<TarnIr10to8TopologyNode>(MakeFrame(Pixels{3, 1023, 512, 2}), 2, 1, 0.5)));
    for (const double coefficient : {0.7500001, -0.0001, kNan})
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
        EXPECT_EQ(MedianCrop(input, static_cast<std::size_t>(inputWidth), static_cast<std::size_t>(inputHeight),
                             static_cast<std::size_t>(width), static_cast<std::size_t>(height)),
                  PixelsOf(Converted<CropMmTopologyNode>(MakeFrame(input), inputWidth, inputHeight, width, height)))
            << width << "x" << height;
    }
}

TEST(SharpeningTopologyNodeTest, TheBorderIsZero)
{
    for (const auto &[width, height] : {std::pair{29, 23}, {19, 8}})
    {
        const Pixels frame(static_cast<std::size_t>(width * height), 32767);
        const Pixels output = PixelsOf(Converted<SharpeningTopologyNode>(MakeFrame(frame), width, height));
        for (int i = 0; i < width * height; ++i)
        {
            const bool inside = i % width >= 4 && i % width < width - 4 && i / width >= 4 && i / width < height - 4;
            ASSERT_EQ(inside ? 32767 : 0, output[static_cast<std::size_t>(i)]) << i << " of " << width;
        }
    }
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
