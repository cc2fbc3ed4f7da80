#include "tools/pictures/Thumbnail.h"

#include "tests/support/Expect.h"

using namespace tarn_host;

namespace
{

FrameFormat FormatOf(PixelKind pixels, std::uint32_t width, std::uint32_t height)
{
    return {{width, height, 30}, pixels, "test"};
}

TEST(ThumbnailTest, DepthIsPickedAndNeverMixed)
{
    // Each value names its place: 100 * y + x.
    std::vector<std::uint16_t> frame;
    for (std::uint16_t i = 0; i < 12 * 6; ++i)
    {
        frame.push_back(static_cast<std::uint16_t>(100 * (i / 12) + i % 12));
    }

    const auto thumbnail = Thumbnail::Of(std::as_bytes(std::span(frame)), FormatOf(PixelKind::Depth16, 12, 6), 4);

    ASSERT_TRUE(thumbnail);
    EXPECT_EQ(thumbnail->width, 4U);
    EXPECT_EQ(thumbnail->height, 2U);
    EXPECT_EQ(thumbnail->levels, (std::vector<std::uint16_t>{0, 3, 6, 9, 300, 303, 306, 309}));
}

TEST(ThumbnailTest, FrameOneByteShortIsRefused)
{
    const struct
    {
        PixelKind pixels;
        std::size_t bytes;
    } cases[] = {{PixelKind::Depth16, 5 * 3 * 2}, {PixelKind::Grey8, 5 * 3},        {PixelKind::Grey16, 5 * 3 * 2},
                 {PixelKind::Yuy2, 6 * 3 * 2},    {PixelKind::Nv12, 5 * 3 + 6 * 2}, {PixelKind::Rgb24, 5 * 3 * 3},
                 {PixelKind::Rgb32, 5 * 3 * 4}};
    for (const auto &one : cases)
    {
        const std::vector<std::byte> frame(one.bytes);
        const FrameFormat format = FormatOf(one.pixels, 5, 3);
        EXPECT_TRUE(Thumbnail::Of(frame, format, 320)) << static_cast<int>(one.pixels);
        EXPECT_FALSE(Thumbnail::Of(std::span(frame).first(one.bytes - 1), format, 320)) << static_cast<int>(one.pixels);
    }
    EXPECT_FALSE(Thumbnail::Of({}, FormatOf(PixelKind::Grey8, 0, 0), 320));
    EXPECT_FALSE(Thumbnail::Of(std::array<std::byte, 64>{}, FormatOf(PixelKind::Unknown, 4, 4), 320));
}

TEST(ThumbnailTest, ColourComesOutOfEachLayout)
{
    // Video levels of pure red: Y 81, U 90, V 240.
    const std::array<std::uint8_t, 4> yuy2{81, 90, 81, 240};
    const std::array<std::uint8_t, 6> nv12{81, 81, 81, 81, 90, 240};
    const std::array<std::uint8_t, 6> rgb24{0, 0, 255, 0, 0, 255};

    const auto fromYuy2 = Thumbnail::Of(std::as_bytes(std::span(yuy2)), FormatOf(PixelKind::Yuy2, 2, 1), 320);
    const auto fromNv12 = Thumbnail::Of(std::as_bytes(std::span(nv12)), FormatOf(PixelKind::Nv12, 2, 2), 320);
    const auto fromRgb24 = Thumbnail::Of(std::as_bytes(std::span(rgb24)), FormatOf(PixelKind::Rgb24, 2, 1), 320);

    for (const auto *one : {&fromYuy2, &fromNv12, &fromRgb24})
    {
        ASSERT_TRUE(*one);
        for (const Rgb &colour : (*one)->colours)
        {
            EXPECT_GE(colour.red, 253);
            EXPECT_LE(colour.green, 2);
            EXPECT_LE(colour.blue, 2);
        }
    }
}

} // namespace
