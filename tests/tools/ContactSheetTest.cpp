#include "tools/pictures/ContactSheet.h"

#include "tools/pictures/FalseColour.h"
#include "tools/pictures/LevelRange.h"
#include "tests/support/Expect.h"

using namespace tarn_host;

namespace
{

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
    EXPECT_EQ(colours.Of(1), FalseColour::AtPosition(0));
    EXPECT_EQ(colours.Of(16000), FalseColour::AtPosition(0.5));
    EXPECT_EQ(colours.Of(65535), FalseColour::AtPosition(1));
    EXPECT_GT(colours.Of(8000).red, colours.Of(24000).red);
    EXPECT_EQ(FalseColour(500, 500).Of(500), FalseColour::AtPosition(0)); // an empty range
}

TEST(LevelRangeTest, CoversWhatOccursWithoutTheStrayLevelsInRoundSteps)
{
    // 1 m and 2.2 m, with a few pixels that are far off and many without measurement.
    std::vector<Thumbnail> frames{Frame(PixelKind::Depth16, 8000), Frame(PixelKind::Depth16, 17600),
                                  Frame(PixelKind::Depth16, 0)};
    frames.front().levels.front() = 65000;
    frames.front().levels.back() = 3;

    const auto expect = [](const LevelRange &range, std::uint32_t low, std::uint32_t high, std::uint32_t step) {
        EXPECT_EQ(range.low, low);
        EXPECT_EQ(range.high, high);
        EXPECT_EQ(range.step, step);
    };
    expect(LevelRange::Of(PixelKind::Depth16, frames), 8000, 17600, 1600);
    expect(LevelRange::Of(PixelKind::Depth16, {Frame(PixelKind::Depth16, 0)}), 0, 8000, 1600);
    expect(LevelRange::Of(PixelKind::Grey8, {Frame(PixelKind::Grey8, 23), Frame(PixelKind::Grey8, 140)}), 20, 140, 20);
    expect(LevelRange::Of(PixelKind::Grey16, {Frame(PixelKind::Grey16, 0)}), 0, 1, 1);
    expect(LevelRange::Of(PixelKind::Confidence8, {Frame(PixelKind::Confidence8, 7)}), 0, 15, 5);
}

TEST(ContactSheetTest, AllFramesOfAKindShareOneScale)
{
    // 1 m in one section and 2.2 m in the other: from 1 m to 2.2 m. Infrared of 20 and 140: from black to white.
    const std::vector<Thumbnail> nearby{Frame(PixelKind::Depth16, 8000), Frame(PixelKind::Depth16, 0)};
    const std::vector<Thumbnail> distant(2, Frame(PixelKind::Depth16, 17600));
    std::vector<Thumbnail> infrared(4, Frame(PixelKind::Grey8, 20));
    infrared.push_back(Frame(PixelKind::Grey8, 80));
    infrared.push_back(Frame(PixelKind::Grey8, 140));

    const Picture sheet = DrawContactSheet("title", {{"near", nearby}, {"far", distant}, {"infrared", infrared}});

    const FalseColour colours(8000, 17600);
    const std::size_t framePixels = kThumbnailWidth * 100;
    EXPECT_GE(PixelsOf(sheet, colours.Of(8000)), framePixels);
    EXPECT_GE(PixelsOf(sheet, colours.Of(17600)), 2 * framePixels);
    EXPECT_GE(PixelsOf(sheet, kNoMeasurementColour), framePixels);
    EXPECT_GE(PixelsOf(sheet, {0, 0, 0}), 4 * framePixels);
    EXPECT_GE(PixelsOf(sheet, {127, 127, 127}), framePixels);
    EXPECT_GE(PixelsOf(sheet, {255, 255, 255}), framePixels);
    EXPECT_GT(PixelsOf(DrawContactSheet("title", {{"without frames", {}}}), {20, 20, 20}), 100U) << "text";
}

} // namespace
