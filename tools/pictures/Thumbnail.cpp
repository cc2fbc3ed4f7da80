#include "tools/pictures/Thumbnail.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tarn_host
{

namespace
{

std::size_t BytesNeeded(PixelKind pixels, std::size_t width, std::size_t height)
{
    switch (pixels)
    {
    case PixelKind::Grey8:
    case PixelKind::Confidence8:
        return width * height;
    case PixelKind::Nv12:
        return width * height + (width + 1) / 2 * 2 * ((height + 1) / 2);
    case PixelKind::Depth16:
    case PixelKind::Grey16:
        return width * height * 2;
    case PixelKind::Yuy2:
        return (width + 1) / 2 * 4 * height;
    case PixelKind::Rgb24:
        return width * height * 3;
    case PixelKind::Rgb32:
        return width * height * 4;
    case PixelKind::Unknown:
        break;
    }
    return 0;
}

std::uint8_t ToByte(double value)
{
    return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 255.0)));
}

// Video-range BT.601 ("Recommended 8-Bit YUV Formats for Video Rendering").
Rgb FromYuv(double y, double u, double v)
{
    const double luma = 1.164383 * (y - 16);
    return {ToByte(luma + 1.596027 * (v - 128)), ToByte(luma - 0.391762 * (u - 128) - 0.812968 * (v - 128)),
            ToByte(luma + 2.017232 * (u - 128))};
}

// Reads single pixels of a frame whose length was checked.
class PixelReader
{
  public:
    PixelReader(std::span<const std::byte> frame, const FrameFormat &format)
        : bytes(frame), width(format.size.width), height(format.size.height), pixels(format.pixels)
    {
    }

    std::uint16_t Level(std::size_t x, std::size_t y) const
    {
        if (pixels == PixelKind::Grey8 || pixels == PixelKind::Confidence8)
        {
            return Byte(y * width + x);
        }
        std::uint16_t level = 0;
        std::memcpy(&level, bytes.data() + (y * width + x) * 2, sizeof level);
        return level;
    }

    Rgb Colour(std::size_t x, std::size_t y) const
    {
        if (pixels == PixelKind::Yuy2)
        {
            const std::size_t pair = y * ((width + 1) / 2) * 4 + x / 2 * 4;
            return FromYuv(Byte(pair + x % 2 * 2), Byte(pair + 1), Byte(pair + 3));
        }
        if (pixels == PixelKind::Nv12)
        {
            const std::size_t chroma = width * height + y / 2 * ((width + 1) / 2 * 2) + x / 2 * 2;
            return FromYuv(Byte(y * width + x), Byte(chroma), Byte(chroma + 1));
        }
        const std::size_t at = (y * width + x) * (pixels == PixelKind::Rgb24 ? 3 : 4);
        return {Byte(at + 2), Byte(at + 1), Byte(at)};
    }

  private:
    std::uint8_t Byte(std::size_t index) const
    {
        return static_cast<std::uint8_t>(bytes[index]);
    }

    std::span<const std::byte> bytes;
    std::size_t width;
    std::size_t height;
    PixelKind pixels;
};

bool HasLevels(PixelKind pixels)
{
    return pixels == PixelKind::Depth16 || pixels == PixelKind::Grey8 || pixels == PixelKind::Grey16 ||
           pixels == PixelKind::Confidence8;
}

} // namespace

std::optional<Thumbnail> Thumbnail::Of(std::span<const std::byte> frame, const FrameFormat &format,
                                       std::size_t maxWidth)
{
    const std::size_t width = format.size.width;
    const std::size_t height = format.size.height;
    const std::size_t needed = BytesNeeded(format.pixels, width, height);
    if (needed == 0 || frame.size() < needed)
    {
        return std::nullopt;
    }

    Thumbnail thumbnail;
    thumbnail.pixels = format.pixels;
    thumbnail.width = std::min(width, maxWidth);
    thumbnail.height = std::max<std::size_t>(height * thumbnail.width / width, 1);
    const PixelReader reader(frame, format);
    for (std::size_t row = 0; row < thumbnail.height; ++row)
    {
        const std::size_t y = row * height / thumbnail.height;
        for (std::size_t column = 0; column < thumbnail.width; ++column)
        {
            const std::size_t x = column * width / thumbnail.width;
            if (HasLevels(format.pixels))
            {
                thumbnail.levels.push_back(reader.Level(x, y));
            }
            else
            {
                thumbnail.colours.push_back(reader.Colour(x, y));
            }
        }
    }
    return thumbnail;
}

} // namespace tarn_host
