#include "tools/nodes/NodeChain.h"

#include <numeric>

#include "tests/support/Expect.h"
#include "tools/command/ExitCode.h"

using namespace tarn_host;

namespace
{

ImageFrame Ramp(std::uint32_t width, std::uint32_t height)
{
    ImageFrame frame{width, height, 16, std::vector<std::uint16_t>(std::size_t{width} * height)};
    std::iota(frame.levels.begin(), frame.levels.end(), std::uint16_t{0});
    return frame;
}

TEST(NodeChainTest, StepsRunInTheOrderWritten)
{
    const ImageFrame result = NodeChain(" copy:0.5,0.5> crop:2x2 >threshold:41>10to8", 8, 8).Run(Ramp(8, 8));
    EXPECT_EQ(2u, result.width);
    EXPECT_EQ(2u, result.height);
    EXPECT_EQ(8u, result.bits);
    // Rows 5 and 6, columns 3 and 4: 43, 44, 51, 52, clamped to 41, a quarter of it.
    EXPECT_EQ(std::vector<std::uint16_t>(4, 10), result.levels);
}

TEST(NodeChainTest, FaceLoginChainAndTwoPlaneFramesComeOutInTheirSizes)
{
    const ImageFrame face =
        NodeChain("median:434x434 > sharpen > crop:415x415 > resize:360x360 > threshold:1023 > 10to8", 640, 480)
            .Run(Ramp(640, 480));
    EXPECT_EQ(360u, face.width);
    EXPECT_EQ(360u * 360u, face.levels.size());

    const ImageFrame depth = NodeChain("confidence", 4, 6).Run(Ramp(4, 6));
    EXPECT_EQ(3u, depth.height);
    EXPECT_EQ(12, depth.levels[0]);
}

TEST(NodeChainTest, WrongStepsAreNamed)
{
    for (const char *text :
         {"", "blur", "crop", "crop:9", "crop:9x", "crop:9x9x9", "crop:9x8", "crop:-1x2", "resize:0x4", "median:8x8",
          "copy:0.5", "copy:0.5,0.6", "copy:0,0.3", "threshold:65536", "sharpen:3", "10to8 > sharpen", "sharpen >"})
    {
        const auto error = tarn_test::ThrownText<UsageError>([&] { const NodeChain chain(text, 8, 8); });
        EXPECT_EQ(0u, error.find("step '")) << text << ": " << error;
    }
}

} // namespace
