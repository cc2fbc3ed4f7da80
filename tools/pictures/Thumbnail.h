// A frame made small: enough of it to be drawn later, when the range of all frames is known.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "tools/frameserver/FrameFormat.h"
#include "tools/pictures/Picture.h"

namespace tarn_host
{

inline constexpr std::size_t kThumbnailWidth = 320;

// Value.
struct Thumbnail
{
    std::size_t width = 0;
    std::size_t height = 0;
    std::int64_t sampleTime100ns = 0;
    std::uint64_t frameNumber = 0;
    std::optional<bool> isLit; // by the laser; empty when the frame does not say
    PixelKind pixels = PixelKind::Unknown;
    std::vector<std::uint16_t> levels; // Depth or grey; empty for colour.
    std::vector<Rgb> colours;          // Empty unless the frame is in colour.

    // Picks pixels at even steps so that the result is at most `maxWidth` wide; depth is never averaged over an edge.
    // Nothing when the format cannot be shown or the frame is too short for it.
    static std::optional<Thumbnail> Of(std::span<const std::byte> frame, const FrameFormat &format,
                                       std::size_t maxWidth);
};

} // namespace tarn_host
