#include "tools/pictures/Picture.h"

#include <gtest/gtest.h>
#include <stb/stb_image.h>

#include <fstream>
#include <iterator>
#include <memory>

#include "TemporaryFolder.h"
#include "tools/command/ExitCode.h"

namespace
{

using tarn_host::HostError;
using tarn_host::Picture;
using tarn_host::Rgb;
using tarn_host_test::TemporaryFolder;

constexpr Rgb kWhite{255, 255, 255};
constexpr Rgb kInk{200, 10, 60};

// Bounding box of everything that is not white.
struct Box
{
    std::size_t left = SIZE_MAX;
    std::size_t top = SIZE_MAX;
    std::size_t right = 0;
    std::size_t bottom = 0;
};

Box Drawn(const Picture &picture)
{
    Box box;
    for (std::size_t y = 0; y < picture.Height(); ++y)
    {
        for (std::size_t x = 0; x < picture.Width(); ++x)
        {
            if (picture.At(x, y) != kWhite)
            {
                box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x), std::max(box.bottom, y)};
            }
        }
    }
    return box;
}

TEST(PictureTest, PngReadsBackPixelForPixel)
{
    const TemporaryFolder folder;
    Picture picture(7, 5, kWhite);
    for (std::size_t i = 0; i < 35; ++i)
    {
        picture.Set(i % 7, i / 7, {static_cast<std::uint8_t>(i * 7), static_cast<std::uint8_t>(255 - i), 3});
    }

    picture.SavePng(folder.Path() / "picture.png");

    std::ifstream file(folder.Path() / "picture.png", std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    int width = 0;
    int height = 0;
    int channels = 0;
    const std::unique_ptr<stbi_uc, void (*)(void *)> pixels(
        stbi_load_from_memory(reinterpret_cast<const stbi_uc *>(bytes.data()), static_cast<int>(bytes.size()), &width,
                              &height, &channels, 3),
        stbi_image_free);
    ASSERT_NE(pixels, nullptr);
    ASSERT_EQ(width, 7);
    ASSERT_EQ(height, 5);
    for (std::size_t i = 0; i < 35; ++i)
    {
        const stbi_uc *pixel = pixels.get() + 3 * i;
        EXPECT_EQ((Rgb{pixel[0], pixel[1], pixel[2]}), picture.At(i % 7, i / 7)) << "pixel " << i;
    }
}

TEST(PictureTest, UnwritableFileIsReported)
{
    const TemporaryFolder folder;

    EXPECT_THROW(Picture(4, 4, kWhite).SavePng(folder.Path() / "missing" / "picture.png"), HostError);
}

TEST(PictureTest, TextStaysInsideItsBox)
{
    Picture picture(600, 60, kWhite);
    const std::string text = "#12  0.400 s  WMQ@&%  f\xC3\xA4n \xFF";

    picture.Write(10, 8, text, 2, kInk);

    const Box box = Drawn(picture);
    EXPECT_GE(box.left, 10U);
    EXPECT_GE(box.top, 8U);
    EXPECT_LT(box.right, 10 + Picture::TextWidth(text, 2));
    EXPECT_GT(box.right, 10 + Picture::TextWidth(text, 2) * 9 / 10);
    EXPECT_LT(box.bottom, 8U + 12 * 2);
}

TEST(PictureTest, DrawingPastTheEdgeIsCutOff)
{
    Picture picture(8, 8, kWhite);

    picture.Fill(6, 6, 100, 100, kInk);
    picture.Write(2, 4, "A long line of text", 3, kInk);

    EXPECT_EQ(picture.At(7, 7), kInk);
    EXPECT_EQ(picture.At(0, 7), kWhite);
}

} // namespace
