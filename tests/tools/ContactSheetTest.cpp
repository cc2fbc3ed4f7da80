#include "tools/pictures/ContactSheet.h"

#include <gtest/gtest.h>

#include "tools/pictures/FalseColour.h"
#include "tools/pictures/LevelRange.h"

namespace
{

using namespace tarn_host;

Thumbnail Frame(PixelKind pixels, std::uint16_t level)
{
    Thumbnail thumbnail;
    thumbnail.pixels = pixels;
    thumbnail.width = kThumbnailWidth;
    thumbnail.height = 100;
    thumbnail.levels.assign(thumbnail.width * thumbnail.height, level);
    return thumbnail;
}

std::size_t PixelsOf(const Picture &picture, Rgb colour)
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < picture.Width() * picture.Height(); ++i)
    {
        count += picture.At(i % picture.Width(), i / picture.Width()) == colour ? 1U : 0U;
    }
    return count;
}

TEST(FalseColourTest, NearIsRedFarIsVioletAndNothingMeasuredIsGrey)
{
    const FalseColour colours(8000, 24000);

    EXPECT_EQ(colours.Of(0), kNoMeasurementColour);
    EXPECT_EQ(colours.Of(8000), FalseColour::AtPosition(0));
    EXPECT_EQ(colours.Of(16000), FalseColour::AtPosition(0.5));
    EXPECT_EQ(colours.Of(24000), FalseColour::AtPosition(1));
    EXPECT_EQ(colours.Of(1), colours.Of(8000));
    EXPECT_EQ(colours.Of(65535), colours.Of(24000));
    EXPECT_GT(colours.Of(8000).red, colours.Of(24000).red);
    EXPECT_DOUBLE_EQ(colours.NearMetres(), 1.0);
    EXPECT_DOUBLE_EQ(colours.FarMetres(), 3.0);
    // An empty range still gives colours.
    EXPECT_EQ(FalseColour(500, 500).Of(500), FalseColour::AtPosition(0));
}

TEST(LevelRangeTest, CoversTheMeasuredDepthsWithoutTheStrayOnes)
{
    // 1 m and 2.2 m, with a few pixels that are far off and many without measurement.
    std::vector<Thumbnail> frames{Frame(PixelKind::Depth16, 8000), Frame(PixelKind::Depth16, 17600),
                                  Frame(PixelKind::Depth16, 0)};
    frames.front().levels.front() = 65000;
    frames.front().levels.back() = 3;

    const LevelRange range = LevelRange::OfDepth(frames);
    EXPECT_EQ(range.low, 8000U);
    EXPECT_EQ(range.high, 20000U);

    const LevelRange nothing = LevelRange::OfDepth({Frame(PixelKind::Depth16, 0)});
    EXPECT_LT(nothing.low, nothing.high);
    EXPECT_EQ(LevelRange::OfGrey({Frame(PixelKind::Grey16, 1000)}).high, 1000U);
    EXPECT_EQ(LevelRange::OfGrey({Frame(PixelKind::Grey16, 0)}).high, 1U);
    EXPECT_EQ(LevelRange::OfGrey({Frame(PixelKind::Grey8, 7)}).high, 255U);
}

TEST(ContactSheetTest, ShowsEveryFrameInItsColour)
{
    // 1 m and 3 m make a scale from 1 m to 3.5 m.
    const std::vector<Thumbnail> depth{Frame(PixelKind::Depth16, 8000), Frame(PixelKind::Depth16, 24000),
                                       Frame(PixelKind::Depth16, 0)};
    const std::vector<Thumbnail> infrared(5, Frame(PixelKind::Grey8, 77));

    const Picture sheet = DrawContactSheet("title", {{"depth", depth}, {"infrared", infrared}});

    const FalseColour colours(8000, 28000);
    const std::size_t framePixels = kThumbnailWidth * 100;
    EXPECT_GE(PixelsOf(sheet, colours.Of(8000)), framePixels);
    EXPECT_GE(PixelsOf(sheet, colours.Of(24000)), framePixels);
    EXPECT_GE(PixelsOf(sheet, kNoMeasurementColour), framePixels);
    EXPECT_EQ(PixelsOf(sheet, {77, 77, 77}), 5 * framePixels);
}

TEST(ContactSheetTest, OutputWithoutFramesStillHasItsTitle)
{
    const Picture sheet = DrawContactSheet("title", {{"output 0", {}}});

    EXPECT_GT(PixelsOf(sheet, {20, 20, 20}), 100U);
}

} // namespace
