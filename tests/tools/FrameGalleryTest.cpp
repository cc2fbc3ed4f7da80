#include "tools/pictures/FrameGallery.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

using tarn_host::FrameGallery;
using tarn_host::Thumbnail;

std::vector<std::uint64_t> NumbersShown(std::size_t shown, std::uint64_t frames)
{
    FrameGallery gallery(shown);
    std::size_t kept = 0;
    for (std::uint64_t number = 0; number < frames; ++number)
    {
        if (gallery.Wants(number))
        {
            Thumbnail thumbnail;
            thumbnail.frameNumber = number;
            gallery.Keep(std::move(thumbnail));
            ++kept;
        }
    }
    // Making frames small costs time: few of many may be wanted.
    EXPECT_LE(kept, frames < 2 * shown ? frames : shown * 40) << frames;

    std::vector<std::uint64_t> numbers;
    for (const Thumbnail &thumbnail : gallery.Selection())
    {
        numbers.push_back(thumbnail.frameNumber);
    }
    return numbers;
}

TEST(FrameGalleryTest, FewFramesAreAllShown)
{
    EXPECT_EQ(NumbersShown(12, 0), std::vector<std::uint64_t>{});
    EXPECT_EQ(NumbersShown(4, 3), (std::vector<std::uint64_t>{0, 1, 2}));
    EXPECT_EQ(NumbersShown(1, 50), std::vector<std::uint64_t>{0});
}

TEST(FrameGalleryTest, ManyFramesAreShownEvenlyToTheEnd)
{
    for (const std::uint64_t frames : {13U, 24U, 58U, 100U, 1000U, 100'000U})
    {
        const std::vector<std::uint64_t> numbers = NumbersShown(12, frames);
        ASSERT_EQ(numbers.size(), 12U) << frames;
        EXPECT_EQ(numbers.front(), 0U);
        EXPECT_GE(numbers.back() + (frames + 11) / 12, frames) << frames;
        for (std::size_t i = 1; i < numbers.size(); ++i)
        {
            const std::uint64_t step = numbers[i] - numbers[i - 1];
            EXPECT_GE(step, 1U);
            EXPECT_LE(step, 2 * ((frames + 10) / 11)) << frames;
        }
    }
}

TEST(FrameGalleryTest, OfFramesThatAlternateBothKindsAreShown)
{
    for (const std::uint64_t frames : {4U, 24U, 60U, 1000U})
    {
        FrameGallery gallery(4);
        for (std::uint64_t number = 0; number < frames; ++number)
        {
            if (gallery.Wants(number))
            {
                Thumbnail thumbnail;
                thumbnail.frameNumber = number;
                thumbnail.isLit = number % 2 == 0;
                gallery.Keep(std::move(thumbnail));
            }
        }
        const std::vector<Thumbnail> shown = gallery.Selection();
        EXPECT_EQ(shown.size(), 4U) << frames;
        EXPECT_EQ(std::ranges::count(shown, std::optional(true), &Thumbnail::isLit), 2) << frames;
        EXPECT_TRUE(std::ranges::is_sorted(shown, {}, &Thumbnail::frameNumber)) << frames;
    }
}

} // namespace
