#include "tools/pictures/Picture.h"

#include <stb/stb_image.h>

#include "TemporaryFolder.h"
#include "tools/command/ExitCode.h"
#include "tests/support/Expect.h"

using namespace tarn_host;

namespace
{

using tarn_host_test::TemporaryFolder;

constexpr Rgb kWhite{255, 255, 255};
constexpr Rgb kInk{200, 10, 60};

TEST(PictureTest, PngReadsBackPixelForPixel)
{
    const TemporaryFolder folder;
    Picture picture(7, 5, kWhite);
    for (std::size_t i = 0; i < 35; ++i)
    {
        picture.Set(i % 7, i / 7, {static_cast<std::uint8_t>(i * 7), static_cast<std::uint8_t>(255 - i), 3});
    }

    picture.SavePng(folder.Path() / "picture.png");

    const std::string bytes = folder.Read("picture.png");
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

TEST(PictureTest, DrawingStaysInsideItsBoxAndThePicture)
{
    Picture picture(600, 60, kWhite);
    const std::string text = "#12  0.400 s  WMQ@&%  f\xC3\xA4n \xFF";
    const std::size_t width = Picture::TextWidth(text, 2);
    picture.Write(10, 8, text, 2, kInk);
    std::size_t rightmost = 0;
    for (std::size_t i = 0; i < 600 * 60; ++i)
    {
        const std::size_t x = i % 600;
        const std::size_t y = i / 600;
        if (picture.At(x, y) != kWhite)
        {
            EXPECT_TRUE(x >= 10 && x < 10 + width && y >= 8 && y < 8 + 12 * 2) << x << ", " << y;
            rightmost = std::max(rightmost, x);
        }
    }
    EXPECT_GT(rightmost, 10 + width * 9 / 10);

    Picture small(8, 8, kWhite);
    small.Fill(6, 6, 100, 100, kInk);
    small.Write(2, 4, "A long line of text", 3, kInk);
    EXPECT_EQ(small.At(7, 7), kInk);
    EXPECT_EQ(small.At(0, 7), kWhite);
    EXPECT_THROW(small.SavePng(TemporaryFolder().Path() / "missing" / "picture.png"), HostError);
}

} // namespace
