#include "tools/pictures/FrameGallery.h"

#include "tests/support/Expect.h"

using namespace tarn_host;

namespace
{

std::vector<Thumbnail> Shown(std::size_t shown, std::uint64_t frames, bool alternate = false)
{
    FrameGallery gallery(shown);
    std::size_t kept = 0;
    for (std::uint64_t number = 0; number < frames; ++number)
    {
        if (gallery.Wants(number))
        {
            Thumbnail thumbnail;
            thumbnail.frameNumber = number;
            thumbnail.isLit = alternate ? std::optional(number % 2 == 0) : std::nullopt;
            gallery.Keep(std::move(thumbnail));
            ++kept;
        }
    }
    // Making frames small costs time: few of many may be wanted.
    EXPECT_LE(kept, frames < 2 * shown ? frames : shown * 40) << frames;
    const std::vector<Thumbnail> selection = gallery.Selection();
    EXPECT_EQ(selection.size(), std::min<std::uint64_t>(shown, frames)) << frames;
    EXPECT_TRUE(std::ranges::is_sorted(selection, std::ranges::less_equal(), &Thumbnail::frameNumber)) << frames;
    return selection;
}

TEST(FrameGalleryTest, FramesAreShownEvenlyToTheEnd)
{
    Shown(12, 0);
    Shown(4, 3);
    EXPECT_EQ(Shown(1, 50).at(0).frameNumber, 0U);
    for (const std::uint64_t frames : {13U, 24U, 58U, 100U, 1000U, 100'000U})
    {
        const std::vector<Thumbnail> shown = Shown(12, frames);
        EXPECT_EQ(shown.front().frameNumber, 0U);
        EXPECT_GE(shown.back().frameNumber + (frames + 11) / 12, frames) << frames;
        for (std::size_t i = 1; i < shown.size(); ++i)
        {
            EXPECT_LE(shown[i].frameNumber - shown[i - 1].frameNumber, 2 * ((frames + 10) / 11)) << frames;
        }
    }
}

TEST(FrameGalleryTest, OfFramesThatAlternateBothKindsAreShown)
{
    for (const std::uint64_t frames : {4U, 24U, 60U, 1000U})
    {
        EXPECT_EQ(std::ranges::count(Shown(4, frames, true), std::optional(true), &Thumbnail::isLit), 2) << frames;
    }
}

} // namespace
