#include "tools/pictures/Picture.h"

#include <algorithm>
#include <array>
#include <fstream>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STBI_WRITE_NO_STDIO
#include <stb/stb_easy_font.h>
#include <stb/stb_image_write.h>

#include "tools/command/ExitCode.h"
#include "tools/command/Text.h"

namespace tarn_host
{

namespace
{

static_assert(sizeof(Rgb) == 3, "rows go to the PNG writer as they are");

// The font has the printable ASCII characters alone, and looks for others outside its table: each becomes a '?'. The
// library takes a writable string although it only reads it.
std::vector<char> Writable(const std::string &text)
{
    std::vector<char> writable;
    for (const char c : text)
    {
        const bool continuesOne = (static_cast<unsigned char>(c) & 0xC0U) == 0x80; // of a character in UTF-8
        if (!continuesOne)
        {
            writable.push_back(c >= ' ' && c <= '~' ? c : '?');
        }
    }
    writable.push_back('\0');
    return writable;
}

struct FontVertex
{
    float x;
    float y;
    float z;
    std::array<std::uint8_t, 4> colour;
};
static_assert(sizeof(FontVertex) == 16);

} // namespace

Picture::Picture(std::size_t pictureWidth, std::size_t pictureHeight, Rgb background)
    : width(pictureWidth), height(pictureHeight), pixels(pictureWidth * pictureHeight, background)
{
}

std::size_t Picture::Width() const noexcept
{
    return width;
}

std::size_t Picture::Height() const noexcept
{
    return height;
}

Rgb Picture::At(std::size_t x, std::size_t y) const
{
    return pixels.at(y * width + x);
}

void Picture::Set(std::size_t x, std::size_t y, Rgb colour) noexcept
{
    if (x < width && y < height)
    {
        pixels[y * width + x] = colour;
    }
}

void Picture::Fill(std::size_t x, std::size_t y, std::size_t fillWidth, std::size_t fillHeight, Rgb colour) noexcept
{
    for (std::size_t row = y; row < y + fillHeight; ++row)
    {
        for (std::size_t column = x; column < x + fillWidth; ++column)
        {
            Set(column, row, colour);
        }
    }
}

void Picture::Write(std::size_t x, std::size_t y, const std::string &text, std::size_t scale, Rgb colour)
{
    // The font library draws each stroke as one rectangle of four corners, at most some 20 per character.
    std::vector<FontVertex> corners(text.size() * 4 * 20 + 4);
    std::vector<char> writable = Writable(text);
    const int rectangles = stb_easy_font_print(0, 0, writable.data(), nullptr, corners.data(),
                                               static_cast<int>(corners.size() * sizeof(FontVertex)));
    for (std::size_t i = 0; i < static_cast<std::size_t>(rectangles); ++i)
    {
        const FontVertex &upperLeft = corners[4 * i];
        const FontVertex &lowerRight = corners[4 * i + 2];
        const auto left = static_cast<std::size_t>(upperLeft.x);
        const auto top = static_cast<std::size_t>(upperLeft.y);
        const auto right = static_cast<std::size_t>(lowerRight.x);
        const auto bottom = static_cast<std::size_t>(lowerRight.y);
        Fill(x + left * scale, y + top * scale, (right - left) * scale, (bottom - top) * scale, colour);
    }
}

std::size_t Picture::TextWidth(const std::string &text, std::size_t scale)
{
    std::vector<char> writable = Writable(text);
    return static_cast<std::size_t>(stb_easy_font_width(writable.data())) * scale;
}

void Picture::SavePng(const std::filesystem::path &path) const
{
    std::ofstream file(path, std::ios::binary);
    const auto append = [](void *context, void *data, int size) {
        static_cast<std::ofstream *>(context)->write(static_cast<const char *>(data), size);
    };
    const int written = stbi_write_png_to_func(append, &file, static_cast<int>(width), static_cast<int>(height), 3,
                                               pixels.data(), static_cast<int>(width * sizeof(Rgb)));
    file.close();
    if (written == 0 || !file)
    {
        throw HostError("cannot write the picture " + ToText(path));
    }
}

} // namespace tarn_host
