#include "tools/pictures/ContactSheet.h"

#include <algorithm>
#include <cstdio>

#include "tools/pictures/FalseColour.h"
#include "tools/pictures/LevelRange.h"

namespace tarn_host
{

namespace
{

constexpr Rgb kPaper{250, 250, 248};
constexpr Rgb kInk{20, 20, 20};
constexpr std::size_t kGap = 12;
constexpr std::size_t kColumns = 4;
constexpr std::size_t kLine = 28; // Height of a line of text at kTextScale.
constexpr std::size_t kTextScale = 2;
constexpr std::size_t kScaleHeight = 56; // Bar, ticks and their labels.
constexpr std::size_t kBarHeight = 20;
constexpr std::size_t kBarWidth = 800;
constexpr std::size_t kSheetWidth = kColumns * kThumbnailWidth + (kColumns + 1) * kGap;

template <class... Values>
std::string Format(const char *format, Values... values)
{
    char text[160];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

std::size_t RowsOf(const ContactSheetSection &section)
{
    return (section.frames.size() + kColumns - 1) / kColumns;
}

std::size_t TileHeight(const ContactSheetSection &section)
{
    std::size_t height = 0;
    for (const Thumbnail &frame : section.frames)
    {
        height = std::max(height, frame.height);
    }
    return height;
}

std::size_t SectionHeight(const ContactSheetSection &section)
{
    return kLine + kScaleHeight + RowsOf(section) * (TileHeight(section) + kLine + kGap);
}

bool ShowsDepth(const ContactSheetSection &section)
{
    return !section.frames.empty() && section.frames.front().pixels == PixelKind::Depth16;
}

void DrawDepthScale(Picture &sheet, std::size_t top, const FalseColour &colours)
{
    constexpr std::size_t kTicks = 6;
    for (std::size_t i = 0; i < kBarWidth; ++i)
    {
        const Rgb colour = FalseColour::AtPosition(static_cast<double>(i) / (kBarWidth - 1));
        sheet.Fill(kGap + i, top, 1, kBarHeight, colour);
    }
    for (std::size_t i = 0; i < kTicks; ++i)
    {
        const double share = static_cast<double>(i) / (kTicks - 1);
        const double metres = colours.NearMetres() + share * (colours.FarMetres() - colours.NearMetres());
        const std::size_t x = kGap + static_cast<std::size_t>(share * (kBarWidth - 2));
        sheet.Fill(x, top, 2, kBarHeight + 6, kInk);
        sheet.Write(x, top + kBarHeight + 8, Format("%.2f m", metres), kTextScale, kInk);
    }
    const std::size_t legend = kGap + kBarWidth + 120;
    sheet.Fill(legend, top, kBarHeight, kBarHeight, kNoMeasurementColour);
    sheet.Write(legend + kBarHeight + 8, top + 2, "no measurement", kTextScale, kInk);
}

Rgb Grey(std::uint16_t level, const LevelRange &range)
{
    const auto shade = static_cast<std::uint8_t>(std::min<std::uint32_t>(level * 255U / range.high, 255));
    return {shade, shade, shade};
}

void DrawFrame(Picture &sheet, std::size_t left, std::size_t top, const Thumbnail &frame, std::int64_t startTime100ns,
               const FalseColour &colours, const LevelRange &grey)
{
    for (std::size_t i = 0; i < frame.width * frame.height; ++i)
    {
        Rgb colour;
        if (frame.pixels == PixelKind::Depth16)
        {
            colour = colours.Of(frame.levels[i]);
        }
        else
        {
            colour = frame.levels.empty() ? frame.colours[i] : Grey(frame.levels[i], grey);
        }
        sheet.Set(left + i % frame.width, top + i / frame.width, colour);
    }
    const std::string caption = Format("#%llu  %.3f s", static_cast<unsigned long long>(frame.frameNumber),
                                       static_cast<double>(frame.sampleTime100ns - startTime100ns) / 1e7);
    sheet.Write(left, top + frame.height + 6, caption, kTextScale, kInk);
}

void DrawSection(Picture &sheet, std::size_t top, const ContactSheetSection &section)
{
    sheet.Write(kGap, top, section.title, kTextScale, kInk);
    top += kLine;

    LevelRange depthRange;
    LevelRange greyRange{0, 255};
    if (ShowsDepth(section))
    {
        depthRange = LevelRange::OfDepth(section.frames);
    }
    else if (!section.frames.empty() && section.frames.front().colours.empty())
    {
        greyRange = LevelRange::OfGrey(section.frames);
        sheet.Write(kGap, top, Format("black 0, white %u", static_cast<unsigned>(greyRange.high)), kTextScale, kInk);
    }
    const FalseColour colours(depthRange.low, depthRange.high);
    if (ShowsDepth(section))
    {
        DrawDepthScale(sheet, top, colours);
    }
    top += kScaleHeight;

    // Sample times count from somewhere in the past; people read time since the first frame.
    const std::int64_t startTime = section.frames.empty() ? 0 : section.frames.front().sampleTime100ns;
    const std::size_t rowHeight = TileHeight(section) + kLine + kGap;
    for (std::size_t i = 0; i < section.frames.size(); ++i)
    {
        const std::size_t left = kGap + i % kColumns * (kThumbnailWidth + kGap);
        DrawFrame(sheet, left, top + i / kColumns * rowHeight, section.frames[i], startTime, colours, greyRange);
    }
}

} // namespace

Picture DrawContactSheet(const std::string &title, const std::vector<ContactSheetSection> &sections)
{
    std::size_t height = kGap + kLine;
    for (const ContactSheetSection &section : sections)
    {
        height += SectionHeight(section) + kGap;
    }
    Picture sheet(kSheetWidth, height, kPaper);
    sheet.Write(kGap, kGap, title, kTextScale, kInk);
    std::size_t top = kGap + kLine;
    for (const ContactSheetSection &section : sections)
    {
        DrawSection(sheet, top, section);
        top += SectionHeight(section) + kGap;
    }
    return sheet;
}

} // namespace tarn_host
