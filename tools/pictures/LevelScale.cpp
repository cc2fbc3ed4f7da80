#include "tools/pictures/LevelScale.h"

#include <algorithm>

#include "tools/pictures/FalseColour.h"
#include "tools/command/Text.h"

namespace tarn_host
{

namespace
{

constexpr Rgb kInk{20, 20, 20};
constexpr std::size_t kTextScale = 2;
constexpr std::size_t kNameWidth = 150;
constexpr std::size_t kBarHeight = 20;
constexpr std::size_t kBarWidth = 760;

const char *NameOf(PixelKind pixels)
{
    switch (pixels)
    {
    case PixelKind::Depth16:
        return "depth";
    case PixelKind::Confidence8:
        return "confidence";
    default:
        return "infrared";
    }
}

} // namespace

LevelScale::LevelScale(PixelKind scaledPixels, const std::vector<Thumbnail> &frames)
    : pixels(scaledPixels), range(LevelRange::Of(scaledPixels, frames))
{
}

Rgb LevelScale::ColourOf(std::uint16_t level) const noexcept
{
    if (pixels == PixelKind::Depth16)
    {
        return FalseColour(range.low, range.high).Of(level);
    }
    const std::uint32_t above = std::clamp<std::uint32_t>(level, range.low, range.high) - range.low;
    const auto shade = static_cast<std::uint8_t>(above * 255U / (range.high - range.low));
    return {shade, shade, shade};
}

void LevelScale::Draw(Picture &sheet, std::size_t left, std::size_t top) const
{
    sheet.Write(left, top + 2, NameOf(pixels), kTextScale, kInk);
    left += kNameWidth;
    const std::uint32_t span = range.high - range.low;
    for (std::size_t i = 0; i < kBarWidth; ++i)
    {
        const std::uint32_t level = range.low + static_cast<std::uint32_t>(i * span / (kBarWidth - 1));
        // A depth of 0 stands for no measurement, but is a place on the bar.
        const Rgb colour =
            ColourOf(static_cast<std::uint16_t>(pixels == PixelKind::Depth16 ? std::max(level, 1U) : level));
        sheet.Fill(left + i, top, 1, kBarHeight, colour);
    }
    for (std::uint32_t level = range.low; level <= range.high; level += range.step)
    {
        const std::size_t x = left + (level - range.low) * (kBarWidth - 2) / span;
        const std::string label = Label(level);
        sheet.Fill(x, top + kBarHeight, 2, 6, kInk);
        sheet.Write(x - Picture::TextWidth(label, kTextScale) / 2, top + kBarHeight + 10, label, kTextScale, kInk);
    }
    const std::size_t legend = left + kBarWidth + 60;
    if (pixels == PixelKind::Depth16)
    {
        sheet.Fill(legend, top, kBarHeight, kBarHeight, kNoMeasurementColour);
        sheet.Write(legend + kBarHeight + 8, top + 2, "no measurement", kTextScale, kInk);
    }
    else
    {
        sheet.Write(legend, top + 2, "black " + Label(range.low) + ", white " + Label(range.high), kTextScale, kInk);
    }
}

std::string LevelScale::Label(std::uint32_t level) const
{
    if (pixels != PixelKind::Depth16)
    {
        return std::to_string(level);
    }
    const double metres = level / kDepthUnitsPerMetre;
    const double step = range.step / kDepthUnitsPerMetre;
    return Format("%.*f m", step >= 1 ? 0 : step >= 0.1 ? 1 : 2, metres);
}

} // namespace tarn_host
