#include "tools/pictures/ContactSheet.h"

#include <algorithm>
#include <iostream>
#include <map>

#include "tools/command/ExitCode.h"
#include "tools/pictures/LevelScale.h"
#include "tools/command/Text.h"

namespace tarn_host
{

namespace
{

using Scales = std::map<PixelKind, LevelScale>;

constexpr Rgb kPaper{250, 250, 248};
constexpr Rgb kInk{20, 20, 20};
constexpr std::size_t kGap = 12;
constexpr std::size_t kColumns = 4;
constexpr std::size_t kLine = 28; // Height of a line of text at kTextScale.
constexpr std::size_t kTextScale = 2;
constexpr std::size_t kSheetWidth = kColumns * kThumbnailWidth + (kColumns + 1) * kGap;

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
    return kLine + RowsOf(section) * (TileHeight(section) + kLine + kGap);
}

// One for each kind of levels on the whole sheet.
Scales MakeScales(const std::vector<ContactSheetSection> &sections)
{
    std::map<PixelKind, std::vector<Thumbnail>> framesOf;
    for (const ContactSheetSection &section : sections)
    {
        for (const Thumbnail &frame : section.frames)
        {
            if (!frame.levels.empty())
            {
                framesOf[frame.pixels].push_back(frame);
            }
        }
    }
    Scales scales;
    for (const auto &[pixels, frames] : framesOf)
    {
        scales.try_emplace(pixels, pixels, frames);
    }
    return scales;
}

std::string CaptionOf(const Thumbnail &frame, std::int64_t startTime100ns)
{
    const char *const light = !frame.isLit ? "" : *frame.isLit ? "  lit" : "  unlit";
    return Format("#%llu  %.3f s%s", static_cast<unsigned long long>(frame.frameNumber),
                  static_cast<double>(frame.sampleTime100ns - startTime100ns) / 1e7, light);
}

void DrawFrame(Picture &sheet, std::size_t left, std::size_t top, const Thumbnail &frame, const Scales &scales)
{
    const LevelScale *const scale = frame.levels.empty() ? nullptr : &scales.at(frame.pixels);
    for (std::size_t i = 0; i < frame.width * frame.height; ++i)
    {
        sheet.Set(left + i % frame.width, top + i / frame.width,
                  scale == nullptr ? frame.colours[i] : scale->ColourOf(frame.levels[i]));
    }
}

void DrawSection(Picture &sheet, std::size_t top, const ContactSheetSection &section, const Scales &scales)
{
    sheet.Write(kGap, top, section.title, kTextScale, kInk);
    top += kLine;
    // Sample times count from somewhere in the past; people read time since the first frame.
    const std::int64_t startTime = section.frames.empty() ? 0 : section.frames.front().sampleTime100ns;
    const std::size_t rowHeight = TileHeight(section) + kLine + kGap;
    for (std::size_t i = 0; i < section.frames.size(); ++i)
    {
        const Thumbnail &frame = section.frames[i];
        const std::size_t left = kGap + i % kColumns * (kThumbnailWidth + kGap);
        const std::size_t rowTop = top + i / kColumns * rowHeight;
        DrawFrame(sheet, left, rowTop, frame, scales);
        sheet.Write(left, rowTop + frame.height + 6, CaptionOf(frame, startTime), kTextScale, kInk);
    }
}

} // namespace

Picture DrawContactSheet(const std::string &title, const std::vector<ContactSheetSection> &sections)
{
    const Scales scales = MakeScales(sections);
    std::size_t height = kGap + kLine + kGap + scales.size() * (LevelScale::kHeight + kGap) + kGap;
    for (const ContactSheetSection &section : sections)
    {
        height += SectionHeight(section) + kGap;
    }
    Picture sheet(kSheetWidth, height, kPaper);
    sheet.Write(kGap, kGap, title, kTextScale, kInk);
    std::size_t top = kGap + kLine + kGap;
    for (const auto &one : scales)
    {
        one.second.Draw(sheet, kGap, top);
        top += LevelScale::kHeight + kGap;
    }
    top += kGap;
    for (const ContactSheetSection &section : sections)
    {
        DrawSection(sheet, top, section, scales);
        top += SectionHeight(section) + kGap;
    }
    return sheet;
}

void SaveContactSheet(const std::filesystem::path &folder, const std::string &title,
                      const std::vector<ContactSheetSection> &sections)
{
    const std::filesystem::path picture = folder / kPictureName;
    std::filesystem::path unfinished = picture;
    unfinished += ".part";
    DrawContactSheet(title, sections).SavePng(unfinished);
    std::error_code error;
    std::filesystem::rename(unfinished, picture, error);
    if (error)
    {
        std::filesystem::remove(unfinished, error);
        throw HostError("cannot write " + ToText(picture));
    }
    std::cerr << "picture: " << ToText(picture) << '\n';
}

} // namespace tarn_host
