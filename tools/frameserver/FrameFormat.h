// What a media type says about the frames on a stream, for people and for the pictures.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>
#include <string>

#include "tools/command/VideoSize.h"

namespace tarn_host
{

// How the pixels of a frame are stored, as far as this program can show them.
enum class PixelKind
{
    Depth16,     // 16 bits of 1/8 mm
    Grey8,       // 8 bits
    Confidence8, // 8 bits, 0 to 15
    Grey16,      // 16 bits, scaled to what occurs
    Yuy2,        // 4 bytes for 2 pixels
    Nv12,        // brightness plane followed by a half-size colour plane
    Rgb24,       // blue, green, red
    Rgb32,       // blue, green, red, unused
    Unknown      // Counted but not shown.
};

// Value. Immutable after Init.
struct FrameFormat
{
    VideoSize size;
    PixelKind pixels = PixelKind::Unknown;
    std::string subtypeName;

    // Missing attributes are read as 0. Throws HostError when the type has no subtype.
    static FrameFormat Of(IMFMediaType &type);
    std::string ToText() const;
};

} // namespace tarn_host
